#include "telvanix/css/css_style.h"

#include <gtest/gtest.h>

#include <string>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/css_selector.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {
namespace {

using CSelector = CCssStyleSelectors::CSelector;

std::string Name(const unsigned char* text) { return std::string(CCssStyle::NormalizeName(text)); }
std::string Name(const char* text) { return Name(reinterpret_cast<const unsigned char*>(text)); }

TEST(CssStyleTest, NameIsNormalised) {
  EXPECT_EQ(Name("h1, h2"), "h1, h2");
  EXPECT_EQ(Name("  a[title='x y']   b  "), "a[title='x y'] b");
  EXPECT_EQ(Name(""), "");
  EXPECT_EQ(std::string(CCssStyle::NormalizeName(nullptr)), "");
  CCssStyle style("div   /* x */ p ", "", nullptr);
  EXPECT_EQ(style.GetLastSelector()->GetTagId(), CHtmlTagItem("p").GetTagId());
}

TEST(CssStyleTest, InlineStyleHasNoNameNorChain) {
  CCssStyle inlineStyle(nullptr, "color: red; font-size: 10pt", nullptr);
  EXPECT_EQ(std::string(inlineStyle.GetStyleName()), "");
  EXPECT_EQ(inlineStyle.GetStyleSelectors()->GetSize(), 0);
  EXPECT_EQ(inlineStyle.GetLastSelector(), nullptr);
  EXPECT_EQ(inlineStyle.GetUniqueBlockStyleName(), nullptr);
  EXPECT_EQ(inlineStyle.IsContextualSelector(), 0);
  EXPECT_EQ(std::string(inlineStyle.GetPrintableString(nullptr)), "color:red; font-size:10pt; ");
  EXPECT_EQ(std::string(inlineStyle.GetOriginalString()), "color: red; font-size: 10pt");
}

TEST(CssStyleTest, BodyIsReadLazilyUnlessAListWasGiven) {
  CCssStyleProperty given;
  given.SetProperty("color", "blue");
  CCssStyle withList("p", "color: red", &given);
  CString value;
  ASSERT_EQ(withList.GetStyleProperty()->GetProperty("color", value), 1);
  EXPECT_EQ(std::string(value), "blue");  // the given list wins over the body text

  CCssStyle fromBody("p", " margin-left : 2pt ", nullptr);
  ASSERT_EQ(fromBody.GetStyleProperty()->GetProperty("margin-left", value), 1);
  EXPECT_EQ(std::string(value), "2pt");
  EXPECT_NE(fromBody.GetStyleFormat(), nullptr);
  EXPECT_EQ(std::string(fromBody.GetOriginalString()), "p { margin-left : 2pt  }");
  EXPECT_EQ(std::string(fromBody.GetPrintableString(nullptr)), "p { margin-left:2pt;  }");
}

TEST(CssStyleTest, SimpleSelectorParts) {
  // Parsed rules show their selectors in tests/data/css/selectors.expected.
  // A byte of 128 or above ends the element name, as a blank does.
  CSelector high("p\xE9x.c");
  EXPECT_EQ(std::string(high.GetElementName()), "p");
  EXPECT_EQ(high.GetPartKind(), CSelector::emPartNone);
  EXPECT_EQ(CSelector(".note").GetMjrType(), 0u);
  CSelector unknown("blink2");
  EXPECT_NE(unknown.GetTagId() & 0x20000000u, 0u);
  CSelector empty;
  EXPECT_EQ(empty.GetPartKind(), 0);
  CSelector fromNull(nullptr);
  EXPECT_EQ(fromNull.Compare(&empty), 1);
}

TEST(CssStyleTest, ChainsCompareWithCase) {
  CCssStyleSelectors upper, lower, lower2, two, empty1, empty2;
  upper.Analyse("P.Note");
  lower.Analyse("p.note");
  lower2.Analyse("p.note");
  two.Analyse("div p.note");
  EXPECT_EQ(upper.Compare(&lower), 0);
  EXPECT_EQ(lower.Compare(&lower2), 1);
  EXPECT_EQ(empty1.Compare(&empty2), 1);
  EXPECT_EQ(lower.Compare(static_cast<CCssStyleSelectors*>(nullptr)), 0);
  EXPECT_EQ(two.Compare(&lower), 0);
  CSelector single("p.note");
  EXPECT_EQ(lower.Compare(&single), 1);
  EXPECT_EQ(two.Compare(&single), 0);
  CCssStyleSelectors copy;
  EXPECT_EQ(copy.Copy(&two), 1);
  EXPECT_EQ(copy.Copy(&two), 1);  // appends
  EXPECT_EQ(copy.GetSize(), 4);
  EXPECT_EQ(two.Analyse(""), 0);
  EXPECT_EQ(two.Analyse(nullptr), 0);
}

TEST(CssStyleTest, MergingOnlyTakesTheSameName) {
  // Merged rules read from a sheet are in tests/data/css/selectors.expected.
  CCssStyle first("p", "a:b", nullptr), second("P", "c:d", nullptr), other("q", "e:f", nullptr);
  EXPECT_EQ(first.InheritNew(&other), 0);
  EXPECT_EQ(first.InheritNew(nullptr), 0);
  ASSERT_EQ(first.InheritNew(&second), 1);
  EXPECT_EQ(first.GetStyleProperty()->GetPropertyCount(), 2);
}

TEST(CssStyleTest, SameNameByHash) {
  CCssStyle style("Div P", "", nullptr);
  EXPECT_EQ(style.IsSameStyleName("div p"), 1);
  EXPECT_EQ(style.IsSameStyleName("div\tp"), 0);  // the tab is ignored, the space is not
  EXPECT_EQ(style.IsSameStyleName("divp"), 0);
  EXPECT_EQ(style.IsSameStyleName(static_cast<const char*>(nullptr)), 0);
  CCssStyle twin("div  p", "", nullptr);
  EXPECT_EQ(style.IsSameStyleName(&twin), 1);
}

TEST(CssStyleTest, UniqueBlockStyleNameTakesASuffix) {
  CCssStyle para("p", "", nullptr);
  EXPECT_EQ(para.SuffixUniqueBlockStyleName("_2"), 1);
  EXPECT_EQ(std::string(para.GetUniqueBlockStyleName()), "p_2");
  CCssStyle inlineElement("span", "", nullptr);
  EXPECT_EQ(inlineElement.SuffixUniqueBlockStyleName("x"), 0);
}

TEST(CssStyleTest, ChainOfAParsedRuleIsCutWhenFirstNeeded) {
  CByteString content(reinterpret_cast<const unsigned char*>("div  p.note {a:b}"), 17);
  CCssPack pack(&content);
  pack.Parse();
  POSITION pos = nullptr;
  CCssStyle* parsed = pack.GetFirstStyle(pos);
  ASSERT_NE(parsed, nullptr);
  // The name is analysed at once, as the flags say.
  EXPECT_EQ(parsed->GetStyleFlags() & (CCssStyle::emStylePropertyAnalysed | CCssStyle::emStyleNameAnalysed), 3u);
  // A copy taken before anyone asked for the chain has it all the same,
  // even once the original is reset.
  CCssStyle copy;
  copy.Copy(parsed);
  parsed->Default();
  EXPECT_EQ(parsed->GetStyleSelectors()->GetSize(), 0);
  ASSERT_EQ(copy.GetStyleSelectors()->GetSize(), 2);
  EXPECT_EQ(std::string(copy.GetLastSelector()->GetElementName()), "p");
  EXPECT_EQ(std::string(copy.GetLastSelector()->GetPartText()), "note");
  EXPECT_EQ(copy.IsContextualSelector(), 1);
  // What the host does to the chain sticks: it is not cut again.
  copy.GetStyleSelectors()->Default();
  EXPECT_EQ(copy.GetLastSelector(), nullptr);
}

TEST(CssStyleTest, CopyIsDeep) {
  CCssStyle source("div p.note", "color:red", nullptr);
  source.RemoveLine();
  CCssStyle copy;
  EXPECT_EQ(copy.Copy(&source), 1);
  EXPECT_EQ(copy.Copy(nullptr), 0);
  EXPECT_EQ(copy.IsRemovedLine(), 1);
  EXPECT_EQ(std::string(copy.GetStyleName()), "div p.note");
  EXPECT_EQ(copy.GetStyleSelectors()->Compare(source.GetStyleSelectors()), 1);
  EXPECT_NE(copy.GetLastSelector(), source.GetLastSelector());
  source.GetStyleProperty()->SetProperty("color", "blue");
  CString value;
  copy.GetStyleProperty()->GetProperty("color", value);
  EXPECT_EQ(std::string(value), "red");
  EXPECT_EQ(copy.Default(), 1);
  EXPECT_EQ(copy.IsRemovedLine(), 0);
  EXPECT_EQ(copy.GetStyleSelectors()->GetSize(), 0);
}

}  // namespace
}  // namespace telvanix
