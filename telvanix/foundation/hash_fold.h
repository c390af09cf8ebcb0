// Case-folding hash and comparison for names. Every keyword table, tag-name
// lookup and style-name match of the library folds bytes through one fixed
// table, so "Body" and "BODY" hash alike and control bytes are ignored.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// Fold code of every byte value: 0 for control bytes (skipped by the hash),
// letters of both cases share 0x11..0x2A, and "/" and "\" share 0xFF.
TELVANIX_API extern const BYTE g_tFoldCodeTable[256];

// Case-folding hash of a name; 0 for null or empty text.
TELVANIX_API DWORD GenHashCode(const char* text);
// Hash of the first `length` bytes only (for names that are not terminated).
TELVANIX_API DWORD GenHashCode(const char* text, int length);

// 1 when both texts are non-null, of equal length and equal byte by byte
// after folding; 0 otherwise.
TELVANIX_API BOOL QuickCompareStringNoCase(const char* a, const char* b);

// One step of the hash, for callers that hash as they scan.
inline DWORD FoldHashStep(DWORD hash, BYTE ch) {
  const BYTE m = g_tFoldCodeTable[ch];
  if (m == 0) return hash;
  const DWORD t = m < 0x50 ? m : static_cast<DWORD>(m) - 256u;
  return hash * 43u + t;
}

}  // namespace telvanix
