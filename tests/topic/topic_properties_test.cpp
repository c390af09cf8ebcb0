// Topic properties as META tags, topic and element build tags, and the
// build-tag list rules.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <string>

#include "topic/topic_page.h"

namespace telvanix {
namespace {

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
  std::string saved = page.Saved();
  EXPECT_NE(std::string::npos, saved.find("<meta name=\"topic-author\" content=\"Smith &amp; Sons\">")) << saved;
  // No META yet: it goes in front of the HEAD end tag.
  EXPECT_LT(saved.find("</title>"), saved.find("<meta"));
  EXPECT_LT(saved.find("<meta"), saved.find("</head>"));
  CString value;
  EXPECT_EQ(1, doc.GetTopicAuthor(value));
  EXPECT_STREQ("Smith & Sons", value);

  EXPECT_EQ(1, doc.SetTopicAuthor("Smith & Sons"));
  saved = page.Saved();
  EXPECT_NE(std::string::npos, saved.find("<meta name=\"topic-author\" content=\"Smith & Sons\">")) << saved;
  EXPECT_EQ(1, doc.GetTopicAuthor(value));
  EXPECT_STREQ("Smith & Sons", value);  // decoding leaves a bare "&" alone

  EXPECT_EQ(1, doc.SetTopicAuthor(nullptr));
  EXPECT_EQ(0, doc.GetTopicAuthor(value));
  EXPECT_TRUE(value.IsEmpty());
  EXPECT_EQ(1, doc.SetTopicAuthor(nullptr));  // nothing left to remove: still 1
}

TEST(TopicProperties, NewTagsFollowTheLastLiveMetaInOrder) {
  TopicPage page(
      "<html><head><META NAME=\"Topic-Status\" content=\"draft\"><title>t</title>"
      "<meta name=keywords content=k></head></html>");
  CHtmlFileEx& doc = page.doc();
  CString value;
  EXPECT_EQ(1, doc.GetTopicStatus(value));  // the name is matched in any case
  EXPECT_STREQ("draft", value);
  EXPECT_EQ(1, doc.SetTopicId("id1"));
  EXPECT_EQ(1, doc.SetTopicComment("c"));
  EXPECT_EQ(1, doc.SetTopicSourceDigitalSignature("sig"));
  std::string saved = page.Saved();
  size_t keywords = saved.find("name=keywords");
  size_t id = saved.find("\"topic-id\"");
  size_t comment = saved.find("\"topic-comment\"");
  size_t sds = saved.find("\"topic-sds\"");
  EXPECT_LT(keywords, id);
  EXPECT_LT(id, comment);
  EXPECT_LT(comment, sds);
  EXPECT_LT(sds, saved.find("</head>"));
  EXPECT_EQ(1, doc.GetTopicSourceDigitalSignature(value));
  EXPECT_STREQ("sig", value);
}

TEST(TopicProperties, WithoutHeadEndTheTagFollowsHtmlStart) {
  {
    TopicPage page("<html><body></body></html>");
    EXPECT_EQ(1, page->SetTopicStatus("s"));
    EXPECT_EQ(0u, page.Saved().find("<html>"));
    EXPECT_LT(page.Saved().find("topic-status"), page.Saved().find("<body>"));
  }
  {
    TopicPage page("<p>no html</p>");
    EXPECT_EQ(0, page->SetTopicStatus("s"));
    EXPECT_EQ("<p>no html</p>", page.Saved());
  }
}

TEST(TopicProperties, NumbersReadLeadingDigits) {
  {
    TopicPage page("<html><head><meta name=topic-priority content=\"7x\"></head></html>");
    int priority = 0;
    EXPECT_EQ(1, page->GetTopicPriority(priority));
    EXPECT_EQ(7, priority);
  }
  {
    TopicPage page("<html><head><meta name=topic-priority content=\"x7\"></head></html>");
    int priority = 5;
    EXPECT_EQ(1, page->GetTopicPriority(priority));
    EXPECT_EQ(0, priority);
  }
  {
    TopicPage page("<html><head></head></html>");
    int estimate = 5;
    EXPECT_EQ(0, page->GetTopicTimeEstimate(estimate));
    EXPECT_EQ(-1, estimate);
    EXPECT_EQ(1, page->SetTopicTimeEstimate(-12));
    EXPECT_EQ(1, page->GetTopicTimeEstimate(estimate));
    EXPECT_EQ(-12, estimate);
    EXPECT_NE(std::string::npos, page.Saved().find("<meta name=\"topic-time-estimate\" content=\"-12\">"));
  }
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
  CString tags;
  EXPECT_EQ(0, doc.GetTopicBuildTags(tags));
  EXPECT_EQ(1, doc.SetTopicBuildTags("A&amp;B,C"));
  // Without any META the tag goes right after the HEAD start tag.
  EXPECT_NE(std::string::npos, page.Saved().find("<head>\r\n <meta name=\"build tags\" content=\"A&amp;B,C\">"))
      << page.Saved();
  // The new tag is not in the metas list until the next analysis.
  EXPECT_EQ(0, doc.GetTopicBuildTags(tags));
  doc.Analyse();
  EXPECT_EQ(1, doc.GetTopicBuildTags(tags));
  EXPECT_STREQ("A&amp;B,C", tags);
}

TEST(TopicBuildTags, InsertedAfterTheLastRecordedMeta) {
  TopicPage page(
      "<html><head><meta name=a content=1><title>t</title><meta name=b content=2></head></html>");
  EXPECT_EQ(1, page->SetTopicBuildTags("X"));
  std::string saved = page.Saved();
  EXPECT_LT(saved.find("name=b"), saved.find("build tags"));
  EXPECT_LT(saved.find("build tags"), saved.find("</head>"));
  EXPECT_EQ(1, page->SetTopicBuildTags(nullptr));  // nothing recorded to remove
}

TEST(TopicBuildTags, UpdateAndRemoveAnExistingTag) {
  TopicPage page("<html><head><META name=\"Build Tags\" content=\"A,B\"></head></html>");
  CHtmlFileEx& doc = page.doc();
  EXPECT_EQ(1, doc.SetTopicBuildTags("C"));
  CString tags;
  EXPECT_EQ(1, doc.GetTopicBuildTags(tags));
  EXPECT_STREQ("C", tags);
  EXPECT_EQ(1, doc.SetTopicBuildTags(""));
  EXPECT_EQ("<html><head></head></html>", page.Saved());
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
}

TEST(TopicBuildTags, XConditionTestIsCaseSensitive) {
  TopicPage page("<html><body><p style=\"X-Condition: Web\">a</p></body></html>");
  CString tags;
  EXPECT_EQ(0, page->GetInlineBuildTags(page->GetTokenList()->GetTagItem(page->GetStyledTagPositions()[0]), tags));
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
  CString tags;
  EXPECT_EQ(1, doc.GetTopicBuildTags(tags));
  EXPECT_STREQ("Online,Print,web", tags);
  // Styles carrying x-condition are rewritten even when nothing matched;
  // others are left alone.
  EXPECT_EQ(
      "<html><head><meta name=\"build tags\" content=\"Online,Print,web\"></head><body>"
      "<p style=\"x-condition:Print,Online; color:red; \">a</p><div style=\"x-condition:web; \">b</div>"
      "<span style=\"color:red\">c</span></body></html>",
      page.Saved());
}

TEST(TopicBuildTags, ReplaceWithoutNewNameRemoves) {
  TopicPage page(
      "<html><head><meta name=\"build tags\" content=\"Web\"></head><body>"
      "<p style=\"x-condition: Web\">a</p><p style=\"x-condition: Web,Print\">b</p></body></html>");
  EXPECT_EQ(1, page->ReplaceBuildTag("Web", nullptr));
  EXPECT_EQ(
      "<html><head></head><body><p style=\" \">a</p><p style=\"x-condition:Print; \">b</p></body></html>",
      page.Saved());
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
