// The fixed-width integer aliases and opaque handle types that the library's
// interfaces are written in. Widths follow the original 32-bit platform:
// LONG, DWORD, UINT and COLORREF are 32 bits even where `long` is 64.
#pragma once

#include <cstddef>
#include <cstdint>

#include "telvanix/platform/export.h"

namespace telvanix {

using BOOL = std::int32_t;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using UINT = std::uint32_t;
using INT = std::int32_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using COLORREF = std::uint32_t;
using WCHAR = char16_t;
using LPSTR = char*;
using LPCSTR = const char*;
using LPTSTR = char*;
using LPCTSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPVOID = void*;
using LPCVOID = const void*;

constexpr BOOL TRUE = 1;
constexpr BOOL FALSE = 0;

// Opaque handle to a node of a list; null means "no position".
struct PositionTag;
using POSITION = PositionTag*;
#define BEFORE_START_POSITION (reinterpret_cast<::telvanix::POSITION>(-1))

// Window handles are opaque here; nothing in the library dereferences one.
struct HwndTag;
using HWND = HwndTag*;
class CWnd;

constexpr COLORREF RGB(BYTE r, BYTE g, BYTE b) {
  return static_cast<COLORREF>(r) | (static_cast<COLORREF>(g) << 8) | (static_cast<COLORREF>(b) << 16);
}
constexpr BYTE GetRValue(COLORREF c) { return static_cast<BYTE>(c & 0xFF); }
constexpr BYTE GetGValue(COLORREF c) { return static_cast<BYTE>((c >> 8) & 0xFF); }
constexpr BYTE GetBValue(COLORREF c) { return static_cast<BYTE>((c >> 16) & 0xFF); }

}  // namespace telvanix
