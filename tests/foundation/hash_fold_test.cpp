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
  EXPECT_EQ(GenHashCode("Body"), GenHashCode("BODY"));
  EXPECT_EQ(GenHashCode("body"), GenHashCode("BODY"));
  EXPECT_EQ(GenHashCode("BO\tDY"), GenHashCode("BODY"));
  EXPECT_EQ(GenHashCode("\r\nBODY\x01"), GenHashCode("BODY"));
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
  EXPECT_TRUE(QuickCompareStringNoCase("Body", "bODY"));
  EXPECT_TRUE(QuickCompareStringNoCase("", ""));
  EXPECT_TRUE(QuickCompareStringNoCase("a/b", "a\\b"));
  EXPECT_FALSE(QuickCompareStringNoCase("ab", "abc"));
  EXPECT_FALSE(QuickCompareStringNoCase("abc", "ab"));
  EXPECT_FALSE(QuickCompareStringNoCase("abc", "abd"));
  EXPECT_FALSE(QuickCompareStringNoCase("\xE9", "\xC9"));  // only ASCII letters fold together
  EXPECT_FALSE(QuickCompareStringNoCase(nullptr, ""));
  EXPECT_FALSE(QuickCompareStringNoCase("", nullptr));
  EXPECT_FALSE(QuickCompareStringNoCase(nullptr, nullptr));
}
