// Token base and text tokens: stored bytes, the flag word, manual indents,
// text analysis with and without raw mode, printing of changed text.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "html/html_test_util.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_item.h"
#include "telvanix/html/token_list.h"

namespace telvanix {
namespace {

using test::Str;
using test::U;

std::u16string Units(CWordString* w) {
  if (!w || !w->GetContent())
    return std::u16string();
  return std::u16string(reinterpret_cast<const char16_t*>(w->GetContent()), static_cast<size_t>(w->GetLength()));
}

TEST(TokenItem, OriginalDataAndIndentAfter) {
  CHtmlTextItem text;
  const char* src = "abcdef";
  EXPECT_EQ(1, text.SetOriginalData(U(src) + 1, U(src) + 3));
  EXPECT_EQ("bcd", Str(text.GetOriginalString()));
  // An inverted range empties and fails.
  EXPECT_EQ(0, text.SetOriginalData(U(src) + 2, U(src) + 1));
  EXPECT_EQ("", Str(text.GetOriginalString()));
  EXPECT_EQ(0, text.GetOriginalLength());
  EXPECT_EQ(1, text.SetOriginalIndentAfter("\r\n  "));
  EXPECT_EQ("\r\n  ", Str(text.GetIndentAfterString()));
  EXPECT_EQ(0, text.SetOriginalIndentAfter(U(src) + 1, U(src)));
  EXPECT_EQ("", Str(text.GetIndentAfterString()));
  // A range inside the token's own data survives being reassigned.
  text.SetOriginalData("0123456789");
  const unsigned char* own = text.GetOriginalData();
  text.SetOriginalData(own + 2, own + 4);
  EXPECT_EQ("234", Str(text.GetOriginalString()));
}

TEST(TokenItem, FlagWordAndManualIndents) {
  CHtmlTagItem tag;
  tag.SetTokenFlag(CHtmlTokenItem::emTokenModified);
  tag.SetTokenFlag(CHtmlTokenItem::emTokenPaired);
  EXPECT_TRUE(tag.IsModifiedToken());
  EXPECT_FALSE(tag.IsDiscardedToken());
  EXPECT_EQ(0x8040u, tag.GetTokenFlag());
  tag.ResetTokenFlag(CHtmlTokenItem::emTokenModified);
  EXPECT_EQ(0x8000u, tag.GetTokenFlag());
  EXPECT_EQ(1, tag.DiscardToken());
  EXPECT_TRUE(tag.IsDiscardedToken());

  CHtmlTextItem text;
  EXPECT_EQ(1, text.SetManualIndentBefore(static_cast<CHtmlTokenItem::EmManualIndent>(3)));
  EXPECT_EQ(1, text.SetManualIndentAfter(static_cast<CHtmlTokenItem::EmManualIndent>(0)));
  EXPECT_EQ(0u, text.GetTokenFlag());
  text.SetManualIndentAfter(CHtmlTokenItem::emManualIndentNewLine);
  EXPECT_EQ(0x1000000u, text.GetTokenFlag());
  text.SetManualIndentAfter(CHtmlTokenItem::emManualIndentKeep);
  text.SetManualIndentBefore(CHtmlTokenItem::emManualIndentNewLine);
  text.SetManualIndentBefore(CHtmlTokenItem::emManualIndentKeep);
  // Only ever set: both values of each side stay.
  EXPECT_EQ(0xF000000u, text.GetTokenFlag());
}

TEST(TokenItem, CopyTakesTypeFlagsAndBytes) {
  CHtmlTextItem from("x&amp;y");
  from.SetOriginalIndentAfter(" ");
  CHtmlTextItem to;
  EXPECT_EQ(0, to.CHtmlTokenItem::Copy(nullptr));
  EXPECT_EQ(1, to.Copy(&from));
  EXPECT_EQ(from.GetTokenFlag(), to.GetTokenFlag());
  EXPECT_EQ("x&amp;y", Str(to.GetOriginalString()));
  EXPECT_EQ(" ", Str(to.GetIndentAfterString()));
  EXPECT_EQ("x&y", Str(to.GetText()));
  // The copy is independent of its source.
  from.SetText("changed");
  EXPECT_EQ("x&y", Str(to.GetText()));
}

TEST(TextItem, DecodesAndTrimsLineBreaksOnlyUnlessRaw) {
  CHtmlTextItem text;
  text.SetOriginalData("\r\nA&amp;B\r\n");
  EXPECT_EQ(1, text.Analyse(2));
  EXPECT_EQ(0x3u, text.GetTokenFlag());
  // The reference is marked (0xFF in the high byte); its low byte is "&".
  EXPECT_EQ(u"A\xFF26" u"B", Units(text.GetWordText()));
  EXPECT_EQ("A&B", Str(text.GetText()));
  // Blanks other than CR and LF are kept.
  CHtmlTextItem spaced;
  spaced.SetOriginalData(" \tx \n");
  spaced.Analyse(2);
  EXPECT_EQ(" \tx ", Str(spaced.GetText()));
  // Raw mode keeps the bytes as they are.
  CHtmlTextItem raw;
  raw.SetOriginalData("\r\nA&amp;B\r\n");
  EXPECT_EQ(1, raw.Analyse(2 | 0x200));
  EXPECT_EQ(u"\r\nA&amp;B\r\n", Units(raw.GetWordText()));
}

TEST(TextItem, MarkedReferencesAndLevels) {
  CHtmlTextItem text;
  text.SetOriginalData("&lt;&eacute;e");
  // Level 1 only identifies.
  EXPECT_EQ(1, text.Analyse(1 | 0x100));
  EXPECT_EQ(0x101u, text.GetTokenFlag());
  // Asking for 1 and 2 on an identified token does nothing.
  EXPECT_EQ(1, text.Analyse(3));
  EXPECT_EQ(0x101u, text.GetTokenFlag());
  EXPECT_EQ(1, text.Analyse(2));
  EXPECT_EQ(0x103u, text.GetTokenFlag());
  EXPECT_EQ(3, text.GetWordTextLength());
  // References are marked with 0xFF in the high byte; typed bytes are not.
  EXPECT_EQ(0xFF3C, text.GetWordTextAt(0));
  EXPECT_EQ(0xFFE9, text.GetWordTextAt(1));
  EXPECT_EQ('e', text.GetWordTextAt(2));
  EXPECT_EQ("<\xE9"
            "e",
            Str(text.GetText()));
}

TEST(TextItem, EmptyAfterTrimFailsAndStaysUnanalysed) {
  CHtmlTextItem text;
  text.SetOriginalData("\r\n\n");
  EXPECT_EQ(0, text.Analyse(2));
  EXPECT_EQ(0x1u, text.GetTokenFlag());
  CHtmlTextItem none;
  EXPECT_EQ(0, none.Analyse(2));
  EXPECT_EQ(1, none.Analyse(0x100));  // neither level: nothing at all
  EXPECT_EQ(0x1u, none.GetTokenFlag());
}

TEST(TextItem, ConstructorDecodesAndMarksInserted) {
  CHtmlTextItem text("a&gt;b");
  EXPECT_TRUE(text.IsInsertedToken());
  EXPECT_EQ("a>b", Str(text.GetText()));
  EXPECT_EQ("a&gt;b", Str(text.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
}

TEST(TextItem, ChangedTextPrintsLowBytesWithoutEncodingUnchangedItsSource) {
  CHtmlTextItem text("old");
  text.SetOriginalIndentAfter("\r\n");
  EXPECT_EQ(1, text.SetText("a<b"));
  EXPECT_TRUE(text.IsModifiedToken());
  EXPECT_EQ("a<b", Str(text.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
  EXPECT_EQ("a<b\r\n", Str(text.GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)));
  EXPECT_EQ("", Str(text.GetPrintableText(static_cast<CHtmlTokenItem::EmTextFlag>(3))));

  CWordString word;
  const unsigned short units[] = {0x41, 0x142, 0};
  word.Assign(units, -1);
  text.SetWordText(&word);
  // 0x142 prints as its low byte 0x42.
  EXPECT_EQ("AB", Str(text.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));

  // Unchanged text prints its source.
  CHtmlTextItem source("x &amp; y");
  source.SetOriginalIndentAfter("\t");
  EXPECT_EQ("x &amp; y\t", Str(source.GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)));
  EXPECT_EQ("x &amp; y", Str(source.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
  EXPECT_EQ("", Str(source.GetPrintableText(static_cast<CHtmlTokenItem::EmTextFlag>(0))));
}

TEST(TextItem, IsSpaceOnly) {
  const char* s = " \t\r\nx";
  EXPECT_TRUE(CHtmlTextItem::IsSpaceOnly(U(s), U(s) + 3));
  EXPECT_FALSE(CHtmlTextItem::IsSpaceOnly(U(s), U(s) + 4));
  EXPECT_TRUE(CHtmlTextItem::IsSpaceOnly(U(s) + 2, U(s) + 1));
}

// Tokens read by a list live in its arena; the accessors must behave as for
// heap tokens, and changes must not touch the list's copy of the page.
TEST(TextItem, ArenaTokensBehaveLikeHeapTokens) {
  CHtmlTokenList list;
  const char* page = "<p>caf&eacute; au lait<p>plain";
  list.BuildTokenList(U(page), U(page) + std::strlen(page), 2);
  ASSERT_EQ(4, list.GetCount());
  POSITION pos = list.GetHeadPosition();
  list.GetNext(pos);
  CHtmlTextItem* decoded = list.GetTextItem(pos);
  ASSERT_NE(nullptr, decoded);
  EXPECT_EQ("caf\xE9 au lait", Str(decoded->GetText()));
  EXPECT_EQ(u"caf\xFFE9 au lait", Units(decoded->GetWordText()));
  list.GetNext(pos);
  list.GetNext(pos);
  CHtmlTextItem* plain = list.GetTextItem(pos);
  ASSERT_NE(nullptr, plain);
  EXPECT_EQ(u"plain", Units(plain->GetWordText()));
  plain->SetOriginalData("other");
  EXPECT_EQ("other", Str(plain->GetOriginalString()));
  EXPECT_EQ("caf&eacute; au lait", Str(decoded->GetOriginalString()));
  // delete on an arena token is safe (the list would do it on ClearAll).
  CHtmlTokenItem* token = list.GetTokenItem(list.GetHeadPosition());
  list.GetTokenItemList().RemoveAt(list.GetHeadPosition());
  delete token;
  EXPECT_EQ(3, list.GetCount());
}

}  // namespace
}  // namespace telvanix
