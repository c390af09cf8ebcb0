// A stylesheet pack that knows the files its stylesheet refers to: the
// stylesheets it imports and the "baggage" files (images, fonts, cursors...)
// named by url(...) in its rules. The topic document uses it for STYLE blocks
// and inline styles; a help compiler needs those files beside the topic.
//
// Choices made here:
// - Import URLs come in list order from the "@import" lines that are not
//   removed; an import whose URL is empty is passed over, so an empty result
//   always means the end.
// - Baggage files are the names inside every url(...) of every declaration
//   of every style line that is not removed, whatever the property, and of
//   the text of other at-rules (a "@media" block's rules, "@font-face"
//   sources); comments are not looked into. "@import" targets are not
//   baggage: they come from the import walk.
// - Names that are not files of the project are left out: remote URLs
//   (known schemes, "www."), "data:" URIs and same-document references
//   ("#id"). Each file is reported once, at its first mention, names
//   compared without regard to case or slash direction.
// - Reference replacement works on the sheet's bytes, not on its lines:
//   the target of every url(...) outside comments and of every "@import"
//   (quoted or url()) is rewritten relative to the sheet's own folder, and
//   every other byte stays as read. Quotes (or their absence) are kept.
// - The baggage walk reads the lines when GetFirstBaggageFile is called, so
//   edits made between walks are seen by the next walk.
#pragma once

#include <functional>
#include <vector>

#include "telvanix/css/css_pack.h"
#include "telvanix/foundation/file_moves.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CCssPackEx : public CCssPack {
 public:
  CCssPackEx(const char* path, const CByteString* content);
  explicit CCssPackEx(const CByteString* content);
  ~CCssPackEx() override;

  // "@import" URLs in order; "" (and a null position) at the end.
  CString GetFirstImportCssUrl(POSITION& pos);
  CString GetNextImportCssUrl(POSITION& pos);

  // Files named by url(...) in the rules, each once; "" at the end.
  CString GetFirstBaggageFile(UINT& index);
  CString GetNextBaggageFile(UINT& index);

  // Rewrites the url() and "@import" targets of the sheet's content for the
  // moves (the moves' document is this sheet) and parses it again. Gives
  // the count of references changed (0: content untouched), -1 on failure
  // (content untouched). References to deleted files are left as written.
  int ReplaceFileReference(const CFileMoves& moves);
  // The same walk without a change: every url() and "@import" target with
  // its line, what it names and what a rewrite would write. Gives the count.
  int GetFileReferences(const CFileMoves& moves, std::vector<CFileReference>& references);

  // The one scanner of reference targets in stylesheet text: calls `visit`
  // with the offset and length of each url(...) target (inside its quotes,
  // blanks trimmed) and of each quoted "@import" target, whether it belongs
  // to an "@import", and its 0-based line. Comments and other strings are
  // passed over; an unclosed url( names nothing. Gives the count.
  static int ForEachUrlTarget(const char* text, int length,
                              const std::function<void(int offset, int length, int isImport, int line)>& visit);
  // Rewrites the targets of stylesheet text: `decide` gets each reference
  // with its line (firstLine + line), kind, element ("@import" or "url")
  // and written text, and sets its target, new value and change. Appends
  // the text to `out` with every emRewritten target replaced (an unquoted
  // url() target whose new text needs quotes gets them) and gives their
  // count; `references` (when non-null) gets each reference.
  static int ReplaceUrlsInText(const char* text, int length, const std::function<void(CFileReference&)>& decide,
                               CByteString& out, std::vector<CFileReference>* references, int firstLine);
  // The same for plain stylesheet text and the moves' rule.
  static int ReplaceUrlsInText(const char* text, int length, const CFileMoves& moves, CByteString& out,
                               std::vector<CFileReference>* references, int firstLine);

  // Quick test that a property text (one value or a whole inline style) may
  // name a file: it holds "url(", or a background or list-style property
  // whose value might name one bare. 0 for null or empty text.
  static int MayContainBaggageFile(const char* value);
  // The blank-separated part of a shorthand value ("white url(a.gif)
  // no-repeat") that names the file: the first url(...) part, else the first
  // part that looks like a bare file name (holds "." or a slash and is not a
  // number or colour); "" when none.
  static CString FindBaggageFileInStylePropertyValue(const char* value);
  // Appends the file name inside each url(...) of the text, in order, to
  // `names`, comments passed over; gives the number appended.
  static int CollectUrlFileNames(const char* text, CStringArray& names);

 private:
  // Adds `name` unless it is not a project file or is already there.
  void AddBaggage(const CString& name);

  CStringArray m_arrBaggage;
};

}  // namespace telvanix
