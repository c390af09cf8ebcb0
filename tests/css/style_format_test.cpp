#include "telvanix/css/style_format.h"

#include <gtest/gtest.h>

#include <string>

#include "telvanix/css/property_names.h"

namespace telvanix {
namespace {

using F = CCssStyleFormat;

TEST(PropertyNamesTest, NameTable) {
  const struct {
    const char* name;
    int id;
  } cases[] = {{"margin-right", 33}, {"margin-left", 32}, {"padding", 39}, {"Font-Size", 2},
               {"clear", 83},        {"clip", -1},        {"", -1},        {nullptr, -1}};
  for (const auto& c : cases)
    EXPECT_EQ(F::GetPropertyNameId(c.name), c.id) << (c.name ? c.name : "(null)");
  EXPECT_EQ(F::GetPropertyNameString(static_cast<F::EmPropertyNameId>(7)), nullptr);
  EXPECT_STREQ(F::GetPropertyNameString(F::emPropertyBorderLeftStyle), "border-left-style");
  EXPECT_EQ(F::ms_nPropertyNameTableSize / static_cast<int>(sizeof(QuickMapStringToValueItem)), 65);
  // Every row's name finds its own identifier again.
  for (const QuickMapStringToValueItem& row : F::ms_tPropertyNameTable)
    EXPECT_EQ(F::GetPropertyNameId(row.pszKey), row.nValue) << row.pszKey;
}

TEST(PropertyNamesTest, FontSizeByIndex) {
  const int cases[][2] = {{0, 9}, {-4, 9}, {2, 10}, {3, 12}, {5, 18}, {6, 24}, {9, 36}};
  for (const auto& c : cases)
    EXPECT_EQ(F::GetFontSizeInPtByIndex(c[0]), c[1]) << c[0];
}

TEST(PropertyNamesTest, KeywordReaders) {
  F format;
  F::EmPropertyValue value = F::emValueNone;
  EXPECT_EQ(format.ParsePropertyToValue(value, "capitalize", F::ms_tTextTransformTable,
                                        F::ms_nTextTransformTableSize), 0);
  EXPECT_EQ(value, F::emValueNone);
  EXPECT_EQ(format.ParsePropertyToValue(value, "capitalisze", F::ms_tTextTransformTable,
                                        F::ms_nTextTransformTableSize), 1);
  EXPECT_EQ(value, 1501);
  EXPECT_EQ(format.ParsePropertyToValue(value, "uppercase none", F::ms_tTextTransformTable,
                                        F::ms_nTextTransformTableSize), 1);
  EXPECT_EQ(value, 1502);
  EXPECT_EQ(format.ParsePropertyToValue(value, "", F::ms_tTextTransformTable, F::ms_nTextTransformTableSize), 0);
  EXPECT_EQ(format.ParsePropertyToValue(value, nullptr, F::ms_tTextTransformTable, F::ms_nTextTransformTableSize),
            0);
  EXPECT_EQ(value, 1502);

  CSttNumber number;
  EXPECT_EQ(format.ParsePropertyToValueAndNumber(value, number, "thin", F::ms_tBorderWidthTable,
                                                 F::ms_nBorderWidthTableSize), 1);
  EXPECT_EQ(value, 2201);
  EXPECT_EQ(format.ParsePropertyToValueAndNumber(value, number, "2px", F::ms_tBorderWidthTable,
                                                 F::ms_nBorderWidthTableSize), 1);
  EXPECT_EQ(value, F::emValueNumber);
  EXPECT_FLOAT_EQ(number.GetNum(), 2.0f);
  EXPECT_EQ(number.GetUnitType(), CSttNumber::emUnitPx);
  EXPECT_EQ(format.ParsePropertyToValueAndNumber(value, number, "wide", F::ms_tBorderWidthTable,
                                                 F::ms_nBorderWidthTableSize), 0);
  EXPECT_EQ(value, F::emValueNumber);

  // "middle" is an HTML align word only.
  EXPECT_EQ(format.ParsePropertyToValue(value, "middle", F::ms_tTextAlignTable, F::ms_nTextAlignTableSize), 0);
  EXPECT_EQ(format.ParsePropertyToValue(value, "middle", F::ms_tHtmlAlignTable, F::ms_nHtmlAlignTableSize), 1);
  EXPECT_EQ(value, F::emTextAlignCenter);
  // "light" is in the weight table twice; either code may come back.
  EXPECT_EQ(format.ParsePropertyToValue(value, "light", F::ms_tFontWeightTable, F::ms_nFontWeightTableSize), 1);
  EXPECT_TRUE(value == 1102 || value == 1110);
  EXPECT_EQ(format.ParsePropertyToValue(value, "600", F::ms_tFontWeightTable, F::ms_nFontWeightTableSize), 0);
}

TEST(StyleFormatTest, SingleValuedProperties) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty("font-style", "ITALIC"), 1);
  EXPECT_EQ(f.GetFontStyle(), F::emFontStyleItalic);
  EXPECT_EQ(f.AnalyseCssProperty("font-variant", "small-caps"), 1);
  EXPECT_EQ(f.GetFontVariant(), F::emFontVariantSmallCaps);
  EXPECT_EQ(f.AnalyseCssProperty("color", "#F00"), 1);
  EXPECT_EQ(f.GetColor().GetColorRef(), 0x0000FFu);
  EXPECT_EQ(f.AnalyseCssProperty("background-color", "navy"), 1);
  EXPECT_EQ(f.GetBackgroundColor().GetColorRef(), 0x800000u);
  EXPECT_EQ(f.AnalyseCssProperty("text-decoration", "italic underline"), 1);
  EXPECT_EQ(f.GetTextDecoration(), F::emTextDecorationItalic);
  EXPECT_EQ(f.AnalyseCssProperty("vertical-align", "-3px"), 1);
  EXPECT_EQ(f.GetVerticalAlign(), F::emValueNumber);
  EXPECT_FLOAT_EQ(f.GetVerticalAlignNumber().GetNumEx(), -3.0f);
  EXPECT_EQ(f.AnalyseCssProperty("text-transform", "capitalize"), 0);
  EXPECT_EQ(f.IsPropertySet(F::emPropertyTextTransform), 0);
  EXPECT_EQ(f.AnalyseCssProperty("text-align", "justify"), 1);
  EXPECT_EQ(f.GetTextAlign(), F::emTextAlignJustify);
  EXPECT_EQ(f.AnalyseCssProperty("text-indent", "2em"), 1);
  EXPECT_EQ(f.GetTextIndent().GetUnitType(), CSttNumber::emUnitEm);
  EXPECT_EQ(f.AnalyseCssProperty("line-height", "14pt"), 1);
  EXPECT_EQ(f.AnalyseCssProperty("margin-left", "5px"), 1);
  EXPECT_FLOAT_EQ(f.GetMargin(F::emSideLeft).GetNum(), 5.0f);
  EXPECT_TRUE(f.GetMargin(F::emSideRight).IsDefault());
  EXPECT_EQ(f.AnalyseCssProperty("border-bottom-width", "thick"), 1);
  EXPECT_EQ(f.GetBorder(F::emSideBottom).GetWidthValue(), F::emBorderWidthThick);
  EXPECT_EQ(f.AnalyseCssProperty("border-left-color", "red"), 1);
  EXPECT_EQ(f.GetBorder(F::emSideLeft).GetColor().GetColorRef(), 0x0000FFu);
  EXPECT_EQ(f.AnalyseCssProperty("border-top-style", "dashed"), 1);
  EXPECT_EQ(f.GetBorder(F::emSideTop).GetStyle(), F::emBorderStyleDashed);
  EXPECT_EQ(f.AnalyseCssProperty("list-style-type", "upper-roman"), 1);
  EXPECT_EQ(f.GetListStyleType(), F::emListStyleTypeUpperRoman);
  EXPECT_EQ(f.AnalyseCssProperty("list-style-image", "url('b.gif')"), 1);
  EXPECT_EQ(std::string(f.GetListStyleImage().GetUrlName()), "b.gif");
  EXPECT_EQ(f.AnalyseCssProperty("list-style-position", "inside"), 1);
  EXPECT_EQ(f.GetListStylePosition(), F::emListStylePositionInside);
  EXPECT_EQ(f.IsPropertySet(F::emPropertyListStylePosition), 1);
}

TEST(StyleFormatTest, RejectedInputs) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty(nullptr, "red"), 0);
  EXPECT_EQ(f.AnalyseCssProperty("color", nullptr), 0);
  EXPECT_EQ(f.AnalyseCssProperty("color", ""), 0);
  EXPECT_EQ(f.AnalyseCssProperty("clip", "auto"), 0);
  // Identifiers beyond 65 are never stored.
  EXPECT_EQ(f.AnalyseCssProperty("width", "auto"), 0);
  EXPECT_EQ(f.AnalyseCssProperty("visibility", "hidden"), 0);
  EXPECT_EQ(f.ParseProperty(static_cast<F::EmPropertyNameId>(0), "x"), 0);
  EXPECT_EQ(f.IsDefault(), 1);
  // A rejected value leaves the earlier one.
  f.AnalyseCssProperty("margin-top", "4pt");
  EXPECT_EQ(f.AnalyseCssProperty("margin-top", "auto"), 0);
  EXPECT_FLOAT_EQ(f.GetMargin(F::emSideTop).GetNum(), 4.0f);
  // A value of 0 is still a given value.
  F zero;
  EXPECT_EQ(zero.AnalyseCssProperty("margin-top", "0"), 1);
  EXPECT_EQ(zero.IsPropertySet(F::emPropertyMarginTop), 1);
  EXPECT_EQ(zero.IsDefault(), 0);
}

TEST(StyleFormatTest, FontSizeKeywordsKeepNoUnit) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty("font-size", "12pt"), 1);
  EXPECT_EQ(f.GetFontSize().GetUnitType(), CSttNumber::emUnitPt);
  EXPECT_EQ(f.AnalyseCssProperty("font-size", "large"), 1);
  EXPECT_EQ(f.GetFontSize().GetPoints(-1, -1, -1), 14);
  const struct {
    const char* value;
    BOOL read;
    float num;  // a rejected keyword leaves the earlier size
  } cases[] = {{"large", 1, 14}, {"medium", 1, 12}, {"xx-small", 1, 9}, {"xx-large", 1, 24},
               {"larger", 1, 1.5f}, {"smaller", 1, 0.67f}, {"huge", 0, 0.67f}};
  for (const auto& c : cases) {
    EXPECT_EQ(f.AnalyseCssProperty("font-size", c.value), c.read) << c.value;
    EXPECT_FLOAT_EQ(f.GetFontSize().GetNum(), c.num) << c.value;
    EXPECT_EQ(f.GetFontSize().GetUnitType(), CSttNumber::emUnitNone) << c.value;
  }
}

TEST(StyleFormatTest, FontWeightAndFamily) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty("font-weight", "bold"), 1);
  EXPECT_EQ(f.IsBoldFontWeight(), 1);
  EXPECT_EQ(f.AnalyseCssProperty("font-weight", "700"), 1);
  EXPECT_EQ(f.GetFontWeight(), F::emValueNumber);
  EXPECT_EQ(f.IsBoldFontWeight(), 1);
  EXPECT_EQ(f.AnalyseCssProperty("font-weight", "normal"), 1);
  EXPECT_EQ(f.IsBoldFontWeight(), 0);
  EXPECT_EQ(f.AnalyseCssProperty("font-family", "'Times New Roman', serif"), 1);
  EXPECT_EQ(std::string(f.GetFontFamily()), "'Times New Roman', serif");
  EXPECT_EQ(std::string(f.GetFirstFontFamily()), "Times New Roman");
}

TEST(StyleFormatTest, FontShorthand) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty("font", "italic bold 12pt/14pt Arial, sans-serif"), 1);
  EXPECT_EQ(f.GetFontStyle(), F::emFontStyleItalic);
  EXPECT_EQ(f.GetFontWeight(), F::emFontWeightBold);
  EXPECT_FLOAT_EQ(f.GetFontSize().GetNum(), 12.0f);
  EXPECT_EQ(f.GetFontSize().GetUnitType(), CSttNumber::emUnitPt);
  EXPECT_FLOAT_EQ(f.GetLineHeight().GetNum(), 14.0f);
  EXPECT_EQ(std::string(f.GetFontFamily()), "Arial, sans-serif");
  EXPECT_EQ(f.IsPropertySet(F::emPropertyFont), 1);
  EXPECT_EQ(f.IsPropertySet(F::emPropertyFontVariant), 0);

  F numeric;
  EXPECT_EQ(numeric.AnalyseCssProperty("font", "700 small Verdana"), 1);
  EXPECT_EQ(numeric.GetFontWeight(), F::emValueNumber);
  EXPECT_FLOAT_EQ(numeric.GetFontSize().GetNum(), 10.0f);
  EXPECT_EQ(std::string(numeric.GetFirstFontFamily()), "Verdana");

  F bad;
  EXPECT_EQ(bad.AnalyseCssProperty("font", "bold Arial"), 0);
  EXPECT_EQ(bad.IsDefault(), 1);
}

TEST(StyleFormatTest, BoxShorthands) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty("margin", "1pt 2pt 3pt"), 1);
  EXPECT_FLOAT_EQ(f.GetMargin(F::emSideTop).GetNum(), 1.0f);
  EXPECT_FLOAT_EQ(f.GetMargin(F::emSideRight).GetNum(), 2.0f);
  EXPECT_FLOAT_EQ(f.GetMargin(F::emSideBottom).GetNum(), 3.0f);
  EXPECT_FLOAT_EQ(f.GetMargin(F::emSideLeft).GetNum(), 2.0f);
  EXPECT_EQ(f.IsPropertySet(F::emPropertyMarginLeft), 1);
  EXPECT_EQ(f.AnalyseCssProperty("padding", "4px 6px"), 1);
  EXPECT_FLOAT_EQ(f.GetPadding(F::emSideBottom).GetNum(), 4.0f);
  EXPECT_FLOAT_EQ(f.GetPadding(F::emSideLeft).GetNum(), 6.0f);
  EXPECT_EQ(f.AnalyseCssProperty("padding", "auto"), 0);
  EXPECT_FLOAT_EQ(f.GetPadding(F::emSideLeft).GetNum(), 6.0f);
  EXPECT_TRUE(f.GetMargin(7).IsDefault());
  EXPECT_TRUE(f.GetBorder(-1).IsDefault());
}

TEST(StyleFormatTest, BorderShorthands) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty("border", "1px solid #000"), 1);
  for (int side = 0; side < F::emSideCount; ++side) {
    const F::CBorder& b = f.GetBorder(side);
    EXPECT_EQ(b.GetWidthValue(), F::emValueNumber);
    EXPECT_FLOAT_EQ(b.GetWidth().GetNum(), 1.0f);
    EXPECT_EQ(b.GetStyle(), F::emBorderStyleSolid);
    EXPECT_EQ(b.GetColor().GetColorRef(), 0u);
  }
  EXPECT_EQ(f.AnalyseCssProperty("border-left", "dotted red thin"), 1);
  EXPECT_EQ(f.GetBorder(F::emSideLeft).GetStyle(), F::emBorderStyleDotted);
  EXPECT_EQ(f.GetBorder(F::emSideLeft).GetWidthValue(), F::emBorderWidthThin);
  EXPECT_EQ(f.GetBorder(F::emSideRight).GetStyle(), F::emBorderStyleSolid);
  EXPECT_EQ(f.AnalyseCssProperty("border-style", "none double"), 1);
  EXPECT_EQ(f.GetBorder(F::emSideTop).GetStyle(), F::emBorderStyleNone);
  EXPECT_EQ(f.GetBorder(F::emSideLeft).GetStyle(), F::emBorderStyleDouble);
  EXPECT_EQ(f.AnalyseCssProperty("border-color", "red lime blue white"), 1);
  EXPECT_EQ(f.GetBorder(F::emSideBottom).GetColor().GetColorRef(), 0xFF0000u);
  EXPECT_EQ(f.AnalyseCssProperty("border-width", "thin 3px"), 1);
  EXPECT_EQ(f.GetBorder(F::emSideRight).GetWidthValue(), F::emValueNumber);
  EXPECT_EQ(f.AnalyseCssProperty("border-width", "thin wide"), 0);
}

TEST(StyleFormatTest, BackgroundAndListStyle) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty("background", "#fff url('img/b g.gif') no-repeat fixed left 10%"), 1);
  EXPECT_EQ(f.GetBackgroundColor().GetColorRef(), 0xFFFFFFu);
  EXPECT_EQ(std::string(f.GetBackgroundImage().GetUrlName()), "img/b g.gif");
  EXPECT_EQ(std::string(f.GetBackgroundRepeat()), "no-repeat");
  EXPECT_EQ(std::string(f.GetBackgroundAttachment()), "fixed");
  EXPECT_EQ(std::string(f.GetBackgroundPosition()), "left 10%");

  EXPECT_EQ(f.AnalyseCssProperty("list-style", "square outside url(dot.gif)"), 1);
  EXPECT_EQ(f.GetListStyleType(), F::emListStyleTypeSquare);
  EXPECT_EQ(f.GetListStylePosition(), F::emListStylePositionOutside);
  EXPECT_EQ(std::string(f.GetListStyleImage().GetUrlName()), "dot.gif");
  EXPECT_EQ(f.AnalyseCssProperty("list-style", "fancy"), 0);
}

TEST(StyleFormatTest, MergingAndCopying) {
  F base, over;
  base.AnalyseCssProperty("color", "red");
  base.AnalyseCssProperty("margin", "1pt");
  over.AnalyseCssProperty("color", "blue");
  over.AnalyseCssProperty("margin-left", "0");
  EXPECT_EQ(base.ConcatInner(&over), 1);
  EXPECT_EQ(base.GetColor().GetColorRef(), 0xFF0000u);
  EXPECT_TRUE(base.GetMargin(F::emSideLeft).IsDefault());
  EXPECT_FLOAT_EQ(base.GetMargin(F::emSideTop).GetNum(), 1.0f);
  EXPECT_EQ(base.ConcatInner(nullptr), 0);

  F copy(base);
  EXPECT_EQ(copy.GetColor().GetColorRef(), 0xFF0000u);
  EXPECT_FLOAT_EQ(copy.GetMargin(F::emSideBottom).GetNum(), 1.0f);
  EXPECT_EQ(copy.IsPropertySet(F::emPropertyMarginLeft), 1);
  EXPECT_EQ(copy.Copy(nullptr), 0);

  F body;
  EXPECT_EQ(body.AnalyseCssProperties("font-size: 10pt; color: green"), 1);
  EXPECT_FLOAT_EQ(body.GetFontSize().GetNum(), 10.0f);
  EXPECT_EQ(body.GetColor().GetColorRef(), 0x008000u);
  EXPECT_EQ(body.AnalyseCssProperties("unknown: 1"), 0);
  body.Default();
  EXPECT_EQ(body.IsDefault(), 1);
}

}  // namespace
}  // namespace telvanix
