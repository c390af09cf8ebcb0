#include "telvanix/css/style_format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "golden_cases.h"
#include "telvanix/css/property_names.h"

namespace telvanix {
namespace {

using F = CCssStyleFormat;

// Every name and keyword finds its own row again (the weight table's two
// "light" rows may give either code).
TEST(PropertyNamesTest, TablesAreFoundByTheirOwnRows) {
  for (const QuickMapStringToValueItem& row : F::ms_tPropertyNameTable) {
    EXPECT_EQ(F::GetPropertyNameId(row.pszKey), row.nValue) << row.pszKey;
    EXPECT_STREQ(F::GetPropertyNameString(static_cast<F::EmPropertyNameId>(row.nValue)), row.pszKey);
  }
  EXPECT_EQ(F::ms_nPropertyNameTableSize, static_cast<int>(sizeof(F::ms_tPropertyNameTable)));
  const struct {
    QuickMapStringToValueItem* rows;
    int bytes;
  } tables[] = {{F::ms_tFontSizeTable, F::ms_nFontSizeTableSize},
                {F::ms_tFontStyleTable, F::ms_nFontStyleTableSize},
                {F::ms_tFontVariantTable, F::ms_nFontVariantTableSize},
                {F::ms_tFontWeightTable, F::ms_nFontWeightTableSize},
                {F::ms_tTextAlignTable, F::ms_nTextAlignTableSize},
                {F::ms_tHtmlAlignTable, F::ms_nHtmlAlignTableSize},
                {F::ms_tTextDecorationTable, F::ms_nTextDecorationTableSize},
                {F::ms_tVerticalAlignTable, F::ms_nVerticalAlignTableSize},
                {F::ms_tListStyleTypeTable, F::ms_nListStyleTypeTableSize},
                {F::ms_tListStylePositionTable, F::ms_nListStylePositionTableSize},
                {F::ms_tWidthAutoTable, F::ms_nWidthAutoTableSize},
                {F::ms_tHeightAutoTable, F::ms_nHeightAutoTableSize},
                {F::ms_tPositionTable, F::ms_nPositionTableSize},
                {F::ms_tVisibilityTable, F::ms_nVisibilityTableSize},
                {F::ms_tTextTransformTable, F::ms_nTextTransformTableSize},
                {F::ms_tBorderStyleTable, F::ms_nBorderStyleTableSize},
                {F::ms_tBorderWidthTable, F::ms_nBorderWidthTableSize}};
  F format;
  for (const auto& table : tables) {
    F::EmPropertyValue value = F::emValueNone;
    format.ParsePropertyToValue(value, "x", table.rows, table.bytes);  // the first search reorders the rows
    const std::vector<QuickMapStringToValueItem> rows(
        table.rows, table.rows + table.bytes / static_cast<int>(sizeof(QuickMapStringToValueItem)));
    for (const QuickMapStringToValueItem& row : rows) {
      ASSERT_EQ(format.ParsePropertyToValue(value, row.pszKey, table.rows, table.bytes), 1) << row.pszKey;
      const auto same = std::count_if(rows.begin(), rows.end(), [&](const QuickMapStringToValueItem& other) {
        return std::string(other.pszKey) == row.pszKey;
      });
      if (same == 1) {
        EXPECT_EQ(value, row.nValue) << row.pszKey;
      }
    }
  }
}

TEST(PropertyNamesTest, NamesAndReaders) {
  const struct {
    const char* name;
    int id;
  } cases[] = {{"margin-right", 33}, {"margin-left", 32}, {"padding", 39}, {"Font-Size", 2},
               {"clear", 83},        {"clip", -1},        {"", -1},        {nullptr, -1}};
  for (const auto& c : cases)
    EXPECT_EQ(F::GetPropertyNameId(c.name), c.id) << (c.name ? c.name : "(null)");
  EXPECT_EQ(F::GetPropertyNameString(static_cast<F::EmPropertyNameId>(7)), nullptr);
  const int sizes[][2] = {{0, 9}, {-4, 9}, {2, 10}, {3, 12}, {5, 18}, {6, 24}, {9, 36}};
  for (const auto& c : sizes)
    EXPECT_EQ(F::GetFontSizeInPtByIndex(c[0]), c[1]) << c[0];

  // The readers behind the properties are in tests/data/style_format; the
  // HTML align table is read by no property.
  F format;
  F::EmPropertyValue value = F::emValueNone;
  EXPECT_EQ(format.ParsePropertyToValue(value, "", F::ms_tTextAlignTable, F::ms_nTextAlignTableSize), 0);
  EXPECT_EQ(format.ParsePropertyToValue(value, nullptr, F::ms_tTextAlignTable, F::ms_nTextAlignTableSize), 0);
  EXPECT_EQ(format.ParsePropertyToValue(value, "middle", F::ms_tTextAlignTable, F::ms_nTextAlignTableSize), 0);
  EXPECT_EQ(value, F::emValueNone);
  EXPECT_EQ(format.ParsePropertyToValue(value, "middle", F::ms_tHtmlAlignTable, F::ms_nHtmlAlignTableSize), 1);
  EXPECT_EQ(value, F::emTextAlignCenter);
  CSttNumber number;
  EXPECT_EQ(format.ParsePropertyToValueAndNumber(value, number, nullptr, F::ms_tBorderWidthTable, 0), 0);
}

std::string Describe(const CSttNumber& n) { return std::string(n.GetPrintableString()); }
std::string Describe(const CSttColor& c) {
  char hex[32];
  std::snprintf(hex, sizeof hex, " (%d %06X)", c.GetKind(), c.GetColorRef());
  return std::string(c.GetPrintableString()) + hex;
}
std::string Describe(const CSttUrl& u) { return std::string(u.GetPrintableString()); }

// Every getter of a format whose value is not the unset one, then the set
// properties by name.
std::string DescribeFormat(const F& f) {
  std::ostringstream out;
  auto value = [&](const char* name, const std::string& text) {
    if (!text.empty())
      out << "  " << name << " = " << text << "\n";
  };
  auto code = [&](const char* name, int c) { value(name, c ? std::to_string(c) : ""); };
  auto number = [&](const char* name, const CSttNumber& n) { value(name, n.IsDefault() ? "" : Describe(n)); };
  auto color = [&](const char* name, const CSttColor& c) { value(name, c.IsDefault() ? "" : Describe(c)); };
  auto url = [&](const char* name, const CSttUrl& u) { value(name, u.IsDefault() ? "" : Describe(u)); };
  number("font-size", f.GetFontSize());
  value("font-family", std::string(f.GetFontFamily()));
  value("first family", std::string(f.GetFirstFontFamily()));
  code("font-weight", f.GetFontWeight());
  number("font-weight number", f.GetFontWeightNumber());
  code("bold", f.IsBoldFontWeight());
  code("font-style", f.GetFontStyle());
  code("font-variant", f.GetFontVariant());
  number("line-height", f.GetLineHeight());
  color("color", f.GetColor());
  color("background-color", f.GetBackgroundColor());
  url("background-image", f.GetBackgroundImage());
  value("background-repeat", std::string(f.GetBackgroundRepeat()));
  value("background-attachment", std::string(f.GetBackgroundAttachment()));
  value("background-position", std::string(f.GetBackgroundPosition()));
  number("word-spacing", f.GetWordSpacing());
  number("letter-spacing", f.GetLetterSpacing());
  code("text-decoration", f.GetTextDecoration());
  code("vertical-align", f.GetVerticalAlign());
  number("vertical-align number", f.GetVerticalAlignNumber());
  code("text-transform", f.GetTextTransform());
  code("text-align", f.GetTextAlign());
  number("text-indent", f.GetTextIndent());
  static const char* const kSides[] = {"top", "right", "bottom", "left", "side 4"};
  for (int side = -1; side <= F::emSideCount; ++side) {
    const std::string name = side < 0 ? "side -1" : kSides[side];
    number(("margin " + name).c_str(), f.GetMargin(side));
    number(("padding " + name).c_str(), f.GetPadding(side));
    const F::CBorder& border = f.GetBorder(side);
    code(("border width " + name).c_str(), border.GetWidthValue());
    number(("border width number " + name).c_str(), border.GetWidth());
    color(("border color " + name).c_str(), border.GetColor());
    code(("border style " + name).c_str(), border.GetStyle());
  }
  value("display", std::string(f.GetDisplay()));
  value("white-space", std::string(f.GetWhiteSpace()));
  code("list-style-type", f.GetListStyleType());
  url("list-style-image", f.GetListStyleImage());
  code("list-style-position", f.GetListStylePosition());
  out << "  set:";
  for (int id = -2; id < 100; ++id)
    if (f.IsPropertySet(static_cast<F::EmPropertyNameId>(id)))
      out << " " << id;
  out << (f.IsDefault() ? " (default)\n" : "\n");
  return out.str();
}

std::string Trim(const std::string& s) {
  const size_t first = s.find_first_not_of(" \t");
  return first == std::string::npos ? "" : s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

// Each line of a case is one format: its "name: value" pairs, split at ";",
// go to AnalyseCssProperty in order. A line starting with "+" is merged into
// the format of the line before (ConcatInner, then a copy of the result is
// described); "=" reads the rest as a declaration body (AnalyseCssProperties).
std::string DescribeDeclarations(const std::string&, const std::string& input) {
  std::ostringstream out;
  std::istringstream lines(input);
  std::string line;
  F previous;
  while (std::getline(lines, line)) {
    if (Trim(line).empty() || line[0] == '#')
      continue;
    out << line << "\n";
    F f;
    if (line[0] == '=') {
      out << "  read " << f.AnalyseCssProperties(line.c_str() + 1) << "\n";
    } else {
      std::istringstream pairs(line[0] == '+' ? line.substr(1) : line);
      std::string pair;
      while (std::getline(pairs, pair, ';')) {
        const size_t colon = pair.find(':');
        const std::string name = Trim(pair.substr(0, colon));
        const std::string text = colon == std::string::npos ? "" : Trim(pair.substr(colon + 1));
        out << "  " << name << " -> " << f.AnalyseCssProperty(name.c_str(), text.c_str()) << "\n";
      }
    }
    if (line[0] == '+') {
      out << "  merged " << previous.ConcatInner(&f) << "\n";
      f = F(previous);
    }
    out << DescribeFormat(f);
    // The printed declarations read back to the same format.
    const CString printed = f.GetPrintableString();
    F again;
    again.AnalyseCssProperties(printed);
    out << "  printed: " << printed.str() << (again.Compare(&f) ? "\n" : "(reads back different)\n");
    previous = f;
  }
  return out.str();
}

TEST(StyleFormatTest, GoldenDeclarations) { test::RunGoldenCases("style_format", ".decl", DescribeDeclarations, 3); }

TEST(StyleFormatTest, NullAndOutOfRangeInputs) {
  F f;
  EXPECT_EQ(f.AnalyseCssProperty(nullptr, "red"), 0);
  EXPECT_EQ(f.AnalyseCssProperty("color", nullptr), 0);
  EXPECT_EQ(f.ParseProperty(static_cast<F::EmPropertyNameId>(0), "x"), 0);
  EXPECT_EQ(f.ParseProperty(static_cast<F::EmPropertyNameId>(200), "x"), 0);
  EXPECT_EQ(f.ParseProperty(F::emPropertyColor, nullptr), 0);
  EXPECT_EQ(f.ConcatInner(nullptr), 0);
  EXPECT_EQ(f.Copy(nullptr), 0);
  EXPECT_EQ(f.AnalyseCssProperties(nullptr), 0);
  EXPECT_EQ(f.IsDefault(), 1);
  EXPECT_TRUE(f.GetBorder(-1).IsDefault());
  f.AnalyseCssProperty("margin", "1pt");
  f.AnalyseCssProperty("border-left", "thin");
  EXPECT_FALSE(f.GetBorder(F::emSideLeft).IsDefault());
  EXPECT_EQ(f.Copy(&f), 1);
  EXPECT_EQ(f.ConcatInner(&f), 1);
  f = f;
  EXPECT_EQ(std::string(f.GetMargin(F::emSideLeft).GetPrintableString()), "1pt");
  EXPECT_EQ(f.Default(), 1);
  EXPECT_EQ(f.IsDefault(), 1);
}

}  // namespace
}  // namespace telvanix
