// The token arena: aligned bump allocation, growth by blocks, reuse after
// Reset, and the blocks a thread keeps for its next arena (each case runs on
// a new thread, so that it starts with none kept).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>

#include "telvanix/html/token_arena.h"

namespace telvanix {
namespace {

template <class F>
void OnNewThread(F body) {
  std::thread worker(body);
  worker.join();
}

TEST(TokenArenaTest, HandsOutAlignedMemoryAndCountsIt) {
  OnNewThread([] {
    CHtmlTokenArena arena;
    EXPECT_EQ(arena.GetUsedBytes(), 0u);
    EXPECT_EQ(arena.GetReservedBytes(), 0u);
    char* a = static_cast<char*>(arena.Allocate(3));
    char* b = static_cast<char*>(arena.Allocate(9));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(a) % 8, 0u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(b) % 8, 0u);
    EXPECT_EQ(b - a, 8);
    EXPECT_EQ(arena.GetUsedBytes(), 24u);
    char* text = arena.CopyText("abc", 3);
    EXPECT_STREQ(text, "abc");
  });
}

TEST(TokenArenaTest, GrowsByBlocksAndKeepsAllocationsApart) {
  OnNewThread([] {
    CHtmlTokenArena arena;
    arena.Reserve(100);
    const std::size_t first = arena.GetReservedBytes();
    EXPECT_GE(first, 100u);
    // Fill well past the first block; nothing handed out may overlap.
    std::size_t total = 0;
    unsigned char* last = nullptr;
    for (int i = 0; i < 1000; ++i) {
      auto* p = static_cast<unsigned char*>(arena.Allocate(200));
      std::memset(p, i & 0xFF, 200);
      if (last != nullptr) {
        EXPECT_EQ(last[199], static_cast<unsigned char>((i - 1) & 0xFF));
      }
      last = p;
      total += 200;
    }
    EXPECT_EQ(arena.GetUsedBytes(), total);
    EXPECT_GT(arena.GetReservedBytes(), first);
    // Later blocks grow with what is held but leave little unused.
    EXPECT_LT(arena.GetReservedBytes(), total + total / 2 + 64 * 1024);
  });
}

TEST(TokenArenaTest, ResetKeepsTheLargestBlockOnly) {
  OnNewThread([] {
    CHtmlTokenArena arena;
    arena.Reserve(100 * 1024);
    arena.Allocate(100 * 1024);
    arena.Allocate(50 * 1024);  // a second block
    ASSERT_GE(arena.GetReservedBytes(), 150u * 1024);
    arena.Reset();
    EXPECT_EQ(arena.GetUsedBytes(), 0u);
    EXPECT_GE(arena.GetReservedBytes(), 100u * 1024);
    EXPECT_LT(arena.GetReservedBytes(), 150u * 1024);
    // The kept block serves the next page without a new one.
    const std::size_t kept = arena.GetReservedBytes();
    arena.Reserve(90 * 1024);
    EXPECT_EQ(arena.GetReservedBytes(), kept);
  });
}

TEST(TokenArenaTest, ANewArenaOnTheThreadReusesAKeptBlock) {
  OnNewThread([] {
    std::size_t size = 0;
    {
      CHtmlTokenArena arena;
      arena.Reserve(1 << 20);
      size = arena.GetReservedBytes();
    }
    CHtmlTokenArena next;
    next.Reserve(1000);
    EXPECT_EQ(next.GetReservedBytes(), size);
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
    // Four arenas of 3 MB go away; all of them together exceed what a
    // thread keeps, so later arenas find at most two of those blocks.
    for (int i = 0; i < 4; ++i) {
      CHtmlTokenArena arena;
      CHtmlTokenArena other[3];
      arena.Reserve(3u << 20);
      for (CHtmlTokenArena& o : other) o.Reserve(3u << 20);
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
