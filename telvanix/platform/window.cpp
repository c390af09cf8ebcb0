// The host-registered window predicate behind IsWindow.
#include "telvanix/platform/window.h"

#include <atomic>

namespace telvanix {

namespace {

std::atomic<IsWindowPredicate> g_isWindow{nullptr};

}  // namespace

IsWindowPredicate SetIsWindowPredicate(IsWindowPredicate predicate) {
  return g_isWindow.exchange(predicate);
}

BOOL IsWindow(HWND hWnd) {
  if (!hWnd)
    return FALSE;
  IsWindowPredicate predicate = g_isWindow.load();
  if (!predicate)
    return FALSE;
  try {
    return predicate(hWnd) ? TRUE : FALSE;
  } catch (...) {
    // A host predicate that throws has not said yes.
    return FALSE;
  }
}

}  // namespace telvanix
