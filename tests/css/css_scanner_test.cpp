// The stylesheet scanners, run over exact-size buffers with no terminator so
// that the sanitizer build catches any read at or past the end.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "telvanix/css/css_pack.h"
#include "telvanix/platform/code_page.h"

namespace telvanix {
namespace {

// An unterminated copy of the text; offsets returned by the scanners are
// positions in it.
struct Bytes {
  explicit Bytes(const std::string& text) : data(text.begin(), text.end()) {}
  const unsigned char* begin() const { return data.data(); }
  const unsigned char* end() const { return data.data() + data.size(); }
  long At(const unsigned char* p) const { return p - data.data(); }
  std::vector<unsigned char> data;
};

TEST(CssScannerTest, CommentClosesOnlyOnStarSlashAfterASingleArmingStar) {
  Bytes plain("/* a */x");
  EXPECT_EQ(plain.At(CCssPack::CssSkipComment(plain.begin(), plain.end())), 7);

  Bytes empty("/**/x");
  EXPECT_EQ(empty.At(CCssPack::CssSkipComment(empty.begin(), empty.end())), 4);

  // "**/" is not a close: the comment runs on to the next "*/".
  Bytes doubled("/* a **/ q {a:b} /* c */p");
  EXPECT_EQ(doubled.At(CCssPack::CssSkipComment(doubled.begin(), doubled.end())), 24);

  // ...and with no later close it is no comment at all.
  Bytes unclosed("/* a **/ q {a:b}");
  EXPECT_EQ(unclosed.At(CCssPack::CssSkipComment(unclosed.begin(), unclosed.end())), 0);

  Bytes tripled("/* a ***/x");
  EXPECT_EQ(tripled.At(CCssPack::CssSkipComment(tripled.begin(), tripled.end())), 9);

  Bytes shortText("/**");
  EXPECT_EQ(shortText.At(CCssPack::CssSkipComment(shortText.begin(), shortText.end())), 0);

  Bytes zero(std::string("/* a \0 b */x", 12));
  EXPECT_EQ(zero.At(CCssPack::CssSkipComment(zero.begin(), zero.end())), 5);

  Bytes notComment("/x/* */");
  EXPECT_EQ(notComment.At(CCssPack::CssSkipComment(notComment.begin(), notComment.end())), 0);
}

TEST(CssScannerTest, SpacesSkipHtmlCommentMarkersAndOptionallyComments) {
  Bytes markers(" <!--\t-->\r\n\fx");
  EXPECT_EQ(markers.At(CCssPack::CssSkipSpaces(markers.begin(), markers.end(), 0)), 12);

  Bytes comment("  /* c */ /**/ x");
  EXPECT_EQ(comment.At(CCssPack::CssSkipSpaces(comment.begin(), comment.end(), 0)), 2);
  EXPECT_EQ(comment.At(CCssPack::CssSkipSpaces(comment.begin(), comment.end(), 1)), 15);

  Bytes slash(" / x");
  EXPECT_EQ(slash.At(CCssPack::CssSkipSpaces(slash.begin(), slash.end(), 1)), 1);

  // A marker cut by the end of the range is not skipped.
  Bytes cut(" <!-");
  EXPECT_EQ(cut.At(CCssPack::CssSkipSpaces(cut.begin(), cut.end(), 1)), 1);
}

TEST(CssScannerTest, RunEndsAtFlaggedDelimitersAndAfterQuotedStretches) {
  Bytes url("url(a b.gif) no-repeat");
  const unsigned char* e = CCssPack::CssSkipAny(url.begin(), url.end(), 0);
  EXPECT_EQ(url.At(e), 13);  // the closer ends the run; the blank after it is taken

  Bytes sel("h1,h2:hover;x}y");
  EXPECT_EQ(sel.At(CCssPack::CssSkipAny(sel.begin(), sel.end(), kCssFlagsSelector)), 2);
  EXPECT_EQ(sel.At(CCssPack::CssSkipAny(sel.begin() + 3, sel.end(), kCssFlagsSelector)), 13);
  EXPECT_EQ(sel.At(CCssPack::CssSkipAny(sel.begin() + 3, sel.end(), kCssFlagsPropertyName)), 5);
  EXPECT_EQ(sel.At(CCssPack::CssSkipAny(sel.begin() + 3, sel.end(), kCssFlagsBlockValue)), 11);

  Bytes cls("p.note#top\\x");
  EXPECT_EQ(cls.At(CCssPack::CssSkipAny(cls.begin(), cls.end(), emCssStopDot)), 1);
  EXPECT_EQ(cls.At(CCssPack::CssSkipAny(cls.begin(), cls.end(), emCssStopHash)), 6);
  EXPECT_EQ(cls.At(CCssPack::CssSkipAny(cls.begin(), cls.end(), emCssStopBackslash)), 10);

  // With the "any other" flag only digits (and quoted stretches) are taken.
  Bytes digits("123px");
  EXPECT_EQ(digits.At(CCssPack::CssSkipAny(digits.begin(), digits.end(), emCssStopAnyOther)), 3);

  Bytes brace("ab{c");
  EXPECT_EQ(brace.At(CCssPack::CssSkipAny(brace.begin(), brace.end(), 0)), 2);

  // Brackets do not nest, and an unclosed stretch runs to the end.
  Bytes nested("[a[b]c] d");
  EXPECT_EQ(nested.At(CCssPack::CssSkipAny(nested.begin(), nested.end(), 0)), 5);
  Bytes open("'abc");
  EXPECT_EQ(open.At(CCssPack::CssSkipAny(open.begin(), open.end(), 0)), 4);
}

TEST(CssScannerTest, FlagBitsOutsideTheDefinedSetChangeNothing) {
  // Only the documented bits are read; any other bit, the unused 256 too,
  // neither stops a run nor changes how quotes and blanks are taken.
  Bytes text("a-b/c'd e'f g");
  for (UINT flags = 0x100; flags; flags <<= 1) {
    if (flags != emCssStopAnyOther) {
      EXPECT_EQ(text.At(CCssPack::CssSkipAny(text.begin(), text.end(), flags)), 10) << flags;
    }
  }
  Bytes stops("a;b}c");
  EXPECT_EQ(stops.At(CCssPack::CssSkipAny(stops.begin(), stops.end(), 0x100u | emCssStopCloseBrace)), 3);
  EXPECT_EQ(stops.At(CCssPack::CssSkipAny(stops.begin(), stops.end(), 0xFFFFFFFFu)), 0);
  // Bytes above 127 are "other" bytes: taken, unless every other byte stops.
  Bytes high("\xe9t\xe9 x");
  EXPECT_EQ(high.At(CCssPack::CssSkipAny(high.begin(), high.end(), 0)), 3);
  EXPECT_EQ(high.At(CCssPack::CssSkipAny(high.begin(), high.end(), emCssStopAnyOther)), 0);
}

// Under a double-byte code page a lead byte takes its trail byte along, so
// a trail byte that looks like a quote, brace or delimiter is none.
TEST(CssScannerTest, LeadBytesCarryTheirTrailBytes) {
  struct CodePage {
    explicit CodePage(UINT cp) : previous(SetActiveCodePage(cp)) {}
    ~CodePage() { SetActiveCodePage(previous); }
    UINT previous;
  };
  Bytes quote("\x81'x;y");
  Bytes inStretch("'a\x81'b' c");
  Bytes block("{\x81}}x");
  Bytes lastByte("ab\x81");
  {
    CodePage sjis(932);
    EXPECT_EQ(quote.At(CCssPack::CssSkipAny(quote.begin(), quote.end(), emCssStopSemicolon)), 3);
    EXPECT_EQ(inStretch.At(CCssPack::CssSkipAny(inStretch.begin(), inStretch.end(), 0)), 7);
    EXPECT_EQ(block.At(CCssPack::CssSkipBlock(block.begin(), block.end())), 4);
    EXPECT_EQ(lastByte.At(CCssPack::CssSkipAny(lastByte.begin(), lastByte.end(), 0)), 3);
  }
  CodePage western(1252);
  EXPECT_EQ(quote.At(CCssPack::CssSkipAny(quote.begin(), quote.end(), emCssStopSemicolon)), 5);  // the quote runs to the end
  EXPECT_EQ(inStretch.At(CCssPack::CssSkipAny(inStretch.begin(), inStretch.end(), 0)), 4);
  EXPECT_EQ(block.At(CCssPack::CssSkipBlock(block.begin(), block.end())), 3);
}

TEST(CssScannerTest, BlocksNestAndUnclosedBlocksAreNotSkipped) {
  Bytes nested("{a{b}c} /* x */ y");
  EXPECT_EQ(nested.At(CCssPack::CssSkipBlock(nested.begin(), nested.end())), 16);

  Bytes braceInComment("{ a /* } */ b } z");
  EXPECT_EQ(braceInComment.At(CCssPack::CssSkipBlock(braceInComment.begin(), braceInComment.end())), 16);

  Bytes unclosed("{a{b}c");
  EXPECT_EQ(unclosed.At(CCssPack::CssSkipBlock(unclosed.begin(), unclosed.end())), 0);

  Bytes notBlock("a{}");
  EXPECT_EQ(notBlock.At(CCssPack::CssSkipBlock(notBlock.begin(), notBlock.end())), 0);
}

TEST(CssScannerTest, DeclarationEndsAtSemicolonOrBrace) {
  Bytes decl("color : red ; x");
  EXPECT_EQ(decl.At(CCssPack::CssSkipDeclaration(decl.begin(), decl.end())), 12);

  Bytes last("a: url(x;y) }");
  EXPECT_EQ(last.At(CCssPack::CssSkipDeclaration(last.begin(), last.end())), 12);

  Bytes noColon("color red;");
  EXPECT_EQ(noColon.At(CCssPack::CssSkipDeclaration(noColon.begin(), noColon.end())), 0);

  Bytes unended("a:b");
  EXPECT_EQ(unended.At(CCssPack::CssSkipDeclaration(unended.begin(), unended.end())), 0);

  Bytes quoted("content: '}' }");
  EXPECT_EQ(quoted.At(CCssPack::CssSkipDeclaration(quoted.begin(), quoted.end())), 13);
}

TEST(CssScannerTest, AtKeywordAndFetchFirstAny) {
  Bytes at("@import url(a.css);");
  EXPECT_EQ(at.At(CCssPack::CssSkipAtKeyword(at.begin(), at.end())), 7);
  EXPECT_EQ(at.At(CCssPack::CssSkipAtKeyword(at.begin() + 1, at.end())), 1);
  Bytes bare("@charset");
  EXPECT_EQ(bare.At(CCssPack::CssSkipAtKeyword(bare.begin(), bare.end())), 8);

  EXPECT_EQ(std::string(CCssPack::CssFetchFirstAny("  /* c */ 12pt bold", nullptr, 0)), "12pt");
  EXPECT_EQ(std::string(CCssPack::CssFetchFirstAny("url( 'a b' ) x", nullptr, 0)), "url( 'a b' ) ");
  EXPECT_EQ(std::string(CCssPack::CssFetchFirstAny("   ", nullptr, 0)), "");
  EXPECT_EQ(std::string(CCssPack::CssFetchFirstAny(static_cast<const char*>(nullptr), nullptr, 0)), "");
}

TEST(CssScannerTest, NullAndEmptyRangesGiveTheStartBack) {
  const unsigned char* none = nullptr;
  EXPECT_EQ(CCssPack::CssSkipSpaces(none, none, 1), none);
  EXPECT_EQ(CCssPack::CssSkipAny(none, none, 0), none);
  EXPECT_EQ(CCssPack::CssSkipBlock(none, none), none);
  EXPECT_EQ(CCssPack::CssSkipDeclaration(none, none), none);
  Bytes one("{");
  EXPECT_EQ(CCssPack::CssSkipBlock(one.begin(), one.end()), one.begin());
  EXPECT_EQ(CCssPack::CssSkipAny(one.end(), one.end(), 0), one.end());
}

}  // namespace
}  // namespace telvanix
