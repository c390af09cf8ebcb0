// Character references: the named-reference table's invariants, decoding
// and encoding edge cases that a line of text cannot hold. Decoding single
// lines of text is in tests/data/html/entities (one input a line).
#include <gtest/gtest.h>

#include <cstdio>
#include <cctype>
#include <set>
#include <string>
#include <sstream>
#include <vector>

#include "golden_cases.h"
#include "html/html_test_util.h"
#include "telvanix/html/html_pack.h"
#include "test_util.h"

using namespace telvanix;

namespace {

using Units = std::vector<unsigned short>;

Units Decode(const std::string& html, int mark = 0, int length = -2) {
  CWordString out;
  const int n = length == -2 ? static_cast<int>(html.size()) : length;
  EXPECT_EQ(CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>(html.data()), n, mark), 1);
  const unsigned short* p = out.GetContent();
  return p ? Units(p, p + out.GetLength()) : Units();
}

Units Widen(const std::string& text) { return Units(text.begin(), text.end()); }
std::string Encode(const Units& units) {
  CByteString out;
  EXPECT_EQ(CHtmlPack::TextToHtml(out, units.data(), static_cast<int>(units.size())), 1);
  return test::Bytes(out);
}

// Printable ASCII as it is, anything else as <hex>.
template <class Text>
std::string Show(const Text& text) {
  std::string out;
  char buffer[8];
  for (auto c : text) {
    const unsigned u = static_cast<unsigned>(c) & (sizeof c == 1 ? 0xFFu : 0xFFFFu);
    std::snprintf(buffer, sizeof buffer, u >= 0x20 && u < 0x7F ? "%c" : "<%X>", u);
    out += buffer;
  }
  return out;
}

// One input a line: the units without and with marks, the bytes, the
// marked units encoded again, and the line's bytes encoded as text.
std::string DescribeLines(const std::string&, const std::string& input) {
  std::string out, line;
  std::istringstream lines(input);
  while (std::getline(lines, line)) {
    CByteString bytes, html;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(line.data());
    CHtmlPack::HtmlToText(bytes, p, static_cast<int>(line.size()));
    CHtmlPack::TextToHtml(html, p, static_cast<int>(line.size()));
    const Units marked = Decode(line, 1);
    out += Show(line) + "\n  units  " + Show(Decode(line)) + "\n  marked " + Show(marked) + "\n  bytes  " +
           Show(test::Bytes(bytes)) + "\n  again  " + Show(Encode(marked)) + "\n  html   " +
           Show(test::Bytes(html)) + "\n";
  }
  return out;
}

}  // namespace

TEST(HtmlCharTable, SortedUniqueAndEveryRowFoundByItsName) {
  EXPECT_EQ(CHtmlPack::InitializeHtmlCharTable(), 1);
  std::set<std::string> names;
  for (int i = 0; i < CHtmlPack::ms_nHtmlCharTableSize; ++i) {
    const TagHtmlCharEntity& row = CHtmlPack::ms_tTagHtmlCharTable[i];
    EXPECT_TRUE(names.insert(row.name).second) << row.name;
    EXPECT_TRUE(i == 0 || CHtmlPack::ms_tTagHtmlCharTable[i - 1].hash < row.hash) << row.name;
    // Only letters are gathered after "&": a name holding digits is left as typed.
    const std::string ref = "&" + std::string(row.name) + ";";
    bool letters = true;
    for (const char* c = row.name; *c; ++c) letters = letters && std::isalpha(static_cast<unsigned char>(*c));
    EXPECT_EQ(Decode(ref), letters ? Units{row.code} : Widen(ref)) << row.name;
    // A marked character comes back as the first name of its code.
    const std::string again = Encode(Units{static_cast<unsigned short>(0xFF00 | row.code)});
    EXPECT_TRUE(!letters || row.code < 160 || Decode(again) == Units{row.code}) << row.name;
  }
}

TEST(HtmlToText, GoldenLines) { test::RunGoldenCases("html/entities", ".txt", DescribeLines, 3); }

TEST(HtmlToText, LengthsZerosAndBadInput) {
  EXPECT_EQ(Decode("&amp;lt;", 0, 5), Units{'&'});
  EXPECT_EQ(Decode("&amp;lt;", 0, 4), Units{'&'});
  EXPECT_EQ(Decode("&amp;lt;", 0, 2), Widen("&a"));
  EXPECT_EQ(Decode(std::string("a&lt;\0b", 7), 0, -1), (Units{'a', '<'}));
  EXPECT_EQ(Decode("&eacute;", 2), Units{233});  // only mark 1 marks
  CWordString out;
  out = "old";
  EXPECT_EQ(CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>("x"), 0, 0), 1);
  EXPECT_EQ(out.GetLength(), 0);
  EXPECT_EQ(CHtmlPack::HtmlToText(out, nullptr, 3, 0), 0);
  EXPECT_EQ(CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>("x"), -7, 0), 0);
  CByteString bytes;
  EXPECT_EQ(CHtmlPack::HtmlToText(bytes, nullptr, -1), 0);
  bytes = "old";
  EXPECT_TRUE(CHtmlPack::HtmlToText(bytes, reinterpret_cast<const unsigned char*>(""), -1) && bytes.GetLength() == 0);
  EXPECT_TRUE(CHtmlPack::HtmlToText(static_cast<const char*>(nullptr)).IsEmpty());
  EXPECT_EQ(CHtmlPack::HtmlToText("&lt;p&gt;&amp;"), "<p>&");
}

TEST(TextToHtml, ControlsAndLengths) {
  EXPECT_EQ(Encode(Units{7, '\t', '\n', 0x1F, '\r', 0, 'x'}), "\t\n\rx");
  CByteString out;
  out = "x";
  const unsigned short amp[] = {'&', 'y', 0, 'z'};
  EXPECT_EQ(CHtmlPack::TextToHtml(out, amp, -1) + CHtmlPack::TextToHtml(out, amp, 0), 2);
  EXPECT_EQ(CHtmlPack::TextToHtml(out, amp, -5), 1);
  EXPECT_EQ(test::Bytes(out), "x&amp;y");
  EXPECT_EQ(CHtmlPack::TextToHtml(out, amp, 4), 1);
  EXPECT_EQ(test::Bytes(out), "x&amp;y&amp;yz");
  EXPECT_EQ(CHtmlPack::TextToHtml(out, static_cast<const unsigned short*>(nullptr), 3) +
                CHtmlPack::TextToHtml(out, static_cast<const unsigned char*>(nullptr), -1), 0);
  EXPECT_EQ(CHtmlPack::TextToHtml("a&b'"), "a&amp;b'");
  EXPECT_TRUE(CHtmlPack::TextToHtml(static_cast<const char*>(nullptr)).IsEmpty());
  EXPECT_TRUE(CHtmlPack::TextToHtml("\a").IsEmpty());
}

// Under UTF-8 the page's bytes stay as they are and a reference becomes the
// UTF-8 bytes of its character; the single-byte forms above are untouched.
TEST(HtmlToText, Utf8CodePageNarrowsToUtf8Bytes) {
  test::CodePageScope utf8(CP_UTF8);
  EXPECT_EQ(test::Str(CHtmlPack::HtmlToText("caf\xC3\xA9 &eacute; &#26085; &trade; &amp;")),
            "caf\xC3\xA9 \xC3\xA9 \xE6\x97\xA5 \xE2\x84\xA2 &");
}
