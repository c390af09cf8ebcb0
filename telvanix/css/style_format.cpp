#include "telvanix/css/style_format.h"

#include <cstring>
#include <strings.h>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/css_scanner.h"
#include "telvanix/css/style_property.h"
#include "telvanix/css/value_runs.h"
#include "telvanix/foundation/text_utils.h"

namespace telvanix {

namespace {

using Byte = unsigned char;

const Byte* Begin(const char* text) { return reinterpret_cast<const Byte*>(text); }
const Byte* End(const char* text) { return reinterpret_cast<const Byte*>(text) + std::strlen(text); }

// The runs of a value, at most `max` of them; returns how many were cut.
int CutRuns(const char* text, CString* runs, int max) {
  const Byte* p = Begin(text);
  const Byte* end = End(text);
  int count = 0;
  CString run;
  while (count < max && CssNextValueRun(p, end, kCssFlagsValue, run))
    runs[count++] = run;
  return count;
}

bool IsOneOf(const CString& word, const char* const* words) {
  for (; *words; ++words)
    if (word.CompareNoCase(*words) == 0)
      return true;
  return false;
}

const char* const kRepeatWords[] = {"repeat", "repeat-x", "repeat-y", "no-repeat", nullptr};
const char* const kAttachmentWords[] = {"scroll", "fixed", nullptr};
const char* const kPositionWords[] = {"left", "center", "right", "top", "bottom", nullptr};

// A weight given as a number: 100, 200, ... 900 with no unit.
bool IsWeightNumber(const CString& word) {
  const CSttNumber number(word);
  if (number.GetUnitType() != CSttNumber::emUnitNone || number.GetSignType() != CSttNumber::emSignNone)
    return false;
  const float n = number.GetNum();
  return n >= 100.0f && n <= 900.0f && static_cast<int>(n) % 100 == 0 && static_cast<float>(static_cast<int>(n)) == n;
}

CString LowerTrimmed(const char* text) {
  CString value(text);
  TrimLeftAndRight(value);
  value.MakeLower();
  return value;
}

// The four sides from one to four values, in the usual top, right, bottom,
// left order: 1 = all, 2 = vertical/horizontal, 3 = top/horizontal/bottom.
int SideSource(int count, int side) {
  static const int kFrom[4][4] = {{0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, 1}, {0, 1, 2, 3}};
  return kFrom[count - 1][side];
}

constexpr CCssPropertyNames::EmPropertyNameId kMarginIds[4] = {
    CCssPropertyNames::emPropertyMarginTop, CCssPropertyNames::emPropertyMarginRight,
    CCssPropertyNames::emPropertyMarginBottom, CCssPropertyNames::emPropertyMarginLeft};
constexpr CCssPropertyNames::EmPropertyNameId kPaddingIds[4] = {
    CCssPropertyNames::emPropertyPaddingTop, CCssPropertyNames::emPropertyPaddingRight,
    CCssPropertyNames::emPropertyPaddingBottom, CCssPropertyNames::emPropertyPaddingLeft};
constexpr CCssPropertyNames::EmPropertyNameId kBorderWidthIds[4] = {
    CCssPropertyNames::emPropertyBorderTopWidth, CCssPropertyNames::emPropertyBorderRightWidth,
    CCssPropertyNames::emPropertyBorderBottomWidth, CCssPropertyNames::emPropertyBorderLeftWidth};
constexpr CCssPropertyNames::EmPropertyNameId kBorderColorIds[4] = {
    CCssPropertyNames::emPropertyBorderTopColor, CCssPropertyNames::emPropertyBorderRightColor,
    CCssPropertyNames::emPropertyBorderBottomColor, CCssPropertyNames::emPropertyBorderLeftColor};
constexpr CCssPropertyNames::EmPropertyNameId kBorderStyleIds[4] = {
    CCssPropertyNames::emPropertyBorderTopStyle, CCssPropertyNames::emPropertyBorderRightStyle,
    CCssPropertyNames::emPropertyBorderBottomStyle, CCssPropertyNames::emPropertyBorderLeftStyle};

// Reads into a fresh value and keeps it only when the text was accepted, so a
// rejected value leaves the earlier one in place.
template <class Value>
int AssignKept(Value& target, const char* text) {
  Value read;
  if (!read.Assign(text))
    return 0;
  target = read;
  return 1;
}

// Keeps the lowered, trimmed text; an empty one counts as not read.
int AssignLowerTrimmed(CString& target, const char* text) {
  target = LowerTrimmed(text);
  return target.IsEmpty() ? 0 : 1;
}

// One to four values spread over the four sides. Nothing is stored unless
// every value reads, so a bad shorthand leaves all sides as they were.
template <class Value, class Read, class Store>
int ReadFourSides(const char* text, Read read, Store store) {
  CString runs[4];
  const int count = CutRuns(text, runs, 4);
  if (count == 0)
    return 0;
  Value values[4]{};
  for (int i = 0; i < count; ++i)
    if (!read(runs[i], values[i]))
      return 0;
  for (int side = 0; side < CCssStyleFormat::emSideCount; ++side)
    store(side, values[SideSource(count, side)]);
  return 1;
}

const CSttNumber kUnsetNumber;
const CCssStyleFormat::CBorder kUnsetBorder;

}  // namespace

// ---------------------------------------------------------------------------
// CBorder

int CCssStyleFormat::CBorder::Default() {
  m_emWidth = emValueNone;
  m_numWidth.Default();
  m_clrColor.Default();
  m_emStyle = emValueNone;
  return 1;
}

int CCssStyleFormat::CBorder::IsDefault() const {
  return m_emWidth == emValueNone && m_numWidth.IsDefault() && m_clrColor.IsDefault() && m_emStyle == emValueNone;
}

int CCssStyleFormat::CBorder::Copy(const CBorder* other) {
  if (!other)
    return 0;
  m_emWidth = other->m_emWidth;
  m_numWidth = other->m_numWidth;
  m_clrColor = other->m_clrColor;
  m_emStyle = other->m_emStyle;
  return 1;
}

int CCssStyleFormat::CBorder::Compare(const CBorder* other) const {
  if (!other)
    return 0;
  return m_emWidth == other->m_emWidth && m_numWidth.Compare(&other->m_numWidth) &&
         m_clrColor.Compare(&other->m_clrColor) && m_emStyle == other->m_emStyle;
}

int CCssStyleFormat::CBorder::ConcatInner(const CBorder* other) {
  if (!other)
    return 0;
  if (other->m_emWidth != emValueNone) {
    m_emWidth = other->m_emWidth;
    m_numWidth = other->m_numWidth;
  }
  if (!other->m_clrColor.IsDefault() || other->m_clrColor.GetKind() != CSttColor::emColorUnset)
    m_clrColor = other->m_clrColor;
  if (other->m_emStyle != emValueNone)
    m_emStyle = other->m_emStyle;
  return 1;
}

// ---------------------------------------------------------------------------
// CCssStyleFormat: life cycle

CCssStyleFormat::CCssStyleFormat() { Default(); }

CCssStyleFormat::CCssStyleFormat(const CCssStyleFormat& other) : CRglObject(), CCssPropertyNames() {
  Default();
  Copy(&other);
}

CCssStyleFormat& CCssStyleFormat::operator=(const CCssStyleFormat& other) {
  Copy(&other);
  return *this;
}

CCssStyleFormat::~CCssStyleFormat() = default;

int CCssStyleFormat::Default() {
  m_dwSetMask[0] = m_dwSetMask[1] = m_dwSetMask[2] = 0;
  m_numFontSize.Default();
  m_strFontFamily.Empty();
  m_emFontWeight = emValueNone;
  m_numFontWeight.Default();
  m_emFontStyle = emValueNone;
  m_emFontVariant = emValueNone;
  m_numLineHeight.Default();
  m_clrColor.Default();
  m_clrBackgroundColor.Default();
  m_urlBackgroundImage.Default();
  m_strBackgroundRepeat.Empty();
  m_strBackgroundAttachment.Empty();
  m_strBackgroundPosition.Empty();
  m_numWordSpacing.Default();
  m_numLetterSpacing.Default();
  m_emTextDecoration = emValueNone;
  m_emVerticalAlign = emValueNone;
  m_numVerticalAlign.Default();
  m_emTextTransform = emValueNone;
  m_emTextAlign = emValueNone;
  m_numTextIndent.Default();
  for (int side = 0; side < emSideCount; ++side) {
    m_numMargin[side].Default();
    m_numPadding[side].Default();
    m_tBorder[side].Default();
  }
  m_strDisplay.Empty();
  m_strWhiteSpace.Empty();
  m_emListStyleType = emValueNone;
  m_urlListStyleImage.Default();
  m_emListStylePosition = emValueNone;
  return 1;
}

int CCssStyleFormat::IsDefault() const { return (m_dwSetMask[0] | m_dwSetMask[1] | m_dwSetMask[2]) == 0; }

int CCssStyleFormat::Copy(const CCssStyleFormat* other) {
  if (!other)
    return 0;
  if (other == this)
    return 1;
  // Only parsing changes a field, and it marks what it changes, so the
  // other's set properties are all there is to copy.
  Default();
  return ConcatInner(other);
}

void CCssStyleFormat::MarkSet(EmPropertyNameId id) {
  if (id >= 0 && id < 96)
    m_dwSetMask[id / 32] |= 1u << (id % 32);
}

int CCssStyleFormat::IsPropertySet(EmPropertyNameId id) const {
  if (id < 0 || id >= 96)
    return 0;
  return (m_dwSetMask[id / 32] >> (id % 32)) & 1u;
}

int CCssStyleFormat::ConcatInner(const CCssStyleFormat* other) {
  if (!other)
    return 0;
  if (other == this)
    return 1;
  for (int n = 1; n < 96; ++n) {
    const EmPropertyNameId id = static_cast<EmPropertyNameId>(n);
    if (!other->IsPropertySet(id))
      continue;
    MarkSet(id);
    switch (id) {
      case emPropertyFontSize: m_numFontSize = other->m_numFontSize; break;
      case emPropertyFontFamily: m_strFontFamily = other->m_strFontFamily; break;
      case emPropertyFontWeight:
        m_emFontWeight = other->m_emFontWeight;
        m_numFontWeight = other->m_numFontWeight;
        break;
      case emPropertyFontStyle: m_emFontStyle = other->m_emFontStyle; break;
      case emPropertyFontVariant: m_emFontVariant = other->m_emFontVariant; break;
      case emPropertyLineHeight: m_numLineHeight = other->m_numLineHeight; break;
      case emPropertyColor: m_clrColor = other->m_clrColor; break;
      case emPropertyBackgroundColor: m_clrBackgroundColor = other->m_clrBackgroundColor; break;
      case emPropertyBackgroundImage: m_urlBackgroundImage = other->m_urlBackgroundImage; break;
      case emPropertyBackgroundRepeat: m_strBackgroundRepeat = other->m_strBackgroundRepeat; break;
      case emPropertyBackgroundAttachment: m_strBackgroundAttachment = other->m_strBackgroundAttachment; break;
      case emPropertyBackgroundPosition: m_strBackgroundPosition = other->m_strBackgroundPosition; break;
      case emPropertyWordSpacing: m_numWordSpacing = other->m_numWordSpacing; break;
      case emPropertyLetterSpacing: m_numLetterSpacing = other->m_numLetterSpacing; break;
      case emPropertyTextDecoration: m_emTextDecoration = other->m_emTextDecoration; break;
      case emPropertyVerticalAlign:
        m_emVerticalAlign = other->m_emVerticalAlign;
        m_numVerticalAlign = other->m_numVerticalAlign;
        break;
      case emPropertyTextTransform: m_emTextTransform = other->m_emTextTransform; break;
      case emPropertyTextAlign: m_emTextAlign = other->m_emTextAlign; break;
      case emPropertyTextIndent: m_numTextIndent = other->m_numTextIndent; break;
      case emPropertyDisplay: m_strDisplay = other->m_strDisplay; break;
      case emPropertyWhiteSpace: m_strWhiteSpace = other->m_strWhiteSpace; break;
      case emPropertyListStyleType: m_emListStyleType = other->m_emListStyleType; break;
      case emPropertyListStyleImage: m_urlListStyleImage = other->m_urlListStyleImage; break;
      case emPropertyListStylePosition: m_emListStylePosition = other->m_emListStylePosition; break;
      default:
        for (int side = 0; side < emSideCount; ++side) {
          if (id == kMarginIds[side])
            m_numMargin[side] = other->m_numMargin[side];
          else if (id == kPaddingIds[side])
            m_numPadding[side] = other->m_numPadding[side];
          else if (id == kBorderWidthIds[side])
            m_tBorder[side].SetWidth(other->m_tBorder[side].GetWidthValue(), other->m_tBorder[side].GetWidth());
          else if (id == kBorderColorIds[side])
            m_tBorder[side].SetColor(other->m_tBorder[side].GetColor());
          else if (id == kBorderStyleIds[side])
            m_tBorder[side].SetStyle(other->m_tBorder[side].GetStyle());
        }
        // Shorthands carry no value of their own: their parts are marked.
        break;
    }
  }
  return 1;
}

// ---------------------------------------------------------------------------
// Reading properties

int CCssStyleFormat::AnalyseCssProperty(const char* name, const char* value) {
  if (!name || !value)
    return 0;
  const EmPropertyNameId id = GetPropertyNameId(name);
  if (id == emPropertyUnknown || !*value)
    return 0;
  return ParseProperty(id, value);
}

int CCssStyleFormat::AnalyseCssProperties(const char* body) {
  if (!body)
    return 0;
  CCssStyleProperty properties;
  properties.Analyse(body);
  const CCssStyleFormat* format = properties.GetStyleFormat();
  if (!format || format->IsDefault())
    return 0;
  return ConcatInner(format);
}

int CCssStyleFormat::ParsePropertyToValue(EmPropertyValue& value, const char* text, QuickMapStringToValueItem* table,
                                          int tableBytes) {
  if (!text || !*text || !table)
    return 0;
  const CString token = CCssPack::CssFetchFirstAny(text, nullptr, kCssFlagsValue);
  if (token.IsEmpty())
    return 0;
  const int code = QuickMapStringToValue(table, tableBytes, token, 0);
  if (code == -1)
    return 0;
  value = static_cast<EmPropertyValue>(code);
  return 1;
}

int CCssStyleFormat::ParsePropertyToValueAndNumber(EmPropertyValue& value, CSttNumber& number, const char* text,
                                                   QuickMapStringToValueItem* table, int tableBytes) {
  if (!text || !*text || !table)
    return 0;
  const CString token = CCssPack::CssFetchFirstAny(text, nullptr, kCssFlagsValue);
  if (token.IsEmpty())
    return 0;
  const int code = QuickMapStringToValue(table, tableBytes, token, 0);
  if (code != -1) {
    value = static_cast<EmPropertyValue>(code);
    return 1;
  }
  CSttNumber read;
  if (!read.Assign(token))
    return 0;
  value = emValueNumber;
  number = read;
  return 1;
}

int CCssStyleFormat::ParseFontSize(const char* text, CSttNumber& size) {
  CSttNumber number;
  if (number.Assign(text)) {
    size = number;
    return 1;
  }
  const CString token = CCssPack::CssFetchFirstAny(text, nullptr, kCssFlagsValue);
  if (token.IsEmpty())
    return 0;
  const int code = QuickMapStringToValue(ms_tFontSizeTable, ms_nFontSizeTableSize, token, 0);
  // Keyword sizes go through the float Assign, which keeps no unit: "large"
  // is the plain number 14 (points to GetPoints), "larger" the plain 1.5.
  // The keywords sit one step below the HTML sizes, so that "medium" is the
  // 12 points of HTML size 3 and "xx-small" and "x-small" share 9.
  if (code >= emFontSizeXXSmall && code <= emFontSizeXXLarge)
    size.Assign(static_cast<float>(GetFontSizeInPtByIndex(code - 1)), CSttNumber::emUnitPt, CSttNumber::emSignNone);
  else if (code == emFontSizeLarger)
    size.Assign(1.5f, CSttNumber::emUnitNone, CSttNumber::emSignNone);
  else if (code == emFontSizeSmaller)
    size.Assign(0.67f, CSttNumber::emUnitNone, CSttNumber::emSignNone);
  else
    return 0;
  return 1;
}

int CCssStyleFormat::ParseFontWeight(const char* text) {
  EmPropertyValue value = emValueNone;
  CSttNumber number;
  if (!ParsePropertyToValueAndNumber(value, number, text, ms_tFontWeightTable, ms_nFontWeightTableSize))
    return 0;
  m_emFontWeight = value;
  m_numFontWeight = number;
  return 1;
}

int CCssStyleFormat::IsBoldFontWeight() const {
  switch (m_emFontWeight) {
    case emFontWeightDemiBold:
    case emFontWeightBold:
    case emFontWeightExtraBold:
    case emFontWeightBolder:
      return 1;
    case emValueNumber:
      return m_numFontWeight.GetNumEx() >= 600.0f;
    default:
      return 0;
  }
}

CString CCssStyleFormat::GetFirstFontFamily() const {
  const char* p = m_strFontFamily;
  char quote = 0;
  int cut = 0;
  for (; p[cut]; ++cut) {
    const char ch = p[cut];
    if (quote) {
      if (ch == quote)
        quote = 0;
    } else if (ch == '\'' || ch == '"') {
      quote = ch;
    } else if (ch == ',') {
      break;
    }
  }
  return CCssStyleProperty::DeQuotePairValue(p, cut);
}

int CCssStyleFormat::ParseFontShorthand(const char* text) {
  EmPropertyValue style = emValueNone, variant = emValueNone, weight = emValueNone;
  CSttNumber weightNumber, size, lineHeight;
  const Byte* p = Begin(text);
  const Byte* end = End(text);
  CString run;
  bool haveSize = false;
  while (!haveSize && CssNextValueRun(p, end, kCssFlagsValue, run)) {
    if (style == emValueNone && ParsePropertyToValue(style, run, ms_tFontStyleTable, ms_nFontStyleTableSize))
      continue;
    if (variant == emValueNone &&
        ParsePropertyToValue(variant, run, ms_tFontVariantTable, ms_nFontVariantTableSize))
      continue;
    if (weight == emValueNone && ParsePropertyToValue(weight, run, ms_tFontWeightTable, ms_nFontWeightTableSize))
      continue;
    if (weight == emValueNone && IsWeightNumber(run)) {
      weight = emValueNumber;
      weightNumber.Assign(run);
      continue;
    }
    if (!ParseFontSize(run, size))
      return 0;
    haveSize = true;
    const int slash = run.Find('/');
    if (slash >= 0)
      lineHeight.Assign(run.Mid(slash + 1));
  }
  if (!haveSize)
    return 0;

  m_numFontSize = size;
  MarkSet(emPropertyFontSize);
  if (style != emValueNone) {
    m_emFontStyle = style;
    MarkSet(emPropertyFontStyle);
  }
  if (variant != emValueNone) {
    m_emFontVariant = variant;
    MarkSet(emPropertyFontVariant);
  }
  if (weight != emValueNone) {
    m_emFontWeight = weight;
    m_numFontWeight = weightNumber;
    MarkSet(emPropertyFontWeight);
  }
  if (!lineHeight.IsDefault()) {
    m_numLineHeight = lineHeight;
    MarkSet(emPropertyLineHeight);
  }
  CString family(reinterpret_cast<const char*>(p), static_cast<int>(end - p));
  TrimLeftAndRight(family);
  if (!family.IsEmpty()) {
    m_strFontFamily = family;
    MarkSet(emPropertyFontFamily);
  }
  return 1;
}

int CCssStyleFormat::ParseBoxShorthand(const char* text, CSttNumber* sides) {
  return ReadFourSides<CSttNumber>(
      text, [](const CString& run, CSttNumber& number) { return number.Assign(run); },
      [sides](int side, const CSttNumber& number) { sides[side] = number; });
}

int CCssStyleFormat::ParseBorderWidths(const char* text) {
  struct Width {
    EmPropertyValue value;
    CSttNumber number;
  };
  return ReadFourSides<Width>(
      text,
      [this](const CString& run, Width& width) {
        width.value = emValueNone;
        return ParsePropertyToValueAndNumber(width.value, width.number, run, ms_tBorderWidthTable,
                                             ms_nBorderWidthTableSize);
      },
      [this](int side, const Width& width) {
        m_tBorder[side].SetWidth(width.value, width.number);
        MarkSet(kBorderWidthIds[side]);
      });
}

int CCssStyleFormat::ParseBorderColors(const char* text) {
  return ReadFourSides<CSttColor>(
      text, [](const CString& run, CSttColor& color) { return color.Assign(run); },
      [this](int side, const CSttColor& color) {
        m_tBorder[side].SetColor(color);
        MarkSet(kBorderColorIds[side]);
      });
}

int CCssStyleFormat::ParseBorderStyles(const char* text) {
  return ReadFourSides<EmPropertyValue>(
      text,
      [this](const CString& run, EmPropertyValue& style) {
        style = emValueNone;
        return ParsePropertyToValue(style, run, ms_tBorderStyleTable, ms_nBorderStyleTableSize);
      },
      [this](int side, EmPropertyValue style) {
        m_tBorder[side].SetStyle(style);
        MarkSet(kBorderStyleIds[side]);
      });
}

// Width, style and colour of one side, in any order. Returns a bit per part
// read: 1 width, 2 style, 4 colour.
int CCssStyleFormat::ParseBorderSide(const char* text, CBorder& border) {
  const Byte* p = Begin(text);
  const Byte* end = End(text);
  CString run;
  int parts = 0;
  while (CssNextValueRun(p, end, kCssFlagsValue, run)) {
    EmPropertyValue value = emValueNone;
    CSttNumber number;
    if (!(parts & 1) &&
        ParsePropertyToValueAndNumber(value, number, run, ms_tBorderWidthTable, ms_nBorderWidthTableSize)) {
      border.SetWidth(value, number);
      parts |= 1;
    } else if (!(parts & 2) && ParsePropertyToValue(value, run, ms_tBorderStyleTable, ms_nBorderStyleTableSize)) {
      border.SetStyle(value);
      parts |= 2;
    } else if (!(parts & 4)) {
      CSttColor color;
      if (color.Assign(run)) {
        border.SetColor(color);
        parts |= 4;
      }
    }
  }
  return parts;
}

int CCssStyleFormat::ParseBackground(const char* text) {
  const Byte* p = Begin(text);
  const Byte* end = End(text);
  CString run;
  CString position;
  int any = 0;
  while (CssNextValueRun(p, end, kCssFlagsValue, run)) {
    any = 1;
    if (run.GetLength() > 4 && strncasecmp(run, "url(", 4) == 0) {
      m_urlBackgroundImage.Assign(run);
      MarkSet(emPropertyBackgroundImage);
    } else if (IsOneOf(run, kRepeatWords)) {
      m_strBackgroundRepeat = LowerTrimmed(run);
      MarkSet(emPropertyBackgroundRepeat);
    } else if (IsOneOf(run, kAttachmentWords)) {
      m_strBackgroundAttachment = LowerTrimmed(run);
      MarkSet(emPropertyBackgroundAttachment);
    } else if (IsOneOf(run, kPositionWords) || CSttNumber().Assign(run)) {
      if (!position.IsEmpty())
        position += ' ';
      position += LowerTrimmed(run);
    } else if (run.CompareNoCase("none") != 0) {
      m_clrBackgroundColor.Assign(run);
      MarkSet(emPropertyBackgroundColor);
    }
  }
  if (!position.IsEmpty()) {
    m_strBackgroundPosition = position;
    MarkSet(emPropertyBackgroundPosition);
  }
  return any;
}

int CCssStyleFormat::ParseListStyle(const char* text) {
  const Byte* p = Begin(text);
  const Byte* end = End(text);
  CString run;
  int any = 0;
  while (CssNextValueRun(p, end, kCssFlagsValue, run)) {
    EmPropertyValue value = emValueNone;
    if (ParsePropertyToValue(value, run, ms_tListStyleTypeTable, ms_nListStyleTypeTableSize)) {
      m_emListStyleType = value;
      MarkSet(emPropertyListStyleType);
      any = 1;
    } else if (ParsePropertyToValue(value, run, ms_tListStylePositionTable, ms_nListStylePositionTableSize)) {
      m_emListStylePosition = value;
      MarkSet(emPropertyListStylePosition);
      any = 1;
    } else if (run.GetLength() > 4 && strncasecmp(run, "url(", 4) == 0) {
      m_urlListStyleImage.Assign(run);
      MarkSet(emPropertyListStyleImage);
      any = 1;
    }
  }
  return any;
}

int CCssStyleFormat::ParseProperty(EmPropertyNameId id, const char* value) {
  if (id < emPropertyFont || id > emPropertyListStyle || !value)
    return 0;
  int result = 0;
  int side = -1;
  switch (id) {
    case emPropertyFont:
      result = ParseFontShorthand(value);
      break;
    case emPropertyFontSize:
      result = ParseFontSize(value, m_numFontSize);
      break;
    case emPropertyFontFamily: {
      CString family(value);
      TrimLeftAndRight(family);
      m_strFontFamily = family;
      result = family.IsEmpty() ? 0 : 1;
      break;
    }
    case emPropertyFontWeight:
      result = ParseFontWeight(value);
      break;
    case emPropertyFontStyle:
      result = ParsePropertyToValue(m_emFontStyle, value, ms_tFontStyleTable, ms_nFontStyleTableSize);
      break;
    case emPropertyFontVariant:
      result = ParsePropertyToValue(m_emFontVariant, value, ms_tFontVariantTable, ms_nFontVariantTableSize);
      break;
    case emPropertyColor:
      result = AssignKept(m_clrColor, value);
      break;
    case emPropertyBackgroundColor:
      result = AssignKept(m_clrBackgroundColor, value);
      break;
    case emPropertyBackgroundImage:
      result = AssignKept(m_urlBackgroundImage, value);
      break;
    case emPropertyBackgroundRepeat:
      result = AssignLowerTrimmed(m_strBackgroundRepeat, value);
      break;
    case emPropertyBackgroundAttachment:
      result = AssignLowerTrimmed(m_strBackgroundAttachment, value);
      break;
    case emPropertyBackgroundPosition:
      result = AssignLowerTrimmed(m_strBackgroundPosition, value);
      break;
    case emPropertyBackground:
      result = ParseBackground(value);
      break;
    case emPropertyWordSpacing:
      result = AssignKept(m_numWordSpacing, value);
      break;
    case emPropertyLetterSpacing:
      result = AssignKept(m_numLetterSpacing, value);
      break;
    case emPropertyTextDecoration:
      result = ParsePropertyToValue(m_emTextDecoration, value, ms_tTextDecorationTable, ms_nTextDecorationTableSize);
      break;
    case emPropertyVerticalAlign:
      result = ParsePropertyToValueAndNumber(m_emVerticalAlign, m_numVerticalAlign, value, ms_tVerticalAlignTable,
                                             ms_nVerticalAlignTableSize);
      break;
    case emPropertyTextTransform:
      result = ParsePropertyToValue(m_emTextTransform, value, ms_tTextTransformTable, ms_nTextTransformTableSize);
      break;
    case emPropertyTextAlign:
      result = ParsePropertyToValue(m_emTextAlign, value, ms_tTextAlignTable, ms_nTextAlignTableSize);
      break;
    case emPropertyTextIndent:
      result = AssignKept(m_numTextIndent, value);
      break;
    case emPropertyLineHeight:
      result = AssignKept(m_numLineHeight, value);
      break;
    case emPropertyMargin:
      result = ParseBoxShorthand(value, m_numMargin);
      if (result)
        for (int s = 0; s < emSideCount; ++s)
          MarkSet(kMarginIds[s]);
      break;
    case emPropertyPadding:
      result = ParseBoxShorthand(value, m_numPadding);
      if (result)
        for (int s = 0; s < emSideCount; ++s)
          MarkSet(kPaddingIds[s]);
      break;
    case emPropertyBorderWidth:
      result = ParseBorderWidths(value);
      break;
    case emPropertyBorderColor:
      result = ParseBorderColors(value);
      break;
    case emPropertyBorderStyle:
      result = ParseBorderStyles(value);
      break;
    case emPropertyBorderTop:
    case emPropertyBorderRight:
    case emPropertyBorderBottom:
    case emPropertyBorderLeft:
    case emPropertyBorder: {
      CBorder border;
      const int parts = ParseBorderSide(value, border);
      result = parts ? 1 : 0;
      const int first = id == emPropertyBorder ? 0 : id - emPropertyBorderTop;
      const int last = id == emPropertyBorder ? emSideCount - 1 : first;
      for (int s = first; s <= last && parts; ++s) {
        if (parts & 1) {
          m_tBorder[s].SetWidth(border.GetWidthValue(), border.GetWidth());
          MarkSet(kBorderWidthIds[s]);
        }
        if (parts & 2) {
          m_tBorder[s].SetStyle(border.GetStyle());
          MarkSet(kBorderStyleIds[s]);
        }
        if (parts & 4) {
          m_tBorder[s].SetColor(border.GetColor());
          MarkSet(kBorderColorIds[s]);
        }
      }
      break;
    }
    case emPropertyDisplay:
      result = AssignLowerTrimmed(m_strDisplay, value);
      break;
    case emPropertyWhiteSpace:
      result = AssignLowerTrimmed(m_strWhiteSpace, value);
      break;
    case emPropertyListStyleType:
      result = ParsePropertyToValue(m_emListStyleType, value, ms_tListStyleTypeTable, ms_nListStyleTypeTableSize);
      break;
    case emPropertyListStyleImage:
      result = AssignKept(m_urlListStyleImage, value);
      break;
    case emPropertyListStylePosition:
      result = ParsePropertyToValue(m_emListStylePosition, value, ms_tListStylePositionTable,
                                    ms_nListStylePositionTableSize);
      break;
    case emPropertyListStyle:
      result = ParseListStyle(value);
      break;
    default:
      for (int s = 0; s < emSideCount; ++s) {
        if (id == kMarginIds[s] || id == kPaddingIds[s])
          side = s;
      }
      if (side >= 0) {
        CSttNumber& target = id == kMarginIds[side] ? m_numMargin[side] : m_numPadding[side];
        result = AssignKept(target, value);
      } else {
        for (int s = 0; s < emSideCount; ++s) {
          EmPropertyValue v = emValueNone;
          CSttNumber number;
          if (id == kBorderWidthIds[s]) {
            result = ParsePropertyToValueAndNumber(v, number, value, ms_tBorderWidthTable, ms_nBorderWidthTableSize);
            if (result)
              m_tBorder[s].SetWidth(v, number);
          } else if (id == kBorderColorIds[s]) {
            CSttColor color;
            result = color.Assign(value);
            if (result)
              m_tBorder[s].SetColor(color);
          } else if (id == kBorderStyleIds[s]) {
            result = ParsePropertyToValue(v, value, ms_tBorderStyleTable, ms_nBorderStyleTableSize);
            if (result)
              m_tBorder[s].SetStyle(v);
          }
        }
      }
      break;
  }
  if (result)
    MarkSet(id);
  return result;
}

const CSttNumber& CCssStyleFormat::GetMargin(int side) const {
  return side >= 0 && side < emSideCount ? m_numMargin[side] : kUnsetNumber;
}

const CSttNumber& CCssStyleFormat::GetPadding(int side) const {
  return side >= 0 && side < emSideCount ? m_numPadding[side] : kUnsetNumber;
}

const CCssStyleFormat::CBorder& CCssStyleFormat::GetBorder(int side) const {
  return side >= 0 && side < emSideCount ? m_tBorder[side] : kUnsetBorder;
}

}  // namespace telvanix
