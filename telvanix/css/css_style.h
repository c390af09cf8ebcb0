// One style rule: its selector text, the declaration body as written, the
// parsed declaration list and the parsed selector chain. A rule is a logical
// line of a CCssPack; a rule without a selector is an inline style. Analysis
// is lazy: the declaration list and the chain are read on first need. Two
// rules of the same name (compared by a cached hash) are merged by InheritNew.
#pragma once

#include "telvanix/css/css_logical_line.h"
#include "telvanix/css/css_selector.h"
#include "telvanix/css/style_property.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CCssPack;
class CCssStyleFormat;

class TELVANIX_API CCssStyle : public CCssLogicalLine {
 public:
  using CSelector = CCssStyleSelectors::CSelector;

  enum EmStyleFlag : DWORD {
    emStylePropertyAnalysed = 0x1,
    emStyleNameAnalysed = 0x2,
    emStyleInherited = 0x100,   // another rule of the same name was merged in
    emStyleNonDefined = 0x200,  // set by the stylesheet manager
  };

  CCssStyle();
  // A given property list is taken as the analysed body (copied; the body
  // text is then not read again). Analyses at once.
  CCssStyle(const char* selectorText, const char* bodyText, const CCssStyleProperty* properties);
  CCssStyle(const CCssStyle&) = delete;
  CCssStyle& operator=(const CCssStyle&) = delete;
  ~CCssStyle() override;

  int Default();
  // Deep copy of everything but the line type; 0 for null.
  int Copy(const CCssStyle* other);
  // Reads what is not read yet: the body into the declaration list, the
  // selector text into the name and chain. 1.
  int Analyse() override;
  // Name, " { ", declarations, " }"; declarations alone for a nameless style.
  // In a linking pack each declaration starts a line under the first.
  CString GetPrintableString(CCssPack* pack) override;
  // Name, " {", the body as written, " }"; the body alone without a name.
  CString GetOriginalString();

  CString GetStyleName();
  CCssStyleProperty* GetStyleProperty();
  CCssStyleFormat* GetStyleFormat();
  CCssStyleSelectors* GetStyleSelectors();
  int IsContextualSelector();
  // The selector the rule applies to (the last of the chain); null when none.
  CSelector* GetLastSelector();

  // Case-blind under a double-byte code page; otherwise by GenHashCode, so
  // two names of equal hash are the same style.
  int IsSameStyleName(const char* name);
  int IsSameStyleName(CCssStyle* other);
  // Takes a rule of the same name in: its declarations are appended and its
  // body text follows "\n/* Css Append */\n". 0 for null or another name.
  int InheritNew(CCssStyle* other);

  // Selector text cut into runs and joined with single spaces, comments
  // dropped: "div   /* x */ p " gives "div p".
  static CString NormalizeName(const unsigned char* text);

  // The style name (plus suffix) when the rule applies to a block-level
  // element; null / 0 otherwise.
  const char* GetUniqueBlockStyleName();
  int SuffixUniqueBlockStyleName(const char* suffix);

  int IsInheritedStyle() const { return (m_dwFlags & emStyleInherited) ? 1 : 0; }
  int IsNonDefinedStyle() const { return (m_dwFlags & emStyleNonDefined) ? 1 : 0; }
  void SetNonDefinedStyle(int on) {
    m_dwFlags = on ? (m_dwFlags | emStyleNonDefined) : (m_dwFlags & ~DWORD(emStyleNonDefined));
  }
  DWORD GetStyleFlags() const { return m_dwFlags; }

  const CString& GetSelectorText() const { return m_strSelectorText; }
  const CString& GetBodyText() const { return m_strBodyText; }
  // GenHashCode of the name, computed once.
  DWORD GetStyleNameHash();

 private:
  friend class CCssPack;

  // The parser's way in, as the constructor from (selector, body, list) but
  // with texts given by length: without a list the body is read here.
  void SetParsedRule(const char* selector, int selectorLength, const char* body, int bodyLength,
                     const CCssStyleProperty* properties);
  static CString NormalizeNameRange(const unsigned char* p, const unsigned char* end);
  void EnsureNameAnalysed();
  void EnsurePropertyAnalysed();
  // The chain is a function of the name alone, so it is cut from the name
  // only when first asked for: most rules a parser reads are never matched.
  void EnsureChain();

  DWORD m_dwFlags;
  CString m_strStyleName;
  CCssStyleSelectors m_selectors;
  CCssStyleProperty m_properties;
  DWORD m_dwNameHash;
  CString m_strSelectorText;
  CString m_strBodyText;
  CString m_strUniqueBlockStyleName;
  bool m_bChainPending;  // the name is analysed, its chain not yet cut
};

}  // namespace telvanix
