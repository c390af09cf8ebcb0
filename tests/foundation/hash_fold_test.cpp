#include "telvanix/foundation/hash_fold.h"

#include <gtest/gtest.h>

using namespace telvanix;

TEST(GenHashCode, WrapsAtThirtyTwoBits) {
  EXPECT_EQ(GenHashCode("font-size"), 0x783FCB67u);
  // Bytes of 0x80 and above count negatively.
  EXPECT_EQ(GenHashCode("\xE9t\xE9"), 0xFFFE04F6u);
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
