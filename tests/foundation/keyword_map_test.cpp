#include "telvanix/foundation/keyword_map.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "telvanix/foundation/hash_fold.h"

using namespace telvanix;

TEST(QuickMapStringToValue, PreparesOnFirstSearch) {
  QuickMapStringToValueItem table[] = {{0, "zeta", 26}, {0, "alpha", 1}, {0, "Middle", 13}, {0, "beta", 2}};
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), "ALPHA", FALSE), 1);
  for (const auto& row : table) EXPECT_EQ(row.dwHashCode, GenHashCode(row.pszKey));
  for (size_t i = 1; i < std::size(table); ++i) EXPECT_LT(table[i - 1].dwHashCode, table[i].dwHashCode);
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), "middle", FALSE), 13);
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), "Zeta", FALSE), 26);
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), "gamma", FALSE), -1);
}

TEST(QuickMapStringToValue, RunOfEqualHashes) {
  // Five keywords that fold to one hash: only `exact` tells them apart, and
  // it must look through the whole run whichever row the search lands on.
  QuickMapStringToValueItem table[] = {{0, "ab", 1},   {0, "AB", 2}, {0, "x", 9},  {0, "Ab", 3},
                                       {0, "a\tb", 4}, {0, "aB", 5}, {0, "yy", 8}};
  for (auto [key, v] : {std::pair{"ab", 1}, {"AB", 2}, {"Ab", 3}, {"a\tb", 4}, {"aB", 5}})
    EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), key, TRUE), v) << key;
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), "a\nb", TRUE), -1);
  const int any = QuickMapStringToValue(table, sizeof(table), "a\nb", FALSE);
  EXPECT_TRUE(any >= 1 && any <= 5) << any;
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), "YY", FALSE), 8);
}

TEST(QuickMapStringToValue, BadArguments) {
  QuickMapStringToValueItem table[] = {{0, "alpha", 1}, {0, "beta", 2}};
  EXPECT_EQ(QuickMapStringToValue(nullptr, 24, "alpha", FALSE), -1);
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), nullptr, FALSE), -1);
  EXPECT_EQ(QuickMapStringToValue(table, 0, "alpha", FALSE), -1);
  EXPECT_EQ(QuickMapStringToValue(table, -5, "alpha", FALSE), -1);
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table[0]) - 1, "alpha", FALSE), -1);
  EXPECT_EQ(table[0].dwHashCode, 0u);  // rejected calls leave the table unprepared
  EXPECT_EQ(QuickMapStringToValue(table, sizeof(table), "", FALSE), -1);
  // A byte count covering one row searches that row only.
  QuickMapStringToValueItem single[] = {{0, "beta", 2}, {0, "alpha", 1}};
  EXPECT_EQ(QuickMapStringToValue(single, sizeof(single[0]), "alpha", FALSE), -1);
  EXPECT_EQ(QuickMapStringToValue(single, sizeof(single[0]), "beta", FALSE), 2);
}

TEST(QuickMapStringToValue, FirstSearchFromManyThreads) {
  static QuickMapStringToValueItem table[] = {
      {0, "one", 1}, {0, "two", 2},  {0, "three", 3}, {0, "four", 4},  {0, "five", 5},
      {0, "six", 6}, {0, "seven", 7}, {0, "eight", 8}, {0, "nine", 9}, {0, "ten", 10},
  };
  const char* keys[] = {"ONE", "Two", "three", "FOUR", "five", "Six", "seven", "eight", "NINE", "ten"};
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 200; ++round) {
        const int k = (t + round) % 10;
        if (QuickMapStringToValue(table, sizeof(table), keys[k], FALSE) != k + 1) ++wrong;
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(wrong.load(), 0);
}
