// What the golden topic cases cannot show: copies, null tags and hrefs, the
// build-tag list rules, the plain-text options and code pages.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "telvanix/platform/code_page.h"
#include "test_util.h"
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

TEST(TopicSource, NewBytesLeaveNothingOfTheOldPage) {
  TopicPage page("<html><head><title>A</title></head><body><img src=\"a.gif\"><a href=\"x.htm\">x</a></body></html>");
  ASSERT_EQ(1, page->Parse(CHtmlPack::emParseHtmlTree));
  EXPECT_EQ(1, page->GetImagePositions().GetSize());
  // Longer than the first page, so the tokens outgrow its first block.
  std::string next = "<html><head><title>B</title></head><body>";
  for (int i = 0; i < 2000; ++i) next += "<p>paragraph " + std::to_string(i) + "</p>";
  next += "</body></html>";
  CByteString bytes(reinterpret_cast<const unsigned char*>(next.data()), static_cast<int>(next.size()));
  EXPECT_EQ(1, page->SetSource(bytes));
  EXPECT_FALSE(page->IsParsed());
  EXPECT_EQ(nullptr, page->GetEntityTree());
  EXPECT_EQ("B", Title(page.doc()));
  EXPECT_EQ(0, page->GetImagePositions().GetSize());
  unsigned int index = 0;
  EXPECT_EQ(nullptr, page->GetFirstAnchorHref(index));
  EXPECT_EQ(next, page.Saved());
  // Read once more, over the memory of both.
  CByteString again(reinterpret_cast<const unsigned char*>(next.data()), 41);
  page->SetSource(again);
  EXPECT_EQ("B", Title(page.doc()));
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

TEST(PureText, OnlyTheLineBreakBitMattersAndTheNameStandsForNoWords) {
  EXPECT_EQ("Title one two x y", test::PlainText("<h1>Title</h1><p>one<br>two</p><table><tr><td>x<td>y</table>", 0));
  EXPECT_EQ("x a b c yz", test::PlainText("x<pre>a b\nc</pre>yz", 0));
  EXPECT_EQ("one\ntwo", test::PlainText("<p>one</p><p>two</p>", 2 | 4));
  EXPECT_EQ("one two", test::PlainText("<p>one</p><p>two</p>", 1));
  TopicPage empty("<html><head><title>T</title></head><body><script>x=1</script></body></html>");
  EXPECT_EQ("topic.htm", empty->GetPureText(2, nullptr, "topic.htm").str());
  // An opaque window changes nothing and is never looked into.
  HWND bogus = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(0x10));
  EXPECT_EQ("topic.htm", empty->GetPureText(0, bogus, "topic.htm").str());
  TopicPage words("<p>Words</p>");
  EXPECT_EQ("Words", words->GetPureText(2, bogus, "topic.htm").str());
}

TEST(PureText, DoubleByteCharactersAreNotCutAtTrailBytes) {
  {
    test::CodePageScope sjis(932);
    // 0x82 0xA0 is one character; its trail byte is not a no-break space.
    EXPECT_EQ("\x82\xA0\x82\xA2 \x93\xFA", test::PlainText("<p>\x82\xA0\x82\xA2 \x93\xFA</p>"));
  }
  // In a single-byte code page the same byte is a blank between words.
  test::CodePageScope western(1252);
  EXPECT_EQ("a b", test::PlainText("a\xA0\xA0" "b"));
}

}  // namespace
}  // namespace telvanix
