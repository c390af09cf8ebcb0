// Colour names and "#rrggbb" texts to and from COLORREF values (red in the
// low byte). The 140 names keep their customary order, which decides the
// name printed for a colour that has two ("aqua" before "cyan").
#pragma once

#include "telvanix/foundation/keyword_map.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// The value that means "no colour".
constexpr COLORREF kNoColor = 0xFF000000u;

struct ColorNameItem {
  const char* pszName;
  COLORREF crColor;
  DWORD dwReserved;  // always 0
};

TELVANIX_API extern const ColorNameItem g_tColorNameTable[140];
constexpr int g_nColorNameTableSize = 140;

// The colour names as a keyword table (value = COLORREF), for callers that
// search it with QuickMapStringToValue; `tableBytes` receives sizeof the table.
TELVANIX_API QuickMapStringToValueItem* GetColorNameKeywordTable(int* tableBytes);

// "#" followed by six (or three) hex digits, or a colour name in any letter
// case. The result is stored in `color` (kNoColor when not recognised); 1
// unless that result is kNoColor; 0 for null text.
TELVANIX_API BOOL ColorNameToColor(const char* text, COLORREF& color);

// The first table name of exactly this colour, else "#rrggbb" (lower case)
// for a value below 0x1000000 (1 either way); anything else empties `name`
// and gives 0.
TELVANIX_API BOOL ColorToColorName(COLORREF color, CString& name);

}  // namespace telvanix
