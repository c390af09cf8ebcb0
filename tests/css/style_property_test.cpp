#include "telvanix/css/style_property.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "golden_cases.h"
#include "telvanix/css/style_format.h"

namespace telvanix {
namespace {

using Pair = std::pair<std::string, std::string>;

std::vector<Pair> Pairs(const CCssStyleProperty& list) {
  std::vector<Pair> out;
  int index = 0;
  list.GetFirstPropertyPair(index);
  while (CCssStyleProperty::CPropertyPair* pair = list.GetNextPropertyPair(index))
    out.emplace_back(std::string(pair->GetName()), std::string(pair->GetValue()));
  return out;
}

std::vector<Pair> Read(const char* body) {
  CCssStyleProperty list;
  EXPECT_EQ(list.Analyse(body), 1);
  return Pairs(list);
}

// Each line of a case is one declaration body; the pairs read from it and
// the list printed back are described.
std::string DescribeBodies(const std::string&, const std::string& input) {
  std::ostringstream out;
  std::istringstream lines(input);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line[0] == '#')
      continue;
    CCssStyleProperty list;
    out << "[" << line << "] " << list.Analyse(line.c_str()) << "\n";
    for (const Pair& pair : Pairs(list))
      out << "  [" << pair.first << "] = [" << pair.second << "]\n";
    out << "  printed [" << list.GetPrintableString() << "]\n";
  }
  return out.str();
}

TEST(StylePropertyTest, GoldenBodies) { test::RunGoldenCases("declarations", ".body", DescribeBodies, 2); }

TEST(StylePropertyTest, AnalysingAgainFindsANameOfOtherCase) {
  // A name whose case differs from a stored one (set by the host) is still found.
  CCssStyleProperty edited;
  edited.Analyse("color:red");
  int index = 0;
  edited.GetFirstPropertyPair(index);
  edited.GetNextPropertyPair(index)->SetName("COLOR");
  edited.Analyse("color:blue");
  EXPECT_EQ(Pairs(edited), (std::vector<Pair>{{"COLOR", "blue"}}));
}

TEST(StylePropertyTest, LongValuesStayWhole) {
  CCssStyleProperty none;
  EXPECT_EQ(none.Analyse(static_cast<const char*>(nullptr)), 1);
  EXPECT_EQ(none.GetPropertyCount(), 0);
  std::string longValue = "x: " + std::string(100000, 'v');
  auto pairs = Read(longValue.c_str());
  ASSERT_EQ(pairs.size(), 1u);
  EXPECT_EQ(pairs[0].second.size(), 100000u);
}

TEST(StylePropertyTest, SetGetAndDelete) {
  CCssStyleProperty list;
  EXPECT_EQ(list.SetProperty(" COLOR ", "'blue'"), 1);
  CString value;
  EXPECT_EQ(list.GetProperty("color", value), 1);
  EXPECT_EQ(std::string(value), "blue");
  EXPECT_EQ(list.GetProperty(" Color", value), 1);

  list.SetProperty("margin", "1pt");
  list.SetProperty("color", "green");
  EXPECT_EQ(Pairs(list), (std::vector<Pair>{{"color", "green"}, {"margin", "1pt"}}));

  EXPECT_EQ(list.SetProperty("color", ""), 1);
  EXPECT_EQ(list.GetProperty("color", value), 0);
  EXPECT_EQ(list.SetProperty("margin", nullptr), 1);
  EXPECT_EQ(list.GetPropertyCount(), 0);

  EXPECT_EQ(list.SetProperty(nullptr, "x"), 0);
  EXPECT_EQ(list.GetProperty(nullptr, value), 0);
  EXPECT_EQ(list.DeleteProperty(nullptr), 0);
  EXPECT_EQ(list.DeleteProperty("absent"), 1);
  int index = 5;
  EXPECT_EQ(list.GetFirstPropertyPair(index), 0);
  EXPECT_EQ(index, 0);
  EXPECT_EQ(list.GetNextPropertyPair(index), nullptr);
}

TEST(StylePropertyTest, ConcatKeepsBothPairsAndTheFirstWins) {
  CCssStyleProperty red, blue;
  red.Analyse("color: red");
  blue.Analyse("color: blue");
  EXPECT_EQ(red.Concat(&blue), 1);
  CString value;
  red.GetProperty("color", value);
  EXPECT_EQ(std::string(value), "red");
  EXPECT_EQ(std::string(red.GetPrintableString()), "color:red; color:blue; ");
  // The format sees the pairs in order, so the later one is what it keeps.
  EXPECT_EQ(red.GetStyleFormat()->GetColor().GetColorRef(), 0xFF0000u);

  EXPECT_EQ(red.Concat(nullptr), 0);
  EXPECT_EQ(red.Concat(&red), 1);
  EXPECT_EQ(red.GetPropertyCount(), 4);

  CCssStyleProperty copy;
  EXPECT_EQ(copy.Copy(&blue), 1);
  EXPECT_EQ(copy.Copy(nullptr), 0);
  EXPECT_EQ(copy.Copy(&copy), 1);
  EXPECT_EQ(Pairs(copy), (std::vector<Pair>{{"color", "blue"}}));
  CCssStyleProperty assigned;
  assigned = red;
  EXPECT_EQ(assigned.GetPropertyCount(), 4);
}

TEST(StylePropertyTest, CachedFormatIsDroppedOnChange) {
  CCssStyleProperty list;
  list.Analyse("color: red");
  CCssStyleFormat* format = list.GetStyleFormat();
  ASSERT_NE(format, nullptr);
  EXPECT_EQ(list.GetStyleFormat(), format);
  EXPECT_EQ(format->GetColor().GetColorRef(), 0x0000FFu);
  list.SetProperty("color", "lime");
  EXPECT_EQ(list.GetStyleFormat()->GetColor().GetColorRef(), 0x00FF00u);
  list.DeleteProperty("color");
  EXPECT_EQ(list.GetStyleFormat()->IsDefault(), 1);
  list.SetProperty("font-size", "large");
  EXPECT_FLOAT_EQ(list.GetStyleFormat()->GetFontSize().GetNum(), 14.0f);
  list.Default();
  EXPECT_EQ(list.GetStyleFormat()->IsDefault(), 1);
}

TEST(StylePropertyTest, Printing) {
  CCssStyleProperty list;
  list.Analyse("color: red; font-size: 10pt");
  EXPECT_EQ(std::string(list.GetPrintableString()), "color:red; font-size:10pt; ");
  CCssStyleProperty one;
  one.SetProperty("a", "b");
  EXPECT_EQ(std::string(one.GetPrintableString("   ")), "\r\n   a:b; ");
  EXPECT_EQ(std::string(one.GetPrintableString("")), "a:b; ");
  EXPECT_EQ(std::string(CCssStyleProperty().GetPrintableString()), "");
}

TEST(StylePropertyTest, QuoteAndDequote) {
  // Quoting never adds quotes, whatever they count.
  EXPECT_EQ(std::string(CCssStyleProperty::QuotePairValue("  it's  ")), "it's");
  EXPECT_EQ(std::string(CCssStyleProperty::QuotePairValue("Times New Roman")), "Times New Roman");
  EXPECT_EQ(std::string(CCssStyleProperty::QuotePairValue("")), "");

  const struct {
    const char* text;
    int length;
    const char* value;
  } cases[] = {{" 'Times New Roman' ", -1, "Times New Roman"}, {"'a' 'b'", -1, "'a' 'b'"}, {"\"it's\"", -1, "it's"},
               {"'x\"", -1, "'x\""}, {"''", -1, ""}, {"'", -1, "'"}, {"'abc'def", 5, "abc"}, {"ab", 99, "ab"},
               {nullptr, -1, ""}};
  for (const auto& c : cases)
    EXPECT_EQ(std::string(CCssStyleProperty::DeQuotePairValue(c.text, c.length)), c.value) << (c.text ? c.text : "");
}

TEST(StylePropertyTest, FileNameFromUrlValue) {
  const struct {
    const char* value;
    const char* file;
  } cases[] = {{"url('img/a.gif')", "img/a.gif"}, {"URL( img/a.gif )", "img/a.gif"}, {"\"img/a.gif\"", "img/a.gif"},
               {"url(img/a.gif", ""}, {"url(a(1).gif)", "a(1).gif"}, {"url()", ""}, {nullptr, ""}};
  for (const auto& c : cases)
    EXPECT_EQ(std::string(CCssStyleProperty::GetFileNameFromUrlPairValue(c.value)), c.file) << (c.value ? c.value : "");
}

}  // namespace
}  // namespace telvanix
