// Plain text for indexers (the pages are golden cases in tests/data/topic_text):
// options, discarded tokens, code pages and any token list.
#include "telvanix/topic/pure_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "telvanix/platform/code_page.h"
#include "telvanix/topic/html_file_ex.h"
#include "test_util.h"
#include "topic/topic_describe.h"

namespace telvanix {
namespace {

using test::TopicPage;

TEST(PureText, ReferencesNeverCutTheText) {
  TopicPage page("<p>User&#X2019;s Guide</p>");
  CString text = page->GetPureText(2, nullptr, nullptr);
  EXPECT_EQ(static_cast<size_t>(text.GetLength()), std::strlen(text));
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

TEST(PureText, DiscardedTokensAreNotThere) {
  TopicPage page("<p>keep</p><p>drop</p><p>also</p>");
  CHtmlTokenList& list = *page->GetTokenList();
  page->Analyse();
  for (POSITION pos = list.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list.GetNext(pos);
    if (token->IsTextToken() && token->GetOriginalString() == "drop") token->DiscardToken();
  }
  EXPECT_EQ("keep\r\nalso", page->GetPureText(2, nullptr, nullptr).str());
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

TEST(PureText, WalkWorksOnAnyTokenList) {
  const std::string html = "<p>x<object class=hide>y</object>z</p>";
  CHtmlTokenList list;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(html.data());
  ASSERT_EQ(1, list.BuildTokenList(p, p + html.size(), 1));
  EXPECT_EQ("x y z", topic_detail::CollectPureText(list, emPureTextOneLine, nullptr));
  topic_detail::HiddenObjectTest hideAll = [](CHtmlTagItem*) { return 1; };
  EXPECT_EQ("x z", topic_detail::CollectPureText(list, emPureTextOneLine, hideAll));
}

}  // namespace
}  // namespace telvanix
