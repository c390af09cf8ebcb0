#include "telvanix/css/style_format.h"

#include "telvanix/css/internal/style_format_table.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/css_scanner.h"
#include "telvanix/css/style_property.h"
#include "telvanix/css/internal/value_runs.h"
#include "telvanix/foundation/text_utils.h"
#include "telvanix/html/tag_item.h"

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

// Text values keep no byte that the declaration reader treats as syntax
// (quotes, brackets, ";", braces, comment, escape and at-keyword marks)
// and one blank
// between words, so printed back they read as the same text.
CString PlainText(const char* text) {
  CString out;
  bool blank = false;
  for (const char* p = text; *p; ++p) {
    const char c = *p;
    if (std::strchr("\"'()[]{};<>\\/*!@", c))
      continue;
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f') {
      blank = !out.IsEmpty();
      continue;
    }
    if (blank)
      out += ' ';
    blank = false;
    out += c;
  }
  return out;
}

// A url whose name the declaration reader could not give back (a ")" ends
// url(...), ";" and braces end a declaration, a comment mark hides text).
bool IsPlainUrl(const CSttUrl& url) {
  const CString name = url.GetUrlName();
  return std::strpbrk(name, ");{}") == nullptr && name.Find("/*") < 0 && name.Find("*/") < 0;
}

// A font family list with each name trimmed and ", " between names, so
// that the list reads the same whatever blanks stood around its commas.
// Names are kept without quotes (a browser quotes them when it writes them).
CString FamilyList(const char* text) {
  CString out;
  CString name;
  char quote = 0;
  auto flush = [&]() {
    name = PlainText(name);
    if (!name.IsEmpty()) {
      if (!out.IsEmpty())
        out += ", ";
      out += name;
    }
    name.Empty();
  };
  for (const char* p = text; *p; ++p) {
    if (quote) {
      if (*p == quote)
        quote = 0;
    } else if (*p == '\'' || *p == '"') {
      quote = *p;
    } else if (*p == ',') {
      flush();
      continue;
    }
    name += *p;
  }
  flush();
  return out;
}

// The four sides from one to four values, in the usual top, right, bottom,
// left order: 1 = all, 2 = vertical/horizontal, 3 = top/horizontal/bottom.
int SideSource(int count, int side) {
  static const int kFrom[4][4] = {{0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, 1}, {0, 1, 2, 3}};
  return kFrom[count - 1][side];
}

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

const CSttNumber kUnsetNumber;
constexpr COLORREF kNoColor = 0xFF000000;

// The weight table spells "light" twice (1102 and 1110); which one a lookup
// yields is not fixed, so both are stored as the first.
CCssPropertyNames::EmPropertyValue OneLightCode(CCssPropertyNames::EmPropertyValue code) {
  return code == CCssPropertyNames::emFontWeightLighter ? CCssPropertyNames::emFontWeightLight : code;
}
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

void CCssStyleFormat::CSlot::Reset() const {
  if (code)
    *code = emValueNone;
  if (number)
    number->Default();
  if (color)
    color->Default();
  if (url)
    url->Default();
  if (text)
    text->Empty();
}

void CCssStyleFormat::CSlot::CopyFrom(const CSlot& from) const {
  if (code)
    *code = *from.code;
  if (number)
    *number = *from.number;
  if (color)
    *color = *from.color;
  if (url)
    *url = *from.url;
  if (text)
    *text = *from.text;
}

int CCssStyleFormat::Default() {
  m_setFlags.reset();
  int count = 0;
  const CPropertyRow* rows = GetPropertyRows(count);
  for (int i = 0; i < count; ++i)
    SlotOf(rows[i]).Reset();
  return 1;
}

int CCssStyleFormat::IsDefault() const { return m_setFlags.none() ? 1 : 0; }

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
  if (id >= 0 && id < kPropertyIdCapacity)
    m_setFlags.set(id);
}


int CCssStyleFormat::ConcatInner(const CCssStyleFormat* other) {
  if (!other)
    return 0;
  if (other == this)
    return 1;
  // Only read here: the slot of a const format is never written through.
  CCssStyleFormat& source = const_cast<CCssStyleFormat&>(*other);
  int count = 0;
  const CPropertyRow* rows = GetPropertyRows(count);
  for (int i = 0; i < count; ++i) {
    if (!other->IsPropertySet(rows[i].id))
      continue;
    MarkSet(rows[i].id);
    // A shorthand has no slot: its parts carry the value and are marked.
    SlotOf(rows[i]).CopyFrom(source.SlotOf(rows[i]));
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

int CCssStyleFormat::ParseFontSize(const char* text, EmPropertyValue& code, CSttNumber& size) {
  CSttNumber number;
  if (number.Assign(text)) {
    size = number;
    code = emValueNone;  // the keyword codes include 1, emValueNumber
    return 1;
  }
  const CString token = CCssPack::CssFetchFirstAny(text, nullptr, kCssFlagsValue);
  if (token.IsEmpty())
    return 0;
  const int read = QuickMapStringToValue(ms_tFontSizeTable, ms_nFontSizeTableSize, token, 0);
  // Keyword sizes go through the float Assign, which keeps no unit: "large"
  // is the plain number 14 (points to GetPoints), "larger" the plain 1.5.
  // The keywords sit one step below the HTML sizes, so that "medium" is the
  // 12 points of HTML size 3 and "xx-small" and "x-small" share 9. The code
  // is kept beside, for a view that sizes keywords as a browser does.
  if (read >= emFontSizeXXSmall && read <= emFontSizeXXLarge)
    size.Assign(static_cast<float>(GetFontSizeInPtByIndex(read - 1)), CSttNumber::emUnitPt, CSttNumber::emSignNone);
  else if (read == emFontSizeLarger)
    size.Assign(1.5f, CSttNumber::emUnitNone, CSttNumber::emSignNone);
  else if (read == emFontSizeSmaller)
    size.Assign(0.67f, CSttNumber::emUnitNone, CSttNumber::emSignNone);
  else
    return 0;
  code = static_cast<EmPropertyValue>(read);
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
  EmPropertyValue style = emValueNone, variant = emValueNone, weight = emValueNone, sizeCode = emValueNone;
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
    if (!ParseFontSize(run, sizeCode, size))
      return 0;
    haveSize = true;
    const int slash = run.Find('/');
    if (slash >= 0)
      lineHeight.Assign(run.Mid(slash + 1));
  }
  if (!haveSize)
    return 0;

  m_numFontSize = size;
  m_emFontSize = sizeCode;
  MarkSet(emPropertyFontSize);
  // The shorthand resets what it does not give.
  m_emFontStyle = style != emValueNone ? style : emFontStyleNormal;
  MarkSet(emPropertyFontStyle);
  m_emFontVariant = variant != emValueNone ? variant : emFontVariantNormal;
  MarkSet(emPropertyFontVariant);
  m_emFontWeight = weight != emValueNone ? OneLightCode(weight) : emFontWeightNormal;
  m_numFontWeight = weightNumber;
  MarkSet(emPropertyFontWeight);
  if (!lineHeight.IsDefault()) {
    m_numLineHeight = lineHeight;
    MarkSet(emPropertyLineHeight);
  }
  const CString family = FamilyList(CString(reinterpret_cast<const char*>(p), static_cast<int>(end - p)));
  if (!family.IsEmpty()) {
    m_strFontFamily = family;
    MarkSet(emPropertyFontFamily);
  }
  return 1;
}

// A value with every part, to read into before anything is stored.
struct CCssStyleFormat::CValue {
  EmPropertyValue code = emValueNone;
  CSttNumber number;
  CSttColor color;
  CSttUrl url;
  CString text;
  CSlot Slot() { return {&code, &number, &color, &url, &text}; }
};

int CCssStyleFormat::ReadValue(const CPropertyRow& row, const char* text, const CSlot& into) {
  switch (row.read) {
    case EmPropertyRead::kKeyword:
      return ParsePropertyToValue(*into.code, text, row.keywords.rows, row.keywords.bytes);
    case EmPropertyRead::kKeywordKeepsNumber:
      return ParsePropertyToValueAndNumber(*into.code, *into.number, text, row.keywords.rows, row.keywords.bytes);
    case EmPropertyRead::kKeywordOrNumber: {
      EmPropertyValue code = emValueNone;
      CSttNumber number;
      if (!ParsePropertyToValueAndNumber(code, number, text, row.keywords.rows, row.keywords.bytes))
        return 0;
      *into.code = OneLightCode(code);
      *into.number = number;
      return 1;
    }
    case EmPropertyRead::kNumber:
      return AssignKept(*into.number, text);
    case EmPropertyRead::kMargin:
      // "auto" is held as 0, the margin of a block whose width is not set.
      if (LowerTrimmed(text) == "auto") {
        into.number->Assign("0px");
        return 1;
      }
      return AssignKept(*into.number, text);
    case EmPropertyRead::kColor:
      return ReadColor(text, *into.color);
    case EmPropertyRead::kUrl: {
      CSttUrl url;
      if (!url.Assign(text) || !IsPlainUrl(url))
        return 0;
      *into.url = url;
      return 1;
    }
    case EmPropertyRead::kLowerText:
      *into.text = PlainText(LowerTrimmed(text));
      return into.text->IsEmpty() ? 0 : 1;
    case EmPropertyRead::kText:
      *into.text = PlainText(text);
      return into.text->IsEmpty() ? 0 : 1;
    case EmPropertyRead::kFamilyList:
      *into.text = FamilyList(text);
      return into.text->IsEmpty() ? 0 : 1;
    case EmPropertyRead::kFontSize:
      return ParseFontSize(text, *into.code, *into.number);
    default:
      return 0;
  }
}

// One to four values spread over the four sides. Nothing is stored unless
// every value reads, so a bad shorthand leaves all sides as they were.
int CCssStyleFormat::ParseFourSides(const CPropertyRow& row, const char* text) {
  CString runs[emSideCount];
  const int count = CutRuns(text, runs, emSideCount);
  if (count == 0)
    return 0;
  const CPropertyRow* sides[emSideCount];
  CValue values[emSideCount];
  for (int side = 0; side < emSideCount; ++side)
    sides[side] = FindPropertyRow(row.parts[side]);
  for (int i = 0; i < count; ++i)
    if (!ReadValue(*sides[i], runs[i], values[i].Slot()))
      return 0;
  for (int side = 0; side < emSideCount; ++side) {
    SlotOf(*sides[side]).CopyFrom(values[SideSource(count, side)].Slot());
    MarkSet(sides[side]->id);
  }
  return 1;
}

// Width, style and colour in any order: each run goes to the first part not
// yet given that reads it. "border" reads one side's parts and gives them to
// all four sides, marking the parts but not the side shorthands.
int CCssStyleFormat::ParseBorderSides(const CPropertyRow& row, const char* text) {
  const bool allSides = FindPropertyRow(row.parts[0])->read == EmPropertyRead::kBorderSides;
  const CPropertyRow& reader = allSides ? *FindPropertyRow(row.parts[0]) : row;
  constexpr int kParts = 3;
  // What the shorthand gives to the parts it does not name: a medium width,
  // no style and the text colour (an unset colour).
  CValue values[kParts];
  values[0].code = emBorderWidthMedium;
  values[1].code = emBorderStyleNone;
  bool given[kParts] = {};
  const Byte* p = Begin(text);
  const Byte* end = End(text);
  CString run;
  while (CssNextValueRun(p, end, kCssFlagsValue, run))
    for (int part = 0; part < kParts; ++part)
      if (!given[part] && ReadValue(*FindPropertyRow(reader.parts[part]), run, values[part].Slot())) {
        given[part] = true;
        break;
      }
  if (!given[0] && !given[1] && !given[2])
    return 0;
  for (int side = 0; side < (allSides ? emSideCount : 1); ++side) {
    const CPropertyRow& sideRow = allSides ? *FindPropertyRow(row.parts[side]) : row;
    for (int part = 0; part < kParts; ++part) {
      const CPropertyRow& target = *FindPropertyRow(sideRow.parts[part]);
      SlotOf(target).CopyFrom(values[part].Slot());
      MarkSet(target.id);
    }
  }
  return 1;
}

int CCssStyleFormat::ParseBackground(const char* text) {
  const Byte* p = Begin(text);
  const Byte* end = End(text);
  CString run;
  CString position;
  CSttColor color;
  bool haveColor = false;
  int any = 0;
  while (CssNextValueRun(p, end, kCssFlagsValue, run)) {
    any = 1;
    if (run.GetLength() > 4 && strncasecmp(run, "url(", 4) == 0) {
      CSttUrl url(run);
      if (IsPlainUrl(url)) {
        m_urlBackgroundImage = url;
        MarkSet(emPropertyBackgroundImage);
      }
    } else if (IsOneOf(run, kRepeatWords)) {
      m_strBackgroundRepeat = LowerTrimmed(run);
      MarkSet(emPropertyBackgroundRepeat);
    } else if (IsOneOf(run, kAttachmentWords)) {
      m_strBackgroundAttachment = LowerTrimmed(run);
      MarkSet(emPropertyBackgroundAttachment);
    } else if (IsOneOf(run, kPositionWords) || CSttNumber().Assign(run)) {
      if (!position.IsEmpty())
        position += ' ';
      position += PlainText(LowerTrimmed(run));
    } else if (run.CompareNoCase("none") != 0 && ReadColor(run, color)) {
      haveColor = true;
    }
  }
  // The shorthand resets the colour it does not give to transparent.
  if (any) {
    if (!haveColor)
      color.Assign(static_cast<unsigned long>(kNoColor));
    m_clrBackgroundColor = color;
    MarkSet(emPropertyBackgroundColor);
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
  bool haveType = false;
  while (CssNextValueRun(p, end, kCssFlagsValue, run)) {
    EmPropertyValue value = emValueNone;
    if (ParsePropertyToValue(value, run, ms_tListStyleTypeTable, ms_nListStyleTypeTableSize)) {
      haveType = true;
      m_emListStyleType = value;
      MarkSet(emPropertyListStyleType);
      any = 1;
    } else if (ParsePropertyToValue(value, run, ms_tListStylePositionTable, ms_nListStylePositionTableSize)) {
      m_emListStylePosition = value;
      MarkSet(emPropertyListStylePosition);
      any = 1;
    } else if (run.GetLength() > 4 && strncasecmp(run, "url(", 4) == 0 && IsPlainUrl(CSttUrl(run))) {
      m_urlListStyleImage.Assign(run);
      MarkSet(emPropertyListStyleImage);
      any = 1;
    }
  }
  // The shorthand resets a type it does not give.
  if (any && !haveType) {
    m_emListStyleType = emListStyleTypeDisc;
    MarkSet(emPropertyListStyleType);
  }
  return any;
}

int CCssStyleFormat::ParseProperty(EmPropertyNameId id, const char* value) {
  const CPropertyRow* row = FindPropertyRow(id);
  if (!row || !value)
    return 0;
  int result = 0;
  switch (row->read) {
    case EmPropertyRead::kFont:
      result = ParseFontShorthand(value);
      break;
    case EmPropertyRead::kBackground:
      result = ParseBackground(value);
      break;
    case EmPropertyRead::kListStyle:
      result = ParseListStyle(value);
      break;
    case EmPropertyRead::kFourSides:
      result = ParseFourSides(*row, value);
      break;
    case EmPropertyRead::kBorderSides:
      result = ParseBorderSides(*row, value);
      break;
    default:
      result = ReadValue(*row, value, SlotOf(*row));
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


// ---------------------------------------------------------------------------
// Colours

namespace {

// rgb(r, g, b) / rgba(r, g, b, a) with numbers or percentages; false when
// the text is no such notation. An alpha of 0 gives no colour.
bool ReadRgbNotation(const char* text, COLORREF& color) {
  const char* p = text;
  while (*p == ' ' || *p == '\t')
    ++p;
  const bool alpha = strncasecmp(p, "rgba(", 5) == 0;
  if (!alpha && strncasecmp(p, "rgb(", 4) != 0)
    return false;
  p += alpha ? 5 : 4;
  double parts[4] = {0, 0, 0, 1};
  const int wanted = alpha ? 4 : 3;
  for (int i = 0; i < wanted; ++i) {
    while (*p == ' ' || *p == '\t')
      ++p;
    char* after = nullptr;
    double v = std::strtod(p, &after);
    if (after == p || !std::isfinite(v))
      return false;
    p = after;
    if (*p == '%') {
      v = i < 3 ? v * 255.0 / 100.0 : v / 100.0;
      ++p;
    }
    parts[i] = v;
    while (*p == ' ' || *p == '\t')
      ++p;
    if (*p != (i + 1 < wanted ? ',' : ')'))
      return false;
    ++p;
  }
  if (parts[3] <= 0) {
    color = kNoColor;
    return true;
  }
  COLORREF out = 0;
  for (int i = 0; i < 3; ++i) {
    const double v = parts[i] < 0 ? 0 : parts[i] > 255 ? 255 : parts[i];
    out |= static_cast<COLORREF>(static_cast<int>(v + 0.5)) << (8 * i);
  }
  color = out;
  return true;
}

}  // namespace

int CCssStyleFormat::ReadColor(const char* text, CSttColor& color) {
  // The colour readers take the whole text, so blanks around a name would
  // make it no name.
  const CString word = LowerTrimmed(text);
  CSttColor read;
  if (!read.Assign(word))
    return 0;
  if (read.GetKind() != CSttColor::emColorUnknown) {
    color = read;
    return 1;
  }
  COLORREF value = kNoColor;
  if (word == "transparent" || ReadRgbNotation(word, value)) {
    color.Assign(static_cast<unsigned long>(value));
    return 1;
  }
  // The text colour: an unset colour that counts as given.
  if (word == "currentcolor") {
    color.Default();
    return 1;
  }
  return 0;
}

// ---------------------------------------------------------------------------
// Comparing and printing

namespace {

bool SameColor(const CSttColor& a, const CSttColor& b) {
  // An unset colour (the text colour) is not the transparent colour value.
  return a.GetColorRef() == b.GetColorRef() &&
         (a.GetKind() == CSttColor::emColorUnset) == (b.GetKind() == CSttColor::emColorUnset);
}

// A number as the readers take it back: no exponent and at most 14 digits,
// the most the number reader keeps.
CString NumberText(const CSttNumber& number) {
  static const char* const kUnits[] = {"", "pt", "pc", "in", "cm", "mm"};
  const char* unit = "";
  switch (number.GetUnitType()) {
    case CSttNumber::emUnitPx: unit = "px"; break;
    case CSttNumber::emUnitPercent: unit = "%"; break;
    case CSttNumber::emUnitEx: unit = "ex"; break;
    case CSttNumber::emUnitEm: unit = "em"; break;
    case CSttNumber::emUnitEn: unit = "en"; break;
    case CSttNumber::emUnitUnknown: unit = "unknown"; break;
    default:
      if (number.GetUnitType() >= 0 && number.GetUnitType() <= CSttNumber::emUnitMm)
        unit = kUnits[number.GetUnitType()];
      break;
  }
  const float value = number.GetNum();
  char digits[64];
  // The shortest text that reads back as the same float; a magnitude that
  // needs more than 14 digits is the largest the reader makes (it rounds
  // 14 nines up to that float).
  int length = 0;
  for (int decimals = 0; decimals <= 45; ++decimals) {
    length = std::snprintf(digits, sizeof digits, "%.*f", decimals, static_cast<double>(value));
    if (std::strtof(digits, nullptr) == value)
      break;
  }
  if (length > 14 && std::strtof("99999999999999", nullptr) == value)
    std::snprintf(digits, sizeof digits, "99999999999999");
  const char* sign = number.GetSignType() == CSttNumber::emSignMinus ? "-"
                     : number.GetSignType() == CSttNumber::emSignPlus ? "+" : "";
  CString out;
  out.Format("%s%s%s", sign, digits, unit);
  return out;
}

CString KeywordText(const CssKeywordTable& table, int code) {
  const int rows = table.bytes / static_cast<int>(sizeof(QuickMapStringToValueItem));
  for (int i = 0; i < rows; ++i)
    if (table.rows[i].nValue == code)
      return CString(table.rows[i].pszKey);
  return CString();
}

CString ColorText(const CSttColor& color) {
  if (color.GetKind() == CSttColor::emColorUnset)
    return CString("currentcolor");
  const COLORREF c = color.GetColorRef();
  if (c == kNoColor)
    return CString("transparent");
  CString out;
  out.Format("#%02x%02x%02x", c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
  return out;
}

CString UrlText(const CSttUrl& url) {
  const CString name = url.GetUrlName();
  // Inside url(...) the first ")" would end the value; such a name is
  // written bare.
  if (name.Find(')') >= 0)
    return name;
  return CString("url(") + name + ")";
}

}  // namespace

int CCssStyleFormat::Compare(const CCssStyleFormat* other) const {
  if (!other)
    return 0;
  CCssStyleFormat& self = const_cast<CCssStyleFormat&>(*this);
  CCssStyleFormat& that = const_cast<CCssStyleFormat&>(*other);
  int count = 0;
  const CPropertyRow* rows = GetPropertyRows(count);
  for (int i = 0; i < count; ++i) {
    const CPropertyRow& row = rows[i];
    if (!row.place)
      continue;
    if (IsPropertySet(row.id) != other->IsPropertySet(row.id))
      return 0;
    if (!IsPropertySet(row.id))
      continue;
    const CSlot a = self.SlotOf(row);
    const CSlot b = that.SlotOf(row);
    if (a.code && *a.code != *b.code)
      return 0;
    // A keyword leaves the number beside it meaningless.
    const bool keywordOnly = row.read == EmPropertyRead::kKeywordKeepsNumber && *a.code != emValueNumber;
    if (a.number && !keywordOnly && !a.number->Compare(b.number))
      return 0;
    if (a.color && !SameColor(*a.color, *b.color))
      return 0;
    if (a.url && !a.url->Compare(b.url))
      return 0;
    if (a.text && *a.text != *b.text)
      return 0;
  }
  return 1;
}

CString CCssStyleFormat::GetPrintableString() const {
  CCssStyleFormat& self = const_cast<CCssStyleFormat&>(*this);
  CString out;
  int count = 0;
  const CPropertyRow* rows = GetPropertyRows(count);
  for (int i = 0; i < count; ++i) {
    const CPropertyRow& row = rows[i];
    if (!row.place || !IsPropertySet(row.id))
      continue;
    const CSlot slot = self.SlotOf(row);
    CString value;
    const bool keyword = slot.code && (row.read == EmPropertyRead::kFontSize ? *slot.code != emValueNone
                                                                               : *slot.code != emValueNumber);
    if (keyword)
      value = KeywordText(row.keywords, *slot.code);
    else if (slot.number)
      value = NumberText(*slot.number);
    else if (slot.color)
      value = ColorText(*slot.color);
    else if (slot.url)
      value = UrlText(*slot.url);
    else if (slot.text)
      value = *slot.text;
    if (value.IsEmpty())
      continue;
    out += GetPropertyNameString(row.id);
    out += ":";
    out += value;
    out += "; ";
  }
  return out;
}

// ---------------------------------------------------------------------------
// HTML attributes

namespace {

// FONT sizes 1..7 in px, as a browser sizes them.
constexpr int kHtmlFontSizePx[7] = {10, 13, 16, 18, 24, 32, 48};

bool IsTag(int tagId, int wanted) { return tagId == wanted; }

}  // namespace

int CCssStyleFormat::AnalyseHtmlAttribute(int tagId, const char* name, const char* value) {
  if (!name || !value)
    return 0;
  CString text(value);
  TrimLeftAndRight(text);
  const bool cell = IsTag(tagId, CHtmlTagItem::emTagIdTd) || IsTag(tagId, CHtmlTagItem::emTagIdTh);
  if (cell && strcasecmp(name, "nowrap") == 0)
    return ParseProperty(emPropertyWhiteSpace, "nowrap");
  const bool hr = IsTag(tagId, CHtmlTagItem::emTagIdHr);
  if (hr && strcasecmp(name, "noshade") == 0) {
    // A solid rule filled with its colour: gray unless color= gives one.
    if (!IsPropertySet(emPropertyBackgroundColor))
      ParseProperty(emPropertyBackgroundColor, "gray");
    return ParseProperty(emPropertyBorderStyle, "solid");
  }
  if (hr && strcasecmp(name, "size") == 0) {
    // A rule of one pixel or less has no bottom border.
    if (value[0] >= '0' && value[0] <= '9' && std::atoi(value) <= 1)
      return ParseProperty(emPropertyBorderBottomWidth, "0px");
    return 0;
  }
  if (IsTag(tagId, CHtmlTagItem::emTagIdInput) && strcasecmp(name, "type") == 0) {
    // Controls other than text fields draw no field box; buttons draw their own.
    CString type(value);
    type.Trim();
    type.MakeLower();
    if (type == "image" || type == "checkbox" || type == "radio" || type == "hidden") {
      ParseProperty(emPropertyBackgroundColor, "transparent");
      ParseProperty(emPropertyPadding, "0px");
      ParseProperty(emPropertyBorder, "none");
      if (type == "checkbox" || type == "radio")
        ParseProperty(emPropertyMargin, "3px 3px 0px 5px");
      return 1;
    }
    if (type == "submit" || type == "reset" || type == "button") {
      ParseProperty(emPropertyBackgroundColor, "#efefef");
      ParseProperty(emPropertyPadding, "1px 6px");
      ParseProperty(emPropertyBorder, "2px outset");
      ParseProperty(emPropertyTextAlign, "center");
      return 1;
    }
    return 0;
  }
  if (text.IsEmpty() && strcasecmp(name, "border") != 0)
    return 0;
  const bool image = IsTag(tagId, CHtmlTagItem::emTagIdImg);
  if (hr && strcasecmp(name, "color") == 0)
    return ParseProperty(emPropertyBorderColor, text) + ParseProperty(emPropertyBackgroundColor, text) ? 1 : 0;
  if (image && (strcasecmp(name, "hspace") == 0 || strcasecmp(name, "vspace") == 0)) {
    if (text[0] < '0' || text[0] > '9')
      return 0;
    CString px;
    px.Format("%dpx", std::atoi(text));
    const bool h = strcasecmp(name, "hspace") == 0;
    return ParseProperty(h ? emPropertyMarginLeft : emPropertyMarginTop, px) &
           ParseProperty(h ? emPropertyMarginRight : emPropertyMarginBottom, px);
  }
  if (strcasecmp(name, "type") == 0 &&
      (IsTag(tagId, CHtmlTagItem::emTagIdUl) || IsTag(tagId, CHtmlTagItem::emTagIdOl) ||
       IsTag(tagId, CHtmlTagItem::emTagIdLi))) {
    // OL numbering letters are case-sensitive; bullet names are not.
    static const struct {
      const char* type;
      const char* style;
    } kTypes[] = {{"1", "decimal"}, {"a", "lower-alpha"}, {"A", "upper-alpha"}, {"i", "lower-roman"},
                  {"I", "upper-roman"}};
    for (const auto& t : kTypes)
      if (text == t.type)
        return ParseProperty(emPropertyListStyleType, t.style);
    CString lower = text;
    lower.MakeLower();
    if (lower == "disc" || lower == "circle" || lower == "square")
      return ParseProperty(emPropertyListStyleType, lower);
    return 0;
  }
  const bool font = IsTag(tagId, CHtmlTagItem::emTagIdFont) || IsTag(tagId, CHtmlTagItem::emTagIdBaseFont);
  const bool body = IsTag(tagId, CHtmlTagItem::emTagIdBody);
  auto store = [&](EmPropertyNameId id, const char* css) { return ParseProperty(id, css); };
  if (font && strcasecmp(name, "color") == 0)
    return store(emPropertyColor, text);
  if (font && strcasecmp(name, "face") == 0)
    return store(emPropertyFontFamily, text);
  if (font && strcasecmp(name, "size") == 0) {
    const char* p = text;
    const int sign = *p == '+' ? 1 : *p == '-' ? -1 : 0;
    if (sign)
      ++p;
    if (*p < '0' || *p > '9')
      return 0;
    int size = std::atoi(p);
    size = sign ? 3 + sign * (size > 9 ? 9 : size) : size;
    size = size < 1 ? 1 : size > 7 ? 7 : size;
    // Sizes 1 to 6 are the keywords x-small to xx-large (a browser resizes
    // them in a monospace family); 7 has no keyword.
    static const char* const kKeywords[6] = {"x-small", "small", "medium", "large", "x-large", "xx-large"};
    if (size <= 6)
      return store(emPropertyFontSize, kKeywords[size - 1]);
    CString px;
    px.Format("%dpx", kHtmlFontSizePx[size - 1]);
    return store(emPropertyFontSize, px);
  }
  if (body && strcasecmp(name, "text") == 0)
    return store(emPropertyColor, text);
  if (body && strcasecmp(name, "background") == 0)
    return store(emPropertyBackgroundImage, CString("url(") + text + ")");
  if (strcasecmp(name, "bgcolor") == 0)
    return store(emPropertyBackgroundColor, text);
  if (strcasecmp(name, "align") == 0) {
    // An image aligned to the line; images and tables aligned left or
    // right float, which the format does not hold.
    if (image && (text.CompareNoCase("top") == 0 || text.CompareNoCase("middle") == 0 ||
                  text.CompareNoCase("bottom") == 0))
      return ParseProperty(emPropertyVerticalAlign, text);
    if (image || IsTag(tagId, CHtmlTagItem::emTagIdTable) ||
        IsTag(tagId, CHtmlTagItem::emTagIdObject) || IsTag(tagId, CHtmlTagItem::emTagIdApplet))
      return 0;
    EmPropertyValue align = emValueNone;
    if (!ParsePropertyToValue(align, text, ms_tHtmlAlignTable, ms_nHtmlAlignTableSize))
      return 0;
    m_emTextAlign = align;
    MarkSet(emPropertyTextAlign);
    return 1;
  }
  if (strcasecmp(name, "valign") == 0)
    return store(emPropertyVerticalAlign, text);
  if (strcasecmp(name, "border") == 0 &&
      (IsTag(tagId, CHtmlTagItem::emTagIdImg) || IsTag(tagId, CHtmlTagItem::emTagIdObject) ||
       IsTag(tagId, CHtmlTagItem::emTagIdTable))) {
    const char* p = text;
    // An empty border on a table means 1; other text reads its leading number.
    const int width = text.IsEmpty() ? (IsTag(tagId, CHtmlTagItem::emTagIdTable) ? 1 : 0)
                      : (*p >= '0' && *p <= '9') ? std::atoi(p) : 0;
    if (width <= 0)
      return 0;
    CString css;
    css.Format("%dpx %s", width, IsTag(tagId, CHtmlTagItem::emTagIdTable) ? "outset" : "solid");
    return store(emPropertyBorder, css);
  }
  return 0;
}

}  // namespace telvanix
