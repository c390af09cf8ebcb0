// Plain text for indexers: the walk's rules on small pages (whole pages are
// golden cases in tests/data/topic_text), options, code pages and any token list.
#include "telvanix/topic/pure_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "telvanix/platform/code_page.h"
#include "telvanix/topic/html_file_ex.h"
#include "test_util.h"
#include "topic/topic_describe.h"
#include "topic/topic_page.h"

namespace telvanix {
namespace {

using test::TopicPage;

TEST(PureText, Rules) {
  const char* const hhctrl = "<object classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\">";
  const struct {
    std::string page;
    const char* text;
  } cases[] = {
      // Words of blocks are never glued; inline tags join.
      {"<p>a</p><p>b</p>", "a\nb"},
      {"<td>a</td><td>b</td>", "a\nb"},
      {"<ul><li>a<li>b</ul><div>c</div>", "a\nb\nc"},
      {"<h1>a</h1>bc", "a\nbc"},
      {"<b>foo</b> bar", "foo bar"},
      {"a<img src=x.gif>bc", "a bc"},
      {"<select><option>a<option>b</select>", "a\nb"},
      // Breaks and blanks collapse, none lead or trail.
      {"a<br><br>\r\n <br>bc", "a\nbc"},
      {"a \t\r\n  b", "a b"},
      {"a <p> </p> <p>\n</p>  b", "a\nb"},
      {"<br> \n <p> a </p><br>  ", "a"},
      {"<html><body> <p>\n</p> </body></html>", ""},
      // "&#X...;" decodes to 0 and a unit beyond the code page may give a
      // control byte: neither cuts or glues the text.
      {"<p>User&#X2019;s Guide</p>", "User s Guide"},
      {"<p>a&#x2003;b&#0;c</p>", "a b c"},
      // Hidden content ends at its end tag, counting nesting.
      {"<p>a</p><noscript>x<noscript>y</noscript>z</noscript><p>bc", "a\nbc"},
      {"<body>a<noscript>b</body>cd", "a\ncd"},  // at the body's end, not the page's
      {"<title>My <b>Help</b><p>Body", "Body"},  // an open TITLE stops where blocks begin
      {"<title>t</title>xy", "xy"},
      {"a<iframe src=f.htm />bc", "a bc"},
      {"a<iframe src=f.htm>fallback</iframe>bc", "a bc"},
      {"a<script src=x.js />var shown = 1;</script>", "a"},
      // Only help-control objects are hidden, nested ones whole.
      {std::string("<p>a</p>") + hhctrl + "<param name=\"Button\" value=\"Text:Click me\">inner</object><p>b</p>", "a\nb"},
      {"<p>a</p><object classid=\"clsid:4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab\">k</object><p>bc", "a\nbc"},
      {"a<object data=x.swf><param name=movie value=x.swf>shown</object>bc", "a shown bc"},
      {std::string("a") + hhctrl + "<object>x</object>y</object>bc", "a bc"},
      // The head gives no words until it ends; words in an open head end it.
      {"<head><meta name=a content=b>\n<base href=x> </head>body", "body"},
      {"<html><head><title>T</title>Hello <b>world</b>", "Hello world"},
      {"<body><p>a</p><head>b</head>", "a\nb"},
      {"x<pre>a   b\n\n\nc\n</pre>yz", "x\na b\nc\nyz"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.text, test::PlainText(c.page)) << c.page;
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
