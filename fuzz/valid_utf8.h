// Whether bytes are well-formed UTF-8: no stray continuation, no overlong
// form, no surrogate, nothing past U+10FFFF. Text the library hands out as
// UTF-8 must always pass.
#pragma once

#include <cstddef>
#include <string>

namespace telvanix::fuzz {

inline bool IsValidUtf8(const std::string& s) {
  for (std::size_t i = 0; i < s.size();) {
    const unsigned char c = static_cast<unsigned char>(s[i]);
    std::size_t n = c < 0x80 ? 1 : c >= 0xC2 && c <= 0xDF ? 2 : c >= 0xE0 && c <= 0xEF ? 3 : c >= 0xF0 && c <= 0xF4 ? 4 : 0;
    if (n == 0 || i + n > s.size())
      return false;
    char32_t ch = n == 1 ? c : c & (0x7F >> n);
    for (std::size_t k = 1; k < n; ++k) {
      const unsigned char t = static_cast<unsigned char>(s[i + k]);
      if ((t & 0xC0) != 0x80)
        return false;
      ch = (ch << 6) | (t & 0x3F);
    }
    if ((n == 3 && (ch < 0x800 || (ch >= 0xD800 && ch <= 0xDFFF))) || (n == 4 && (ch < 0x10000 || ch > 0x10FFFF)))
      return false;
    i += n;
  }
  return true;
}

}  // namespace telvanix::fuzz
