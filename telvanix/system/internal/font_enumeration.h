// The display device context and font-family enumeration that the font
// registry is filled from. Families come from fontconfig: one record per
// family name, the 60-byte logical font describing its regular face. Built
// without fontconfig, the display context exists and lists no families.
#pragma once

#include "telvanix/platform/win_records.h"

namespace telvanix {

// Called once per family with its ENUMLOGFONTA (passed as its leading
// LOGFONTA), no text metrics, the font type and the caller's value; a 0
// result stops the enumeration.
using FONTENUMPROCA = int (*)(const LOGFONTA* logFont, const void* textMetric, DWORD fontType, LPARAM data);

// Only the "DISPLAY" driver is known; null for any other or when the font
// configuration cannot be loaded.
HDC CreateDCA(LPCSTR driver, LPCSTR device, LPCSTR output, const void* initData);
BOOL DeleteDC(HDC dc);

// With a null family: one call per installed family, in case-blind name
// order. With a family name: only that family's record. Returns the last
// value the callback returned, 0 when it was never called or on bad input.
int EnumFontFamiliesA(HDC dc, LPCSTR family, FONTENUMPROCA proc, LPARAM data);

}  // namespace telvanix
