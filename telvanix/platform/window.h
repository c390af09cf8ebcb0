// Window handles. The library shows no windows and never looks inside a
// handle; whether a handle a host passes in names a live window is a question
// only the host can answer, so it may register a predicate for it. Without
// one, no handle is a window.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// Answers whether hWnd is a live window of the host; never given null.
using IsWindowPredicate = BOOL (*)(HWND hWnd);

// Registers the host's predicate (null removes it) and gives the previous
// one. Safe to call while other threads ask IsWindow.
TELVANIX_API IsWindowPredicate SetIsWindowPredicate(IsWindowPredicate predicate);

// TRUE when a predicate is registered and accepts hWnd; FALSE for null and
// whenever no predicate is registered.
TELVANIX_API BOOL IsWindow(HWND hWnd);

}  // namespace telvanix
