#include "telvanix/css/style_format.h"

#include "telvanix/css/internal/style_format_table.h"

#include <cstring>
#include <strings.h>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/css_scanner.h"
#include "telvanix/css/style_property.h"
#include "telvanix/css/internal/value_runs.h"
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

int CCssStyleFormat::IsPropertySet(EmPropertyNameId id) const {
  return id >= 0 && id < kPropertyIdCapacity && m_setFlags.test(id) ? 1 : 0;
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
      *into.code = code;
      *into.number = number;
      return 1;
    }
    case EmPropertyRead::kNumber:
      return AssignKept(*into.number, text);
    case EmPropertyRead::kColor:
      return AssignKept(*into.color, text);
    case EmPropertyRead::kUrl:
      return AssignKept(*into.url, text);
    case EmPropertyRead::kLowerText:
      *into.text = LowerTrimmed(text);
      return into.text->IsEmpty() ? 0 : 1;
    case EmPropertyRead::kText:
      *into.text = text;
      TrimLeftAndRight(*into.text);
      return into.text->IsEmpty() ? 0 : 1;
    case EmPropertyRead::kFontSize:
      return ParseFontSize(text, *into.number);
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
  CValue values[kParts];
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
    for (int part = 0; part < kParts; ++part)
      if (given[part]) {
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

}  // namespace telvanix
