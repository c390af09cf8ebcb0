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

TEST(CssPackExTest, ImportUrlsInOrder) {
  CByteString content = Bytes("@import url('a.css');\n@import ;\n@import \"b.css\";\np{}\n@import url(c.css);");
  CCssPackEx pack("WhoCare", &content);
  ASSERT_EQ(pack.Parse(), 1);
  std::vector<std::string> urls;
  POSITION pos = nullptr;
  for (CString url = pack.GetFirstImportCssUrl(pos); !url.IsEmpty(); url = pack.GetNextImportCssUrl(pos))
    urls.push_back(std::string(url));
  EXPECT_EQ(urls, (std::vector<std::string>{"a.css", "b.css", "c.css"}));
  EXPECT_EQ(pos, nullptr);

  CByteString none = Bytes("p {a:b}");
  CCssPackEx plain(&none);
  plain.Parse();
  EXPECT_EQ(std::string(plain.GetFirstImportCssUrl(pos)), "");
}

TEST(CssPackExTest, BaggageFilesFromEveryUrlOnce) {
  CByteString content = Bytes(
      "body { background: #fff url('img/bg.gif') no-repeat }\n"
      "ul { list-style-image: url( \"bullet.png\" ) }\n"
      ".x { cursor: url(c.cur), auto; background-image: url(IMG\\BG.GIF) }\n"
      "/* old { background: url(no.gif) } */\n"
      "@font-face { font-family: f; src: url(f.woff) format('woff') }\n"
      "a { background: url(http://example.invalid/y.gif) }\n"
      "b { background: url(data:image/png;base64,xx) } svg { filter: url(#blur) }\n"
      "i { content: myurl(z.gif); background: URL(last.jpg) }\n"
      "@import url(imported.css);\n");
  CCssPackEx pack(&content);
  pack.Parse();
  EXPECT_EQ(Baggage(pack),
            (std::vector<std::string>{"img/bg.gif", "bullet.png", "c.cur", "f.woff", "last.jpg"}));

  // Removed rules name nothing; the walk sees the lines as they are now.
  pack.GetStyle("body")->RemoveLine();
  EXPECT_EQ(Baggage(pack), (std::vector<std::string>{"bullet.png", "c.cur", "IMG\\BG.GIF", "f.woff", "last.jpg"}));

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
