#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

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

Units Widen(const std::string& text) {
  Units u;
  for (unsigned char c : text) u.push_back(c);
  return u;
}

std::string DecodeBytes(const std::string& html) {
  CByteString out;
  EXPECT_EQ(CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>(html.data()),
                                  static_cast<int>(html.size())),
            1);
  return out.GetContent() ? std::string(static_cast<const char*>(out), static_cast<size_t>(out.GetLength()))
                          : std::string();
}

std::string Encode(const Units& units) {
  CByteString out;
  EXPECT_EQ(CHtmlPack::TextToHtml(out, units.data(), static_cast<int>(units.size())), 1);
  return out.GetContent() ? std::string(static_cast<const char*>(out), static_cast<size_t>(out.GetLength()))
                          : std::string();
}

DWORD NameHash(const char* name) {
  DWORD h = 0;
  for (; *name; ++name) h = h * 16u + (static_cast<unsigned char>(*name) & 127u);
  return h;
}

}  // namespace

TEST(HtmlCharTable, PreparedAndSorted) {
  EXPECT_EQ(CHtmlPack::InitializeHtmlCharTable(), 1);
  EXPECT_EQ(CHtmlPack::InitializeHtmlCharTable(), 1);
  ASSERT_EQ(CHtmlPack::ms_nHtmlCharTableSize, 128);
  std::set<std::string> names;
  for (int i = 0; i < 128; ++i) {
    const TagHtmlCharEntity& row = CHtmlPack::ms_tTagHtmlCharTable[i];
    names.insert(row.name);
    EXPECT_EQ(row.hash, NameHash(row.name)) << row.name;
    if (i) {
      EXPECT_LT(CHtmlPack::ms_tTagHtmlCharTable[i - 1].hash, row.hash) << row.name;
    }
  }
  EXPECT_EQ(names.size(), 128u);
  EXPECT_EQ(NameHash("lt"), 108u * 16 + 116);
  EXPECT_TRUE(names.count("helip") && names.count("ldots") && names.count("emdash") && names.count("rdquor"));
}

TEST(HtmlToText, NamedReferences) {
  EXPECT_EQ(Decode("&amp;lt;"), Widen("&lt;"));  // one level only
  EXPECT_EQ(Decode("caf&eacute"), (Units{'c', 'a', 'f', 233}));  // no ";" at the end
  EXPECT_EQ(Decode("&Eacute;&eacute;"), (Units{201, 233}));
  EXPECT_EQ(Decode("&EACUTE;"), Widen("&EACUTE;"));
  EXPECT_EQ(Decode("&foo;"), Widen("&foo;"));
  EXPECT_EQ(Decode("&quot;&gt;&nbsp;&yuml;"), (Units{'"', '>', 160, 255}));
  EXPECT_EQ(Decode("&helip;&ldots;&endash;&mdash;&trade;"), (Units{133, 133, 150, 151, 153}));
  EXPECT_EQ(Decode("&amp1"), Widen("&1"));  // the name ends at the first non-letter
  EXPECT_EQ(Decode("& amp;&;&"), Widen("& amp;&;&"));
  EXPECT_EQ(Decode("&&lt;"), Widen("&<"));
  EXPECT_EQ(Decode("x&ltz;"), Widen("x&ltz;"));
  // Only letters are gathered after "&", so names holding digits are left as typed.
  EXPECT_EQ(Decode("&sup2;"), Widen("&sup2;"));
  EXPECT_EQ(Decode("&frac12;"), Widen("&frac12;"));
}

TEST(HtmlToText, NumericReferences) {
  EXPECT_EQ(Decode("&#x41;"), Units{'A'});
  EXPECT_EQ(Decode("&#65;"), Units{'A'});
  EXPECT_EQ(Decode("&#X41;"), Units{0});  // uppercase X reads as decimal
  EXPECT_EQ(Decode("&#;"), Units{0});
  EXPECT_EQ(Decode("&#"), Units{0});
  EXPECT_EQ(Decode("&#x4a;z"), (Units{'J', 'z'}));
  EXPECT_EQ(Decode("&#x4Aq;"), Units{'J'});  // hex stops at "q", the run is still consumed
  EXPECT_EQ(Decode("&#65abc;!"), (Units{'A', '!'}));
  EXPECT_EQ(Decode("&#xZZ;"), Units{0});
  EXPECT_EQ(Decode("&#8364;"), Units{8364});
  EXPECT_EQ(Decode("&#65 ;"), (Units{'A', ' ', ';'}));
}

TEST(HtmlToText, ReferenceLengthLimit) {
  const std::string digits31 = std::string(29, '0') + "65";
  EXPECT_EQ(Decode("&#" + digits31 + ";"), Units{'A'});
  const std::string digits32 = "0" + digits31;
  EXPECT_EQ(Decode("&#" + digits32 + ";"), Widen("&#" + digits32 + ";"));
  const std::string letters32(32, 'a');
  EXPECT_EQ(Decode("&" + letters32 + ";"), Widen("&" + letters32 + ";"));
}

TEST(HtmlToText, Marks) {
  EXPECT_EQ(Decode("&eacute;&lt;e", 1), (Units{0xFFE9, 0xFF3C, 'e'}));
  EXPECT_EQ(Decode("&#65;&#x100;&#8364;", 1), (Units{0xFF41, 0x100, 8364}));
  EXPECT_EQ(Decode("&eacute;", 2), Units{233});  // only mark 1 marks
}

TEST(HtmlToText, LengthsAndBadInput) {
  EXPECT_EQ(Decode("&amp;lt;", 0, 5), Units{'&'});
  EXPECT_EQ(Decode("&amp;lt;", 0, 4), Units{'&'});
  EXPECT_EQ(Decode("&amp;lt;", 0, 2), Widen("&a"));
  EXPECT_EQ(Decode(std::string("a\0b", 3)), (Units{'a', 0, 'b'}));
  EXPECT_EQ(Decode(std::string("a&lt;\0b", 7), 0, -1), (Units{'a', '<'}));

  CWordString out;
  out = "old";
  EXPECT_EQ(CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>("x"), 0, 0), 1);
  EXPECT_EQ(out.GetLength(), 0);
  EXPECT_EQ(CHtmlPack::HtmlToText(out, nullptr, 3, 0), 0);
  EXPECT_EQ(CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>("x"), -7, 0), 0);
  CByteString bytes;
  EXPECT_EQ(CHtmlPack::HtmlToText(bytes, nullptr, -1), 0);
  EXPECT_TRUE(CHtmlPack::HtmlToText(static_cast<const char*>(nullptr)).IsEmpty());
}

TEST(HtmlToText, NarrowingLooksAhead) {
  EXPECT_EQ(DecodeBytes("&eacute;&lt;"), "\xE9<");
  // The byte for a wide unit is picked by the unit after it.
  EXPECT_EQ(DecodeBytes("&yuml;&#8364;"), std::string("\x80\xAC"));
  EXPECT_EQ(DecodeBytes("&#8364;&#402;"), std::string("\x83\x92"));
  EXPECT_EQ(DecodeBytes("&#300;&#381;&#382;&#376;"), std::string("\x8E\x9E\x9F\x78"));
  EXPECT_EQ(DecodeBytes("&#8364;"), std::string("\xAC"));
  EXPECT_EQ(DecodeBytes("x&#8364;"), std::string("x\xAC"));   // a unit below 255 never looks ahead
  EXPECT_EQ(DecodeBytes("&#254;&#8364;"), std::string("\xFE\xAC"));
  EXPECT_EQ(DecodeBytes("&#X41;"), std::string(1, '\0'));
  EXPECT_EQ(CHtmlPack::HtmlToText("&lt;p&gt;&amp;"), "<p>&");
  CByteString out;
  out = "old";
  EXPECT_EQ(CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>(""), -1), 1);
  EXPECT_EQ(out.GetLength(), 0);
}

TEST(TextToHtml, Encoding) {
  EXPECT_EQ(Encode(Widen("a\"b&c<d>e'")), "a&quot;b&amp;c&lt;d&gt;e'");
  EXPECT_EQ(Encode(Units{7, '\t', '\n', 0x1F, '\r', 0, 'x'}), "\t\n\rx");
  EXPECT_EQ(Encode(Units{233, 0x7F, 0x80}), "\xE9\x7F\x80");  // unmarked stays raw
  EXPECT_EQ(Encode(Units{8364, 0x4E2D}), "\xAC\x2D");
  EXPECT_EQ(Encode(Units{0xFFE9, 0xFF3C, 0xFFA0, 0xFFFF, 0xFF9F, 0xFF09, 0xFFA9}),
            "&eacute;&#60;&nbsp;&yuml;&#159;&#9;&copy;");
  EXPECT_EQ(Encode(Units{0xFF00}), std::string(1, '\0'));  // not above 0xFF00: its low byte
  EXPECT_EQ(Encode(Units{0xFF01}), "&#1;");
}

TEST(TextToHtml, AppendsAndLengths) {
  CByteString out;
  out = "x";
  const unsigned short amp[] = {'&', 'y', 0, 'z'};
  EXPECT_EQ(CHtmlPack::TextToHtml(out, amp, -1), 1);
  EXPECT_EQ(out.Compare("x&amp;y"), 0);
  EXPECT_EQ(CHtmlPack::TextToHtml(out, amp, 0), 1);
  EXPECT_EQ(CHtmlPack::TextToHtml(out, amp, -5), 1);
  EXPECT_EQ(out.Compare("x&amp;y"), 0);
  EXPECT_EQ(CHtmlPack::TextToHtml(out, amp, 4), 1);
  EXPECT_EQ(out.Compare("x&amp;y&amp;yz"), 0);
  EXPECT_EQ(CHtmlPack::TextToHtml(out, static_cast<const unsigned short*>(nullptr), 3), 0);
  EXPECT_EQ(CHtmlPack::TextToHtml(out, static_cast<const unsigned char*>(nullptr), -1), 0);

  CByteString bytes;
  EXPECT_EQ(CHtmlPack::TextToHtml(bytes, reinterpret_cast<const unsigned char*>("<a href=\"x\">\xE9"), -1), 1);
  EXPECT_EQ(bytes.Compare("&lt;a href=&quot;x&quot;&gt;\xE9"), 0);
  EXPECT_EQ(CHtmlPack::TextToHtml("a&b"), "a&amp;b");
  EXPECT_TRUE(CHtmlPack::TextToHtml(static_cast<const char*>(nullptr)).IsEmpty());
  EXPECT_TRUE(CHtmlPack::TextToHtml("\a").IsEmpty());
}

TEST(TextToHtml, MarkedRoundTrip) {
  EXPECT_EQ(Encode(Decode("&eacute;&lt;", 1)), "&eacute;&#60;");
  EXPECT_EQ(Encode(Decode("caf&eacute; &lt;b&gt; &#169; &copy; \xE9 &amp; &#8364; &quot;", 1)),
            "caf&eacute; &#60;b&#62; &copy; &copy; \xE9 &#38; \xAC &#34;");
  // Unmarked decoding loses the distinction: raw and referenced come back alike.
  EXPECT_EQ(Encode(Decode("&eacute;\xE9&lt;", 0)), "\xE9\xE9&lt;");
}

TEST(HtmlToText, ManyThreads) {
  std::vector<std::thread> threads;
  std::vector<int> wrong(6, 0);
  for (int t = 0; t < 6; ++t) {
    threads.emplace_back([t, &wrong] {
      for (int i = 0; i < 300; ++i) {
        CByteString out;
        const char* in = "&Agrave;&thorn;&#x42;&lt;";
        CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>(in), -1);
        if (out.Compare("\xC0\xFE" "B<") != 0) ++wrong[static_cast<size_t>(t)];
      }
    });
  }
  for (auto& th : threads) th.join();
  for (int w : wrong) EXPECT_EQ(w, 0);
}

// Under UTF-8 the page's bytes stay as they are and a reference becomes the
// UTF-8 bytes of its character; the single-byte forms above are untouched.
TEST(HtmlToText, Utf8CodePageNarrowsToUtf8Bytes) {
  test::CodePageScope utf8(CP_UTF8);
  CByteString out;
  const char* text = "caf\xC3\xA9 &eacute; &#26085; &trade; &amp;";
  ASSERT_EQ(CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>(text), -1), 1);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(out.GetContent()), out.GetLength()),
            "caf\xC3\xA9 \xC3\xA9 \xE6\x97\xA5 \xE2\x84\xA2 &");
}
