#include "telvanix/css/style_property.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/internal/css_scan_core.h"
#include "telvanix/css/css_scanner.h"
#include "telvanix/css/style_format.h"
#include "telvanix/foundation/text_utils.h"

namespace telvanix {

namespace {
using Byte = unsigned char;
// The blanks a name or value is trimmed of (as TrimLeftAndRight).
constexpr char kTrimmed[] = " \t\n\r\a";
inline bool IsTrimmed(char ch) { return ch == ' ' || ch == '\t' || ch == '\n' || ch == '\r' || ch == '\a'; }
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
  AnalyseRange(p, p + std::strlen(reinterpret_cast<const char*>(text)));
  return 1;
}

void CCssStyleProperty::AnalyseRange(const Byte* p, const Byte* const end) {
  using namespace css_scan;
  const UINT cp = LeadCodePage();
  // Reused for every declaration, so a body costs no temporary strings.
  std::string name;
  std::string value;
  while (p < end) {
    p = SkipSpaces(p, end, true);
    if (p >= end || *p == '\0')
      break;
    const Byte* nameText;
    const Byte* nameEnd = SkipAnyRun(p, end, kCssFlagsPropertyName, cp, nameText);
    name.assign(reinterpret_cast<const char*>(p), static_cast<size_t>(nameText - p));
    p = SkipSpaces(nameEnd, end, true);
    // A declaration without ":" ends the list; the rest is not read.
    if (p >= end || *p != ':')
      break;
    ++p;

    value.clear();
    while (p < end) {
      p = SkipSpaces(p, end, true);
      if (p >= end || *p == '\0')
        break;
      if (*p == ';') {
        ++p;
        break;
      }
      const Byte* q;
      if (*p == '{') {
        q = SkipBlock(p, end, cp);
      } else if (*p == '@') {
        q = CCssPack::CssSkipAtKeyword(p, end);
      } else {
        const Byte* runText;
        q = SkipAnyRun(p, end, emCssStopSemicolon, cp, runText);
        if (q > p) {
          if (!value.empty())
            value += ' ';
          value.append(reinterpret_cast<const char*>(p), static_cast<size_t>(runText - p));
        }
      }
      p = q > p ? q : p + 1;
    }
    SetPropertyText(name, value);
  }
}

CString CCssStyleProperty::NormalizeName(const char* name) {
  CString text(name);
  text.MakeLower();
  TrimLeftAndRight(text);
  return text;
}

int CCssStyleProperty::FindPair(const CString& name) const { return FindPair(name.GetString(), name.GetLength()); }

int CCssStyleProperty::FindPair(const char* name, int length) const {
  for (int i = 0; i < m_arrPairs.GetSize(); ++i) {
    const CPropertyPair* pair = m_arrPairs[i];
    // Names equal ignoring case have equal lengths.
    if (pair && pair->GetName().GetLength() == length && pair->GetName().CompareNoCase(name) == 0)
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

void CCssStyleProperty::SetPropertyText(std::string& name, std::string& value) {
  if (value.empty()) {
    DeleteProperty(name.c_str());
    return;
  }
  DropStyleFormat();
  // As SetProperty: the name lower-cased and trimmed, the value de-quoted,
  // both in place in the reader's buffers.
  for (char& ch : name)
    ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
  const size_t nameFirst = name.find_first_not_of(kTrimmed);
  if (nameFirst == std::string::npos) {
    name.clear();
  } else {
    name.resize(name.find_last_not_of(kTrimmed) + 1);
    name.erase(0, nameFirst);
  }
  size_t first = 0;
  size_t length = value.size();
  DeQuoteRange(value.c_str(), first, length);
  value.resize(first + length);
  const char* text = value.c_str() + first;

  const int index = FindPair(name.c_str(), static_cast<int>(name.size()));
  if (index >= 0)
    m_arrPairs[index]->SetValue(text);
  else
    m_arrPairs.Add(new CPropertyPair(name.c_str(), text));
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

void CCssStyleProperty::DeQuoteRange(const char* text, size_t& first, size_t& length) {
  // Trimmed of the blanks TrimLeftAndRight takes.
  size_t b = first;
  size_t e = first + length;
  while (b < e && IsTrimmed(text[b]))
    ++b;
  while (e > b && IsTrimmed(text[e - 1]))
    --e;
  first = b;
  length = e - b;
  if (length < 2)
    return;
  const char quote = text[b];
  if ((quote == '\'' || quote == '"') && text[e - 1] == quote) {
    // Only a single enclosing pair is removed: 'a' 'b' keeps its quotes.
    if (std::count(text + b, text + e, quote) == 2) {
      first = b + 1;
      length -= 2;
    }
  }
}

CString CCssStyleProperty::DeQuotePairValue(const char* text, int length) {
  if (!text)
    return CString();
  const size_t available = std::strlen(text);
  size_t first = 0;
  size_t count = length < 0 || static_cast<size_t>(length) > available ? available : static_cast<size_t>(length);
  DeQuoteRange(text, first, count);
  return CString(text + first, static_cast<int>(count));
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
