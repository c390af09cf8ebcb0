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
// - The baggage walk reads the lines when GetFirstBaggageFile is called, so
//   edits made between walks are seen by the next walk.
#pragma once

#include "telvanix/css/css_pack.h"
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
