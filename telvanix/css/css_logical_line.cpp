#include "telvanix/css/css_logical_line.h"

#include <cstring>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/style_values.h"

namespace telvanix {

namespace {

CString TextOfLength(const char* text, int length) {
  if (!text)
    return CString();
  if (length < 0)
    return CString(text);
  return CString(text, length);
}

}  // namespace

CCssLogicalLine::CCssLogicalLine(EmLineType type) : m_nLineType(type), m_bRemoved(0) {}

CCssLogicalLine::~CCssLogicalLine() = default;

int CCssLogicalLine::Default() {
  m_strIndent.Empty();
  m_bRemoved = 0;
  return 1;
}

int CCssLogicalLine::Copy(const CCssLogicalLine* other) {
  if (!other)
    return 0;
  m_strIndent = other->m_strIndent;
  m_bRemoved = other->m_bRemoved;
  return 1;
}

// ---- @import ----

CCssLglAtImport::CCssLglAtImport(const char* text, int length)
    : CCssLogicalLine(emLineAtImport), m_strOriginal(TextOfLength(text, length)), m_bAnalysed(0) {}

CCssLglAtImport::~CCssLglAtImport() = default;

int CCssLglAtImport::Analyse() {
  m_bAnalysed = 1;
  return 1;
}

CString CCssLglAtImport::GetPrintableString(CCssPack*) { return m_strOriginal; }

int CCssLglAtImport::Copy(const CCssLglAtImport* other) {
  if (!other)
    return 0;
  CCssLogicalLine::Copy(other);
  m_strOriginal = other->m_strOriginal;
  return 1;
}

CString CCssLglAtImport::GetImportCssUrl() {
  if (m_strImportUrl.IsEmpty() && m_strOriginal.GetLength() > 5) {
    const unsigned char* begin = reinterpret_cast<const unsigned char*>(m_strOriginal.GetString());
    const unsigned char* end = begin + m_strOriginal.GetLength();
    const unsigned char* p = CCssPack::CssSkipAtKeyword(begin, end);
    p = CCssPack::CssSkipSpaces(p, end, 1);
    const unsigned char* q = CCssPack::CssSkipAny(p, end, kCssFlagsAtPrelude);
    if (q > p) {
      CSttUrl url;
      url.Assign(CString(reinterpret_cast<const char*>(p), static_cast<int>(q - p)).GetString());
      m_strImportUrl = url.GetUrlName();
    }
  }
  return m_strImportUrl;
}

// ---- other at-rules ----

CCssLglAtUnknown::CCssLglAtUnknown(const char* text, int length)
    : CCssLogicalLine(emLineAtUnknown), m_strOriginal(TextOfLength(text, length)), m_bAnalysed(0) {}

CCssLglAtUnknown::~CCssLglAtUnknown() = default;

int CCssLglAtUnknown::Analyse() {
  m_bAnalysed = 1;
  return 1;
}

CString CCssLglAtUnknown::GetPrintableString(CCssPack*) { return m_strOriginal; }

int CCssLglAtUnknown::Copy(const CCssLglAtUnknown* other) {
  if (!other)
    return 0;
  CCssLogicalLine::Copy(other);
  m_strOriginal = other->m_strOriginal;
  return 1;
}

}  // namespace telvanix
