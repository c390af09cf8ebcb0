// The host's window predicate behind IsWindow.
#include "telvanix/platform/window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>

namespace telvanix {
namespace {

HWND Handle(std::uintptr_t value) { return reinterpret_cast<HWND>(value); }
BOOL BelowHundred(HWND hWnd) { return reinterpret_cast<std::uintptr_t>(hWnd) < 0x100 ? TRUE : FALSE; }
BOOL Throws(HWND) { throw std::runtime_error("host failure"); }
BOOL AnswersTwo(HWND) { return 2; }

TEST(Window, PredicateDecidesAndNullIsNeverAWindow) {
  IsWindowPredicate previous = SetIsWindowPredicate(nullptr);
  EXPECT_EQ(FALSE, IsWindow(Handle(0x10)));
  EXPECT_EQ(nullptr, SetIsWindowPredicate(&BelowHundred));
  EXPECT_EQ(TRUE, IsWindow(Handle(0x10)));
  EXPECT_EQ(FALSE, IsWindow(Handle(0x100)));
  EXPECT_EQ(FALSE, IsWindow(nullptr));
  // Any non-zero answer is TRUE; a throwing predicate has not said yes.
  SetIsWindowPredicate(&AnswersTwo);
  EXPECT_EQ(TRUE, IsWindow(Handle(0x10)));
  SetIsWindowPredicate(&Throws);
  EXPECT_EQ(FALSE, IsWindow(Handle(0x10)));
  EXPECT_EQ(&Throws, SetIsWindowPredicate(previous));
}

}  // namespace
}  // namespace telvanix
