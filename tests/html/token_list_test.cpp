// The tokenizer and the token list. Page-shaped cases are golden data:
// html/tokens (NAME.html cut into tokens, NAME.expected the token dump) and
// html/pairing (the flags and rows MarkTags gives each tag). Here: the round
// trip, the commit hook, searches, insertion and edits, and very large or
// very deep pages.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "golden_cases.h"
#include "html/html_test_util.h"
#include "html/tree_dump.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"

namespace telvanix {
namespace {

using test::Str;
using test::U;

std::string Quote(const std::string& s) {
  std::string out = "\"";
  for (unsigned char c : s) {
    char hex[8] = {static_cast<char>(c), 0};
    if (c == '\r' || c == '\n' || c == '\t' || c == '\\' || c == '"')
      std::snprintf(hex, sizeof hex, "\\%c", c == '\r' ? 'r' : c == '\n' ? 'n' : c == '\t' ? 't' : c);
    else if (c < 0x20 || c >= 0x7F)
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
    out += hex;
  }
  return out + "\"";
}

// One line per token: tags with their id (or "unknown" and the row index),
// texts with their raw-start and spaces-before marks; then the bytes, and
// the indent after when there is one.
std::string Dump(CHtmlTokenList& list) {
  std::string out;
  for (POSITION pos = list.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list.GetNext(pos);
    char head[64] = "text";
    if (CHtmlTagItem* tag = token->GetSafeTagItemPtr()) {
      if (tag->IsUnknownTag())
        std::snprintf(head, sizeof head, "tag unknown%s[%d]", tag->IsEndTag() ? "-end" : "", tag->GetTagIndex());
      else
        std::snprintf(head, sizeof head, "tag 0x%X", static_cast<unsigned>(tag->GetTagId()));
    }
    out += head;
    if (!token->GetSafeTagItemPtr()) {
      if (token->GetTokenFlag() & CHtmlTokenItem::emTokenRejectedTagText) out += " rejected";
      if (token->GetSafeTextItemPtr()->IsSpacesTextBefore()) out += " spaced";
    }
    out += " " + Quote(Str(token->GetOriginalString()));
    if (token->GetIndentAfterLength()) out += " after " + Quote(Str(token->GetIndentAfterString()));
    out += "\n";
  }
  return out;
}

void Tokenize(CHtmlTokenList& list, const std::string& page, int flags = 2) {
  list.BuildTokenList(U(page.data()), U(page.data()) + page.size(), flags);
}

std::string Rebuilt(CHtmlTokenList& list) {
  std::string out;
  for (POSITION pos = list.GetHeadPosition(); pos;)
    out += Str(list.GetNext(pos)->GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter));
  return out;
}

std::string SourceOf(CHtmlTokenList& list, POSITION pos) { return Str(list.GetTokenItem(pos)->GetOriginalString()); }

TEST(TokenizerCases, EachPageGivesItsExpectedTokens) {
  test::RunGoldenCases("html/tokens", ".html", [](const std::string&, const std::string& page) {
    CHtmlTokenList list;
    Tokenize(list, page);
    return Dump(list);
  }, 20);
}

// Every tag after MarkTags: its pairing flags (letters as in the tree dumps)
// and, for an unknown tag, the row pairing gave it.
TEST(TokenListPairingCases, MarkTagsGivesTheExpectedFlags) {
  test::RunGoldenCases("html/pairing", ".html", [](const std::string&, const std::string& page) {
    CHtmlTokenList list;
    Tokenize(list, page);
    EXPECT_EQ(1, list.MarkTags());
    std::string out;
    for (POSITION pos = list.GetHeadPosition(); pos;) {
      CHtmlTagItem* tag = list.GetNext(pos)->GetSafeTagItemPtr();
      if (tag == nullptr) continue;
      out += test::TokenLine(tag, true);
      if (tag->IsUnknownTag()) out += " row " + std::to_string(tag->GetTagIndex());
      out += "\n";
    }
    return out;
  }, 5);
}

// Saving unchanged tokens gives the page back, except for the bytes the
// tokenizer drops on purpose; level 1 cuts the same tokens.
TEST(Tokenizer, UnchangedTokensGiveThePageBack) {
  const std::string page =
      "<!DOCTYPE html>\r\n<HTML>\r\n<HEAD><TITLE>T &amp; t</TITLE>\r\n"
      "<script>if (a<b && c>d) go();</script>\r\n</HEAD>\r\n"
      "<BODY bgcolor='#fff'>\r\n  <p class=x>Caf&eacute;<br/>\r\n\t<!-- note -->  "
      "<a href=\"a.htm\" title='1>0'>link</a>\r\n</BODY>\r\n</HTML>\r\n";
  CHtmlTokenList list, identified;
  Tokenize(list, page);
  EXPECT_EQ(page, Rebuilt(list));
  Tokenize(identified, page, 1);
  EXPECT_EQ(Dump(list), Dump(identified));
}

TEST(Tokenizer, FlagsReachEveryTokenAndTinyInputsAreSafe) {
  CHtmlTokenList list;
  Tokenize(list, "<p class=a>x<br>", 0x103);
  for (POSITION pos = list.GetHeadPosition(); pos;)
    EXPECT_EQ(0x103u, list.GetNext(pos)->GetTokenFlag() & 0x103u);
  Tokenize(list, "<p class=a>x", 1);
  EXPECT_EQ(0x1u, list.GetHead()->GetTokenFlag());
  EXPECT_STREQ("a", list.GetTagItem(list.GetHeadPosition())->GetAttributeValue("class"));

  EXPECT_EQ(1, list.BuildTokenList(nullptr, nullptr, 2));
  EXPECT_EQ(0, list.GetCount());
  for (const char* tiny : {"x", "<"}) {  // a single byte is never kept
    Tokenize(list, tiny);
    EXPECT_EQ(0, list.GetCount());
  }
  Tokenize(list, "xy");
  EXPECT_EQ("text \"xy\"\n", Dump(list));
}

// A list that refuses what it is told to, to see the tokenizer move on.
class CFilteringList : public CHtmlTokenList {
 public:
  explicit CFilteringList(int refuseId) : m_nRefuseId(refuseId) {}
  int CommitNewToken(CHtmlTokenItem* pToken) override {
    ++m_nOffered;
    CHtmlTagItem* tag = pToken->GetSafeTagItemPtr();
    return !(tag && tag->GetTagId() == m_nRefuseId);
  }
  int m_nRefuseId;
  int m_nOffered = 0;
};

TEST(Tokenizer, RefusedTokensAreSkipped) {
  CFilteringList list(0x20020);  // B
  Tokenize(list, "<p>a<b>bold</b>c");
  EXPECT_EQ("tag 0x21000 \"<p>\"\ntext \"a\"\ntext \"bold\"\ntag 0x10020020 \"</b>\"\n", Dump(list));
  EXPECT_EQ(5, list.m_nOffered);
  // The "<" of a refused SCRIPT stays text and the byte after it is not
  // looked at: "<script>" becomes the start of a text run.
  CFilteringList script(0x22060);
  Tokenize(script, "<p><script>x<b>y</script>zz");
  EXPECT_EQ(
      "tag 0x21000 \"<p>\"\ntext rejected \"<script>x\"\ntag 0x20020 \"<b>\"\ntext \"y\"\n"
      "tag 0x10022060 \"</script>\"\ntext \"zz\"\n",
      Dump(script));
}

TEST(TokenList, WalkingTypedAccessAndEditing) {
  CHtmlTokenList list;
  Tokenize(list, "<p>one<br>");
  POSITION pos = list.GetTailPosition();
  EXPECT_NE(nullptr, list.GetTagItem(pos));
  list.GetPrev(pos);
  EXPECT_EQ(nullptr, list.GetTagItem(pos));
  EXPECT_NE(nullptr, list.GetTextItem(pos));
  EXPECT_EQ(nullptr, list.GetTokenItem(nullptr));
  EXPECT_EQ(nullptr, list.GetNext(pos = nullptr));
  EXPECT_EQ(3, list.GetCount());
  EXPECT_EQ(1, list.ClearAll());
  EXPECT_EQ(nullptr, list.GetHead());

  POSITION a = list.AddTail(new CHtmlTagItem("<a>"));
  list.AddHead(new CHtmlTextItem("first"));
  list.InsertAfter(a, new CHtmlTagItem("</a>"));
  list.InsertBefore(a, new CHtmlTextItem("mid"));
  EXPECT_EQ(nullptr, list.AddTail(nullptr));
  EXPECT_EQ("firstmid<a></a>", Rebuilt(list));
  EXPECT_EQ(1, list.RemoveAt(a));
  EXPECT_EQ(0, list.RemoveAt(nullptr));
  EXPECT_EQ("firstmid</a>", Rebuilt(list));
}

TEST(TokenList, Searches) {
  CHtmlTokenList list;
  Tokenize(list, "<div><P>a<p>b</p><div>c</div><foo>d</foo></div><foo>");
  POSITION pos = list.GetTagHeadPosition("p");
  ASSERT_NE(nullptr, pos);
  EXPECT_EQ("<P>", SourceOf(list, pos));
  EXPECT_EQ(1, list.GetNextTag("P", pos));
  EXPECT_EQ("<p>", SourceOf(list, pos));
  EXPECT_EQ(0, list.GetNextTag("p", pos));
  EXPECT_EQ(nullptr, pos);
  EXPECT_NE(nullptr, list.GetTagHeadPosition("/p"));
  EXPECT_EQ(nullptr, list.GetTagHeadPosition("span"));
  // Discarded tokens are invisible to every search.
  list.GetTagItem(list.GetTagHeadPosition("p"))->DiscardToken();
  EXPECT_EQ("<p>", SourceOf(list, list.GetTagHeadPosition("p")));

  CHtmlTagItem divTag("<DIV>"), fooTag("<foo>");
  POSITION walk;
  POSITION first = list.FindFirstTagPosition(walk, divTag);
  EXPECT_EQ(list.GetHeadPosition(), first);
  POSITION second = list.FindNextTagPosition(walk, divTag);
  ASSERT_NE(nullptr, second);
  EXPECT_NE(first, second);
  EXPECT_EQ(nullptr, list.FindNextTagPosition(walk, divTag));
  // The outer DIV's end is the last </div>, nesting counted.
  POSITION end = list.FindEndTagPosition(first);
  ASSERT_NE(nullptr, end);
  POSITION after = end;
  list.GetNext(after);
  EXPECT_EQ("<foo>", SourceOf(list, after));
  EXPECT_EQ(nullptr, list.FindEndTagPosition(end));    // an end tag
  EXPECT_EQ(nullptr, list.FindEndTagPosition(after));  // never closed
  EXPECT_EQ(nullptr, list.FindTagWithinPositions(first, list.FindFirstTagPosition(walk, fooTag), fooTag));
  EXPECT_NE(nullptr, list.FindTagWithinPositions(nullptr, nullptr, fooTag));

  CHtmlTextItem* text = nullptr;
  EXPECT_EQ(1, list.GetTextDefinedAfter(list.GetTagHeadPosition("p"), text));
  ASSERT_NE(nullptr, text);
  EXPECT_EQ("b", Str(text->GetText()));
  EXPECT_EQ(0, list.GetTextDefinedAfter(end, text));
  EXPECT_EQ(nullptr, text);
}

TEST(TokenList, InsertStreamsAndLists) {
  CHtmlTokenList list;
  Tokenize(list, "<body></body>");
  POSITION body = list.GetHeadPosition();
  EXPECT_EQ(0, list.InsertHtmlStream(nullptr, U("<p>"), 0));
  EXPECT_EQ(0, list.InsertHtmlStream(body, nullptr, 0));
  EXPECT_EQ(1, list.InsertHtmlStream(body, U("<p>one</p>"), 0));
  EXPECT_EQ(1, list.InsertHtmlStream(list.GetTailPosition(), U("<hr><i>two</i>"), 1));
  EXPECT_EQ("<body><p>one</p><hr><i>two</i></body>", Rebuilt(list));
  // Copies are the program's own tokens, identified at level 1.
  EXPECT_EQ(0x1u, list.GetTokenItem(list.GetTagHeadPosition("hr"))->GetTokenFlag() & 0x3u);

  // A token list is copied deeply, without its discarded tokens.
  CHtmlTokenList target, source;
  Tokenize(target, "<a></a>");
  Tokenize(source, "<b>x<i>y</i></b>");
  source.GetTagItem(source.GetTagHeadPosition("i"))->DiscardToken();
  EXPECT_EQ(0, target.InsertTokenList(target.GetHeadPosition(), nullptr, 0));
  EXPECT_EQ(0, target.InsertTokenList(nullptr, &source, 0));
  EXPECT_EQ(1, target.InsertTokenList(target.GetHeadPosition(), &source, 0));
  source.ClearAll();  // the copies do not share the source's storage
  EXPECT_EQ("<a><b>xy</i></b></a>", Rebuilt(target));
}

// Clearing a list read from a page skips the token walk only while nothing
// could own heap memory; these lists would leak (and the leak checker
// report it) if it skipped wrongly.
TEST(TokenList, ClearingFreesWhatTokensTookAfterReading) {
  const std::string page = "<p class=x>one</p><p>two</p>";
  {
    CHtmlTagItem* early = new CHtmlTagItem("<hr>");  // made before the page was read
    CHtmlTokenList list;
    Tokenize(list, page, 3);
    list.AddTail(early);
    EXPECT_EQ(page + "<hr>", Rebuilt(list));
  }
  {
    CHtmlTextItem* early = new CHtmlTextItem("tail");
    CHtmlTokenList list;
    Tokenize(list, page, 3);
    list.GetTokenItemList().AddTail(early);  // straight into the underlying list
    EXPECT_EQ(1, list.ClearAll());
  }
  {
    // A token read from the page takes heap parts when it is edited.
    CHtmlTokenList list;
    Tokenize(list, page, 3);
    CHtmlTagItem* p = list.GetTagItem(list.GetHeadPosition());
    EXPECT_EQ(1, p->SetAttribute("id", "intro"));
    EXPECT_EQ(1, p->SetOriginalData("<p id=intro>"));
    Tokenize(list, page, 3);
    EXPECT_EQ(page, Rebuilt(list));
  }
}

// A page of several megabytes (its tokens fill arena blocks of huge pages)
// and 100,000 nested unknown tags: every token is there, nothing crashes.
TEST(TokenizerScale, LargeAndDeeplyNestedPages) {
  const std::string unit = "<p class=\"x\">Some text &amp; more<br>\r\n<a href='a.htm'>link</a>\r\n";
  std::string large;
  while (large.size() < (12u << 20)) large += unit;
  CHtmlTokenList big;
  Tokenize(big, large);
  EXPECT_EQ(static_cast<int>(large.size() / unit.size()) * 6, big.GetCount());

  const int depth = 100000;
  std::string page;
  for (int i = 0; i < depth; ++i) page += "<x>";
  page += "text";
  for (int i = 0; i < depth; ++i) page += "</x>";
  CHtmlTokenList list;
  Tokenize(list, page);
  EXPECT_EQ(2 * depth + 1, list.GetCount());
  EXPECT_EQ(1, list.MarkTags());
  // The pairing stack is bounded: the innermost tags pair, nothing crashes.
  EXPECT_TRUE(list.GetTagItem(list.GetTailPosition())->GetTokenFlag() & 0xA000);
  EXPECT_GE(list.BuildEntityTree(0x10007), 0);
}

}  // namespace
}  // namespace telvanix
