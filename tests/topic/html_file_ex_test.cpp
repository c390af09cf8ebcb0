// The topic document's walk, skeleton and head/body accessors.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "topic/topic_page.h"

namespace telvanix {
namespace {

using test::InOrder;
using test::Text;
using test::TopicPage;
using test::Walk;

std::string TagText(CHtmlFileEx& doc, POSITION pos) {
  CHtmlTokenItem* token = pos ? doc.GetTokenList()->GetTokenItem(pos) : nullptr;
  return token ? std::string(token->GetPrintableText(CHtmlTokenItem::emTextTokenOnly)) : std::string("<none>");
}

std::string Title(CHtmlFileEx& doc) { return Text(doc, &CHtmlFileEx::GetHtmlTitle); }
std::string Sheet(CHtmlFileEx& doc) { return Text(doc, &CHtmlFileEx::GetExternalStyleSheetFileName); }

// The sound's file and loop, or "<none>".
std::string Sound(CHtmlFileEx& doc) {
  CString file;
  int loop = 99;
  return doc.GetBackgroundSound(file, loop) ? file.str() + " loop " + std::to_string(loop) : "<none>";
}

TEST(TopicWalk, FirstBodyLastHeadAndListsInDocumentOrder) {
  TopicPage page(
      "<html><head id=h1></head><head id=h2><title>T</title><title>U</title></head>"
      "<body id=b1><p style=\"color:red\">x</p><a name=top></a><a href=\"a.htm\">a</a>"
      "<map name=m><area href=\"b.htm\"></map><img src=a.gif><img>"
      "<!-- c --><script src=s.js></script><script>x()</script></body>"
      "<body id=b2></body></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ(1, doc.Analyse());
  EXPECT_EQ("<body id=b1>", TagText(doc, doc.GetBodyStartPosition()));
  EXPECT_EQ("<head id=h2>", TagText(doc, doc.GetHeadStartPosition()));
  EXPECT_EQ("<title>", TagText(doc, doc.GetTitlePosition()));
  EXPECT_EQ(1, doc.GetStyledTagPositions().GetSize());
  EXPECT_EQ(2, doc.GetAnchorPositions().GetSize());  // start tags only
  EXPECT_EQ(1, doc.GetNamedAnchorPositions().GetSize());
  EXPECT_EQ(3, doc.GetMapTagPositions().GetSize());  // MAP, AREA, /MAP
  EXPECT_EQ(2, doc.GetImagePositions().GetSize());
  EXPECT_EQ(1, doc.GetCommentPositions().GetSize());
  EXPECT_EQ(2, doc.GetScriptPositions().GetSize());

  unsigned int index = 0;
  EXPECT_STREQ("s.js", doc.GetFirstScriptSource(index));
  EXPECT_EQ(nullptr, doc.GetNextScriptSource(index));
  EXPECT_EQ("a.htm;b.htm;", Walk(doc, &CHtmlFileEx::GetFirstAnchorHref, &CHtmlFileEx::GetNextAnchorHref));
}

TEST(TopicWalk, StylesheetLinkRevDecidesBeforeRel) {
  // rel says stylesheet but rev says otherwise; the second has no href.
  TopicPage page(
      "<html><head><link rel=stylesheet rev=made href=a.css><link rel=StyleSheet>"
      "<link REL=\"STYLESHEET\" href=\"b.css\"><link rel=stylesheet href=c.css></head></html>");
  EXPECT_EQ("b.css", Sheet(page.doc()));
  EXPECT_EQ(4, page->GetLinkTagPositions().GetSize());
  TopicPage rev("<html><head><link rev=StyleSheet rel=alternate href=\"r&amp;d.css\"></head></html>");
  EXPECT_EQ("r&d.css", Sheet(rev.doc()));
}

TEST(TopicWalk, DiscardedTokensAreNotRecordedAndReanalysisSeesEdits) {
  TopicPage page("<html><head><title>A</title></head><body><img src=a.gif></body></html>");
  CHtmlFileEx& doc = page.doc();
  ASSERT_EQ(1, doc.Analyse());
  ASSERT_EQ(1, doc.GetImagePositions().GetSize());
  doc.GetTokenList()->GetTokenItem(doc.GetImagePositions()[0])->DiscardToken();
  EXPECT_EQ(1, doc.GetImagePositions().GetSize());  // not re-analysed yet
  doc.Analyse();
  EXPECT_EQ(0, doc.GetImagePositions().GetSize());
}

TEST(TopicSkeleton, DefaultFileIsSixTagsWithSaverLineBreaks) {
  CHtmlFileEx doc;
  EXPECT_EQ(1, doc.CreateDefaultHtmlFile());
  EXPECT_TRUE(doc.GetHtmlStartPosition() && doc.GetHeadEndPosition() && doc.GetBodyEndPosition());
  CByteString out;
  ASSERT_EQ(1, doc.Save(&out, CHtmlPack::emSave));
  EXPECT_STREQ("<HTML>\r\n<HEAD>\r\n</HEAD>\r\n<BODY>\r\n</BODY>\r\n</HTML>", static_cast<const char*>(out));

  TopicPage page("<html><body><p>old</p></body></html>");
  EXPECT_EQ(1, page->CreateDefaultHtmlFile());
  EXPECT_EQ(6, page->GetTokenList()->GetCount());
  EXPECT_EQ(1, page->Analyse());  // must not read the old source again
  EXPECT_EQ(6, page->GetTokenList()->GetCount());
}

TEST(TopicEmpty, EmptyDocumentAnalysesAndEveryGetterGivesZero) {
  CHtmlFileEx doc;
  EXPECT_EQ(1, doc.Analyse());
  CString text;
  COLORREF color = 0;
  int n = 0;
  EXPECT_EQ(0, doc.GetHtmlTitle(text));
  EXPECT_EQ(0, doc.GetColor(CHtmlFileEx::emColorText, color));
  EXPECT_EQ(0, doc.GetWaterMark(n));
  EXPECT_EQ(0, doc.GetBackgroundImage(text));
  EXPECT_EQ(0, doc.GetBackgroundSound(text, n));
  EXPECT_EQ(0, doc.GetBodyHtmlText(text));
  EXPECT_EQ(0, doc.GetExternalStyleSheetFileName(text));
  EXPECT_EQ(0, doc.SetHtmlTitle("x"));
  EXPECT_EQ(0, doc.SetColor(CHtmlFileEx::emColorText, 0));
  EXPECT_EQ(0, doc.SetBodyHtmlText("<p>x</p>", 1));  // no anchor for BODY tags
  EXPECT_EQ(0, doc.GetTokenList()->GetCount());
}

TEST(TopicColors, SetColorWritesNamesAndNoColorDeletes) {
  TopicPage page("<html><body bgcolor=\"#ffffff\" text=black>x</body></html>");
  CHtmlFileEx& doc = page.doc();
  COLORREF color = 0;
  EXPECT_EQ(1, doc.GetColor(CHtmlFileEx::emColorBgColor, color));
  EXPECT_EQ(0xFFFFFFu, color);
  EXPECT_EQ(1, doc.SetColor(CHtmlFileEx::emColorBgColor, 0xFF000000u));
  EXPECT_EQ(0, doc.GetColor(CHtmlFileEx::emColorBgColor, color));
  EXPECT_EQ(1, doc.SetColor(CHtmlFileEx::emColorLink, RGB(255, 0, 0)));
  EXPECT_EQ(1, doc.SetColor(CHtmlFileEx::emColorVLink, RGB(1, 2, 3)));
  EXPECT_EQ(0, doc.SetColor(static_cast<CHtmlFileEx::EmColor>(6), RGB(1, 2, 3)));
  EXPECT_EQ(0, doc.SetColor(static_cast<CHtmlFileEx::EmColor>(0), 0xFF000000u));
  EXPECT_EQ(0, doc.GetColor(static_cast<CHtmlFileEx::EmColor>(6), color));
  // Deleting an attribute that is not there reports the delete's 0.
  EXPECT_EQ(0, doc.SetColor(CHtmlFileEx::emColorALink, 0xFF000000u));
  EXPECT_EQ("<html><body text=\"black\" link=\"red\" vlink=\"#010203\">x</body></html>", page.Saved());

  // Colours never create a BODY.
  TopicPage headOnly("<html><head></head></html>");
  EXPECT_EQ(0, headOnly->SetColor(CHtmlFileEx::emColorText, RGB(0, 0, 0)));
  EXPECT_EQ(nullptr, headOnly->GetBodyStartPosition());
  EXPECT_EQ("<html><head></head></html>", headOnly.Saved());
}

TEST(TopicBackground, WaterMarkAndImageCreateBodyTags) {
  TopicPage page("<html><head></head></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ(1, doc.SetWaterMark(1));
  EXPECT_EQ(1, doc.SetBackgroundImage("a b.gif"));
  int fixed = 0;
  EXPECT_EQ(1, doc.GetWaterMark(fixed));
  EXPECT_EQ(1, fixed);
  EXPECT_EQ("a b.gif", Text(doc, &CHtmlFileEx::GetBackgroundImage));
  EXPECT_TRUE(InOrder(page.Saved(), {"</head>", "<BODY bgproperties=\"fixed\" background=\"a b.gif\">", "</BODY>",
                                     "</html>"}))
      << page.Saved();

  EXPECT_EQ(1, doc.SetWaterMark(0));
  EXPECT_EQ(1, doc.SetBackgroundImage(nullptr));
  EXPECT_EQ(0, doc.GetWaterMark(fixed));
  EXPECT_EQ("<none>", Text(doc, &CHtmlFileEx::GetBackgroundImage));

  // The watermark value is case-blind and the image name decoded.
  TopicPage upper("<html><body bgproperties=FIXED background=\"a&amp;b.gif\"></body></html>");
  fixed = 0;
  EXPECT_EQ(1, upper->GetWaterMark(fixed));
  EXPECT_EQ(1, fixed);
  EXPECT_EQ("a&b.gif", Text(upper.doc(), &CHtmlFileEx::GetBackgroundImage));
}

TEST(TopicSound, LoopOneWritesNoLoopAttributeAndOtherValuesDo) {
  const char* source = "<html><head></head><body></body></html>";
  TopicPage one(source);
  EXPECT_EQ(1, one->SetBackgroundSound("s.wav", 1));
  EXPECT_NE(std::string::npos, one.Saved().find("</head><BGSOUND src=\"s.wav\">")) << one.Saved();
  for (int loop : {0, -1, 3}) {
    TopicPage page(source);
    EXPECT_EQ(1, page->SetBackgroundSound("s.wav", loop));
    std::string expected = "<BGSOUND src=\"s.wav\" loop=" + std::to_string(loop) + ">";
    EXPECT_NE(std::string::npos, page.Saved().find(expected)) << page.Saved();
    EXPECT_EQ("s.wav loop " + std::to_string(loop), Sound(page.doc()));
  }
}

TEST(TopicSound, ExistingTagIsUpdatedAndNullNameRemovesIt) {
  TopicPage page("<html><head></head><body><bgsound src=old.wav loop=2></body></html>");
  EXPECT_EQ(1, page->SetBackgroundSound("new.wav", 1));  // loop 1 leaves the old loop alone
  EXPECT_EQ("new.wav loop 2", Sound(page.doc()));
  EXPECT_EQ(1, page->SetBackgroundSound("", 1));
  EXPECT_EQ("<none>", Sound(page.doc()));
  EXPECT_EQ("<html><head></head><body></body></html>", page.Saved());
}

TEST(TopicSound, LoopAbsentIsMinusOneAndBlanksAroundNegativeAreTrimmed) {
  const struct {
    const char* page;
    const char* sound;
  } cases[] = {
      {"<html><body><bgsound src=a.wav></body></html>", "a.wav loop -1"},
      {"<html><body><bgsound src=\"a.wav\" loop=\" -3 \"></body></html>", "a.wav loop -3"},
      {"<html><body><bgsound loop=2></body></html>", "<none>"},  // no src: not recorded
  };
  for (const auto& c : cases) {
    TopicPage page(c.page);
    EXPECT_EQ(c.sound, Sound(page.doc())) << c.page;
  }
}

TEST(TopicSound, WithoutHeadEndGoesAfterHtmlStartAndWithNeitherFails) {
  TopicPage page("<html><body></body></html>");
  EXPECT_EQ(1, page->SetBackgroundSound("a.wav", 1));
  EXPECT_EQ(0u, page.Saved().find("<html><BGSOUND src=\"a.wav\">"));
  TopicPage text("<p>only text</p>");
  EXPECT_EQ(0, text->SetBackgroundSound("a.wav", 1));
  EXPECT_EQ("<p>only text</p>", text.Saved());
}

TEST(TopicTitle, LineBreaksRemovedNotDecodedAndEmptyGivesZero) {
  TopicPage page("<html><head><title>\r\n  A\r\nB &amp; C  </title></head></html>");
  EXPECT_EQ("AB &amp; C", Title(page.doc()));
  TopicPage empty("<html><head><title></title></head></html>");
  CString title = "stale";
  EXPECT_EQ(0, empty->GetHtmlTitle(title));
  EXPECT_TRUE(title.IsEmpty());
}

TEST(TopicTitle, SetReplacesTextOrInsertsIt) {
  TopicPage old("<html><head><title>Old</title></head></html>");
  EXPECT_EQ(1, old->SetHtmlTitle("A < B"));
  EXPECT_EQ("<html><head><title>A &lt; B</title></head></html>", old.Saved());
  EXPECT_EQ("A &lt; B", Title(old.doc()));

  TopicPage empty("<html><head><title></title></head></html>");
  EXPECT_EQ(1, empty->SetHtmlTitle("New"));
  EXPECT_EQ("<html><head><title>New</title></head></html>", empty.Saved());

  TopicPage none("<html><head></head><body></body></html>");
  EXPECT_EQ(1, none->SetHtmlTitle("T"));
  EXPECT_TRUE(InOrder(none.Saved(), {"<head>", "<TITLE>T</TITLE>", "</head>"})) << none.Saved();
  EXPECT_EQ(0, none->SetHtmlTitle(nullptr));
}

TEST(TopicTitle, HeadIsCreatedWhenMissingButNotWithoutHtml) {
  TopicPage page("<html><body></body></html>");
  EXPECT_EQ(1, page->SetHtmlTitle("T"));
  EXPECT_EQ("T", Title(page.doc()));
  EXPECT_TRUE(InOrder(page.Saved(), {"<HEAD>", "<TITLE>", "</TITLE>", "</HEAD>", "<body>"})) << page.Saved();
  TopicPage bare("<body><p>x</p></body>");
  EXPECT_EQ(0, bare->SetHtmlTitle("T"));
  EXPECT_EQ("<body><p>x</p></body>", bare.Saved());
}

TEST(TopicStylesheet, SetInsertsLinkLiteralOrUpdatesAndNullRemoves) {
  TopicPage page("<html><head><title>t</title></head></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ(1, doc.SetExternalStyleSheetFileName("a&b.css"));
  // The saver starts inserted head tags on a line of their own, one blank in.
  EXPECT_EQ("<html><head>\r\n <LINK rel=\"StyleSheet\" href=\"a&amp;b.css\">\r\n <title>t</title></head></html>",
            page.Saved());
  EXPECT_EQ("a&b.css", Sheet(doc));
  EXPECT_EQ(1, doc.SetExternalStyleSheetFileName("c.css"));  // updates, no second LINK
  EXPECT_EQ("c.css", Sheet(doc));
  EXPECT_EQ(1, doc.SetExternalStyleSheetFileName(nullptr));
  EXPECT_EQ("<none>", Sheet(doc));
  EXPECT_EQ("<html><head><title>t</title></head></html>", page.Saved());
}

TEST(TopicStylesheet, ImportsOfStyleBlocksFollowTheLink) {
  TopicPage page(
      "<html><head><link rel=stylesheet href=main.css>"
      "<style>@import url(\"one.css\");\r\n@import 'two.css';\r\np { color: red }</style>"
      "<style></style><style>@import url(three.css);</style></head></html>");
  CHtmlFileEx::CStringArrayEx files;
  CString stale = "stale.css";
  files.Add(stale);
  EXPECT_EQ(1, page->GetExternalStyleSheetFileNameEx(files));
  EXPECT_EQ("main.css;one.css;two.css;three.css;", test::Join(files));
}

TEST(TopicBody, InsertAtStartAndEndAndReadBack) {
  TopicPage page("<html><body>\r\n<p>mid</p>\r\n</body></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ(1, doc.SetBodyHtmlText("<h1>top</h1>", 1));
  EXPECT_EQ(1, doc.SetBodyHtmlText("<p>end</p>", 0));
  EXPECT_EQ(0, doc.SetBodyHtmlText("", 0));
  EXPECT_EQ(0, doc.SetBodyHtmlText(nullptr, 0));
  EXPECT_EQ("<h1>top</h1><p>mid</p><p>end</p>", Text(doc, &CHtmlFileEx::GetBodyHtmlText));
  // The walk ran again: the new tags are seen.
  EXPECT_TRUE(doc.GetBodyStartPosition() != nullptr);
}

TEST(TopicBody, BodyTagsAreMadeAfterFramesetEndOrHeadEnd) {
  TopicPage page("<html><head></head><frameset><frame src=a.htm></frameset></html>");
  EXPECT_EQ(1, page->SetBodyHtmlText("<p>x</p>", 1));
  EXPECT_TRUE(InOrder(page.Saved(), {"</frameset>", "<BODY>", "<p>x</p>", "</BODY>"})) << page.Saved();
  unsigned int index = 0;
  EXPECT_STREQ("a.htm", page->GetFirstFrameSource(index));
}

TEST(TopicEnumerators, ImagesDecodedBookmarksAndFrames) {
  TopicPage page(
      "<html><body><img src=\"a&amp;b.gif\"><img alt=x><img src=c.gif>"
      "<a name=\"n1\" id=\"i1\">x</a><h2 id=sec>y</h2><a name=n2></a>"
      "<iframe src=\"in.htm\"></iframe></body></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ("a&b.gif;c.gif;", Walk(doc, &CHtmlFileEx::GetFirstImage, &CHtmlFileEx::GetNextImage));
  EXPECT_EQ("n1;i1;sec;n2;", Walk(doc, &CHtmlFileEx::GetFirstBookmark, &CHtmlFileEx::GetNextBookmark));
  EXPECT_EQ("in.htm;", Walk(doc, &CHtmlFileEx::GetFirstFrameSource, &CHtmlFileEx::GetNextFrameSource));
}

TEST(TopicCopy, CopyHasItsOwnTokensAndRecordedPositions) {
  TopicPage page("<html><head><title>A</title></head><body><img src=a.gif></body></html>");
  ASSERT_EQ(1, page->Analyse());
  CHtmlFileEx copy(page.doc());
  EXPECT_EQ(1, copy.IsAnalysed());
  EXPECT_EQ(1, copy.GetImagePositions().GetSize());
  EXPECT_NE(page->GetTitlePosition(), copy.GetTitlePosition());
  EXPECT_EQ(1, copy.SetHtmlTitle("B"));
  EXPECT_EQ("A", Title(page.doc()));
  EXPECT_EQ("B", Title(copy));
  CHtmlFileEx assigned;
  assigned = copy;
  EXPECT_EQ("B", Title(assigned));
}

TEST(TopicCopy, CopyOutlivesItsSource) {
  std::unique_ptr<CHtmlFileEx> copy;
  {
    TopicPage page("<html><head><title>Kept</title></head><body><img src=\"a.gif\"></body></html>");
    ASSERT_EQ(1, page->Analyse());
    copy = std::make_unique<CHtmlFileEx>(page.doc());
  }
  EXPECT_EQ("Kept", Title(*copy));
  unsigned int index = 0;
  EXPECT_STREQ("a.gif", copy->GetFirstImage(index));
  CByteString out;
  EXPECT_EQ(1, copy->Save(&out, CHtmlPack::emSave));
  EXPECT_STREQ("<html><head><title>Kept</title></head><body><img src=\"a.gif\"></body></html>",
               static_cast<const char*>(out));
}

}  // namespace
}  // namespace telvanix
