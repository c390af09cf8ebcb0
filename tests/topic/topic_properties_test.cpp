// Topic properties as META tags, topic and element build tags, and the
// build-tag list rules.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <string>

#include "topic/topic_page.h"

namespace telvanix {
namespace {

using test::InOrder;
using test::Text;
using test::TopicPage;

std::string Join(const CStringList& list) {
  std::string out;
  for (POSITION pos = list.GetHeadPosition(); pos;)
    out += std::string(list.GetNext(pos)) + "|";
  return out;
}

TEST(TopicProperties, AuthorIsEncodedWhenInsertedAndRawWhenUpdated) {
  TopicPage page("<html><head><title>t</title></head><body></body></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ(1, doc.SetTopicAuthor("Smith & Sons"));
  // No META yet: it goes in front of the HEAD end tag.
  EXPECT_TRUE(InOrder(page.Saved(), {"</title>", "<meta name=\"topic-author\" content=\"Smith &amp; Sons\">",
                                     "</head>"}))
      << page.Saved();
  EXPECT_EQ("Smith & Sons", Text(doc, &CHtmlFileEx::GetTopicAuthor));

  EXPECT_EQ(1, doc.SetTopicAuthor("Smith & Sons"));
  EXPECT_NE(std::string::npos, page.Saved().find("<meta name=\"topic-author\" content=\"Smith & Sons\">"))
      << page.Saved();
  EXPECT_EQ("Smith & Sons", Text(doc, &CHtmlFileEx::GetTopicAuthor));  // decoding leaves a bare "&" alone

  EXPECT_EQ(1, doc.SetTopicAuthor(nullptr));
  CString value = "stale";
  EXPECT_EQ(0, doc.GetTopicAuthor(value));
  EXPECT_TRUE(value.IsEmpty());
  EXPECT_EQ(1, doc.SetTopicAuthor(nullptr));  // nothing left to remove: still 1
}

TEST(TopicProperties, NewTagsFollowTheLastLiveMetaInOrder) {
  TopicPage page(
      "<html><head><META NAME=\"Topic-Status\" content=\"draft\"><title>t</title>"
      "<meta name=keywords content=k></head></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ("draft", Text(doc, &CHtmlFileEx::GetTopicStatus));  // the name is matched in any case
  EXPECT_EQ(1, doc.SetTopicId("id1"));
  EXPECT_EQ(1, doc.SetTopicComment("c"));
  EXPECT_EQ(1, doc.SetTopicSourceDigitalSignature("sig"));
  EXPECT_TRUE(InOrder(page.Saved(), {"name=keywords", "\"topic-id\"", "\"topic-comment\"", "\"topic-sds\"", "</head>"}))
      << page.Saved();
  EXPECT_EQ("sig", Text(doc, &CHtmlFileEx::GetTopicSourceDigitalSignature));

  // Without a HEAD end the tag follows the HTML start; without HTML it fails.
  TopicPage noHead("<html><body></body></html>");
  EXPECT_EQ(1, noHead->SetTopicStatus("s"));
  EXPECT_EQ(0u, noHead.Saved().find("<html>"));
  EXPECT_TRUE(InOrder(noHead.Saved(), {"topic-status", "<body>"})) << noHead.Saved();
  TopicPage noHtml("<p>no html</p>");
  EXPECT_EQ(0, noHtml->SetTopicStatus("s"));
  EXPECT_EQ("<p>no html</p>", noHtml.Saved());
}

TEST(TopicProperties, NumbersReadLeadingDigits) {
  const struct {
    const char* content;
    int priority;
  } cases[] = {{"7x", 7}, {"x7", 0}};
  for (const auto& c : cases) {
    TopicPage page(std::string("<html><head><meta name=topic-priority content=\"") + c.content + "\"></head></html>");
    int priority = 5;
    EXPECT_EQ(1, page->GetTopicPriority(priority)) << c.content;
    EXPECT_EQ(c.priority, priority) << c.content;
  }
  TopicPage page("<html><head></head></html>");
  int estimate = 5;
  EXPECT_EQ(0, page->GetTopicTimeEstimate(estimate));
  EXPECT_EQ(-1, estimate);
  EXPECT_EQ(1, page->SetTopicTimeEstimate(-12));
  EXPECT_EQ(1, page->GetTopicTimeEstimate(estimate));
  EXPECT_EQ(-12, estimate);
  EXPECT_NE(std::string::npos, page.Saved().find("<meta name=\"topic-time-estimate\" content=\"-12\">"));
}

TEST(TopicProperties, CheckListsSplitTrimAndDropEmptyPieces) {
  TopicPage page("<html><head><meta name=\"topic-check-list\" content=\" a, ,b ,\"></head></html>");
  CStringList items;
  items.AddTail("kept");
  EXPECT_EQ(1, page->GetTopicCheckList(items));
  EXPECT_EQ("kept|a|b|", Join(items));

  CStringList none;
  TopicPage fresh("<html><head></head></html>");
  EXPECT_EQ(1, fresh->SetTopicCheckList(&none));
  EXPECT_NE(std::string::npos, fresh.Saved().find("<meta name=\"topic-check-list\" content=\"\">")) << fresh.Saved();
  CStringList read;
  EXPECT_EQ(0, fresh->GetTopicCheckList(read));  // stored, but empty
  EXPECT_EQ(0, fresh->SetTopicCheckList(nullptr));
  // An existing tag keeps the attribute (a rebuilt tag prints an empty value bare).
  EXPECT_EQ(1, page->SetTopicCheckList(&none));
  EXPECT_EQ("<html><head><meta name=\"topic-check-list\" content></head></html>", page.Saved());

  CStringList two;
  two.AddTail("x y");
  two.AddTail("z");
  EXPECT_EQ(1, page->SetTopicCheckList(&two));
  EXPECT_EQ(1, page->GetTopicCheckList(read));
  EXPECT_EQ("x y|z|", Join(read));
}

TEST(TopicBuildTags, TopicTagsAreWrittenAsGivenAndReadAsWritten) {
  TopicPage page("<html><head><title>t</title></head></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ("<none>", Text(doc, &CHtmlFileEx::GetTopicBuildTags));
  EXPECT_EQ(1, doc.SetTopicBuildTags("A&amp;B,C"));
  // Without any META the tag goes right after the HEAD start tag.
  EXPECT_NE(std::string::npos, page.Saved().find("<head>\r\n <meta name=\"build tags\" content=\"A&amp;B,C\">"))
      << page.Saved();
  // The new tag is not in the metas list until the next analysis.
  EXPECT_EQ("<none>", Text(doc, &CHtmlFileEx::GetTopicBuildTags));
  doc.Analyse();
  EXPECT_EQ("A&amp;B,C", Text(doc, &CHtmlFileEx::GetTopicBuildTags));
}

TEST(TopicBuildTags, InsertedAfterTheLastRecordedMetaUpdatedAndRemoved) {
  TopicPage page("<html><head><meta name=a content=1><title>t</title><meta name=b content=2></head></html>");
  EXPECT_EQ(1, page->SetTopicBuildTags("X"));
  EXPECT_TRUE(InOrder(page.Saved(), {"name=b", "build tags", "</head>"})) << page.Saved();
  EXPECT_EQ(1, page->SetTopicBuildTags(nullptr));  // nothing recorded to remove

  TopicPage existing("<html><head><META name=\"Build Tags\" content=\"A,B\"></head></html>");
  EXPECT_EQ(1, existing->SetTopicBuildTags("C"));
  EXPECT_EQ("C", Text(existing.doc(), &CHtmlFileEx::GetTopicBuildTags));
  EXPECT_EQ(1, existing->SetTopicBuildTags(""));
  EXPECT_EQ("<html><head></head></html>", existing.Saved());
}

TEST(TopicBuildTags, InlineTagsLiveInTheXConditionProperty) {
  TopicPage page(
      "<html><body><p style=\"color: red; x-condition: Web, Print\">a</p>"
      "<p style=\"x-condition:Solo\">b</p><p style=\"color:blue\">c</p><p>d</p></body></html>");
  CHtmlFileEx& doc = page.doc();
  unsigned int index = 0;
  POSITION pos = nullptr;
  EXPECT_STREQ("Web, Print", doc.GetFirstInlineBuildTags(index, &pos));
  EXPECT_EQ(doc.GetStyledTagPositions()[0], pos);
  EXPECT_STREQ("Solo", doc.GetNextInlineBuildTags(index, nullptr));
  EXPECT_TRUE(doc.GetNextInlineBuildTags(index, &pos).IsEmpty());
  index = 99;
  EXPECT_TRUE(doc.GetNextInlineBuildTags(index, &pos).IsEmpty());

  CHtmlTokenList* list = doc.GetTokenList();
  CHtmlTagItem* first = list->GetTagItem(doc.GetStyledTagPositions()[0]);
  CHtmlTagItem* solo = list->GetTagItem(doc.GetStyledTagPositions()[1]);
  CHtmlTagItem* blue = list->GetTagItem(doc.GetStyledTagPositions()[2]);
  EXPECT_TRUE(doc.HasInlineBuildTags(first));
  EXPECT_FALSE(doc.HasInlineBuildTags(blue));
  EXPECT_FALSE(doc.HasInlineBuildTags(nullptr));
  CString tags = "stale";
  EXPECT_EQ(0, doc.GetInlineBuildTags(blue, tags));
  EXPECT_TRUE(tags.IsEmpty());

  EXPECT_EQ(1, doc.SetInlineBuildTags(blue, "Draft"));
  EXPECT_EQ(1, doc.SetInlineBuildTags(solo, nullptr));
  EXPECT_EQ(0, doc.SetInlineBuildTags(nullptr, "x"));
  EXPECT_EQ(
      "<html><body><p style=\"color: red; x-condition: Web, Print\">a</p>"
      "<p style=\" \">b</p><p style=\"color:blue; x-condition:Draft; \">c</p><p>d</p></body></html>",
      page.Saved());

  // The property name is matched with its case.
  TopicPage upper("<html><body><p style=\"X-Condition: Web\">a</p></body></html>");
  EXPECT_EQ(0, upper->GetInlineBuildTags(upper->GetTokenList()->GetTagItem(upper->GetStyledTagPositions()[0]), tags));
}

TEST(TopicBuildTags, ReplaceRenamesEverywhereWithCase) {
  TopicPage page(
      "<html><head><meta name=\"build tags\" content=\"Web,Print,web\"></head><body>"
      "<p style=\"x-condition: Print, Web; color: red\">a</p><div style=\"x-condition: web\">b</div>"
      "<span style=\"color:red\">c</span></body></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ(0, doc.ReplaceBuildTag(nullptr, "x"));
  EXPECT_EQ(0, doc.ReplaceBuildTag("", "x"));
  EXPECT_EQ(1, doc.ReplaceBuildTag("Web", "Online"));
  EXPECT_EQ("Online,Print,web", Text(doc, &CHtmlFileEx::GetTopicBuildTags));
  // Styles carrying x-condition are rewritten even when nothing matched;
  // others are left alone.
  EXPECT_EQ(
      "<html><head><meta name=\"build tags\" content=\"Online,Print,web\"></head><body>"
      "<p style=\"x-condition:Print,Online; color:red; \">a</p><div style=\"x-condition:web; \">b</div>"
      "<span style=\"color:red\">c</span></body></html>",
      page.Saved());

  // Without a new name the tag is removed.
  TopicPage removed(
      "<html><head><meta name=\"build tags\" content=\"Web\"></head><body>"
      "<p style=\"x-condition: Web\">a</p><p style=\"x-condition: Web,Print\">b</p></body></html>");
  EXPECT_EQ(1, removed->ReplaceBuildTag("Web", nullptr));
  EXPECT_EQ("<html><head></head><body><p style=\" \">a</p><p style=\"x-condition:Print; \">b</p></body></html>",
            removed.Saved());
}

TEST(TopicBuildTags, ListRules) {
  CHtmlFileEx doc;
  CStringList tags;
  EXPECT_EQ(0, doc.ParseBuildTags(nullptr, tags));
  EXPECT_EQ(0, doc.ParseBuildTags("", tags));
  EXPECT_EQ(1, doc.ParseBuildTags(" a ,b,, c", tags));
  // A "," that begins a piece stays inside it.
  EXPECT_EQ("a|b|, c|", Join(tags));
  tags.RemoveAll();
  EXPECT_EQ(1, doc.ParseBuildTags(",x", tags));
  EXPECT_EQ(",x|", Join(tags));

  CString text = "stale";
  EXPECT_EQ(0, doc.MakeBuildTags(nullptr, text));
  EXPECT_TRUE(text.IsEmpty());
  CStringList items;
  items.AddTail("a");
  items.AddTail("");
  items.AddTail("b c");
  EXPECT_EQ(1, doc.MakeBuildTags(&items, text));
  EXPECT_STREQ("a,b c", text);
}

}  // namespace
}  // namespace telvanix
