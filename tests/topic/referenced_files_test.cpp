// Files a topic refers to: baggage kinds, the vector-markup image comment,
// multimedia with the media-parameter rule, and anchor target classes.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <string>

#include "topic/topic_page.h"

namespace telvanix {
namespace {

using test::Join;
using test::TopicPage;

std::string Multimedia(CHtmlFileEx& doc) {
  return test::Walk(doc, &CHtmlFileEx::GetFirstMultimediaFile, &CHtmlFileEx::GetNextMultimediaFile);
}

std::string Multimedia(const std::string& body) {
  TopicPage page("<html><body>" + body + "</body></html>");
  return Multimedia(page.doc());
}

const char kVectorImage[] =
    "<!--[if gte vml 1]><v:shape id=\"_x0000_i1025\" type=\"#_x0000_t75\" style='width:100pt;height:50pt'>"
    "<v:imagedata src=\"topic_files/image001.png\" o:title=\"pic\"/></v:shape><![endif]-->"
    "<![if !vml]><img width=133 height=67 src=\"topic_files/image002.gif\" v:shapes=\"_x0000_i1025\">"
    "<![endif]>";

TEST(TopicBaggage, BackgroundIsAFileOnlyWhenItIsNoColourAndHasADot) {
  struct Case {
    const char* background;
    const char* expected;
  } cases[] = {
      {"white", ""}, {"white.gif", "white.gif;"}, {"bg", ""}, {"#ffffff", ""}, {"img/a&amp;b.jpg", "img/a&b.jpg;"}};
  for (const Case& c : cases) {
    TopicPage page(std::string("<html><body background=\"") + c.background + "\"><table background=t.gif>"
                   "</table></body></html>");
    std::string expected = std::string(c.expected) + "t.gif;";
    EXPECT_EQ(expected, Join(page->GetSpecialTagBaggage())) << c.background;
  }
}

TEST(TopicBaggage, ImageInputsNeedTheirType) {
  TopicPage page(
      "<html><body><input TYPE=IMAGE src=go.gif><input src=no.gif><input type=text src=no2.gif>"
      "</body></html>");
  EXPECT_EQ("go.gif;", Join(page->GetSpecialTagBaggage()));
}

TEST(TopicBaggage, VectorMarkupImageInsideItsComment) {
  TopicPage page(std::string("<html><body>") + kVectorImage + "</body></html>");
  // The fallback IMG is an ordinary image; the comment's picture is baggage.
  EXPECT_EQ("topic_files/image001.png;", Join(page->GetSpecialTagBaggage()));
  unsigned int index = 0;
  EXPECT_STREQ("topic_files/image002.gif", page->GetFirstImage(index));
}

TEST(TopicBaggage, VectorMarkupPatternMustBeWhole) {
  // 128 characters or fewer: ignored although well formed.
  std::string shortComment =
      "<!--[if gte vml 1]><v:shape id=\"a\"><v:imagedata src=\"x.png\"/></v:shape><![endif]-->"
      "<![if !vml]><img src=\"x.gif\" v:shapes=\"a\"><![endif]>";
  ASSERT_LE(shortComment.find("-->") + 3, 128u);
  TopicPage shortPage("<html><body>" + shortComment + "</body></html>");
  EXPECT_EQ("", Join(shortPage->GetSpecialTagBaggage()));

  // The IMG names another shape: the comment is not its picture.
  std::string other(kVectorImage);
  other.replace(other.find("v:shapes=\"_x0000_i1025\""), 23, "v:shapes=\"_x0000_i9999\"");
  TopicPage otherPage("<html><body>" + other + "</body></html>");
  EXPECT_EQ("", Join(otherPage->GetSpecialTagBaggage()));

  // No closing conditional after the IMG.
  std::string open(kVectorImage);
  open.erase(open.rfind("<![endif]>"));
  TopicPage openPage("<html><body>" + open + "<p>x</p></body></html>");
  EXPECT_EQ("", Join(openPage->GetSpecialTagBaggage()));
}

TEST(TopicBaggage, InlineStylesGiveOneNamePerProperty) {
  TopicPage page(
      "<html><body><div style=\"background: white url('img/bg.gif') no-repeat\">"
      "<ul style=\"list-style-image: url(&quot;dot.png&quot;); color: red\"></ul>"
      "<p style=\"color:red\">x</p><p style=\"background-image:url(a.gif);background:url(b.gif)\">"
      "</body></html>");
  EXPECT_EQ("img/bg.gif;dot.png;b.gif;a.gif;", Join(page->GetInlineStyleBaggage()));
}

TEST(TopicBaggage, StyleBlocksGiveTheirUrlFiles) {
  TopicPage page(
      "<html><head><style>body { background: url(bg.png) }\r\n"
      "li { list-style-image: url(\"b.gif\") }</style></head><body></body></html>");
  EXPECT_EQ("bg.png;b.gif;", Join(page->GetEmbeddedStyleBaggage()));
}

TEST(TopicBaggage, BaggageImagesComeStageByStage) {
  TopicPage page(
      "<html><head><style>p { background: url(embedded.gif) }</style></head>"
      "<body background=special.gif><p style=\"background:url(inline.gif)\">x</p>"
      "<OBJECT id=hhctrl type=\"application/x-oleobject\" classid=\"clsid:adb880a6-d8ff-11cf-9377-00aa003b7a11\">"
      "<PARAM name=\"Command\" value=\"ShortCut\"><PARAM name=\"Button\" value=\"Bitmap:short&amp;cut.bmp\">"
      "</OBJECT></body></html>");
  CHtmlFileEx& doc = page.doc();
  unsigned int index = 0, stage = 0;
  EXPECT_STREQ("short&cut.bmp", doc.GetFirstBaggageImage(index, stage));
  EXPECT_EQ(0u, stage);
  EXPECT_STREQ("inline.gif", doc.GetNextBaggageImage(index, stage));
  EXPECT_EQ((1u << 16) | 1u, stage);
  EXPECT_STREQ("embedded.gif", doc.GetNextBaggageImage(index, stage));
  EXPECT_EQ((1u << 16) | 2u, stage);
  EXPECT_STREQ("special.gif", doc.GetNextBaggageImage(index, stage));
  EXPECT_EQ((1u << 16) | 3u, stage);
  EXPECT_TRUE(doc.GetNextBaggageImage(index, stage).IsEmpty());
  EXPECT_TRUE(doc.GetNextBaggageImage(index, stage).IsEmpty());
  stage = 9;
  EXPECT_TRUE(doc.GetNextBaggageImage(index, stage).IsEmpty());
}

TEST(TopicBaggage, ListsAreKeptUntilTheNextAnalysis) {
  TopicPage page("<html><body background=a.gif></body></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ("a.gif;", Join(doc.GetSpecialTagBaggage()));
  CHtmlTagItem* body = doc.GetTokenList()->GetTagItem(doc.GetBodyStartPosition());
  ASSERT_NE(nullptr, body);
  body->SetAttribute("background", "b.gif");
  EXPECT_EQ("a.gif;", Join(doc.GetSpecialTagBaggage()));
  doc.Analyse();
  EXPECT_EQ("b.gif;", Join(doc.GetSpecialTagBaggage()));
}

TEST(TopicMultimedia, SoundsClipsEmbedsAndObjectsInOrderWithDuplicates) {
  TopicPage page(
      "<html><head></head><body><bgsound src=\"s.wav\"><img dynsrc=\"clip.avi\" src=a.gif>"
      "<embed src=\"m&amp;n.mid\"><embed src=\"page.htm\"><bgsound src=s.wav>"
      "<object classid=\"clsid:22D6F312-B0F6-11D0-94AB-0080C74C7E95\"><param name=FileName value=\"talk.mp3\"></object>"
      "</body></html>");
  EXPECT_EQ("s.wav;clip.avi;m&n.mid;s.wav;talk.mp3;", Multimedia(page.doc()));
}

TEST(TopicMultimedia, PlayerCodebasesChooseTheParameter) {
  const std::string flash =
      "<object classid=\"clsid:D27CDB6E-AE6D-11cf-96B8-444553540000\" "
      "codebase=\"http://download.MACROMEDIA.com/pub/shockwave/cabs/flash/swflash.cab\">";
  EXPECT_EQ("intro.swf;", Multimedia(flash + "<param name=src value=a.wav><param name=movie value=intro.swf></object>"));
  EXPECT_EQ("clip.mov;", Multimedia("<object codebase=\"http://www.apple.com/qtactivex/qtplugin.cab\">"
                                    "<param name=filename value=x.mov><param name=src value=clip.mov></object>"));
  EXPECT_EQ("y.avi;",
            Multimedia("<object codebase=\"http://activex.example.net/activex/controls/mplayer/en/nsmp2inf.cab\">"
                       "<param name=src value=x.avi><param name=FileName value=y.avi></object>"));
  // The flash codebase asks for "movie"; a src parameter is not looked at.
  TopicPage page("<html><body>" + flash + "<param name=src value=a.wav></object></body></html>");
  EXPECT_EQ("", Multimedia(page.doc()));
  POSITION pos = page->GetObjectPositions()[0];
  EXPECT_EQ(0, page->IsMultimediaActivexObject(page->GetTokenList()->GetTagItem(pos), pos));
}

TEST(TopicMultimedia, GenericParametersStopAtTheFirstNonParam) {
  // "src" names a page, so "movie" (tried later) gives the parameter.
  EXPECT_EQ("b.swf;", Multimedia("<object><param name=src value=a.htm><param name=movie value=b.swf></object>"));
  EXPECT_EQ("", Multimedia("<object><b>x</b><param name=src value=a.wav></object>"));
  // The help control is never a player.
  EXPECT_EQ("", Multimedia("<object classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\">"
                           "<param name=src value=a.wav></object>"));
}

TEST(TopicAnchors, JavaScriptHrefs) {
  CHtmlFileEx doc;
  EXPECT_EQ(0, doc.IsJavaScriptAnchorHref(nullptr));
  EXPECT_NE(0, doc.IsJavaScriptAnchorHref("JavaScript:void(0)"));
  EXPECT_NE(0, doc.IsJavaScriptAnchorHref("javascript:"));
  EXPECT_EQ(0, doc.IsJavaScriptAnchorHref("javascript"));
  EXPECT_EQ(0, doc.IsJavaScriptAnchorHref(" javascript:x"));
}

TEST(TopicAnchors, HrefTypesBySchemeTable) {
  CHtmlFileEx doc;
  struct Case {
    const char* href;
    int type;
  } cases[] = {
      {"JavaScript:void(0)", 2}, {"ftp://h/x", 10},       {"HTTP://h", 11},      {"https://h", 12},
      {"gopher://h", 13},        {"mailto:a@b", 14},      {"telnet://h", 15},    {"news:x", 16},
      {"nntp://h", 17},          {"wais://h", 18},        {"file:///c:/x", 19},  {"prospero://h", 20},
      {"a.chm::/a.htm", 100},    {"Help.CHM::/t.htm", 100}, {".chm::/a.htm", 0}, {"topic.htm", 0},
      {"", 0},                   {"C:\\x.htm", 0},        {"xyz:abc", 0},        {"abcde.chmx:y", 0},
  };
  for (const Case& c : cases)
    EXPECT_EQ(c.type, static_cast<int>(doc.GetAnchorHrefType(c.href))) << c.href;
  EXPECT_EQ(1, static_cast<int>(doc.GetAnchorHrefType(nullptr)));
}

}  // namespace
}  // namespace telvanix
