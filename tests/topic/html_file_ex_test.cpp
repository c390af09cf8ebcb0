// What the golden topic cases cannot show: copies, output lists the getters
// append to, null tags and hrefs, and the build-tag list rules.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "topic/topic_describe.h"

namespace telvanix {
namespace {

using test::Listed;
using test::TopicPage;

std::string Title(CHtmlFileEx& doc) {
  CString title;
  return doc.GetHtmlTitle(title) ? title.str() : "<none>";
}

TEST(TopicCopy, CopyHasItsOwnTokensAndOutlivesItsSource) {
  std::unique_ptr<CHtmlFileEx> kept;
  {
    TopicPage page("<html><head><title>A</title></head><body><img src=\"a.gif\"></body></html>");
    ASSERT_EQ(1, page->Analyse());
    CHtmlFileEx copy(page.doc());
    EXPECT_EQ(1, copy.IsAnalysed());
    EXPECT_EQ(1, copy.GetImagePositions().GetSize());
    EXPECT_NE(page->GetTitlePosition(), copy.GetTitlePosition());
    EXPECT_EQ(1, copy.SetHtmlTitle("B"));
    EXPECT_EQ("A", Title(page.doc()));
    CHtmlFileEx assigned;
    assigned = copy;
    EXPECT_EQ("B", Title(assigned));
    kept = std::make_unique<CHtmlFileEx>(page.doc());
  }
  EXPECT_EQ("A", Title(*kept));
  unsigned int index = 0;
  EXPECT_STREQ("a.gif", kept->GetFirstImage(index));
  CByteString out;
  EXPECT_EQ(1, kept->Save(&out, CHtmlPack::emSave));
  EXPECT_STREQ("<html><head><title>A</title></head><body><img src=\"a.gif\"></body></html>",
               static_cast<const char*>(out));
}

TEST(TopicLists, KeywordsAndCheckListsAppendStylesheetsReplace) {
  TopicPage page(
      "<html><head><meta name=\"topic-check-list\" content=\"a\"><link rel=stylesheet href=main.css></head><body>"
      "<object classid=\"clsid:4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab\"><param name=\"Keyword\" value=\"k\"></object>"
      "</body></html>");
  CHtmlFileEx::CStringArrayEx keywords, files;
  CString kept("kept");
  keywords.Add(kept);
  files.Add(kept);
  CStringList items;
  items.AddTail("kept");
  EXPECT_EQ(1, page->GetKeywordK(keywords));
  EXPECT_EQ(1, page->GetTopicCheckList(items));
  EXPECT_EQ(1, page->GetExternalStyleSheetFileNameEx(files));
  EXPECT_EQ("[kept][k]", Listed(keywords));
  EXPECT_EQ("[kept][a]", Listed(items));
  EXPECT_EQ("[main.css]", Listed(files));
}

TEST(TopicNulls, OnlyObjectTagsAreHelpControlsAndNullHrefsAreNoScript) {
  TopicPage page("<html><body><img classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\"></body></html>");
  EXPECT_FALSE(page->IsHhctrlActivexObject(nullptr));
  EXPECT_FALSE(page->IsHhctrlActivexObject(page->GetTokenList()->GetTagItem(page->GetImagePositions()[0])));
  EXPECT_EQ(0, static_cast<int>(page->GetHhctrlCommandType(nullptr)));
  EXPECT_EQ(1, static_cast<int>(page->GetAnchorHrefType(nullptr)));
  EXPECT_EQ(0, page->IsJavaScriptAnchorHref(nullptr));
}

TEST(TopicBuildTags, ListRulesAndInlineTagsOfNoTag) {
  CHtmlFileEx doc;
  CStringList tags;
  EXPECT_EQ(0, doc.ParseBuildTags(nullptr, tags));
  EXPECT_EQ(0, doc.ParseBuildTags("", tags));
  EXPECT_EQ(1, doc.ParseBuildTags(" a ,b,, c", tags));
  // A "," that begins a piece stays inside it.
  EXPECT_EQ("[a][b][, c]", Listed(tags));
  tags.RemoveAll();
  EXPECT_EQ(1, doc.ParseBuildTags(",x", tags));
  EXPECT_EQ("[,x]", Listed(tags));

  CString text = "stale";
  EXPECT_EQ(0, doc.MakeBuildTags(nullptr, text));
  EXPECT_TRUE(text.IsEmpty());
  CStringList items;
  items.AddTail("a");
  items.AddTail("");
  items.AddTail("b c");
  EXPECT_EQ(1, doc.MakeBuildTags(&items, text));
  EXPECT_STREQ("a,b c", text);

  TopicPage page("<html><body><p style=\"color:blue\">c</p></body></html>");
  CHtmlTagItem* blue = page->GetTokenList()->GetTagItem(page->GetStyledTagPositions()[0]);
  EXPECT_FALSE(page->HasInlineBuildTags(blue));
  EXPECT_FALSE(page->HasInlineBuildTags(nullptr));
  text = "stale";
  EXPECT_EQ(0, page->GetInlineBuildTags(blue, text));
  EXPECT_TRUE(text.IsEmpty());
  unsigned int index = 99;
  POSITION pos = nullptr;
  EXPECT_TRUE(page->GetNextInlineBuildTags(index, &pos).IsEmpty());
}

}  // namespace
}  // namespace telvanix
