#include "telvanix/foundation/hash_fold.h"

#include <gtest/gtest.h>

using namespace telvanix;

TEST(FoldTable, ClassesOfBytes) {
  const struct { int byte; int code; } cases[] = {
      {0x00, 0},    {0x1F, 0},    {' ', 0xF0},  {'/', 0xFF},  {'0', 1},     {'9', 10},
      {':', 0x0B},  {'?', 0x10},  {'@', 0xE0},  {'A', 0x11},  {'Z', 0x2A},  {'a', 0x11},
      {'z', 0x2A},  {'[', 0xE1},  {'\\', 0xFF}, {']', 0xE3},  {'`', 0xE6},  {'{', 0xE7},
      {0x7F, 0xEB}, {0x80, 0x50}, {0xE9, 0xB9}, {0xFF, 0xCF},
  };
  for (const auto& c : cases) EXPECT_EQ(g_tFoldCodeTable[c.byte], c.code) << "byte " << c.byte;
}

TEST(GenHashCode, KnownValues) {
  EXPECT_EQ(GenHashCode("BODY"), 0x16B9C2u);
  EXPECT_EQ(GenHashCode("a"), 0x11u);
  EXPECT_EQ(GenHashCode("font-size"), 0x783FCB67u);  // wraps at 32 bits
  // Bytes of 0x80 and above fold to codes of 0x50 or more and count negatively.
  EXPECT_EQ(GenHashCode("\xE9t\xE9"), 0xFFFE04F6u);
  EXPECT_EQ(GenHashCode("@[]`{\x7F"), 0xE1256E78u);
}

TEST(GenHashCode, FoldsCaseSeparatorsAndControlBytes) {
  for (const char* same : {"Body", "body", "BO\tDY", "\r\nBODY\x01"})
    EXPECT_EQ(GenHashCode(same), GenHashCode("BODY")) << same;
  EXPECT_EQ(GenHashCode("a/b"), GenHashCode("a\\b"));
  EXPECT_NE(GenHashCode("ab"), GenHashCode("ba"));
  EXPECT_NE(GenHashCode("a1"), GenHashCode("a2"));
}

TEST(GenHashCode, EmptyNullAndLengthForm) {
  EXPECT_EQ(GenHashCode(nullptr), 0u);
  EXPECT_EQ(GenHashCode(""), 0u);
  EXPECT_EQ(GenHashCode("\t\t"), 0u);
  EXPECT_EQ(GenHashCode("BODYXYZ", 4), GenHashCode("BODY"));
  EXPECT_EQ(GenHashCode("BODY", 0), 0u);
  EXPECT_EQ(GenHashCode(nullptr, 5), 0u);
}

TEST(QuickCompareStringNoCase, Cases) {
  // Only ASCII letters fold together; a null text equals nothing.
  for (auto [a, b, same] : {std::tuple{"Body", "bODY", true}, {"", "", true}, {"a/b", "a\\b", true},
                            {"ab", "abc", false}, {"abc", "ab", false}, {"abc", "abd", false}, {"\xE9", "\xC9", false},
                            {nullptr, "", false}, {"", nullptr, false}, {nullptr, nullptr, false}})
    EXPECT_EQ(QuickCompareStringNoCase(a, b), same) << (a ? a : "null") << " / " << (b ? b : "null");
}
