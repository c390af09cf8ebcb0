#include "telvanix/foundation/byte_string.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <string>
#include <vector>

#include "test_util.h"

using namespace telvanix;

namespace {

const unsigned char* U(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

std::string Bytes(const CByteString& s) {
  return std::string(reinterpret_cast<const char*>(s.GetContent()), static_cast<size_t>(s.GetLength()));
}

std::u16string Units(const CWordString& w) {
  return w.GetContent() ? std::u16string(reinterpret_cast<const char16_t*>(w.GetContent()), w.GetLength()) : u"";
}

CByteString Str(const char* text) { return CByteString(U(text), -1); }

// A string of exactly n bytes 'x' assigned in one go.
CByteString Filled(int n) { return CByteString(U(std::string(static_cast<size_t>(n), 'x').c_str()), n); }

}  // namespace

TEST(StringCapacity, RoundsTwoPastTheCountUpToThirtyTwo) {
  for (auto [count, capacity] : {std::pair{0, 32}, {30, 32}, {31, 64}, {63, 96}, {-1, 0}})
    EXPECT_EQ(GetRecommendedStringCapacity(count), capacity) << count;
  CWordString w;
  EXPECT_EQ(w.Allocate(0), 1);
  EXPECT_EQ(w.GetCapacity(), 32);
  CByteString b;
  b.Allocate(-5);
  EXPECT_EQ(b.GetCapacity(), 32);
  EXPECT_EQ(b.GetLength(), 0);
}

TEST(ByteString, AssignOfZeroUnitsKeepsThePreviousContent) {
  CByteString s = Str("keep");
  EXPECT_EQ(s.Assign(U("other"), 0), 0);
  EXPECT_EQ(s.Assign(static_cast<const unsigned char*>(nullptr), 3), 0);
  EXPECT_EQ(s.Append(nullptr, 3), 0);
  EXPECT_EQ(s.Append(U("x"), 0), 0);
  EXPECT_EQ(Bytes(s), "keep");

  // Counting an empty text is not "zero units": it makes an empty block.
  EXPECT_EQ(s.Assign(U(""), -1), 1);
  EXPECT_EQ(s.GetLength(), 0);
  EXPECT_EQ(s.GetCapacity(), 32);
  ASSERT_NE(s.GetContent(), nullptr);
  EXPECT_EQ(s.GetContent()[0], 0);
}

TEST(ByteString, AssignCopiesExplicitLengthsWithZeroBytes) {
  const unsigned char raw[] = {'a', 0, 'b', 0xFF};
  CByteString s(raw, 4);
  EXPECT_EQ(Bytes(s), std::string("a\0b\xFF", 4));
  EXPECT_EQ(s.GetContent()[4], 0);
  EXPECT_EQ(s.GetString().GetLength(), 4);

  CByteString copy(s);
  EXPECT_NE(copy.GetContent(), s.GetContent());
  EXPECT_EQ(Bytes(copy), Bytes(s));
  CByteString empty, copyOfEmpty(empty);
  EXPECT_EQ(copyOfEmpty.GetContent(), nullptr);

  CByteString assigned = Str("old");
  assigned = s;
  EXPECT_EQ(Bytes(assigned), Bytes(s));
  assigned = empty;
  EXPECT_EQ(assigned.GetContent(), nullptr);
  assigned = static_cast<unsigned char>('Q');
  EXPECT_EQ(Bytes(assigned), "Q");

  // Assigning from inside itself must not read freed bytes.
  s = "prefix-suffix";
  s.Assign(s.GetContent() + 7, -1);
  EXPECT_EQ(Bytes(s), "suffix");
}

TEST(ByteString, NarrowingKeepsHighBytesButCountsUnits) {
  const unsigned short han[] = {0x4E2D, 0};
  CByteString s = Str("previous");
  s = han;
  EXPECT_EQ(s.GetLength(), 1);
  EXPECT_EQ(s.GetContent()[0], 0x2D);
  EXPECT_EQ(s.GetContent()[1], 0);  // the terminator lands on the high byte

  const unsigned short mixed[] = {0x4E2D, 'A', 'B'};
  EXPECT_EQ(s.Assign(mixed, 3), 1);
  EXPECT_EQ(s.GetCapacity(), 32);
  EXPECT_EQ(Bytes(s), std::string("\x2D\x4E\x41", 3));
  EXPECT_EQ(s.GetContent()[3], 0);

  // Many wide units write more bytes than the rounded capacity records;
  // the sanitizer build checks that they still land inside the block.
  const std::vector<unsigned short> wide(100, 0x3042);
  EXPECT_EQ(s.Assign(wide.data(), 100), 1);
  EXPECT_EQ(s.GetLength(), 100);
  EXPECT_EQ(s.GetCapacity(), 128);
  EXPECT_EQ(s.GetContent()[100], 0);

  // Zero units from 16-bit text empties the string and still succeeds.
  EXPECT_EQ(s.Assign(mixed, 0), 1);
  EXPECT_EQ(s.GetLength(), 0);
  s = "x";
  EXPECT_EQ(s.Assign(static_cast<const unsigned short*>(nullptr), -1), 1);
  EXPECT_EQ(s.GetLength(), 0);
}

TEST(ByteString, AppendingWideTextKeepsOnlyLowBytes) {
  CByteString s = Str("AB");
  const unsigned short wide[] = {0x141, 0x42, 0x4E2D, 0};
  s += wide;
  EXPECT_EQ(Bytes(s), "ABAB\x2D");
  s += static_cast<const unsigned short*>(nullptr);
  EXPECT_EQ(Bytes(s), "ABAB\x2D");
}

TEST(ByteString, BothGrowthPoliciesKeepTheText) {
  for (bool doubling : {false, true}) {
    CByteString s = Filled(30);
    if (doubling)
      s.SetGrowByDoubleSize();
    for (int i = 0; i < 5; ++i)
      s += std::string(40, 'y').c_str();
    s += static_cast<unsigned char>('z');
    EXPECT_EQ(Bytes(s), std::string(30, 'x') + std::string(200, 'y') + "z");
    EXPECT_EQ(s.GetContent()[231], 0);
    EXPECT_GT(s.GetCapacity(), 232);
    s.Empty();
    EXPECT_EQ(s.IsGrowByDoubleSize(), doubling);  // Empty keeps the policy
  }
}

TEST(ByteString, AppendToItself) {
  CByteString s = Str("abc");
  s += s;
  EXPECT_EQ(Bytes(s), "abcabc");
  CByteString t = Filled(30);
  t += t;  // forces a new block while reading the old one
  EXPECT_EQ(Bytes(t), std::string(60, 'x'));
}

TEST(ByteString, CompareTreatsEmptyAsLessThanEverything) {
  CByteString empty, other = Str("");
  EXPECT_EQ(empty.Compare(""), -1);
  EXPECT_EQ(empty.Compare(empty), -1);
  EXPECT_EQ(other.Compare(""), -1);  // a zero length counts as empty
  EXPECT_EQ(empty.CompareNoCase("anything"), -1);

  CByteString s = Str("b");
  EXPECT_EQ(s.Compare("a"), 1);  // exactly 1, not a difference of bytes
  EXPECT_EQ(s.Compare("z"), -1);
  EXPECT_EQ(s.Compare("b"), 0);
  EXPECT_EQ(s.Compare("bb"), -1);
  EXPECT_EQ(s.Compare(static_cast<const char*>(nullptr)), 1);
  s = "\x80";
  EXPECT_EQ(s.Compare("a"), 1);  // unsigned bytes
  EXPECT_EQ(s.Compare(Str("\x80")), 0);
  EXPECT_TRUE(empty.GetString().IsEmpty());  // no block: an empty text, not a crash
}

TEST(ByteString, CompareNoCaseFoldsLetters) {
  CByteString s = Str("Topic.HTM");
  EXPECT_EQ(s.CompareNoCase("topic.htm"), 0);
  EXPECT_LT(s.CompareNoCase("topic.htmx"), 0);
  EXPECT_GT(s.CompareNoCase("TOPIC.HT"), 0);
  EXPECT_LT(s.CompareNoCase("U"), 0);
  EXPECT_NE(s.CompareNoCase(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(s.CompareNoCase(Str("TOPIC.htm")), 0);
}

TEST(ByteString, ClearContentKeepsTheBlock) {
  CByteString s = Filled(40);
  const unsigned char* block = s.GetContent();
  EXPECT_EQ(s.ClearContent(), 1);
  EXPECT_EQ(s.GetContent(), block);
  EXPECT_EQ(s.GetCapacity(), 64);
  EXPECT_EQ(s.GetLength(), 0);
  EXPECT_EQ(s.GetContent()[0], 0);
  CByteString none;
  EXPECT_EQ(none.ClearContent(), 1);
  EXPECT_EQ(none.GetContent(), nullptr);
}

TEST(ByteStringFile, LoadAndSaveRoundTripThroughWindowsPaths) {
  test::TempDir dir;
  std::string page("<html>\0\xFF\r\n</html>", 17);
  dir.Write("Help/Topics/Intro.HTM", page);
  const std::string windowsPath = dir.path() + "\\help\\topics\\intro.htm";

  CByteString s;
  ASSERT_EQ(s.LoadFromFile(windowsPath.c_str()), 1);
  EXPECT_EQ(Bytes(s), page);
  EXPECT_EQ(s.GetContent()[s.GetLength()], 0);
  EXPECT_EQ(s.GetCapacity(), GetRecommendedStringCapacity(18));

  s += "<!-- more -->";
  ASSERT_EQ(s.SaveToFile(windowsPath.c_str()), 1);
  EXPECT_EQ(dir.Read("Help/Topics/Intro.HTM"), page + "<!-- more -->");
  EXPECT_EQ(dir.List("Help/Topics"), "Intro.HTM");  // the same name, no temporary file left behind
}

TEST(ByteStringFile, EmptyFileLoadsAsEmptyTerminatedBlock) {
  test::TempDir dir;
  dir.Write("empty.htm", "");
  CByteString s = Str("old");
  ASSERT_EQ(s.LoadFromFile((dir / "empty.htm").c_str()), 1);
  EXPECT_EQ(s.GetLength(), 0);
  EXPECT_EQ(s.GetCapacity(), 32);
  ASSERT_NE(s.GetContent(), nullptr);
  EXPECT_EQ(s.GetContent()[0], 0);

  CByteString never;
  ASSERT_EQ(never.SaveToFile((dir / "made.htm").c_str()), 1);
  EXPECT_EQ(dir.Read("made.htm"), "");
}

TEST(ByteStringFile, BadPathsGiveZero) {
  test::TempDir dir;
  dir.Write("sub/file.txt", "x");
  CByteString s = Str("content");
  EXPECT_EQ(s.LoadFromFile(nullptr), 0);
  EXPECT_EQ(s.GetContent(), nullptr);  // emptied first
  s = "content";
  EXPECT_EQ(s.LoadFromFile((dir / "missing.htm").c_str()), 0);
  EXPECT_EQ(s.GetLength(), 0);
  EXPECT_EQ(s.LoadFromFile(dir.path().c_str()), 0);  // a folder
  EXPECT_EQ(s.LoadFromFile(""), 0);
  std::string longPath = dir.path() + "/" + std::string(5000, 'a');
  EXPECT_EQ(s.LoadFromFile(longPath.c_str()), 0);

  s = "content";
  EXPECT_EQ(s.SaveToFile(nullptr), 0);
  EXPECT_EQ(s.SaveToFile((dir / "no/such/folder/x.htm").c_str()), 0);
  EXPECT_EQ(s.SaveToFile(dir.path().c_str()), 0);
  EXPECT_EQ(s.SaveToFile(longPath.c_str()), 0);
  EXPECT_EQ(dir.List(), "sub");
}

TEST(WordString, WideningIsZeroExtension) {
  CWordString w;
  w = "\xE9" "A";
  ASSERT_EQ(Units(w), u"\u00E9A");  // not sign-extended to 0xFFE9
  EXPECT_EQ(w.GetContent()[2], 0);
  w += "bc";
  EXPECT_EQ(w.GetString(), "\xE9" "Abc");
  w = static_cast<const char*>(nullptr);  // changes nothing
  w += static_cast<const char*>(nullptr);
  EXPECT_EQ(Units(w), u"\u00E9Abc");

  CWordString bytes;
  EXPECT_EQ(bytes.Assign(U("\x80xyz"), 2), 1);
  EXPECT_EQ(bytes.Assign(U("xyz"), 0), 0);
  EXPECT_EQ(Units(bytes), u"\u0080x");
}

TEST(WordString, GetStringKeepsLowBytes) {
  const unsigned short units[] = {0x4E2D, 0x41, 0x1FF, 0};
  CWordString w(units, -1);
  EXPECT_EQ(w.GetLength(), 3);
  EXPECT_EQ(w.GetString().str(), "\x2D" "A" "\xFF");
  EXPECT_TRUE(CWordString().GetString().IsEmpty());
}

TEST(WordString, AppendHasNoEarlyReturn) {
  CWordString w;
  const unsigned short ab[] = {'a', 'b', 0};
  EXPECT_EQ(w.Append(ab, 0), 0);  // no block yet: behaves as Assign
  EXPECT_EQ(w.GetContent(), nullptr);
  EXPECT_EQ(w.Append(ab, -1), 1);
  EXPECT_EQ(Units(w), u"ab");
  w.GetContent()[2] = 0x7777;  // spoil the terminator
  EXPECT_EQ(w.Append(ab, 0), 1);
  EXPECT_EQ(w.GetContent()[2], 0);  // rewritten
  EXPECT_EQ(w.Append(nullptr, -1), 1);
  EXPECT_EQ(w.GetLength(), 2);

  w += static_cast<unsigned short>(0x263A);
  EXPECT_EQ(Units(w), u"ab\u263A");
  w += w;
  EXPECT_EQ(Units(w), u"ab\u263Aab\u263A");
}

TEST(WordString, GrowsByUnits) {
  std::vector<unsigned short> many(62, 'm');
  CWordString w(many.data(), 62);
  w.SetGrowByDoubleSize();
  w += static_cast<unsigned short>('x');
  EXPECT_EQ(w.GetLength(), 63);
  EXPECT_EQ(w.GetContent()[62], 'x');
  EXPECT_EQ(w.GetContent()[63], 0);
  EXPECT_EQ(CWordString::GetWordStringLen(nullptr), 0);
  w.ClearContent();
  EXPECT_EQ(w.GetLength(), 0);
}
