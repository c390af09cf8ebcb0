// The stylesheet scanners, run over exact-size buffers with no terminator so
// that the sanitizer build catches any read at or past the end.
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "telvanix/css/css_pack.h"
#include "golden_cases.h"
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
long Any(const std::string& text, UINT flags, size_t from = 0) {
  return Stop(text, [=](P b, P e) { return CCssPack::CssSkipAny(b, e, flags); }, from);
}

// Each line of a case is "SCAN FLAGS FROM|TEXT": the scanner (comment,
// block, declaration, spaces, spaces+comments, atkeyword or any, which takes
// the FLAGS word in hex) run over TEXT from byte FROM; the line is printed
// with the offset where it stopped. "codepage N" lines set the active code
// page for the lines after them.
std::string DescribeScans(const std::string&, const std::string& input) {
  std::ostringstream out;
  std::istringstream lines(input);
  std::optional<test::CodePageScope> codePage;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#')
      continue;
    if (line.rfind("codepage ", 0) == 0) {
      codePage.reset();
      codePage.emplace(static_cast<UINT>(std::stoul(line.substr(9))));
      continue;
    }
    const size_t bar = line.find('|');
    std::istringstream head(line.substr(0, bar));
    std::string scan;
    UINT flags = 0;
    size_t from = 0;
    head >> scan >> std::hex >> flags >> std::dec >> from;
    const std::string text = line.substr(bar + 1);
    long stop = -1;
    if (scan == "comment")
      stop = Stop(text, CCssPack::CssSkipComment, from);
    else if (scan == "block")
      stop = Stop(text, CCssPack::CssSkipBlock, from);
    else if (scan == "declaration")
      stop = Stop(text, CCssPack::CssSkipDeclaration, from);
    else if (scan == "atkeyword")
      stop = Stop(text, CCssPack::CssSkipAtKeyword, from);
    else if (scan == "spaces" || scan == "spaces+comments")
      stop = Stop(text, [&](P b, P e) { return CCssPack::CssSkipSpaces(b, e, scan != "spaces"); }, from);
    else if (scan == "any")
      stop = Stop(text, [&](P b, P e) { return CCssPack::CssSkipAny(b, e, flags); }, from);
    out << line << " -> " << stop << "\n";
  }
  return out.str();
}

TEST(CssScannerTest, GoldenScans) { test::RunGoldenCases("css_scan", ".scan", DescribeScans, 1); }

TEST(CssScannerTest, FlagBitsOutsideTheDefinedSetChangeNothing) {
  // Only the documented bits are read; any other bit, the unused 256 too,
  // neither stops a run nor changes how quotes and blanks are taken.
  for (UINT flags = 0x100; flags; flags <<= 1) {
    if (flags != emCssStopAnyOther) {
      EXPECT_EQ(Any("a-b/c'd e'f g", flags), 10) << flags;
    }
  }
  EXPECT_EQ(Any("a;b}c", 0xFFFFFFFFu), 0);
  EXPECT_EQ(Comment(std::string("/* a \0 b */x", 12)), 5);
}

TEST(CssScannerTest, FetchFirstAny) {
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
  EXPECT_EQ(Stop("{", CCssPack::CssSkipBlock), 0);
  EXPECT_EQ(Any("{", 0, 1), 1);
}

}  // namespace
}  // namespace telvanix
