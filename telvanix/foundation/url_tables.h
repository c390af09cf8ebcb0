// The URL scheme (value 1 to 12) and multimedia extension (value 1) keyword
// tables behind url_utils.h; searched with QuickMapStringToValue, which
// reorders them on first use.
#pragma once

#include "telvanix/foundation/keyword_map.h"

namespace telvanix {

TELVANIX_API extern QuickMapStringToValueItem g_tUrlSchemeTable[12];
TELVANIX_API extern QuickMapStringToValueItem g_tMultimediaExtTable[25];

}  // namespace telvanix
