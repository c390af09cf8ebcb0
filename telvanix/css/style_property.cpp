#include "telvanix/css/style_property.h"

#include <cstring>
#include <strings.h>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/css_scanner.h"
#include "telvanix/css/style_format.h"
#include "telvanix/css/value_runs.h"
#include "telvanix/foundation/text_utils.h"

namespace telvanix {

namespace {
using Byte = unsigned char;
}  // namespace

CCssStyleProperty::CPropertyPair::~CPropertyPair() = default;

CCssStyleProperty::CCssStyleProperty() : m_pStyleFormat(nullptr) { m_arrPairs.SetGrowBy(4); }

CCssStyleProperty::CCssStyleProperty(const CCssStyleProperty& other) : CCssStyleProperty() { Copy(&other); }

CCssStyleProperty& CCssStyleProperty::operator=(const CCssStyleProperty& other) {
  Copy(&other);
  return *this;
}

CCssStyleProperty::~CCssStyleProperty() { Default(); }

void CCssStyleProperty::DropStyleFormat() {
  delete m_pStyleFormat;
  m_pStyleFormat = nullptr;
}

int CCssStyleProperty::Default() {
  for (int i = 0; i < m_arrPairs.GetSize(); ++i)
    delete m_arrPairs[i];
  m_arrPairs.RemoveAll();
  m_arrPairs.SetGrowBy(4);
  DropStyleFormat();
  return 1;
}

int CCssStyleProperty::Copy(const CCssStyleProperty* other) {
  if (!other)
    return 0;
  if (other == this)
    return 1;
  Default();
  return Concat(other);
}

int CCssStyleProperty::Concat(const CCssStyleProperty* other) {
  if (!other)
    return 0;
  DropStyleFormat();
  // Counted first, so that concatenating a list onto itself doubles it once.
  const int count = other->m_arrPairs.GetSize();
  for (int i = 0; i < count; ++i) {
    const CPropertyPair* pair = other->m_arrPairs[i];
    if (pair)
      m_arrPairs.Add(new CPropertyPair(pair->GetName(), pair->GetValue()));
  }
  return 1;
}

int CCssStyleProperty::Analyse(const char* text) {
  return Analyse(reinterpret_cast<unsigned char*>(const_cast<char*>(text)));
}

int CCssStyleProperty::Analyse(unsigned char* text) {
  if (!text || !*text)
    return 1;
  const Byte* p = text;
  const Byte* const end = p + std::strlen(reinterpret_cast<const char*>(text));
  while (p < end) {
    p = CCssPack::CssSkipSpaces(p, end, 1);
    if (p >= end || *p == '\0')
      break;
    const Byte* nameEnd = CCssPack::CssSkipAny(p, end, kCssFlagsPropertyName);
    const CString name(reinterpret_cast<const char*>(p), static_cast<int>(CssRunTextEnd(p, nameEnd) - p));
    p = CCssPack::CssSkipSpaces(nameEnd, end, 1);
    // A declaration without ":" ends the list; the rest is not read.
    if (p >= end || *p != ':')
      break;
    ++p;

    CString value;
    while (p < end) {
      p = CCssPack::CssSkipSpaces(p, end, 1);
      if (p >= end || *p == '\0')
        break;
      if (*p == ';') {
        ++p;
        break;
      }
      const Byte* q;
      if (*p == '{') {
        q = CCssPack::CssSkipBlock(p, end);
      } else if (*p == '@') {
        q = CCssPack::CssSkipAtKeyword(p, end);
      } else {
        q = CCssPack::CssSkipAny(p, end, emCssStopSemicolon);
        if (q > p) {
          if (!value.IsEmpty())
            value += ' ';
          value += CString(reinterpret_cast<const char*>(p), static_cast<int>(CssRunTextEnd(p, q) - p));
        }
      }
      p = q > p ? q : p + 1;
    }
    SetProperty(name, value);
  }
  return 1;
}

CString CCssStyleProperty::NormalizeName(const char* name) {
  CString text(name);
  text.MakeLower();
  TrimLeftAndRight(text);
  return text;
}

int CCssStyleProperty::FindPair(const CString& name) const {
  for (int i = 0; i < m_arrPairs.GetSize(); ++i) {
    const CPropertyPair* pair = m_arrPairs[i];
    if (pair && pair->GetName().CompareNoCase(name) == 0)
      return i;
  }
  return -1;
}

int CCssStyleProperty::SetProperty(const char* name, const char* value) {
  if (!name)
    return 0;
  if (!value || !*value)
    return DeleteProperty(name);
  DropStyleFormat();
  const CString key = NormalizeName(name);
  const CString text = DeQuotePairValue(value, -1);
  const int index = FindPair(key);
  if (index >= 0)
    m_arrPairs[index]->SetValue(text);
  else
    m_arrPairs.Add(new CPropertyPair(key, text));
  return 1;
}

int CCssStyleProperty::GetProperty(const char* name, CString& value) const {
  if (!name)
    return 0;
  const int index = FindPair(NormalizeName(name));
  if (index < 0)
    return 0;
  value = m_arrPairs[index]->GetValue();
  return 1;
}

int CCssStyleProperty::DeleteProperty(const char* name) {
  if (!name)
    return 0;
  const int index = FindPair(NormalizeName(name));
  if (index >= 0) {
    delete m_arrPairs[index];
    m_arrPairs.RemoveAt(index);
  }
  DropStyleFormat();
  return 1;
}

int CCssStyleProperty::GetFirstPropertyPair(int& index) const {
  index = 0;
  return m_arrPairs.GetSize() > 0 ? 1 : 0;
}

CCssStyleProperty::CPropertyPair* CCssStyleProperty::GetNextPropertyPair(int& index) const {
  if (index < 0 || index >= m_arrPairs.GetSize())
    return nullptr;
  return m_arrPairs[index++];
}

int CCssStyleProperty::GetPropertyCount() const { return m_arrPairs.GetSize(); }

CString CCssStyleProperty::GetPrintableString(const char* indent) const {
  CString text;
  const bool hasIndent = indent && *indent;
  for (int i = 0; i < m_arrPairs.GetSize(); ++i) {
    const CPropertyPair* pair = m_arrPairs[i];
    if (!pair || pair->GetValue().IsEmpty())
      continue;
    if (hasIndent) {
      text += "\r\n";
      text += indent;
    }
    text += pair->GetName();
    text += ':';
    text += QuotePairValue(pair->GetValue());
    text += "; ";
  }
  return text;
}

CCssStyleFormat* CCssStyleProperty::GetStyleFormat() {
  if (!m_pStyleFormat) {
    m_pStyleFormat = new CCssStyleFormat;
    for (int i = 0; i < m_arrPairs.GetSize(); ++i) {
      const CPropertyPair* pair = m_arrPairs[i];
      if (pair)
        m_pStyleFormat->AnalyseCssProperty(pair->GetName(), pair->GetValue());
    }
  }
  return m_pStyleFormat;
}

CString CCssStyleProperty::QuotePairValue(const char* value) {
  // Values are written as stored: quotes kept from the source are enough,
  // and none are ever added, whatever the quote counts are.
  CString text(value);
  TrimLeftAndRight(text);
  return text;
}

CString CCssStyleProperty::DeQuotePairValue(const char* text, int length) {
  if (!text)
    return CString();
  const int available = static_cast<int>(std::strlen(text));
  CString value(text, length < 0 || length > available ? available : length);
  TrimLeftAndRight(value);
  const int n = value.GetLength();
  if (n < 2)
    return value;
  const char first = value[0];
  const char last = value[n - 1];
  if ((first == '\'' || first == '"') && last == first) {
    int quotes = 0;
    for (int i = 0; i < n; ++i)
      if (value[i] == first)
        ++quotes;
    // Only a single enclosing pair is removed: 'a' 'b' keeps its quotes.
    if (quotes == 2)
      return value.Mid(1, n - 2);
  }
  return value;
}

CString CCssStyleProperty::GetFileNameFromUrlPairValue(const char* value) {
  if (!value)
    return CString();
  if (strncasecmp(value, "url(", 4) != 0)
    return DeQuotePairValue(value, -1);
  const char* open = value + 3;
  const char* close = std::strrchr(value, ')');
  if (!close || close < open)
    return CString();
  return DeQuotePairValue(open + 1, static_cast<int>(close - open - 1));
}

}  // namespace telvanix
