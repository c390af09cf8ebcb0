// The token arena: aligned allocations that never overlap, however many
// blocks it takes, reuse after Reset, and a bound on what a thread keeps for
// its next arena (each case runs on a new thread, so it starts with none).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>

#include "telvanix/html/token_arena.h"

namespace telvanix {
namespace {

template <class F>
void OnNewThread(F body) {
  std::thread(body).join();
}

TEST(TokenArenaTest, AllocationsAreAlignedApartAndSurviveGrowthAndReset) {
  OnNewThread([] {
    CHtmlTokenArena arena;
    EXPECT_EQ(arena.GetUsedBytes(), 0u);
    EXPECT_STREQ(arena.CopyText("abc", 3), "abc");
    for (int round = 0; round < 2; ++round, arena.Reset()) {
      unsigned char* last = nullptr;
      for (int i = 0; i < 1000; ++i) {
        auto* p = static_cast<unsigned char*>(arena.Allocate(200 + i % 7));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 8, 0u);
        std::memset(p, i & 0xFF, 200);
        if (last != nullptr) {
          EXPECT_EQ(last[199], static_cast<unsigned char>((i - 1) & 0xFF));
        }
        last = p;
      }
      EXPECT_GE(arena.GetReservedBytes(), arena.GetUsedBytes());
      EXPECT_GE(arena.GetUsedBytes(), 200000u);
    }
    EXPECT_EQ(arena.GetUsedBytes(), 0u);
  });
}

TEST(TokenArenaTest, AThreadKeepsNoHugeBlockAndLittleInAll) {
  OnNewThread([] {
    {
      CHtmlTokenArena huge;
      huge.Reserve(20u << 20);
    }
    CHtmlTokenArena small;
    small.Reserve(1000);
    EXPECT_LT(small.GetReservedBytes(), 1u << 20) << "a 20 MB block was kept for the next page";
  });
  OnNewThread([] {
    // Sixteen arenas of 3 MB go away; together they exceed what a thread
    // keeps, so later arenas find at most two of those blocks.
    for (int i = 0; i < 4; ++i) {
      CHtmlTokenArena arenas[4];
      for (CHtmlTokenArena& a : arenas) a.Reserve(3u << 20);
    }
    int reused = 0;
    CHtmlTokenArena taking[4];
    for (CHtmlTokenArena& t : taking) {
      t.Reserve(2u << 20);
      if (t.GetReservedBytes() >= (3u << 20)) ++reused;
    }
    EXPECT_GE(reused, 1);
    EXPECT_LE(reused, 2);
  });
}

}  // namespace
}  // namespace telvanix
