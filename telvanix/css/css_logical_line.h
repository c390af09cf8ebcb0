// The items of a parsed stylesheet. A CCssPack keeps its text as an ordered
// list of logical lines: one per at-rule and one per style rule (CCssStyle,
// css_style.h). At-rules are kept as the text they were written with, so a
// saved stylesheet gives every at-rule back byte for byte.
#pragma once

#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CCssPack;

class TELVANIX_API CCssLogicalLine : public CRglObject {
 public:
  enum EmLineType {
    emLineAtImport = 1,
    emLineAtUnknown = 2,
    emLineStyle = 4,
  };

  explicit CCssLogicalLine(EmLineType type);
  ~CCssLogicalLine() override;

  virtual int Analyse() = 0;
  // The line as stylesheet text, without the line break Save puts after it.
  virtual CString GetPrintableString(CCssPack* pack) = 0;

  EmLineType GetLineType() const { return m_nLineType; }
  int IsAtImport() const { return m_nLineType == emLineAtImport; }
  int IsAtUnknown() const { return m_nLineType == emLineAtUnknown; }
  int IsStyle() const { return m_nLineType == emLineStyle; }

  // A removed line stays in its pack's list, but saving and style iteration
  // pass it by.
  int IsRemovedLine() const { return m_bRemoved != 0; }
  int RemoveLine() { m_bRemoved = 1; return 1; }

  const CString& GetIndentString() const { return m_strIndent; }
  void SetIndentString(const char* indent) { m_strIndent = indent; }

  // Empties the indent text and clears the removed flag; 1.
  int Default();
  // Copies the indent text and the removed flag (the line type stays); 0 for null.
  int Copy(const CCssLogicalLine* other);

 private:
  EmLineType m_nLineType;
  CString m_strIndent;
  BOOL m_bRemoved;
};

// "@import ..." as written, with the blanks and comments after it.
class TELVANIX_API CCssLglAtImport : public CCssLogicalLine {
 public:
  // length -1 copies up to the terminating zero, any other length exactly
  // that many bytes.
  CCssLglAtImport(const char* text, int length);
  ~CCssLglAtImport() override;

  int Analyse() override;
  CString GetPrintableString(CCssPack* pack) override;
  CString GetOriginalString() const { return m_strOriginal; }
  int IsAnalysed() const { return m_bAnalysed != 0; }
  int Copy(const CCssLglAtImport* other);

  // The imported stylesheet's name, read from the text on first request:
  // "@import url('a.css');" and "@import 'a.css';" both give "a.css".
  CString GetImportCssUrl();

 private:
  CString m_strOriginal;
  BOOL m_bAnalysed;
  CString m_strImportUrl;
};

// Any other at-rule ("@media print { ... }", "@charset ...;", "@font-face
// {...}") as written, block and trailing blanks included.
class TELVANIX_API CCssLglAtUnknown : public CCssLogicalLine {
 public:
  CCssLglAtUnknown(const char* text, int length);
  ~CCssLglAtUnknown() override;

  int Analyse() override;
  CString GetPrintableString(CCssPack* pack) override;
  CString GetOriginalString() const { return m_strOriginal; }
  int IsAnalysed() const { return m_bAnalysed != 0; }
  int Copy(const CCssLglAtUnknown* other);

 private:
  CString m_strOriginal;
  BOOL m_bAnalysed;
};

}  // namespace telvanix
