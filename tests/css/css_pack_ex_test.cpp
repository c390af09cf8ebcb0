#include "telvanix/css/css_pack_ex.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace telvanix {
namespace {

CByteString Bytes(const std::string& text) {
  return CByteString(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
}

std::vector<std::string> Baggage(CCssPackEx& pack) {
  std::vector<std::string> names;
  UINT index = 99;
  for (CString name = pack.GetFirstBaggageFile(index); !name.IsEmpty(); name = pack.GetNextBaggageFile(index))
    names.push_back(std::string(name));
  return names;
}

// Import urls and baggage files of whole sheets are in tests/data/css.
TEST(CssPackExTest, BaggageWalkSeesRemovedLinesAndEmptyPacks) {
  CByteString content = Bytes("body { background: url('img/bg.gif') } b { background-image: url(IMG\\BG.GIF) }");
  CCssPackEx pack("WhoCare", &content);
  pack.Parse();
  EXPECT_EQ(Baggage(pack), (std::vector<std::string>{"img/bg.gif"}));
  // Removed rules name nothing; the walk sees the lines as they are now.
  pack.GetStyle("body")->RemoveLine();
  EXPECT_EQ(Baggage(pack), (std::vector<std::string>{"IMG\\BG.GIF"}));
  UINT index = 0;
  CCssPackEx empty(static_cast<const CByteString*>(nullptr));
  EXPECT_EQ(std::string(empty.GetFirstBaggageFile(index)), "");
  EXPECT_EQ(std::string(empty.GetNextBaggageFile(index)), "");
}

TEST(CssPackExTest, UrlCollectionStopsAtAnUnclosedUrl) {
  CStringArray names;
  EXPECT_EQ(CCssPackEx::CollectUrlFileNames("url(a.gif) url('b c.gif') url(d.gif", names), 2);
  ASSERT_EQ(names.GetSize(), 2);
  EXPECT_EQ(std::string(names[1]), "b c.gif");
  EXPECT_EQ(CCssPackEx::CollectUrlFileNames(nullptr, names), 0);
  EXPECT_EQ(CCssPackEx::CollectUrlFileNames("url('x)y.gif')", names), 1);
  EXPECT_EQ(std::string(names[2]), "x)y.gif");
}

TEST(CssPackExTest, QuickTestAndShorthandPart) {
  EXPECT_EQ(CCssPackEx::MayContainBaggageFile(nullptr), 0);
  EXPECT_EQ(CCssPackEx::MayContainBaggageFile(""), 0);
  EXPECT_EQ(CCssPackEx::MayContainBaggageFile("color: red; font-size: 10pt"), 0);
  EXPECT_EQ(CCssPackEx::MayContainBaggageFile("x: URL(a.gif)"), 1);
  EXPECT_EQ(CCssPackEx::MayContainBaggageFile("BACKGROUND-IMAGE: a.gif"), 1);
  EXPECT_EQ(CCssPackEx::MayContainBaggageFile("list-style: square"), 1);

  auto find = [](const char* value) { return std::string(CCssPackEx::FindBaggageFileInStylePropertyValue(value)); };
  EXPECT_EQ(find("#fff url(a b.gif) no-repeat"), "url(a b.gif)");
  EXPECT_EQ(find("white a.gif repeat-x"), "a.gif");
  EXPECT_EQ(find("white images/a repeat-x url(b.gif)"), "url(b.gif)");
  EXPECT_EQ(find("red 0.5em .5em -1.5em"), "");
  EXPECT_EQ(find("rgb(1.5,2,3) square inside"), "");
  EXPECT_EQ(find(""), "");
  EXPECT_EQ(find(nullptr), "");
}

}  // namespace
}  // namespace telvanix
