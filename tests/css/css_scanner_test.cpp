// The stylesheet scanners, run over exact-size buffers with no terminator so
// that the sanitizer build catches any read at or past the end.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "telvanix/css/css_pack.h"
#include "test_util.h"

namespace telvanix {
namespace {

using P = const unsigned char*;

// Where a scanner stops in an unterminated copy of the text, as an offset
// from the start of the range it was given (`from` bytes in).
template <typename Scan>
long Stop(const std::string& text, Scan scan, size_t from = 0) {
  const std::vector<unsigned char> bytes(text.begin(), text.end());
  const P begin = bytes.data();
  return scan(begin + from, begin + bytes.size()) - begin;
}
long Comment(const std::string& text) { return Stop(text, CCssPack::CssSkipComment); }
long Block(const std::string& text) { return Stop(text, CCssPack::CssSkipBlock); }
long Declaration(const std::string& text) { return Stop(text, CCssPack::CssSkipDeclaration); }
long Spaces(const std::string& text, BOOL comments) {
  return Stop(text, [=](P b, P e) { return CCssPack::CssSkipSpaces(b, e, comments); });
}
long Any(const std::string& text, UINT flags, size_t from = 0) {
  return Stop(text, [=](P b, P e) { return CCssPack::CssSkipAny(b, e, flags); }, from);
}

TEST(CssScannerTest, CommentClosesOnlyOnStarSlashAfterASingleArmingStar) {
  EXPECT_EQ(Comment("/* a */x"), 7);
  EXPECT_EQ(Comment("/**/x"), 4);
  // "**/" is not a close: the comment runs on to the next "*/"...
  EXPECT_EQ(Comment("/* a **/ q {a:b} /* c */p"), 24);
  // ...and with no later close it is no comment at all.
  EXPECT_EQ(Comment("/* a **/ q {a:b}"), 0);
  EXPECT_EQ(Comment("/* a ***/x"), 9);
  EXPECT_EQ(Comment("/**"), 0);
  EXPECT_EQ(Comment(std::string("/* a \0 b */x", 12)), 5);
  EXPECT_EQ(Comment("/x/* */"), 0);
}

TEST(CssScannerTest, SpacesSkipHtmlCommentMarkersAndOptionallyComments) {
  EXPECT_EQ(Spaces(" <!--\t-->\r\n\fx", 0), 12);
  EXPECT_EQ(Spaces("  /* c */ /**/ x", 0), 2);
  EXPECT_EQ(Spaces("  /* c */ /**/ x", 1), 15);
  EXPECT_EQ(Spaces(" / x", 1), 1);
  // A marker cut by the end of the range is not skipped.
  EXPECT_EQ(Spaces(" <!-", 1), 1);
}

TEST(CssScannerTest, RunEndsAtFlaggedDelimitersAndAfterQuotedStretches) {
  EXPECT_EQ(Any("url(a b.gif) no-repeat", 0), 13);  // the closer ends the run; the blank after it is taken
  const std::string sel = "h1,h2:hover;x}y";
  EXPECT_EQ(Any(sel, kCssFlagsSelector), 2);
  EXPECT_EQ(Any(sel, kCssFlagsSelector, 3), 13);
  EXPECT_EQ(Any(sel, kCssFlagsPropertyName, 3), 5);
  EXPECT_EQ(Any(sel, kCssFlagsBlockValue, 3), 11);
  EXPECT_EQ(Any("p.note#top\\x", emCssStopDot), 1);
  EXPECT_EQ(Any("p.note#top\\x", emCssStopHash), 6);
  EXPECT_EQ(Any("p.note#top\\x", emCssStopBackslash), 10);
  // With the "any other" flag only digits (and quoted stretches) are taken.
  EXPECT_EQ(Any("123px", emCssStopAnyOther), 3);
  EXPECT_EQ(Any("ab{c", 0), 2);
  // Brackets do not nest, and an unclosed stretch runs to the end.
  EXPECT_EQ(Any("[a[b]c] d", 0), 5);
  EXPECT_EQ(Any("'abc", 0), 4);
}

TEST(CssScannerTest, FlagBitsOutsideTheDefinedSetChangeNothing) {
  // Only the documented bits are read; any other bit, the unused 256 too,
  // neither stops a run nor changes how quotes and blanks are taken.
  for (UINT flags = 0x100; flags; flags <<= 1) {
    if (flags != emCssStopAnyOther) {
      EXPECT_EQ(Any("a-b/c'd e'f g", flags), 10) << flags;
    }
  }
  EXPECT_EQ(Any("a;b}c", 0x100u | emCssStopCloseBrace), 3);
  EXPECT_EQ(Any("a;b}c", 0xFFFFFFFFu), 0);
  // Bytes above 127 are "other" bytes: taken, unless every other byte stops.
  EXPECT_EQ(Any("\xe9t\xe9 x", 0), 3);
  EXPECT_EQ(Any("\xe9t\xe9 x", emCssStopAnyOther), 0);
}

// Under a double-byte code page a lead byte takes its trail byte along, so
// a trail byte that looks like a quote, brace or delimiter is none.
TEST(CssScannerTest, LeadBytesCarryTheirTrailBytes) {
  {
    test::CodePageScope sjis(932);
    EXPECT_EQ(Any("\x81'x;y", emCssStopSemicolon), 3);
    EXPECT_EQ(Any("'a\x81'b' c", 0), 7);
    EXPECT_EQ(Block("{\x81}}x"), 4);
    EXPECT_EQ(Any("ab\x81", 0), 3);
  }
  test::CodePageScope western(1252);
  EXPECT_EQ(Any("\x81'x;y", emCssStopSemicolon), 5);  // the quote runs to the end
  EXPECT_EQ(Any("'a\x81'b' c", 0), 4);
  EXPECT_EQ(Block("{\x81}}x"), 3);
}

TEST(CssScannerTest, BlocksNestAndUnclosedBlocksAreNotSkipped) {
  EXPECT_EQ(Block("{a{b}c} /* x */ y"), 16);
  EXPECT_EQ(Block("{ a /* } */ b } z"), 16);
  EXPECT_EQ(Block("{a{b}c"), 0);
  EXPECT_EQ(Block("a{}"), 0);
}

TEST(CssScannerTest, DeclarationEndsAtSemicolonOrBrace) {
  EXPECT_EQ(Declaration("color : red ; x"), 12);
  EXPECT_EQ(Declaration("a: url(x;y) }"), 12);
  EXPECT_EQ(Declaration("color red;"), 0);
  EXPECT_EQ(Declaration("a:b"), 0);
  EXPECT_EQ(Declaration("content: '}' }"), 13);
}

TEST(CssScannerTest, AtKeywordAndFetchFirstAny) {
  EXPECT_EQ(Stop("@import url(a.css);", CCssPack::CssSkipAtKeyword), 7);
  EXPECT_EQ(Stop("@import url(a.css);", CCssPack::CssSkipAtKeyword, 1), 1);
  EXPECT_EQ(Stop("@charset", CCssPack::CssSkipAtKeyword), 8);

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
  EXPECT_EQ(Block("{"), 0);
  EXPECT_EQ(Any("{", 0, 1), 1);
}

}  // namespace
}  // namespace telvanix
