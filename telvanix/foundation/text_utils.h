// Small text helpers shared by the document, stylesheet and topic classes:
// blank trimming and the question whether lead bytes must be honoured.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// Trims space, tab, LF, CR and the bell character (7) from both ends; 1.
TELVANIX_API int TrimLeftAndRight(CString& text);

// The active ANSI code page when it is one of those that callers must treat
// byte-pair aware (874, 932, 936, 949, 950, 1254 to 1257, 1200), else 0.
// Non-zero means: ask IsDBCSLeadByte per byte.
TELVANIX_API UINT IsDBCS();

// A lead byte that must be stepped over together with its trail byte.
TELVANIX_API BOOL IsLeadByteHere(BYTE ch);

}  // namespace telvanix
