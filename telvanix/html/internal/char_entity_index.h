// The named-reference hash and the name of each code, shared by the table
// (char_entity_table.cpp, built at compile time) and the conversions
// (char_entities.cpp). Not installed.
#pragma once

#include <array>

#include "telvanix/platform/types.h"

namespace telvanix::charentity {

// h := h * 16 + (byte AND 127) over [p, end); case matters.
template <typename Char>
constexpr DWORD HashName(const Char* p, const Char* end) {
  DWORD h = 0;
  for (; p < end; ++p)
    h = h * 16u + (static_cast<unsigned char>(*p) & 127u);
  return h;
}

// The name of the first table row for each code 160 to 255; null elsewhere.
extern const std::array<const char*, 256> kNameByCode;

}  // namespace telvanix::charentity
