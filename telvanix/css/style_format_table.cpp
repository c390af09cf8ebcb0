// One row per property the style format stores, in identifier order. A new
// property is a member with its getter in style_format.h and one row here.
#include "telvanix/css/internal/style_format_table.h"

#include <array>

namespace telvanix {

namespace {

using F = CCssStyleFormat;
using R = EmPropertyRead;

template <size_t N>
constexpr CssKeywordTable Table(QuickMapStringToValueItem (&rows)[N]) {
  return {rows, static_cast<int>(sizeof(rows))};
}

}  // namespace

F::CSlot F::CSlot::Of(EmPropertyValue& code) { return {&code}; }
F::CSlot F::CSlot::Of(CSttNumber& number) { return {nullptr, &number}; }
F::CSlot F::CSlot::Of(CSttColor& color) { return {nullptr, nullptr, &color}; }
F::CSlot F::CSlot::Of(CSttUrl& url) { return {nullptr, nullptr, nullptr, &url}; }
F::CSlot F::CSlot::Of(CString& text) { return {nullptr, nullptr, nullptr, nullptr, &text}; }

template <auto Member>
F::CSlot F::CSlot::At(F& format) {
  return Of(format.*Member);
}

template <auto Code, auto Number>
F::CSlot F::CSlot::AtPair(F& format) {
  return {&(format.*Code), &(format.*Number)};
}

template <auto Sides, int Side>
F::CSlot F::CSlot::AtSide(F& format) {
  return Of((format.*Sides)[Side]);
}

template <int Side>
F::CSlot F::CSlot::BorderWidth(F& format) {
  return {&format.m_tBorder[Side].m_emWidth, &format.m_tBorder[Side].m_numWidth};
}

template <int Side>
F::CSlot F::CSlot::BorderColor(F& format) {
  return Of(format.m_tBorder[Side].m_clrColor);
}

template <int Side>
F::CSlot F::CSlot::BorderStyle(F& format) {
  return Of(format.m_tBorder[Side].m_emStyle);
}

const F::CPropertyRow* F::GetPropertyRows(int& count) {
  using S = CSlot;
  constexpr CssKeywordTable kNone{nullptr, 0};
  // clang-format off
  static constexpr CPropertyRow kRows[] = {
    {emPropertyFont, R::kFont, nullptr, kNone,
     {emPropertyFontStyle, emPropertyFontVariant, emPropertyFontWeight, emPropertyFontSize, emPropertyLineHeight,
      emPropertyFontFamily}},
    {emPropertyFontSize, R::kFontSize, S::AtPair<&F::m_emFontSize, &F::m_numFontSize>, Table(ms_tFontSizeTable), {}},
    {emPropertyFontFamily, R::kFamilyList, S::At<&F::m_strFontFamily>, kNone, {}},
    {emPropertyFontWeight, R::kKeywordOrNumber, S::AtPair<&F::m_emFontWeight, &F::m_numFontWeight>,
     Table(ms_tFontWeightTable), {}},
    {emPropertyFontStyle, R::kKeyword, S::At<&F::m_emFontStyle>, Table(ms_tFontStyleTable), {}},
    {emPropertyFontVariant, R::kKeyword, S::At<&F::m_emFontVariant>, Table(ms_tFontVariantTable), {}},
    {emPropertyColor, R::kColor, S::At<&F::m_clrColor>, kNone, {}},
    {emPropertyBackgroundColor, R::kColor, S::At<&F::m_clrBackgroundColor>, kNone, {}},
    {emPropertyBackgroundImage, R::kUrl, S::At<&F::m_urlBackgroundImage>, kNone, {}},
    {emPropertyBackgroundRepeat, R::kLowerText, S::At<&F::m_strBackgroundRepeat>, kNone, {}},
    {emPropertyBackgroundAttachment, R::kLowerText, S::At<&F::m_strBackgroundAttachment>, kNone, {}},
    {emPropertyBackgroundPosition, R::kLowerText, S::At<&F::m_strBackgroundPosition>, kNone, {}},
    {emPropertyBackground, R::kBackground, nullptr, kNone,
     {emPropertyBackgroundColor, emPropertyBackgroundImage, emPropertyBackgroundRepeat,
      emPropertyBackgroundAttachment, emPropertyBackgroundPosition}},
    {emPropertyWordSpacing, R::kNumber, S::At<&F::m_numWordSpacing>, kNone, {}},
    {emPropertyLetterSpacing, R::kNumber, S::At<&F::m_numLetterSpacing>, kNone, {}},
    {emPropertyTextDecoration, R::kKeyword, S::At<&F::m_emTextDecoration>, Table(ms_tTextDecorationTable), {}},
    {emPropertyVerticalAlign, R::kKeywordKeepsNumber, S::AtPair<&F::m_emVerticalAlign, &F::m_numVerticalAlign>,
     Table(ms_tVerticalAlignTable), {}},
    {emPropertyTextTransform, R::kKeyword, S::At<&F::m_emTextTransform>, Table(ms_tTextTransformTable), {}},
    {emPropertyTextAlign, R::kKeyword, S::At<&F::m_emTextAlign>, Table(ms_tTextAlignTable), {}},
    {emPropertyTextIndent, R::kNumber, S::At<&F::m_numTextIndent>, kNone, {}},
    {emPropertyLineHeight, R::kNumber, S::At<&F::m_numLineHeight>, kNone, {}},
    {emPropertyMargin, R::kFourSides, nullptr, kNone,
     {emPropertyMarginTop, emPropertyMarginRight, emPropertyMarginBottom, emPropertyMarginLeft}},
    {emPropertyMarginTop, R::kMargin, S::AtSide<&F::m_numMargin, emSideTop>, kNone, {}},
    {emPropertyMarginLeft, R::kMargin, S::AtSide<&F::m_numMargin, emSideLeft>, kNone, {}},
    {emPropertyMarginRight, R::kMargin, S::AtSide<&F::m_numMargin, emSideRight>, kNone, {}},
    {emPropertyMarginBottom, R::kMargin, S::AtSide<&F::m_numMargin, emSideBottom>, kNone, {}},
    {emPropertyPaddingTop, R::kNumber, S::AtSide<&F::m_numPadding, emSideTop>, kNone, {}},
    {emPropertyPaddingRight, R::kNumber, S::AtSide<&F::m_numPadding, emSideRight>, kNone, {}},
    {emPropertyPaddingBottom, R::kNumber, S::AtSide<&F::m_numPadding, emSideBottom>, kNone, {}},
    {emPropertyPaddingLeft, R::kNumber, S::AtSide<&F::m_numPadding, emSideLeft>, kNone, {}},
    {emPropertyPadding, R::kFourSides, nullptr, kNone,
     {emPropertyPaddingTop, emPropertyPaddingRight, emPropertyPaddingBottom, emPropertyPaddingLeft}},
    {emPropertyBorderTopWidth, R::kKeywordOrNumber, S::BorderWidth<emSideTop>, Table(ms_tBorderWidthTable), {}},
    {emPropertyBorderRightWidth, R::kKeywordOrNumber, S::BorderWidth<emSideRight>, Table(ms_tBorderWidthTable), {}},
    {emPropertyBorderBottomWidth, R::kKeywordOrNumber, S::BorderWidth<emSideBottom>, Table(ms_tBorderWidthTable), {}},
    {emPropertyBorderLeftWidth, R::kKeywordOrNumber, S::BorderWidth<emSideLeft>, Table(ms_tBorderWidthTable), {}},
    {emPropertyBorderTopColor, R::kColor, S::BorderColor<emSideTop>, kNone, {}},
    {emPropertyBorderRightColor, R::kColor, S::BorderColor<emSideRight>, kNone, {}},
    {emPropertyBorderBottomColor, R::kColor, S::BorderColor<emSideBottom>, kNone, {}},
    {emPropertyBorderLeftColor, R::kColor, S::BorderColor<emSideLeft>, kNone, {}},
    {emPropertyBorderTopStyle, R::kKeyword, S::BorderStyle<emSideTop>, Table(ms_tBorderStyleTable), {}},
    {emPropertyBorderRightStyle, R::kKeyword, S::BorderStyle<emSideRight>, Table(ms_tBorderStyleTable), {}},
    {emPropertyBorderBottomStyle, R::kKeyword, S::BorderStyle<emSideBottom>, Table(ms_tBorderStyleTable), {}},
    {emPropertyBorderLeftStyle, R::kKeyword, S::BorderStyle<emSideLeft>, Table(ms_tBorderStyleTable), {}},
    {emPropertyBorderWidth, R::kFourSides, nullptr, kNone,
     {emPropertyBorderTopWidth, emPropertyBorderRightWidth, emPropertyBorderBottomWidth, emPropertyBorderLeftWidth}},
    {emPropertyBorderColor, R::kFourSides, nullptr, kNone,
     {emPropertyBorderTopColor, emPropertyBorderRightColor, emPropertyBorderBottomColor, emPropertyBorderLeftColor}},
    {emPropertyBorderStyle, R::kFourSides, nullptr, kNone,
     {emPropertyBorderTopStyle, emPropertyBorderRightStyle, emPropertyBorderBottomStyle, emPropertyBorderLeftStyle}},
    {emPropertyBorderTop, R::kBorderSides, nullptr, kNone,
     {emPropertyBorderTopWidth, emPropertyBorderTopStyle, emPropertyBorderTopColor}},
    {emPropertyBorderRight, R::kBorderSides, nullptr, kNone,
     {emPropertyBorderRightWidth, emPropertyBorderRightStyle, emPropertyBorderRightColor}},
    {emPropertyBorderBottom, R::kBorderSides, nullptr, kNone,
     {emPropertyBorderBottomWidth, emPropertyBorderBottomStyle, emPropertyBorderBottomColor}},
    {emPropertyBorderLeft, R::kBorderSides, nullptr, kNone,
     {emPropertyBorderLeftWidth, emPropertyBorderLeftStyle, emPropertyBorderLeftColor}},
    {emPropertyBorder, R::kBorderSides, nullptr, kNone,
     {emPropertyBorderTop, emPropertyBorderRight, emPropertyBorderBottom, emPropertyBorderLeft}},
    {emPropertyDisplay, R::kLowerText, S::At<&F::m_strDisplay>, kNone, {}},
    {emPropertyWhiteSpace, R::kLowerText, S::At<&F::m_strWhiteSpace>, kNone, {}},
    {emPropertyListStyleType, R::kKeyword, S::At<&F::m_emListStyleType>, Table(ms_tListStyleTypeTable), {}},
    {emPropertyListStyleImage, R::kUrl, S::At<&F::m_urlListStyleImage>, kNone, {}},
    {emPropertyListStylePosition, R::kKeyword, S::At<&F::m_emListStylePosition>, Table(ms_tListStylePositionTable),
     {}},
    {emPropertyListStyle, R::kListStyle, nullptr, kNone,
     {emPropertyListStyleType, emPropertyListStylePosition, emPropertyListStyleImage}},
  };
  // clang-format on
  static_assert([] {
    for (size_t i = 0; i < std::size(kRows); ++i)
      if (kRows[i].id <= 0 || kRows[i].id >= kPropertyIdCapacity || (i > 0 && kRows[i - 1].id >= kRows[i].id))
        return false;
    return true;
  }(), "rows in rising identifier order, each below kPropertyIdCapacity");
  count = static_cast<int>(std::size(kRows));
  return kRows;
}

const F::CPropertyRow* F::FindPropertyRow(int id) {
  int count = 0;
  const CPropertyRow* rows = GetPropertyRows(count);
  // Row index by identifier; -1 where the format stores nothing.
  static const std::array<signed char, kPropertyIdCapacity> kIndex = [&] {
    std::array<signed char, kPropertyIdCapacity> index;
    index.fill(-1);
    for (int i = 0; i < count; ++i)
      index[rows[i].id] = static_cast<signed char>(i);
    return index;
  }();
  if (id < 0 || id >= kPropertyIdCapacity || kIndex[id] < 0)
    return nullptr;
  return &rows[kIndex[id]];
}

int F::GetPropertyParts(int id, int* parts, int capacity) {
  const CPropertyRow* row = FindPropertyRow(id);
  if (!row)
    return 0;
  int count = 0;
  auto walk = [&](auto& self, const CPropertyRow& r) -> void {
    if (r.place) {
      if (parts && count < capacity)
        parts[count] = r.id;
      ++count;
      return;
    }
    for (EmPropertyNameId part : r.parts)
      if (const CPropertyRow* p = part ? FindPropertyRow(part) : nullptr)
        self(self, *p);
  };
  walk(walk, *row);
  return count;
}

F::CSlot F::SlotOf(const CPropertyRow& row) { return row.place ? row.place(*this) : CSlot{}; }

}  // namespace telvanix
