// Whole-page behaviour: edits touch only the tokens they must, saving over
// the page's own file, and pages without the structural tags or with broken
// markup.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <string>

#include "test_util.h"
#include "topic/topic_page.h"

namespace telvanix {
namespace {

using test::TopicPage;

// The edits a host makes on a topic before saving it.
void EditTopic(CHtmlFileEx& doc) {
  ASSERT_EQ(1, doc.SetHtmlTitle("Installing & running"));
  ASSERT_EQ(1, doc.SetTopicAuthor("J. Doe"));
  CHtmlFileEx::CStringArrayEx keywords;
  CString k1 = "install", k2 = "setup";
  keywords.Add(k1);
  keywords.Add(k2);
  ASSERT_EQ(1, doc.SetKeywordK(&keywords));
  ASSERT_EQ(1, doc.SetTopicBuildTags("Web"));
  ASSERT_EQ(1, doc.SetInlineBuildTags(doc.GetTokenList()->GetTagItem(doc.GetStyledTagPositions()[0]), "Print"));
}

TEST(TopicEdit, SavedBytesDifferOnlyWhereTokensChanged) {
  const std::string source = test::ReadDataFile("topic/edit_page.htm");
  const std::string expected = test::ReadDataFile("topic/edit_page.expected.htm");
  ASSERT_FALSE(source.empty());
  ASSERT_FALSE(expected.empty());
  TopicPage page(source);
  EditTopic(page.doc());
  EXPECT_EQ(expected, page.Saved());
}

TEST(TopicEdit, SaveOverItsOwnFileWritesOnlyWhenChanged) {
  test::TempDir dir;
  const std::string source = test::ReadDataFile("topic/edit_page.htm");
  dir.Write("topic.htm", source);
  {
    CHtmlFileEx doc((dir / "topic.htm").c_str());
    CString title;
    EXPECT_EQ(1, doc.GetHtmlTitle(title));
    EXPECT_STREQ("Old  title", title);
    unsigned int index = 0;
    EXPECT_STREQ("images/setup.gif", doc.GetFirstImage(index));
    CHtmlFileEx::CStringArrayEx k;
    doc.GetKeywordK(k);
    // Reading changed nothing, so nothing is written (the file is gone
    // first to show that).
    std::remove((dir / "topic.htm").c_str());
    EXPECT_EQ(1, doc.Save(static_cast<const char*>(nullptr), CHtmlPack::emSave));
    EXPECT_EQ("", dir.List());
  }
  dir.Write("topic.htm", source);
  {
    CHtmlFileEx doc((dir / "topic.htm").c_str());
    EditTopic(doc);
    EXPECT_EQ(1, doc.Save(static_cast<const char*>(nullptr), CHtmlPack::emSave));
  }
  EXPECT_EQ(test::ReadDataFile("topic/edit_page.expected.htm"), dir.Read("topic.htm"));
}

TEST(TopicEdit, MissingFileAnalysesToNothing) {
  CHtmlFileEx doc("/nonexistent/folder/topic.htm");
  EXPECT_EQ(0, doc.Analyse());
  EXPECT_EQ(1, doc.IsAnalysed());
  CString text;
  EXPECT_EQ(0, doc.GetHtmlTitle(text));
  EXPECT_EQ(0, doc.SetHtmlTitle("x"));
}

TEST(TopicBadInput, GettersOnPagesWithoutStructureGiveZeroAndCreateNothing) {
  const char* pages[] = {
      "just some text without any tag",
      "<p>a paragraph<p>another",
      "<title>no head</title>",
      "<body bgcolor=red background=x.gif><bgsound src=a.wav></body>",
  };
  for (const char* source : pages) {
    TopicPage page(source);
    CHtmlFileEx& doc = page.doc();
    doc.Analyse();
    const int before = doc.GetTokenList()->GetCount();
    CString text;
    int number = 0;
    COLORREF color = 0;
    CHtmlFileEx::CStringArrayEx array;
    CStringList list;
    doc.GetHtmlTitle(text);
    EXPECT_EQ(0, doc.GetTopicAuthor(text)) << source;
    EXPECT_EQ(0, doc.GetTopicPriority(number)) << source;
    EXPECT_EQ(0, doc.GetTopicCheckList(list)) << source;
    EXPECT_EQ(0, doc.GetTopicBuildTags(text)) << source;
    EXPECT_EQ(0, doc.GetExternalStyleSheetFileName(text)) << source;
    doc.GetColor(CHtmlFileEx::emColorBgColor, color);
    doc.GetWaterMark(number);
    doc.GetBackgroundImage(text);
    doc.GetBackgroundSound(text, number);
    doc.GetBodyHtmlText(text);
    EXPECT_EQ(1, doc.GetKeywordK(array));
    EXPECT_EQ(0, array.GetSize());
    EXPECT_EQ(before, doc.GetTokenList()->GetCount()) << source;
    EXPECT_EQ(0, doc.IsTokenListModified()) << source;
    EXPECT_EQ(source, page.Saved());
  }
}

TEST(TopicBadInput, BrokenMarkupDoesNotTripTheScanners) {
  const std::string pages[] = {
      "<html><head><meta name=\"topic-author\"><meta content=x><meta name></head>",
      "<object classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\"><param name=command value=splash>"
      "<param name=item1><param value=a.bmp><param name=item1 value=\";;;&;&amp\">",
      "<object classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\"><param name=command value=\""
      "Related Topics xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
      "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
      "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\">"
      "<param name=item1 value=\";\">",
      "<style>@import url(</style><style>",
      "<p style=\"x-condition\">a<p style=\"x-condition:\">b<p style=\"background: url(\">c",
      "<!--[if gte vml 1]><v:imagedata src=\"\" " + std::string(150, 'x') +
          "><![endif]--><![if !vml]><img v:shapes=\"\"><![endif]>",
      "<!--[if gte vml 1]>" + std::string(150, '<') + "<v:imagedata id=\"s\"><![endif]--><![if !vml]>"
          "<img v:shapes=\"s\"><![endif]>",
      "<script src></script><img src><a href><area href><frame src><iframe src>",
      "<<<>>><!--",
      "",
  };
  for (const std::string& source : pages) {
    TopicPage page(source);
    CHtmlFileEx& doc = page.doc();
    doc.Analyse();
    unsigned int index = 0, stage = 0;
    CString text;
    int number = 0;
    CStringList list;
    for (CString s = doc.GetFirstBaggageImage(index, stage); !s.IsEmpty(); s = doc.GetNextBaggageImage(index, stage)) {
    }
    using D = CHtmlFileEx;
    test::Walk(doc, &D::GetFirstRelatedTopic, &D::GetNextRelatedTopic);
    test::Walk(doc, &D::GetFirstContentOrIndex, &D::GetNextContentOrIndex);
    test::Walk(doc, &D::GetFirstMultimediaFile, &D::GetNextMultimediaFile);
    test::Walk(doc, &D::GetFirstAnchorHref, &D::GetNextAnchorHref);
    test::Walk(doc, &D::GetFirstFrameSource, &D::GetNextFrameSource);
    POSITION pos = nullptr;
    for (CString s = doc.GetFirstInlineBuildTags(index, &pos); !s.IsEmpty(); s = doc.GetNextInlineBuildTags(index, &pos)) {
    }
    doc.GetTopicAuthor(text);
    doc.GetTopicCheckList(list);
    CHtmlFileEx::CStringArrayEx files;
    EXPECT_EQ(1, doc.GetExternalStyleSheetFileNameEx(files));
    EXPECT_EQ(1, doc.ReplaceBuildTag("a", "b"));
    doc.GetTopicPriority(number);
    EXPECT_NE("<save failed>", page.Saved());
  }
}

}  // namespace
}  // namespace telvanix
