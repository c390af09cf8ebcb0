// Cutting a property value into its runs (words, numbers, quoted strings,
// url(...) notations), for the readers of declaration lists and of
// shorthand properties. Internal to the stylesheet classes.
#pragma once

#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// A run that ends in a quoted stretch has the blanks and comments after its
// closer included by the scanner; this gives the end of the run proper.
const unsigned char* CssRunTextEnd(const unsigned char* p, const unsigned char* runEnd);

// Skips blanks and comments from p, then takes one CssSkipAny run with the
// given flags into `run` and moves p past it (and past anything unreadable
// that made no progress). False when nothing is left before `end`.
bool CssNextValueRun(const unsigned char*& p, const unsigned char* end, UINT flags, CString& run);

}  // namespace telvanix
