#include "telvanix/css/css_selector.h"

#include <cstring>

#include "telvanix/css/css_pack.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {

namespace {

constexpr int kSelectorExamined = 128;  // bytes of one simple selector looked at
constexpr int kChainExamined = 256;     // bytes of a whole chain looked at

}  // namespace

// ---- CSelector ----

CCssStyleSelectors::CSelector::CSelector() : m_dwMjrType(0), m_dwTagId(0), m_nPartKind(emPartNone) {}

CCssStyleSelectors::CSelector::CSelector(const char* text) : CSelector() {
  if (!text)
    return;
  char work[kSelectorExamined + 1];
  const size_t length = strnlen(text, kSelectorExamined);
  std::memcpy(work, text, length);
  work[length] = 0;

  size_t cut = length;
  for (size_t i = 0; i < length; ++i) {
    const char ch = work[i];
    if (ch == '.' || ch == '#' || ch == ':') {
      m_nPartKind = ch == '.' ? emPartClass : (ch == '#' ? emPartId : emPartPseudo);
      m_strPartText = work + i + 1;
      cut = i;
      break;
    }
    // Read as a signed byte on purpose: blanks, control bytes and every byte
    // of 128 and above end the element name.
    if (static_cast<signed char>(ch) <= 32) {
      cut = i;
      break;
    }
  }
  work[cut] = 0;
  m_strElementName = work;
  if (!m_strElementName.IsEmpty()) {
    CHtmlTagItem tag(m_strElementName.GetString());
    m_dwMjrType = tag.GetMjrType();
    m_dwTagId = tag.GetTagId();
  }
}

CCssStyleSelectors::CSelector::~CSelector() = default;

int CCssStyleSelectors::CSelector::Copy(const CSelector* other) {
  if (!other)
    return 0;
  m_strElementName = other->m_strElementName;
  m_dwMjrType = other->m_dwMjrType;
  m_dwTagId = other->m_dwTagId;
  m_strPartText = other->m_strPartText;
  m_nPartKind = other->m_nPartKind;
  return 1;
}

int CCssStyleSelectors::CSelector::Compare(const CSelector* other) const {
  if (!other)
    return 0;
  return m_dwMjrType == other->m_dwMjrType && m_dwTagId == other->m_dwTagId &&
         m_nPartKind == other->m_nPartKind && m_strElementName == other->m_strElementName &&
         m_strPartText == other->m_strPartText;
}

// ---- the chain ----

CCssStyleSelectors::CCssStyleSelectors() = default;

CCssStyleSelectors::~CCssStyleSelectors() { Default(); }

int CCssStyleSelectors::Default() {
  for (int i = 0; i < m_arrSelectors.GetSize(); ++i)
    delete m_arrSelectors[i];
  m_arrSelectors.RemoveAll();
  return 1;
}

int CCssStyleSelectors::Analyse(const char* text) {
  if (!text || !*text)
    return 0;
  unsigned char work[kChainExamined + 1];
  const size_t length = strnlen(text, kChainExamined);
  std::memcpy(work, text, length);
  work[length] = 0;
  unsigned char* const end = work + length;
  unsigned char* p = work;
  while (p < end) {
    unsigned char* s = const_cast<unsigned char*>(CCssPack::CssSkipSpaces(p, end, 1));
    unsigned char* q = const_cast<unsigned char*>(CCssPack::CssSkipAny(s, end, kCssFlagsValue));
    if (q <= s)
      break;
    // Ends the run in place; the byte it overwrites (a blank or the end)
    // belongs to no selector.
    *q = 0;
    m_arrSelectors.Add(new CSelector(reinterpret_cast<const char*>(s)));
    p = q + 1;
  }
  return 1;
}

int CCssStyleSelectors::Copy(const CCssStyleSelectors* other) {
  if (!other)
    return 0;
  if (other == this) {
    const int n = m_arrSelectors.GetSize();
    for (int i = 0; i < n; ++i) {
      CSelector* copy = new CSelector();
      copy->Copy(m_arrSelectors[i]);
      m_arrSelectors.Add(copy);
    }
    return 1;
  }
  for (int i = 0; i < other->m_arrSelectors.GetSize(); ++i) {
    CSelector* copy = new CSelector();
    copy->Copy(other->m_arrSelectors[i]);
    m_arrSelectors.Add(copy);
  }
  return 1;
}

int CCssStyleSelectors::Compare(const CCssStyleSelectors* other) const {
  if (!other || other->m_arrSelectors.GetSize() != m_arrSelectors.GetSize())
    return 0;
  for (int i = 0; i < m_arrSelectors.GetSize(); ++i)
    if (!m_arrSelectors[i]->Compare(other->m_arrSelectors[i]))
      return 0;
  return 1;
}

int CCssStyleSelectors::Compare(const CSelector* selector) const {
  if (!selector || m_arrSelectors.GetSize() != 1)
    return 0;
  return m_arrSelectors[0]->Compare(selector);
}

CCssStyleSelectors::CSelector* CCssStyleSelectors::GetAt(int index) const {
  if (index < 0 || index >= m_arrSelectors.GetSize())
    return nullptr;
  return m_arrSelectors[index];
}

CCssStyleSelectors::CSelector* CCssStyleSelectors::GetLast() const {
  return GetAt(m_arrSelectors.GetSize() - 1);
}

}  // namespace telvanix
