// Plain text for indexers: page cases as data pairs, and the walk's rules.
#include "telvanix/topic/pure_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "telvanix/platform/code_page.h"
#include "telvanix/topic/html_file_ex.h"
#include "test_util.h"
#include "topic/topic_page.h"

namespace telvanix {
namespace {

using test::TopicPage;

// The text with option 2, line breaks shown as "\n".
std::string Lines(const std::string& html) {
  TopicPage page(html);
  std::string text = page->GetPureText(emPureTextLineBreaks, nullptr, nullptr).str();
  std::string shown;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
      continue;
    if (text[i] == '\r' || (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')))
      shown += "<bare line end>";
    else
      shown += text[i];
  }
  return shown;
}

std::string OneLine(const std::string& html) {
  TopicPage page(html);
  return page->GetPureText(emPureTextOneLine, nullptr, nullptr).str();
}

class PureTextPages : public ::testing::TestWithParam<const char*> {};

TEST_P(PureTextPages, MatchesExpectedText) {
  const std::string name = GetParam();
  const std::string html = test::ReadDataFile("topic_text/" + name + ".htm");
  const std::string expected = test::ReadDataFile("topic_text/" + name + ".txt");
  ASSERT_FALSE(html.empty()) << name;
  ASSERT_FALSE(expected.empty()) << name;
  EXPECT_EQ(expected, Lines(html)) << name;
}

INSTANTIATE_TEST_SUITE_P(Pages, PureTextPages,
                         ::testing::Values("blocks", "hidden", "entities", "pre", "broken_head", "html5"));

TEST(PureText, WordsOfBlocksAreNeverGluedButInlineTagsJoin) {
  EXPECT_EQ("a\nb", Lines("<p>a</p><p>b</p>"));
  EXPECT_EQ("a\nb", Lines("<td>a</td><td>b</td>"));
  EXPECT_EQ("a\nb\nc", Lines("<ul><li>a<li>b</ul><div>c</div>"));
  EXPECT_EQ("a\nbc", Lines("<h1>a</h1>bc"));
  EXPECT_EQ("foo bar", Lines("<b>foo</b> bar"));
  EXPECT_EQ("a bc", Lines("a<img src=x.gif>bc"));
  EXPECT_EQ("a\nb", Lines("<select><option>a<option>b</select>"));
}

TEST(PureText, BreaksAndBlanksCollapse) {
  EXPECT_EQ("a\nbc", Lines("a<br><br>\r\n <br>bc"));
  EXPECT_EQ("a b", Lines("a \t\r\n  b"));
  EXPECT_EQ("a\nb", Lines("a <p> </p> <p>\n</p>  b"));
  // No leading or trailing blanks, even around breaks.
  EXPECT_EQ("a", Lines("<br> \n <p> a </p><br>  "));
  EXPECT_EQ("", Lines("<html><body> <p>\n</p> </body></html>"));
}

TEST(PureText, ReferencesThatDecodeToControlBytesSeparateWords) {
  // "&#X...;" (capital X) decodes to 0, and the low byte of a unit beyond
  // the code page may be a control byte: neither may cut or glue the text.
  EXPECT_EQ("User s Guide", Lines("<p>User&#X2019;s Guide</p>"));
  EXPECT_EQ("a b c", Lines("<p>a&#x2003;b&#0;c</p>"));
  TopicPage page("<p>User&#X2019;s Guide</p>");
  CString text = page->GetPureText(2, nullptr, nullptr);
  EXPECT_EQ(static_cast<size_t>(text.GetLength()), std::strlen(text));
}

TEST(PureText, OptionZeroKeepsOneLine) {
  const char* page = "<h1>Title</h1><p>one<br>two</p><table><tr><td>x<td>y</table>";
  EXPECT_EQ("Title one two x y", OneLine(page));
  EXPECT_EQ("Title\ntwo", Lines("<h1>Title</h1>two"));
  TopicPage raw("<p>one</p><p>two</p>");
  EXPECT_EQ("one\r\ntwo", raw->GetPureText(2, nullptr, nullptr).str());
  // Only the line-break bit matters.
  EXPECT_EQ("one\r\ntwo", raw->GetPureText(2 | 4, nullptr, nullptr).str());
  EXPECT_EQ("one two", raw->GetPureText(1, nullptr, nullptr).str());
}

TEST(PureText, NameStandsForAPageWithoutWords) {
  TopicPage empty("<html><head><title>T</title></head><body><script>x=1</script></body></html>");
  EXPECT_EQ("", empty->GetPureText(2, nullptr, nullptr).str());
  EXPECT_EQ("topic.htm", empty->GetPureText(2, nullptr, "topic.htm").str());
  // An opaque window changes nothing and is never looked into.
  HWND bogus = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(0x10));
  EXPECT_EQ("topic.htm", empty->GetPureText(0, bogus, "topic.htm").str());
  TopicPage words("<p>Words</p>");
  EXPECT_EQ("Words", words->GetPureText(2, bogus, "topic.htm").str());
}

TEST(PureText, HiddenContentEndsAtItsEndTagCountingNesting) {
  EXPECT_EQ("a\nbc", Lines("<p>a</p><noscript>x<noscript>y</noscript>z</noscript><p>bc"));
  // An unclosed NOSCRIPT stops at the end of the body, not of the page.
  EXPECT_EQ("a\ncd", Lines("<body>a<noscript>b</body>cd"));
  // A TITLE without end stops where the body's blocks begin; inline tags
  // inside the title stay in it.
  EXPECT_EQ("Body", Lines("<title>My <b>Help</b><p>Body"));
  EXPECT_EQ("xy", Lines("<title>t</title>xy"));
  // A self-closed IFRAME hides nothing.
  EXPECT_EQ("a bc", Lines("a<iframe src=f.htm />bc"));
  EXPECT_EQ("a bc", Lines("a<iframe src=f.htm>fallback</iframe>bc"));
  // Raw content stays hidden even when the start tag says "/>".
  EXPECT_EQ("a", Lines("a<script src=x.js />var shown = 1;</script>"));
}

TEST(PureText, OnlyHelpControlObjectsAreHidden) {
  const std::string hhctrl =
      "<p>a</p><object classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\">"
      "<param name=\"Button\" value=\"Text:Click me\">inner</object><p>b</p>";
  EXPECT_EQ("a\nb", Lines(hhctrl));
  EXPECT_EQ("a\nbc", Lines("<p>a</p><object classid=\"clsid:4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab\">k</object><p>bc"));
  EXPECT_EQ("a shown bc", Lines("a<object data=x.swf><param name=movie value=x.swf>shown</object>bc"));
  // Nested help-control objects are passed over whole.
  EXPECT_EQ("a bc", Lines("a<object classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\"><object>x</object>y</object>bc"));
}

TEST(PureText, HeadGivesNoWordsUntilItEnds) {
  EXPECT_EQ("body", Lines("<head><meta name=a content=b>\n<base href=x> </head>body"));
  // Words in an unclosed head end it, as in a viewer.
  EXPECT_EQ("Hello world", Lines("<html><head><title>T</title>Hello <b>world</b>"));
  // A HEAD after the body has begun is not a head.
  EXPECT_EQ("a\nb", Lines("<body><p>a</p><head>b</head>"));
}

TEST(PureText, PreformattedTextKeepsItsLines) {
  EXPECT_EQ("x\na b\nc\nyz", Lines("x<pre>a   b\n\n\nc\n</pre>yz"));
  EXPECT_EQ("x a b c yz", OneLine("x<pre>a b\nc</pre>yz"));
}

TEST(PureText, DiscardedTokensAreNotThere) {
  TopicPage page("<p>keep</p><p>drop</p><p>also</p>");
  CHtmlTokenList& list = *page->GetTokenList();
  page->Analyse();
  for (POSITION pos = list.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list.GetNext(pos);
    if (token->IsTextToken() && token->GetOriginalString() == "drop")
      token->DiscardToken();
  }
  EXPECT_EQ("keep\r\nalso", page->GetPureText(2, nullptr, nullptr).str());
}

TEST(PureText, DoubleByteCharactersAreNotCutAtTrailBytes) {
  {
    test::CodePageScope sjis(932);
    // 0x82 0xA0 is one character; its trail byte is not a no-break space.
    EXPECT_EQ("\x82\xA0\x82\xA2 \x93\xFA", Lines("<p>\x82\xA0\x82\xA2 \x93\xFA</p>"));
  }
  // In a single-byte code page the same byte is a blank between words.
  test::CodePageScope western(1252);
  EXPECT_EQ("a b", Lines("a\xA0\xA0" "b"));
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
