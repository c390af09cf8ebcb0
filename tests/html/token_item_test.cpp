// Token base and text tokens: stored bytes, token flags, manual indents,
// text analysis levels, trimming and raw mode, printing of changed text.
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
using T = CHtmlTokenItem;

std::u16string Units(CWordString* w) {
  if (!w || !w->GetContent()) return std::u16string();
  return std::u16string(reinterpret_cast<const char16_t*>(w->GetContent()), static_cast<size_t>(w->GetLength()));
}

TEST(TokenItem, OriginalDataAndIndentAfter) {
  CHtmlTextItem text;
  const char* src = "abcdef";
  EXPECT_TRUE(text.SetOriginalData(U(src) + 1, U(src) + 3) && Str(text.GetOriginalString()) == "bcd");
  // An inverted range empties and fails.
  EXPECT_TRUE(!text.SetOriginalData(U(src) + 2, U(src) + 1) && text.GetOriginalLength() == 0);
  EXPECT_TRUE(text.SetOriginalIndentAfter("\r\n  ") && Str(text.GetIndentAfterString()) == "\r\n  ");
  EXPECT_TRUE(!text.SetOriginalIndentAfter(U(src) + 1, U(src)) && Str(text.GetIndentAfterString()).empty());
  // A range inside the token's own data survives being reassigned.
  text.SetOriginalData("0123456789");
  text.SetOriginalData(text.GetOriginalData() + 2, text.GetOriginalData() + 4);
  EXPECT_EQ("234", Str(text.GetOriginalString()));
  const unsigned char* s = U(" \t\r\nx");
  EXPECT_TRUE(CHtmlTextItem::IsSpaceOnly(s, s + 3) && CHtmlTextItem::IsSpaceOnly(s + 2, s + 1));
  EXPECT_FALSE(CHtmlTextItem::IsSpaceOnly(s, s + 4));
}

TEST(TokenItem, FlagsManualIndentsAndCopy) {
  CHtmlTagItem tag;
  tag.SetTokenFlag(T::emTokenModified);
  tag.SetTokenFlag(T::emTokenPaired);
  tag.ResetTokenFlag(T::emTokenModified);
  EXPECT_EQ(T::emTokenPaired, tag.GetTokenFlag());
  EXPECT_TRUE(tag.DiscardToken() && tag.IsDiscardedToken());
  CHtmlTextItem text;
  EXPECT_EQ(1, text.SetManualIndentBefore(static_cast<T::EmManualIndent>(3)));
  EXPECT_EQ(1, text.SetManualIndentAfter(static_cast<T::EmManualIndent>(0)));
  EXPECT_EQ(0u, text.GetTokenFlag());
  text.SetManualIndentAfter(T::emManualIndentNewLine);
  text.SetManualIndentAfter(T::emManualIndentKeep);
  text.SetManualIndentBefore(T::emManualIndentNewLine);
  text.SetManualIndentBefore(T::emManualIndentKeep);
  // Only ever set: both values of each side stay.
  EXPECT_EQ(T::emTokenManualIndentAfter1 | T::emTokenManualIndentAfter2 | T::emTokenManualIndentBefore1 |
                T::emTokenManualIndentBefore2, text.GetTokenFlag());

  CHtmlTextItem from("x&amp;y"), to;
  from.SetOriginalIndentAfter(" ");
  EXPECT_TRUE(!to.CHtmlTokenItem::Copy(nullptr) && to.Copy(&from) && to.GetTokenFlag() == from.GetTokenFlag());
  EXPECT_EQ("x&amp;y ", Str(to.GetPrintableText(T::emTextWithIndentAfter)));
  from.SetText("changed");  // the copy is independent of its source
  EXPECT_EQ("x&y", Str(to.GetText()));
}

TEST(TextItem, AnalysisLevelsTrimmingAndRawMode) {
  const DWORD identified = T::emTokenIdentified;
  CHtmlTextItem text, spaced, raw, levels, breaks, none;
  text.SetOriginalData("\r\nA&amp;B\r\n");
  EXPECT_EQ(1, text.Analyse(T::emAnalyseFull));
  EXPECT_EQ(identified | T::emTokenAnalysed, text.GetTokenFlag());
  // References are marked (0xFF in the high byte); CR and LF are trimmed at
  // both ends, other blanks kept; raw mode keeps the bytes.
  EXPECT_EQ(u"A\xFF26" u"B", Units(text.GetWordText()));
  spaced.SetOriginalData(" \tx \n");
  spaced.Analyse(T::emAnalyseFull);
  EXPECT_EQ(" \tx ", Str(spaced.GetText()));
  raw.SetOriginalData("\r\nA&amp;B\r\n");
  EXPECT_EQ(1, raw.Analyse(T::emAnalyseFull | T::emAnalyseRaw));
  EXPECT_EQ(u"\r\nA&amp;B\r\n", Units(raw.GetWordText()));

  levels.SetOriginalData("&lt;&eacute;e");
  EXPECT_EQ(1, levels.Analyse(T::emAnalyseIdentify | T::emAnalyseMark));
  // Asking for 1 and 2 on an identified token does nothing.
  EXPECT_EQ(1, levels.Analyse(T::emAnalyseIdentify | T::emAnalyseFull));
  EXPECT_EQ(identified | T::emTokenAnalyseMark, levels.GetTokenFlag());
  EXPECT_EQ(1, levels.Analyse(T::emAnalyseFull));
  EXPECT_EQ(3, levels.GetWordTextLength());
  EXPECT_EQ(0xFFE9, levels.GetWordTextAt(1));
  EXPECT_EQ("<\xE9" "e", Str(levels.GetText()));

  // Nothing left after trimming: 0, identified only.
  breaks.SetOriginalData("\r\n\n");
  EXPECT_EQ(0, breaks.Analyse(T::emAnalyseFull));
  EXPECT_EQ(identified, breaks.GetTokenFlag());
  EXPECT_EQ(0, none.Analyse(T::emAnalyseFull));
  EXPECT_EQ(1, none.Analyse(T::emAnalyseMark));  // neither level: nothing at all
}

TEST(TextItem, PrintsSourceUntilChangedThenLowBytesUnencoded) {
  CHtmlTextItem inserted("a&gt;b"), text("old");
  EXPECT_TRUE(inserted.IsInsertedToken() && Str(inserted.GetText()) == "a>b");
  inserted.SetOriginalIndentAfter("\t");
  EXPECT_EQ("a&gt;b\t", Str(inserted.GetPrintableText(T::emTextWithIndentAfter)));
  EXPECT_EQ("a&gt;b", Str(inserted.GetPrintableText(T::emTextTokenOnly)));
  EXPECT_EQ("", Str(inserted.GetPrintableText(static_cast<T::EmTextFlag>(0))));
  text.SetOriginalIndentAfter("\r\n");
  EXPECT_TRUE(text.SetText("a<b") && text.IsModifiedToken());
  EXPECT_EQ("a<b\r\n", Str(text.GetPrintableText(T::emTextWithIndentAfter)));
  EXPECT_EQ("", Str(text.GetPrintableText(static_cast<T::EmTextFlag>(3))));
  CWordString word;
  const unsigned short units[] = {0x41, 0x142, 0};
  word.Assign(units, -1);
  text.SetWordText(&word);
  EXPECT_EQ("AB", Str(text.GetPrintableText(T::emTextTokenOnly)));  // 0x142 prints as 0x42
}

// Tokens read by a list live in its arena and behave as heap tokens; a
// change does not touch the list's copy of the page, and a token changed
// after the read is freed with the list (AddressSanitizer sees a leak else).
TEST(TextItem, ArenaTokensBehaveLikeHeapTokens) {
  CHtmlTokenList list;
  const char* page = "<p>caf&eacute; au lait<p a=1>plain";
  list.BuildTokenList(U(page), U(page) + std::strlen(page), T::emAnalyseFull);
  ASSERT_EQ(4, list.GetCount());
  POSITION pos = list.GetHeadPosition();
  CHtmlTextItem* decoded = list.GetTextItem((list.GetNext(pos), pos));
  EXPECT_EQ("caf\xE9 au lait", Str(decoded->GetText()));  // read in place, then made a string
  EXPECT_EQ(u"caf\xFFE9 au lait", Units(decoded->GetWordText()));
  list.GetTagItem((list.GetNext(pos), pos))->SetAttribute("b", "2");
  CHtmlTextItem* plain = list.GetTextItem((list.GetNext(pos), pos));
  EXPECT_EQ(u"plain", Units(plain->GetWordText()));  // the page's bytes, widened
  EXPECT_TRUE(plain->SetOriginalData("other") && Str(plain->GetOriginalString()) == "other");
  EXPECT_EQ("caf&eacute; au lait", Str(decoded->GetOriginalString()));
  // delete on an arena token is safe (the list would do it on ClearAll).
  CHtmlTokenItem* token = list.GetTokenItem(list.GetHeadPosition());
  list.GetTokenItemList().RemoveAt(list.GetHeadPosition());
  delete token;
  EXPECT_TRUE(list.GetCount() == 3 && list.ClearAll());
}

}  // namespace
}  // namespace telvanix
