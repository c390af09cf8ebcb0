// The tag-name hash and the lookup index over the sorted tag syntax table,
// shared by the table (built at compile time in tag_syntax_table.cpp) and by
// the name scans of tag_item.cpp. Not installed.
#pragma once

#include <array>

#include "telvanix/platform/types.h"

namespace telvanix {
namespace tagindex {

// Name hash codes: digits 1..10, letters of either case 11..36 and a few
// punctuation marks; every other character has code 0 and is skipped.
inline constexpr std::array<unsigned char, 128> kNameCodes = [] {
  std::array<unsigned char, 128> t{};
  for (int c = '0'; c <= '9'; ++c)
    t[c] = static_cast<unsigned char>(c - '0' + 1);
  for (int c = 'a'; c <= 'z'; ++c)
    t[c] = t[c - 'a' + 'A'] = static_cast<unsigned char>(c - 'a' + 11);
  t['!'] = 38;
  t['-'] = 39;
  t['_'] = 40;
  t['#'] = 41;
  t[':'] = 42;
  t['?'] = 43;
  t['/'] = 44;
  t[']'] = 45;
  return t;
}();

inline constexpr DWORD kCommentHash = (38u * 44u + 39u) * 44u + 39u;  // "!--"

constexpr DWORD AddNameCode(DWORD h, unsigned char c) {
  const unsigned char code = kNameCodes[c & 127];
  return code ? h * 44u + code : h;
}

// Hash of [p, end); any name that begins with "!--" hashes as "!--".
template <typename Char>
constexpr DWORD HashName(const Char* p, const Char* end) {
  if (end - p >= 3 && p[0] == '!' && p[1] == '-' && p[2] == '-')
    return kCommentHash;
  DWORD h = 0;
  for (; p < end; ++p)
    h = AddNameCode(h, static_cast<unsigned char>(*p));
  return h;
}

// Hash of a terminated name.
constexpr DWORD HashName(const char* name) {
  const char* end = name;
  while (*end)
    ++end;
  return HashName(name, end);
}

// Open addressing over the sorted rows' hashes: one or two probes per tag
// instead of a binary search.
inline constexpr int kSlots = 512;
struct Slot {
  DWORD hash;
  int index;  // row index + 1; 0 = empty
};
constexpr unsigned SlotOf(DWORD h) { return (h * 0x9E3779B1u) >> 23; }

extern const std::array<Slot, kSlots> kLookup;

// Sorted row index of a hash, or -1.
inline int Lookup(DWORD h) {
  for (unsigned s = SlotOf(h);; s = (s + 1) & (kSlots - 1)) {
    const Slot& slot = kLookup[s];
    if (!slot.index)
      return -1;
    if (slot.hash == h)
      return slot.index - 1;
  }
}

}  // namespace tagindex
}  // namespace telvanix
