#include "telvanix/css/css_style.h"

#include <cstring>
#include <string>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/internal/css_scan_core.h"
#include "telvanix/css/style_format.h"
#include "telvanix/foundation/hash_fold.h"
#include "telvanix/foundation/text_utils.h"
#include "telvanix/platform/code_page.h"

namespace telvanix {

namespace {

constexpr char kAppendMarker[] = "\n/* Css Append */\n";
// Major-type bits every block-level element carries.
constexpr DWORD kBlockLevelBits = 0xA0000010u;

inline unsigned char FoldAscii(unsigned char ch) {
  return (ch >= 'A' && ch <= 'Z') ? static_cast<unsigned char>(ch + 32) : ch;
}

// Case-blind comparison that keeps a lead byte and its trail byte together
// (a trail byte is compared exactly, never case-folded).
bool EqualNoCaseMultiByte(const char* a, const char* b) {
  const UINT cp = GetActiveCodePage();
  const unsigned char* p = reinterpret_cast<const unsigned char*>(a);
  const unsigned char* q = reinterpret_cast<const unsigned char*>(b);
  for (;;) {
    if (*p == 0 || *q == 0)
      return *p == *q;
    if (*p >= 0x80 && IsDBCSLeadByteEx(cp, *p)) {
      if (*p != *q)
        return false;
      ++p, ++q;
      if (*p != *q)
        return false;
      if (*p == 0)
        return true;
      ++p, ++q;
      continue;
    }
    if (FoldAscii(*p) != FoldAscii(*q))
      return false;
    ++p, ++q;
  }
}

}  // namespace

CCssStyle::CCssStyle() : CCssLogicalLine(emLineStyle), m_dwFlags(0), m_dwNameHash(0), m_bChainPending(false) {
  Default();
}

CCssStyle::CCssStyle(const char* selectorText, const char* bodyText, const CCssStyleProperty* properties)
    : CCssStyle() {
  if (selectorText)
    m_strSelectorText = selectorText;
  if (bodyText)
    m_strBodyText = bodyText;
  if (properties) {
    m_properties.Copy(properties);
    m_dwFlags |= emStylePropertyAnalysed;
  }
  Analyse();
}

CCssStyle::~CCssStyle() = default;

int CCssStyle::Default() {
  CCssLogicalLine::Default();
  m_dwFlags = 0;
  m_strStyleName.Empty();
  m_properties.Default();
  m_selectors.Default();
  m_dwNameHash = 0;
  m_strSelectorText.Empty();
  m_strBodyText.Empty();
  m_strUniqueBlockStyleName.Empty();
  m_bChainPending = false;
  return 1;
}

void CCssStyle::SetParsedRule(const char* selector, int selectorLength, const char* body, int bodyLength,
                              const CCssStyleProperty* properties) {
  // As the constructor's texts, which end at a zero byte.
  selectorLength = static_cast<int>(strnlen(selector, static_cast<size_t>(selectorLength)));
  bodyLength = static_cast<int>(strnlen(body, static_cast<size_t>(bodyLength)));
  m_strSelectorText = CString(selector, selectorLength);
  m_strBodyText = CString(body, bodyLength);
  if (properties) {
    m_properties.Copy(properties);
  } else {
    m_properties.Default();
    const unsigned char* text = reinterpret_cast<const unsigned char*>(body);
    m_properties.AnalyseRange(text, text + bodyLength);
  }
  m_dwFlags |= emStylePropertyAnalysed;
  Analyse();
}

int CCssStyle::Copy(const CCssStyle* other) {
  if (!other)
    return 0;
  if (other == this)
    return 1;
  CCssLogicalLine::Copy(other);
  m_dwFlags = other->m_dwFlags;
  m_strStyleName = other->m_strStyleName;
  m_properties.Copy(&other->m_properties);
  m_selectors.Default();
  m_selectors.Copy(&other->m_selectors);
  m_bChainPending = other->m_bChainPending;
  m_dwNameHash = other->m_dwNameHash;
  m_strSelectorText = other->m_strSelectorText;
  m_strBodyText = other->m_strBodyText;
  m_strUniqueBlockStyleName = other->m_strUniqueBlockStyleName;
  return 1;
}

int CCssStyle::Analyse() {
  if (!(m_dwFlags & emStylePropertyAnalysed)) {
    m_properties.Default();
    if (!m_strBodyText.IsEmpty())
      m_properties.Analyse(m_strBodyText.GetString());
    m_dwFlags |= emStylePropertyAnalysed;
  }
  if (!(m_dwFlags & emStyleNameAnalysed)) {
    if (!m_strSelectorText.IsEmpty()) {
      const unsigned char* text = reinterpret_cast<const unsigned char*>(m_strSelectorText.GetString());
      m_strStyleName = NormalizeNameRange(text, text + m_strSelectorText.GetLength());
      m_bChainPending = true;
    }
    m_dwFlags |= emStyleNameAnalysed;
  }
  return 1;
}

void CCssStyle::EnsureNameAnalysed() {
  if (!(m_dwFlags & emStyleNameAnalysed))
    Analyse();
}

void CCssStyle::EnsureChain() {
  if (m_bChainPending) {
    m_bChainPending = false;
    m_selectors.Analyse(m_strStyleName.GetString());
  }
}

void CCssStyle::EnsurePropertyAnalysed() {
  if (!(m_dwFlags & emStylePropertyAnalysed)) {
    m_dwFlags |= emStylePropertyAnalysed;
    m_properties.Default();
    if (!m_strBodyText.IsEmpty())
      m_properties.Analyse(m_strBodyText.GetString());
  }
}

CString CCssStyle::GetStyleName() {
  EnsureNameAnalysed();
  return m_strStyleName;
}

CCssStyleProperty* CCssStyle::GetStyleProperty() {
  EnsurePropertyAnalysed();
  return &m_properties;
}

CCssStyleFormat* CCssStyle::GetStyleFormat() {
  EnsurePropertyAnalysed();
  return m_properties.GetStyleFormat();
}

CCssStyleSelectors* CCssStyle::GetStyleSelectors() {
  EnsureNameAnalysed();
  EnsureChain();
  return &m_selectors;
}

int CCssStyle::IsContextualSelector() {
  EnsureNameAnalysed();
  EnsureChain();
  return m_selectors.GetSize() > 1 ? 1 : 0;
}

CCssStyle::CSelector* CCssStyle::GetLastSelector() {
  EnsureNameAnalysed();
  EnsureChain();
  return m_selectors.GetLast();
}

CString CCssStyle::GetOriginalString() {
  EnsureNameAnalysed();
  if (m_strStyleName.IsEmpty())
    return m_strBodyText;
  return m_strStyleName + " {" + m_strBodyText + " }";
}

CString CCssStyle::GetPrintableString(CCssPack* pack) {
  EnsureNameAnalysed();
  EnsurePropertyAnalysed();
  if (m_strStyleName.IsEmpty())
    return m_properties.GetPrintableString(nullptr);
  CString text(m_strStyleName);
  text += " { ";
  if (pack && pack->IsLinking()) {
    // Lines the declarations up under the first one.
    const CString indent(' ', m_strStyleName.GetLength() + 2);
    text += m_properties.GetPrintableString(indent.GetString());
  } else {
    text += m_properties.GetPrintableString(nullptr);
  }
  text += " }";
  return text;
}

DWORD CCssStyle::GetStyleNameHash() {
  EnsureNameAnalysed();
  if (m_dwNameHash == 0)
    m_dwNameHash = GenHashCode(m_strStyleName.GetString());
  return m_dwNameHash;
}

int CCssStyle::IsSameStyleName(const char* name) {
  if (!name)
    return 0;
  EnsureNameAnalysed();
  if (IsDBCS())
    return EqualNoCaseMultiByte(m_strStyleName.GetString(), name) ? 1 : 0;
  return GetStyleNameHash() == GenHashCode(name) ? 1 : 0;
}

int CCssStyle::IsSameStyleName(CCssStyle* other) {
  if (!other)
    return 0;
  const CString name = other->GetStyleName();
  return IsSameStyleName(name.GetString());
}

int CCssStyle::InheritNew(CCssStyle* other) {
  if (!other || !IsSameStyleName(other))
    return 0;
  if (other == this) {
    // Merging a rule into itself would read the list while growing it.
    CCssStyleProperty copy;
    copy.Copy(GetStyleProperty());
    GetStyleProperty()->Concat(&copy);
  } else {
    GetStyleProperty()->Concat(other->GetStyleProperty());
  }
  m_dwFlags |= emStyleInherited;
  const CString otherBody = other->m_strBodyText;
  m_strBodyText += kAppendMarker;
  m_strBodyText += otherBody;
  return 1;
}

CString CCssStyle::NormalizeName(const unsigned char* text) {
  if (!text)
    return CString();
  return NormalizeNameRange(text, text + std::strlen(reinterpret_cast<const char*>(text)));
}

CString CCssStyle::NormalizeNameRange(const unsigned char* p, const unsigned char* end) {
  using namespace css_scan;
  const UINT cp = LeadCodePage();
  // Most names are one run, taken as it stands; more runs are joined with
  // one space in a buffer.
  const unsigned char* firstRun = nullptr;
  const unsigned char* firstEnd = nullptr;
  std::string joined;
  while (p < end) {
    const unsigned char* s = SkipSpaces(p, end, true);
    const unsigned char* q = SkipAny(s, end, kCssFlagsValue, cp);
    if (q <= s)
      break;
    // A run that ends in a quoted stretch carries the blanks after it; they
    // are left out so that runs are joined by exactly one space.
    const unsigned char* e = q;
    while (e > s && IsCssBlank(e[-1]))
      --e;
    if (!firstRun) {
      firstRun = s;
      firstEnd = e;
    } else {
      if (joined.empty())
        joined.assign(reinterpret_cast<const char*>(firstRun), static_cast<size_t>(firstEnd - firstRun));
      joined += ' ';
      joined.append(reinterpret_cast<const char*>(s), static_cast<size_t>(e - s));
    }
    p = q;
  }
  if (!firstRun)
    return CString();
  if (joined.empty())
    return CString(reinterpret_cast<const char*>(firstRun), static_cast<int>(firstEnd - firstRun));
  return CString(joined);
}

int CCssStyle::SuffixUniqueBlockStyleName(const char* suffix) {
  m_strUniqueBlockStyleName.Empty();
  const CSelector* last = GetLastSelector();
  if (!last || last->GetTagId() == 0 || (last->GetMjrType() & kBlockLevelBits) != kBlockLevelBits)
    return 0;
  m_strUniqueBlockStyleName = m_strStyleName;
  if (suffix)
    m_strUniqueBlockStyleName += suffix;
  return 1;
}

const char* CCssStyle::GetUniqueBlockStyleName() {
  if (m_strUniqueBlockStyleName.IsEmpty() && !SuffixUniqueBlockStyleName(nullptr))
    return nullptr;
  return m_strUniqueBlockStyleName.IsEmpty() ? nullptr : m_strUniqueBlockStyleName.GetString();
}

}  // namespace telvanix
