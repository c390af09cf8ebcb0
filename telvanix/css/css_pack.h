// One stylesheet: the text of a linked ".css" file, of a STYLE block inside a
// page, or of an inline style, parsed into an ordered list of logical lines
// (at-rules kept as written, style rules as CCssStyle) and written back in a
// canonical form, one item a line. The parser never reports an error: what it
// cannot read it skips one byte at a time, and unterminated rules are dropped.
// The static Css* scanners are the library's one definition of the stylesheet
// syntax; values, declaration lists and selectors cut their text with them.
#pragma once

#include "telvanix/css/css_logical_line.h"
#include "telvanix/css/css_scanner.h"
#include "telvanix/css/css_style.h"
#include "telvanix/foundation/byte_string.h"
#include "telvanix/foundation/rgl_list.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {


class TELVANIX_API CCssPack : public CRglObject {
 public:
  using CLineList = CRglList<CCssLogicalLine*, CCssLogicalLine*>;

  // The path names the stylesheet or the document holding it. A ".css" path
  // (any case) is loaded at once and replaces `content` (an unreadable file
  // leaves the pack empty); another extension marks an embedded stylesheet;
  // no path an inline one. Nothing is parsed until Parse.
  CCssPack(const char* path, const CByteString* content);
  explicit CCssPack(const CByteString* content);
  CCssPack(const CCssPack&) = delete;
  CCssPack& operator=(const CCssPack&) = delete;
  ~CCssPack() override;

  // Deletes every line; parsed := 0. 1.
  int ClearAll();
  // 0 for empty content; otherwise rebuilds the line list from the content
  // and gives 1.
  int Parse();
  // Reads [begin, end) into lines appended to the list; 0 only for a null or
  // reversed range.
  int BuildList(const unsigned char* begin, const unsigned char* end);
  // Each reads one item at begin, appends its line(s) and gives where the next
  // item starts, or begin itself when nothing could be read. ("Defination" is
  // the interface's own spelling.)
  const unsigned char* CommitLglAtStatement(const unsigned char* begin, const unsigned char* end);
  const unsigned char* CommitLglCssDefination(const unsigned char* begin, const unsigned char* end);
  // Merges the style into the first style line of the same name (removed
  // lines included) or appends a copy of it; the argument stays the caller's.
  // 0 for null.
  int AddStyleItem(CCssStyle* style);
  // Blank runs between items are not kept: does nothing, 1.
  int AppendIndentStringToLastToken(const unsigned char* text, int length);

  // Every line not removed, each followed by CR LF. 1.
  int Save(CByteString& out);
  // Writes Save's bytes to `path`, or to the pack's own file when `path` is
  // null and the pack was loaded from a ".css" file. 0 when it cannot be written.
  int Save(const char* path);

  CLineList& GetListLine() { return m_listLines; }
  // Style lines that are not removed, in list order; null (and a null
  // position) at the end.
  CCssStyle* GetFirstStyle(POSITION& pos);
  CCssStyle* GetNextStyle(POSITION& pos);
  // The first style line (removed or not) of that name; null when none.
  CCssStyle* GetStyle(const char* name);

  CString GetPackPathName() const { return m_strPackPathName; }
  // "" without a pack path; the pack path for a null name; otherwise the name
  // resolved against the stylesheet's own location.
  CString GetFilePathName(const char* name) const;

  int IsLinking() const { return m_nPackKind & 1; }
  int IsEmbedded() const { return (m_nPackKind >> 1) & 1; }
  int IsInline() const { return (m_nPackKind & 3) != 0; }
  int GetPackKind() const { return m_nPackKind; }
  int IsParsed() const { return m_bParsed; }

  CByteString& GetContent() { return m_content; }
  const CByteString& GetContent() const { return m_content; }

  // ---- The scanners: all over [p, end), never returning beyond end. ----

  // Skips blanks, "<!--" and "-->"; with `withComments` also /* */ comments.
  static const unsigned char* CssSkipSpaces(const unsigned char* p, const unsigned char* end, int withComments);
  // Past the "*/" closing a comment at p, or p. A comment whose close is
  // "**/" is not closed there: the matcher resets on the second star.
  static const unsigned char* CssSkipComment(const unsigned char* p, const unsigned char* end);
  // At "@": the first blank or zero byte after it, or end; elsewhere p.
  static const unsigned char* CssSkipAtKeyword(const unsigned char* p, const unsigned char* end);
  // One run of a value or selector; `flags` (EmCssSkipFlag) say which
  // delimiters end it. A quoted stretch ends the run after its closer, with
  // the blanks and comments that follow.
  static const unsigned char* CssSkipAny(const unsigned char* p, const unsigned char* end, UINT flags);
  // At "{": past the matching "}" and the blanks and comments after it; p
  // when not at "{" or the block is not closed.
  static const unsigned char* CssSkipBlock(const unsigned char* p, const unsigned char* end);
  // One declaration: the position of the ";" or "}" ending it; p when the
  // name has no ":" or the declaration is not ended.
  static const unsigned char* CssSkipDeclaration(const unsigned char* p, const unsigned char* end);
  // Blanks and comments skipped, then one run as a string. A null end means
  // up to the terminating zero; p at or past end gives the text at p as it is.
  static CString CssFetchFirstAny(const unsigned char* p, const unsigned char* end, UINT flags);
  static CString CssFetchFirstAny(const char* p, const char* end, UINT flags) {
    return CssFetchFirstAny(reinterpret_cast<const unsigned char*>(p),
                            reinterpret_cast<const unsigned char*>(end), flags);
  }

 private:
  struct CBuildState;
  struct CRuleSelectors;
  class CStyleIndex;

  void AppendLine(CCssLogicalLine* line);
  // CssSkipBlock for an at-rule, remembering unclosed blocks while building.
  const unsigned char* SkipAtRuleBlock(const unsigned char* p, const unsigned char* end);
  // The first style line of the same name, or null.
  CCssStyle* FindSameStyle(CCssStyle* style);
  // AddStyleItem for a style the pack may keep: merged (and deleted) or appended.
  void AddStyleItemOwned(CCssStyle* style);

  CLineList m_listLines;
  CString m_strPackPathName;
  CByteString m_content;
  int m_nPackKind;
  int m_bParsed;
  CBuildState* m_pBuildState;  // only while BuildList runs
};

}  // namespace telvanix
