#include "telvanix/css/style_values.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "telvanix/css/css_pack.h"
#include "telvanix/foundation/color_names.h"
#include "telvanix/foundation/hash_fold.h"
#include "telvanix/foundation/keyword_map.h"
#include "telvanix/foundation/text_utils.h"

namespace telvanix {

namespace {

// Number and unit buffers keep this many characters; further characters
// overwrite the last one.
constexpr int kNumberBufferLength = 14;

struct UnitRow {
  const char* text;
  CSttNumber::EmUnitType unit;
  const char* format;
};

// Units in the order they are matched, with the printf format each prints with.
constexpr UnitRow kUnitTable[] = {
    {"pt", CSttNumber::emUnitPt, "%.fpt"},      {"pc", CSttNumber::emUnitPc, "%.fpc"},
    {"in", CSttNumber::emUnitIn, "%.2fin"},     {"cm", CSttNumber::emUnitCm, "%.2fcm"},
    {"mm", CSttNumber::emUnitMm, "%.2fmm"},     {"px", CSttNumber::emUnitPx, "%.fpx"},
    {"%", CSttNumber::emUnitPercent, "%.f%%"},  {"ex", CSttNumber::emUnitEx, "%.fex"},
    {"em", CSttNumber::emUnitEm, "%.fem"},      {"en", CSttNumber::emUnitEn, "%.fen"},
};

const char* UnitFormat(CSttNumber::EmUnitType unit) {
  if (unit == CSttNumber::emUnitNone)
    return "%.f";
  for (const UnitRow& row : kUnitTable)
    if (row.unit == unit)
      return row.format;
  return nullptr;
}

// Appends to a bounded buffer: once full, the last slot is overwritten.
void PutBounded(char* buffer, int& length, char ch) {
  if (length < kNumberBufferLength)
    buffer[length++] = ch;
  else
    buffer[kNumberBufferLength - 1] = ch;
}

// The product is formed in double precision from the single-precision
// factors, then truncated toward zero; out-of-range results are clamped so
// the conversion stays defined.
int TruncateToInt(double value) {
  if (std::isnan(value))
    return 0;
  if (value >= 2147483647.0)
    return INT32_MAX;
  if (value <= -2147483648.0)
    return INT32_MIN;
  return static_cast<int>(value);
}

constexpr float kTwentieth = 0.05f;
constexpr float kHundredth = 0.01f;

bool IsHexDigit(char ch) {
  return (ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'f') || (ch >= 'A' && ch <= 'F');
}

int HexValue(char ch) {
  if (ch >= '0' && ch <= '9')
    return ch - '0';
  if (ch >= 'a' && ch <= 'f')
    return ch - 'a' + 10;
  return ch - 'A' + 10;
}

// "#rgb", "#rrggbb" or the same without "#"; anything after the digits is
// ignored. 0 when the digit count is neither 3 nor 6.
int ParseHexColor(const char* text, COLORREF& color) {
  const char* p = text;
  if (*p == '#')
    ++p;
  int count = 0;
  while (IsHexDigit(p[count]))
    ++count;
  int r, g, b;
  if (count == 3) {
    r = HexValue(p[0]) * 17;
    g = HexValue(p[1]) * 17;
    b = HexValue(p[2]) * 17;
  } else if (count == 6) {
    r = HexValue(p[0]) * 16 + HexValue(p[1]);
    g = HexValue(p[2]) * 16 + HexValue(p[3]);
    b = HexValue(p[4]) * 16 + HexValue(p[5]);
  } else {
    return 0;
  }
  color = RGB(static_cast<BYTE>(r), static_cast<BYTE>(g), static_cast<BYTE>(b));
  return 1;
}

// rgb(r,g,b) with integers or percentages. Shorter texts are not checked
// for the "rgb(" prefix: the first four characters are skipped regardless.
int ParseRgbNotation(const char* text, COLORREF& color) {
  const std::size_t length = std::strlen(text);
  if (length > 11 && strncasecmp(text, "rgb(", 4) != 0)
    return 0;
  if (length < 4)
    return 0;
  const char* p = text + 4;
  int component[3] = {-1, -1, -1};
  bool percent = false;
  for (int i = 0; i < 3; ++i) {
    if (*p == '\0')
      return 0;
    component[i] = std::atoi(p);
    while (*p && *p != ',') {
      if (i == 0 && *p == '%')
        percent = true;
      ++p;
    }
    if (*p == ',')
      ++p;
  }
  BYTE bytes[3];
  for (int i = 0; i < 3; ++i) {
    if (component[i] == -1)
      return 0;
    // A percentage far past 100 must not overflow the conversion.
    int value = percent ? TruncateToInt(component[i] * 255.0 * kHundredth) : component[i];
    bytes[i] = static_cast<BYTE>(value & 0xFF);
  }
  color = RGB(bytes[0], bytes[1], bytes[2]);
  return 1;
}

// Case-blind lookup in the colour-name keyword table.
int LookUpColorName(const char* text, COLORREF& color) {
  int tableBytes = 0;
  QuickMapStringToValueItem* table = GetColorNameKeywordTable(&tableBytes);
  const int value = QuickMapStringToValue(table, tableBytes, text, 0);
  if (value == -1)
    return 0;
  color = static_cast<COLORREF>(value);
  return 1;
}

bool IsBlankText(const char* text) {
  return CCssPack::CssFetchFirstAny(reinterpret_cast<const unsigned char*>(text), nullptr, 0).IsEmpty();
}

}  // namespace

// ---------------------------------------------------------------------------
// CSttNumber

CSttNumber::CSttNumber() { Default(); }

CSttNumber::CSttNumber(const char* text) { Assign(text); }

CSttNumber::CSttNumber(float number, EmUnitType unit, EmSignType sign) { Assign(number, unit, sign); }

CSttNumber::CSttNumber(const CSttNumber& other) { Copy(&other); }

CSttNumber& CSttNumber::operator=(const CSttNumber& other) {
  Copy(&other);
  return *this;
}

int CSttNumber::Assign(const char* text) {
  Default();
  return Analyse(text);
}

int CSttNumber::Assign(unsigned char* text) { return Assign(reinterpret_cast<const char*>(text)); }

int CSttNumber::Assign(float number, EmUnitType unit, EmSignType sign) {
  (void)unit;  // Deliberately not stored: only text and Copy carry a unit.
  Default();
  m_fNumber = sign != emSignNone ? number : std::fabs(number);
  return 1;
}

int CSttNumber::Default() {
  m_fNumber = 0.0f;
  m_emUnit = emUnitNone;
  m_emSign = emSignNone;
  return 0;
}

int CSttNumber::IsDefault() const {
  CSttNumber fresh;
  return Compare(&fresh);
}

int CSttNumber::Copy(const CSttNumber* other) {
  if (!other)
    return 0;
  m_fNumber = other->m_fNumber;
  m_emUnit = other->m_emUnit;
  m_emSign = other->m_emSign;
  return 1;
}

int CSttNumber::Compare(const CSttNumber* other) const {
  if (!other)
    return 0;
  return m_fNumber == other->m_fNumber && m_emUnit == other->m_emUnit && m_emSign == other->m_emSign;
}

int CSttNumber::Analyse(const char* text) {
  if (!text || !*text)
    return 0;
  const CString token = CCssPack::CssFetchFirstAny(reinterpret_cast<const unsigned char*>(text), nullptr, 0);
  if (token.IsEmpty())
    return 0;
  const char* p = token;
  if (*p == '+') {
    m_emSign = emSignPlus;
    ++p;
  } else if (*p == '-') {
    m_emSign = emSignMinus;
    ++p;
  }
  if (*p < '0' || *p > '9')
    return 0;

  char number[kNumberBufferLength + 1];
  char unit[kNumberBufferLength + 1];
  int numberLength = 0;
  int unitLength = 0;
  for (; *p && *p != ' ' && *p != '\t' && *p != '\r' && *p != '\n' && *p != '/'; ++p) {
    // Digits after unit letters still belong to the number: "12px3" is 123px.
    if ((*p >= '0' && *p <= '9') || *p == '.')
      PutBounded(number, numberLength, *p);
    else
      PutBounded(unit, unitLength, *p);
  }
  number[numberLength] = '\0';
  unit[unitLength] = '\0';

  m_fNumber = static_cast<float>(std::atof(number));
  m_emUnit = emUnitNone;
  if (unitLength > 0) {
    for (int i = 0; i < unitLength; ++i)
      if (unit[i] >= 'A' && unit[i] <= 'Z')
        unit[i] = static_cast<char>(unit[i] - 'A' + 'a');
    m_emUnit = emUnitUnknown;
    for (const UnitRow& row : kUnitTable) {
      if (strcasecmp(unit, row.text) == 0) {
        m_emUnit = row.unit;
        break;
      }
    }
  }
  return 1;
}

const CSttNumber& CSttNumber::operator+=(CSttNumber& other) {
  if (m_emUnit == other.m_emUnit) {
    // This sign is left as it is: relative adjustments accumulate onto a size.
    m_fNumber += other.m_emSign == emSignMinus ? -other.m_fNumber : other.m_fNumber;
    return *this;
  }
  const std::int64_t sum = static_cast<std::int64_t>(other.GetPoints(-1, 75, 1200)) + GetPoints(-1, 75, 1200);
  m_emUnit = emUnitPt;
  m_fNumber = static_cast<float>(sum < 0 ? -sum : sum);
  m_emSign = sum < 0 ? emSignMinus : emSignNone;
  return *this;
}

float CSttNumber::GetNumEx() const { return m_emSign == emSignMinus ? -m_fNumber : m_fNumber; }

int CSttNumber::IsAbsoultValue() const { return m_emUnit < 100; }

int CSttNumber::IsRelativeValue() const { return m_emUnit >= 100 && m_emUnit < 1000; }

int CSttNumber::GetPoints(int percentBase, int pixelScale, int emScale) const {
  const double v = GetNumEx();
  const double twentieth = kTwentieth;
  const double hundredth = kHundredth;
  switch (m_emUnit) {
    case emUnitNone:
    case emUnitPt:
      return TruncateToInt(v);
    case emUnitPc:
      return TruncateToInt(v * 240.0 * twentieth);
    case emUnitIn:
      return TruncateToInt(v * 1440.0 * twentieth);
    case emUnitCm:
      return TruncateToInt(v * static_cast<double>(566.928f) * twentieth);
    case emUnitMm:
      return TruncateToInt(v * static_cast<double>(56.6928f) * twentieth);
    case emUnitPx:
      if (pixelScale == -1)
        return TruncateToInt(v * 15.0 * twentieth);
      return TruncateToInt(pixelScale * v * hundredth);
    case emUnitPercent:
      if (percentBase == -1)
        return 0;
      return TruncateToInt(percentBase * v * hundredth);
    case emUnitEx:
    case emUnitEm:
    case emUnitEn:
      // ex and en are taken as em on purpose.
      if (emScale == -1)
        return 0;
      return TruncateToInt(emScale * v * hundredth);
    default:
      return 0;
  }
}

CString CSttNumber::GetPrintableString() const {
  CString text;
  if (IsDefault())
    return text;
  if (m_emSign == emSignPlus)
    text = "+";
  else if (m_emSign == emSignMinus)
    text = "-";
  const char* format = UnitFormat(m_emUnit);
  if (format)
    text.AppendFormat(format, static_cast<double>(m_fNumber));
  return text;
}

// ---------------------------------------------------------------------------
// CSttColor

CSttColor::CSttColor() { Default(); }

CSttColor::CSttColor(COLORREF color) { Assign(color); }

CSttColor::CSttColor(const char* text) { Assign(text); }

CSttColor::CSttColor(const CSttColor& other) : m_nKind(other.m_nKind), m_crColor(other.m_crColor) {}

CSttColor& CSttColor::operator=(const CSttColor& other) {
  Copy(&other);
  return *this;
}

int CSttColor::Assign(COLORREF color) {
  Default();
  m_nKind = emColorValue;
  m_crColor = color;
  return 1;
}

int CSttColor::Assign(const char* text) {
  Default();
  return Analyse(text);
}

int CSttColor::Assign(unsigned char* text) { return Assign(reinterpret_cast<const char*>(text)); }

int CSttColor::Default() {
  m_nKind = emColorUnset;
  m_crColor = ms_nNoColor;
  return 1;
}

int CSttColor::IsDefault() const {
  CSttColor fresh;
  return Compare(&fresh);
}

int CSttColor::Copy(const CSttColor* other) {
  if (!other)
    return 0;
  m_nKind = other->m_nKind;
  m_crColor = other->m_crColor;
  return 1;
}

int CSttColor::Compare(const CSttColor* other) const {
  if (!other)
    return 0;
  return m_crColor == other->m_crColor;
}

int CSttColor::Analyse(const char* text) {
  if (!text || !*text || IsBlankText(text))
    return 0;
  COLORREF color = ms_nNoColor;
  if (ParseHexColor(text, color)) {
    m_nKind = emColorValue;
    m_crColor = color;
    return 1;
  }
  if (*text != '#' && LookUpColorName(text, color)) {
    m_nKind = emColorName;
    m_crColor = color;
    return 1;
  }
  // rgb(...) is read but, as the stored form has always been, kept as an
  // unrecognised value: what the components say is dropped.
  (void)ParseRgbNotation(text, color);
  m_nKind = emColorUnknown;
  m_crColor = ms_nNoColor;
  return 1;
}

CString CSttColor::GetPrintableString() const {
  CString text;
  if (IsDefault())
    return text;
  if (m_nKind == emColorValue || m_nKind == emColorName) {
    ColorToColorName(m_crColor, text);
  } else if (m_nKind == emColorRgb) {
    text.Format("rgb(%d,%d,%d)", GetRValue(m_crColor), GetGValue(m_crColor), GetBValue(m_crColor));
  }
  return text;
}

// ---------------------------------------------------------------------------
// CSttUrl

CSttUrl::CSttUrl() { Default(); }

CSttUrl::CSttUrl(const char* text) { Assign(text); }

CSttUrl::CSttUrl(const CSttUrl& other) : m_nKind(other.m_nKind), m_strName(other.m_strName) {}

CSttUrl& CSttUrl::operator=(const CSttUrl& other) {
  Copy(&other);
  return *this;
}

int CSttUrl::Assign(const char* text) {
  Default();
  return Analyse(text);
}

int CSttUrl::Assign(unsigned char* text) { return Assign(reinterpret_cast<const char*>(text)); }

int CSttUrl::Default() {
  m_nKind = emUrlUnset;
  m_strName.Empty();
  return 1;
}

int CSttUrl::IsDefault() const { return m_strName.IsEmpty(); }

int CSttUrl::Copy(const CSttUrl* other) {
  if (!other)
    return 0;
  m_nKind = other->m_nKind;
  m_strName = other->m_strName;
  return 1;
}

int CSttUrl::Compare(const CSttUrl* other) const {
  if (!other)
    return 0;
  // Two empty names are equal, though the fold comparison is for names.
  if (m_strName.IsEmpty() || other->m_strName.IsEmpty())
    return m_strName.IsEmpty() && other->m_strName.IsEmpty();
  return QuickCompareStringNoCase(m_strName, other->m_strName) ? 1 : 0;
}

int CSttUrl::Analyse(const char* text) {
  if (!text || !*text)
    return 0;
  const std::size_t length = std::strlen(text);
  if (length <= 6 || strncasecmp(text, "url(", 4) != 0) {
    m_nKind = emUrlBare;
    m_strName = text;
  } else {
    m_nKind = emUrlFunction;
    m_strName = text + 4;
    const int close = m_strName.ReverseFind(')');
    if (close >= 0)
      m_strName.SetAt(close, ' ');
  }
  m_strName.Replace('\'', ' ');
  m_strName.Replace('"', ' ');
  TrimLeftAndRight(m_strName);
  return 1;
}

CString CSttUrl::GetPrintableString() const {
  if (IsDefault())
    return CString();
  if (m_nKind == emUrlFunction)
    return MakeNormalizedUrl(m_strName, 0);
  return m_strName;
}

CString CSttUrl::MakeNormalizedUrl(const char* name, char quote) {
  CString path(name);
  path.Replace('\\', '/');
  CString text;
  if (quote)
    text.Format("url(%c%s%c)", quote, static_cast<const char*>(path), quote);
  else
    text.Format("url(%s)", static_cast<const char*>(path));
  return text;
}

}  // namespace telvanix
