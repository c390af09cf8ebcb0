#include "telvanix/foundation/hash_fold.h"

#include <array>

namespace telvanix {

namespace {

constexpr std::array<BYTE, 256> MakeFoldTable() {
  std::array<BYTE, 256> t{};
  for (int c = 0; c < 256; ++c) {
    BYTE m = 0;
    if (c < 0x20) m = 0;
    else if (c <= 0x2F) m = static_cast<BYTE>(0xF0 + (c - 0x20));
    else if (c <= '9') m = static_cast<BYTE>(1 + (c - '0'));
    else if (c <= '?') m = static_cast<BYTE>(0x0B + (c - ':'));
    else if (c == '@') m = 0xE0;
    else if (c <= 'Z') m = static_cast<BYTE>(0x11 + (c - 'A'));
    else if (c == '[') m = 0xE1;
    else if (c == '\\') m = 0xFF;
    else if (c <= '`') m = static_cast<BYTE>(0xE3 + (c - ']'));
    else if (c <= 'z') m = static_cast<BYTE>(0x11 + (c - 'a'));
    else if (c <= 0x7F) m = static_cast<BYTE>(0xE7 + (c - '{'));
    else m = static_cast<BYTE>(0x50 + (c - 0x80));
    t[static_cast<size_t>(c)] = m;
  }
  return t;
}

constexpr std::array<BYTE, 256> kFold = MakeFoldTable();

}  // namespace

const BYTE g_tFoldCodeTable[256] = {
#define TVX_ROW(i) kFold[i], kFold[i + 1], kFold[i + 2], kFold[i + 3], kFold[i + 4], kFold[i + 5], kFold[i + 6], kFold[i + 7]
    TVX_ROW(0x00),  TVX_ROW(0x08),  TVX_ROW(0x10),  TVX_ROW(0x18),  TVX_ROW(0x20),  TVX_ROW(0x28),
    TVX_ROW(0x30),  TVX_ROW(0x38),  TVX_ROW(0x40),  TVX_ROW(0x48),  TVX_ROW(0x50),  TVX_ROW(0x58),
    TVX_ROW(0x60),  TVX_ROW(0x68),  TVX_ROW(0x70),  TVX_ROW(0x78),  TVX_ROW(0x80),  TVX_ROW(0x88),
    TVX_ROW(0x90),  TVX_ROW(0x98),  TVX_ROW(0xA0),  TVX_ROW(0xA8),  TVX_ROW(0xB0),  TVX_ROW(0xB8),
    TVX_ROW(0xC0),  TVX_ROW(0xC8),  TVX_ROW(0xD0),  TVX_ROW(0xD8),  TVX_ROW(0xE0),  TVX_ROW(0xE8),
    TVX_ROW(0xF0),  TVX_ROW(0xF8),
#undef TVX_ROW
};

DWORD GenHashCode(const char* text) {
  if (!text) return 0;
  DWORD hash = 0;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p; ++p)
    hash = FoldHashStep(hash, *p);
  return hash;
}

DWORD GenHashCode(const char* text, int length) {
  if (!text || length <= 0) return 0;
  DWORD hash = 0;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
  for (const unsigned char* end = p + length; p < end; ++p) hash = FoldHashStep(hash, *p);
  return hash;
}

BOOL QuickCompareStringNoCase(const char* a, const char* b) {
  if (!a || !b) return FALSE;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(a);
  const unsigned char* q = reinterpret_cast<const unsigned char*>(b);
  for (; *p && *q; ++p, ++q)
    if (g_tFoldCodeTable[*p] != g_tFoldCodeTable[*q]) return FALSE;
  return *p == 0 && *q == 0;
}

}  // namespace telvanix
