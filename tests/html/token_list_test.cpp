// The tokenizer and the token list: page-shaped cases under
// data/html/tokens (each NAME.html beside the expected token dump
// NAME.tokens), the commit hook, searches, insertion, tag pairing, and
// very large or very deep pages.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "html/html_test_util.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"
#include "test_util.h"

namespace telvanix {
namespace {

using test::Str;
using test::U;

std::string Quote(const std::string& s) {
  std::string out = "\"";
  for (unsigned char c : s) {
    switch (c) {
      case '\r': out += "\\r"; break;
      case '\n': out += "\\n"; break;
      case '\t': out += "\\t"; break;
      case '\\': out += "\\\\"; break;
      case '"': out += "\\\""; break;
      default:
        if (c < 0x20 || c >= 0x7F) {
          char hex[8];
          std::snprintf(hex, sizeof hex, "\\x%02X", c);
          out += hex;
        } else {
          out += static_cast<char>(c);
        }
    }
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
    if (CHtmlTagItem* tag = token->GetSafeTagItemPtr()) {
      char head[64];
      if (tag->IsUnknownTag())
        std::snprintf(head, sizeof head, "tag unknown%s[%d]", tag->IsEndTag() ? "-end" : "", tag->GetTagIndex());
      else
        std::snprintf(head, sizeof head, "tag 0x%X", static_cast<unsigned>(tag->GetTagId()));
      out += head;
    } else {
      out += "text";
      if (token->GetTokenFlag() & CHtmlTokenItem::emTokenRejectedTagText)
        out += " rejected";
      if (token->GetSafeTextItemPtr()->IsSpacesTextBefore())
        out += " spaced";
    }
    out += " " + Quote(Str(token->GetOriginalString()));
    if (token->GetIndentAfterLength())
      out += " after " + Quote(Str(token->GetIndentAfterString()));
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

TEST(TokenizerCases, EachPageGivesItsExpectedTokens) {
  namespace fs = std::filesystem;
  fs::path dir = fs::path(TELVANIX_TEST_DATA_DIR) / "html" / "tokens";
  int cases = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path().extension() != ".html")
      continue;
    std::string name = entry.path().stem().string();
    SCOPED_TRACE(name);
    std::string page = test::ReadDataFile("html/tokens/" + name + ".html");
    std::string expected = test::ReadDataFile("html/tokens/" + name + ".tokens");
    ASSERT_FALSE(expected.empty()) << "missing " << name << ".tokens";
    CHtmlTokenList list;
    Tokenize(list, page);
    EXPECT_EQ(expected, Dump(list));
    ++cases;
  }
  EXPECT_GE(cases, 20);
}

// Saving unchanged tokens gives the page back, except for the bytes the
// tokenizer drops on purpose.
TEST(Tokenizer, UnchangedTokensGiveThePageBack) {
  const std::string page =
      "<!DOCTYPE html>\r\n<HTML>\r\n<HEAD><TITLE>T &amp; t</TITLE>\r\n"
      "<script>if (a<b && c>d) go();</script>\r\n</HEAD>\r\n"
      "<BODY bgcolor='#fff'>\r\n  <p class=x>Caf&eacute;<br/>\r\n\t<!-- note -->  "
      "<a href=\"a.htm\" title='1>0'>link</a>\r\n</BODY>\r\n</HTML>\r\n";
  CHtmlTokenList list;
  Tokenize(list, page);
  EXPECT_EQ(page, Rebuilt(list));
  // Level 1 cuts the same tokens.
  CHtmlTokenList identified;
  Tokenize(identified, page, 1);
  EXPECT_EQ(Dump(list), Dump(identified));
}

TEST(Tokenizer, FlagsReachEveryToken) {
  CHtmlTokenList list;
  Tokenize(list, "<p class=a>x<br>", 0x103);
  for (POSITION pos = list.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list.GetNext(pos);
    EXPECT_EQ(0x103u, token->GetTokenFlag() & 0x103u) << Str(token->GetOriginalString());
  }
  CHtmlTokenList level1;
  Tokenize(level1, "<p class=a>x", 1);
  EXPECT_EQ(0x1u, level1.GetHead()->GetTokenFlag());
  EXPECT_STREQ("a", level1.GetTagItem(level1.GetHeadPosition())->GetAttributeValue("class"));
}

TEST(Tokenizer, EmptyAndTinyInputs) {
  CHtmlTokenList list;
  EXPECT_EQ(1, list.BuildTokenList(nullptr, nullptr, 2));
  EXPECT_EQ(0, list.GetCount());
  Tokenize(list, "x");  // a single byte is never kept
  EXPECT_EQ(0, list.GetCount());
  Tokenize(list, "xy");
  EXPECT_EQ("text \"xy\"\n", Dump(list));
  Tokenize(list, "<");
  EXPECT_EQ(0, list.GetCount());
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
}

TEST(Tokenizer, RefusedRawStartTagStaysText) {
  // The "<" of a refused SCRIPT stays text and the byte after it is not
  // looked at: "<script>" becomes the start of a text run.
  CFilteringList list(0x22060);
  Tokenize(list, "<p><script>x<b>y</script>zz");
  EXPECT_EQ(
      "tag 0x21000 \"<p>\"\n"
      "text rejected \"<script>x\"\n"
      "tag 0x20020 \"<b>\"\n"
      "text \"y\"\n"
      "tag 0x10022060 \"</script>\"\n"
      "text \"zz\"\n",
      Dump(list));
}

TEST(TokenList, WalkingAndTypedAccess) {
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
  EXPECT_EQ(0, list.GetCount());
  EXPECT_EQ(nullptr, list.GetHead());
}

TEST(TokenList, Searches) {
  CHtmlTokenList list;
  Tokenize(list, "<div><P>a<p>b</p><div>c</div><foo>d</foo></div><foo>");
  POSITION pos = list.GetTagHeadPosition("p");
  ASSERT_NE(nullptr, pos);
  EXPECT_EQ("<P>", Str(list.GetTokenItem(pos)->GetOriginalString()));
  EXPECT_EQ(1, list.GetNextTag("P", pos));
  EXPECT_EQ("<p>", Str(list.GetTokenItem(pos)->GetOriginalString()));
  EXPECT_EQ(0, list.GetNextTag("p", pos));
  EXPECT_EQ(nullptr, pos);
  EXPECT_NE(nullptr, list.GetTagHeadPosition("/p"));
  EXPECT_EQ(nullptr, list.GetTagHeadPosition("span"));

  // Discarded tokens are invisible to every search.
  list.GetTagItem(list.GetTagHeadPosition("p"))->DiscardToken();
  EXPECT_EQ("<p>", Str(list.GetTokenItem(list.GetTagHeadPosition("p"))->GetOriginalString()));

  CHtmlTagItem divTag("<DIV>");
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
  EXPECT_EQ("<foo>", Str(list.GetTokenItem(after)->GetOriginalString()));
  EXPECT_EQ(nullptr, list.FindEndTagPosition(end));          // an end tag
  EXPECT_EQ(nullptr, list.FindEndTagPosition(after));        // never closed

  CHtmlTagItem fooTag("<foo>");
  EXPECT_EQ(nullptr, list.FindTagWithinPositions(first, list.FindFirstTagPosition(walk, fooTag), fooTag));
  EXPECT_NE(nullptr, list.FindTagWithinPositions(nullptr, nullptr, fooTag));

  CHtmlTextItem* text = nullptr;
  POSITION p2 = list.GetTagHeadPosition("p");
  EXPECT_EQ(1, list.GetTextDefinedAfter(p2, text));
  ASSERT_NE(nullptr, text);
  EXPECT_EQ("b", Str(text->GetText()));
  EXPECT_EQ(0, list.GetTextDefinedAfter(end, text));
  EXPECT_EQ(nullptr, text);
}

TEST(TokenList, InsertHtmlStreamAfterAndBefore) {
  CHtmlTokenList list;
  Tokenize(list, "<body></body>");
  POSITION body = list.GetHeadPosition();
  EXPECT_EQ(0, list.InsertHtmlStream(nullptr, U("<p>"), 0));
  EXPECT_EQ(0, list.InsertHtmlStream(body, nullptr, 0));
  EXPECT_EQ(1, list.InsertHtmlStream(body, U("<p>one</p>"), 0));
  POSITION end = list.GetTailPosition();
  EXPECT_EQ(1, list.InsertHtmlStream(end, U("<hr><i>two</i>"), 1));
  EXPECT_EQ("<body><p>one</p><hr><i>two</i></body>", Rebuilt(list));
  // Copies are the program's own tokens, identified at level 1.
  CHtmlTokenItem* hr = list.GetTokenItem(list.GetTagHeadPosition("hr"));
  EXPECT_EQ(0x1u, hr->GetTokenFlag() & 0x3u);
}

TEST(TokenList, InsertTokenListSkipsDiscardedAndCopiesDeeply) {
  CHtmlTokenList target, source;
  Tokenize(target, "<a></a>");
  Tokenize(source, "<b>x<i>y</i></b>");
  source.GetTagItem(source.GetTagHeadPosition("i"))->DiscardToken();
  EXPECT_EQ(0, target.InsertTokenList(target.GetHeadPosition(), nullptr, 0));
  EXPECT_EQ(0, target.InsertTokenList(nullptr, &source, 0));
  EXPECT_EQ(1, target.InsertTokenList(target.GetHeadPosition(), &source, 0));
  source.ClearAll();  // the copies do not share the source's storage
  EXPECT_EQ("<a><b>xy</i></b></a>", Rebuilt(target));
  POSITION b = target.GetTagHeadPosition("b");
  target.GetNext(b);
  ASSERT_NE(nullptr, target.GetTextItem(b));
  EXPECT_EQ("x", Str(target.GetTextItem(b)->GetText()));
}

TEST(TokenList, EditingHelpers) {
  CHtmlTokenList list;
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

// Clearing a list read from a page skips the token walk only while nothing
// could own heap memory; these lists would leak (and the leak checker
// report it) if it skipped wrongly.
TEST(TokenList, ClearingFreesWhatTokensTookAfterReading) {
  const char page[] = "<p class=x>one</p><p>two</p>";
  const unsigned char* end = U(page) + sizeof page - 1;
  {
    // Made before the page was read, handed in after.
    CHtmlTagItem* early = new CHtmlTagItem("<hr>");
    CHtmlTokenList list;
    list.BuildTokenList(U(page), end, 3);
    list.AddTail(early);
    EXPECT_EQ("<p class=x>one</p><p>two</p><hr>", Rebuilt(list));
  }
  {
    // Put straight into the underlying list.
    CHtmlTextItem* early = new CHtmlTextItem("tail");
    CHtmlTokenList list;
    list.BuildTokenList(U(page), end, 3);
    list.GetTokenItemList().AddTail(early);
    EXPECT_EQ(1, list.ClearAll());
    EXPECT_TRUE(list.IsEmpty());
  }
  {
    // A token read from the page takes heap parts when it is edited.
    CHtmlTokenList list;
    list.BuildTokenList(U(page), end, 3);
    CHtmlTagItem* p = list.GetTagItem(list.GetHeadPosition());
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(1, p->SetAttribute("id", "intro"));
    EXPECT_EQ(1, p->SetOriginalData("<p id=intro>"));
    list.BuildTokenList(U(page), end, 3);
    EXPECT_EQ("<p class=x>one</p><p>two</p>", Rebuilt(list));
  }
}

struct MarkCase {
  const char* page;
  const char* tag;     // the tag (by source text) whose flags are checked
  DWORD flags;         // pairing flags expected on it
  int index;           // its row index afterwards (-1: not checked)
};

TEST(TokenList, MarkTagsPairsAndFlags) {
  const MarkCase cases[] = {
      {"<div>x</div>", "<div>", CHtmlTokenItem::emTokenPaired, -1},
      {"<div>x</div>", "</div>", CHtmlTokenItem::emTokenPaired, -1},
      {"</i>", "</i>", CHtmlTokenItem::emTokenStrayEndTag, -1},
      {"<p>a<p>b", "<p>", CHtmlTokenItem::emTokenUnclosed, -1},
      {"<div><p>a</div>", "<p>", CHtmlTokenItem::emTokenUnclosed, -1},
      {"<div><p>a</div>", "</div>", CHtmlTokenItem::emTokenPaired, -1},
      {"<foo>x</foo>", "<foo>", CHtmlTokenItem::emTokenPaired | CHtmlTokenItem::emTokenPairedUnknown, 4},
      {"<foo>x</foo>", "</foo>", CHtmlTokenItem::emTokenPaired | CHtmlTokenItem::emTokenPairedUnknown, 4},
      // An unknown tag passed over by another end tag is taken as empty.
      {"<div><foo>x</div>", "<foo>", 0, 2},
      {"<div><foo>x</div>", "</div>", CHtmlTokenItem::emTokenPaired, -1},
      // Left open at the end: unknown tags become empty, "<?...?>" ones PI.
      {"<bar>", "<bar>", 0, 2},
      {"<?php x>", "<?php x>", 0, 3},
      {"<span>x", "<span>", CHtmlTokenItem::emTokenUnclosed, -1},
      {"<br></br>", "</br>", CHtmlTokenItem::emTokenStrayEndTag, -1},
  };
  const DWORD pairing = 0xF000;
  for (const MarkCase& c : cases) {
    SCOPED_TRACE(std::string(c.page) + " / " + c.tag);
    CHtmlTokenList list;
    Tokenize(list, c.page);
    EXPECT_EQ(1, list.MarkTags());
    CHtmlTagItem* found = nullptr;
    for (POSITION pos = list.GetHeadPosition(); pos;) {
      CHtmlTagItem* tag = list.GetNext(pos)->GetSafeTagItemPtr();
      if (tag && Str(tag->GetOriginalString()) == c.tag)
        found = tag;
    }
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(c.flags, found->GetTokenFlag() & pairing);
    if (c.index >= 0) {
      EXPECT_EQ(c.index, found->GetTagIndex());
    }
  }
}

// A 50 MB page and 100,000 nested unknown tags: linear time, no crash.
TEST(TokenizerScale, LargePageInLinearTime) {
  std::string unit = "<p class=\"x\">Some text &amp; more<br>\r\n<a href='a.htm'>link</a>\r\n";
  auto timeFor = [&](std::size_t bytes) {
    std::string page;
    page.reserve(bytes + unit.size());
    while (page.size() < bytes)
      page += unit;
    CHtmlTokenList list;
    auto start = std::chrono::steady_clock::now();
    Tokenize(list, page);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(static_cast<int>(page.size() / unit.size()) * 6, list.GetCount());
    return seconds;
  };
  double small = timeFor(5u << 20);
  double large = timeFor(50u << 20);
  // Ten times the bytes; allow generous noise but not quadratic growth.
  EXPECT_LT(large, small * 25 + 0.5);
}

TEST(TokenizerScale, DeeplyNestedUnknownTags) {
  const int depth = 100000;
  std::string page;
  for (int i = 0; i < depth; ++i)
    page += "<x>";
  page += "text";
  for (int i = 0; i < depth; ++i)
    page += "</x>";
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
