#include "telvanix/css/style_property.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

TEST(StylePropertyTest, ReadsDeclarationBodies) {
  EXPECT_EQ(Read("color: red; font-size: 10pt"),
            (std::vector<Pair>{{"color", "red"}, {"font-size", "10pt"}}));
  // Names are lower-cased, blank runs inside values shrink, comments go.
  EXPECT_EQ(Read(" Font-Family:  Arial ,  /* x */ serif ;"),
            (std::vector<Pair>{{"font-family", "Arial , serif"}}));
  EXPECT_EQ(Read("font-family: 'Times New Roman'"), (std::vector<Pair>{{"font-family", "Times New Roman"}}));
  EXPECT_EQ(Read("background: url(a b.gif)  /* c */ no-repeat"),
            (std::vector<Pair>{{"background", "url(a b.gif) no-repeat"}}));
  // Blocks and at-keywords inside a value are dropped.
  EXPECT_EQ(Read("a: b {x:y} c; d: @media e"), (std::vector<Pair>{{"a", "b c"}, {"d", "e"}}));
  // A later pair of the same name replaces the value in place.
  EXPECT_EQ(Read("a:1; b:2; A:3"), (std::vector<Pair>{{"a", "3"}, {"b", "2"}}));
  // An empty value deletes the earlier pair.
  EXPECT_EQ(Read("a:1; b:2; a:;"), (std::vector<Pair>{{"b", "2"}}));
  EXPECT_TRUE(Read("").empty());
  EXPECT_TRUE(Read(nullptr).empty());
}

TEST(StylePropertyTest, ReaderNormalisesAsSetPropertyDoes) {
  // A bell byte is no blank to the scanner, so it stays in the name run,
  // and is trimmed afterwards like any other blank.
  EXPECT_EQ(Read("\aCOLOR\a : 'x' ; B:\a\"y\"\a"), (std::vector<Pair>{{"color", "x"}, {"b", "y"}}));
  // A value that is only a pair of quotes is not empty as read, so the pair
  // is kept with an empty value (and then not printed).
  CCssStyleProperty list;
  list.Analyse("a:1; a: '' ; b:2");
  EXPECT_EQ(Pairs(list), (std::vector<Pair>{{"a", ""}, {"b", "2"}}));
  EXPECT_EQ(std::string(list.GetPrintableString()), "b:2; ");
  // Quotes come off only as one enclosing pair of the opening kind.
  EXPECT_EQ(Read("a: 'p' 'q'; b: \"it's\"; c: 'x\""),
            (std::vector<Pair>{{"a", "'p' 'q'"}, {"b", "it's"}, {"c", "'x\""}}));
  // A name whose case differs from a stored one (set by the host) is still found.
  CCssStyleProperty edited;
  edited.Analyse("color:red");
  int index = 0;
  edited.GetFirstPropertyPair(index);
  edited.GetNextPropertyPair(index)->SetName("COLOR");
  edited.Analyse("color:blue");
  EXPECT_EQ(Pairs(edited), (std::vector<Pair>{{"COLOR", "blue"}}));
}

TEST(StylePropertyTest, MalformedDeclarationEndsTheList) {
  EXPECT_TRUE(Read("color red; font-size: 10pt").empty());
  EXPECT_EQ(Read("color: red; junk; font-size: 10pt"), (std::vector<Pair>{{"color", "red"}}));
  EXPECT_EQ(Read("a:b; {c:d}"), (std::vector<Pair>{{"a", "b"}}));
  EXPECT_EQ(Read("a:b; c"), (std::vector<Pair>{{"a", "b"}}));
}

TEST(StylePropertyTest, UnterminatedInputStaysInBounds) {
  EXPECT_EQ(Read("a: 'unclosed"), (std::vector<Pair>{{"a", "'unclosed"}}));
  EXPECT_EQ(Read("a: url(x"), (std::vector<Pair>{{"a", "url(x"}}));
  EXPECT_EQ(Read("a: b /* open comment"), (std::vector<Pair>{{"a", "b /* open comment"}}));
  EXPECT_EQ(Read("a: {"), (std::vector<Pair>{}));
  EXPECT_EQ(Read("a:"), (std::vector<Pair>{}));
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
