// Byte classes and run-flag values of the stylesheet syntax. The scanners
// themselves are static members of CCssPack (css_pack.h), the one definition
// of the syntax that the values, declaration lists and selectors cut their
// text with; this header gives their callers the shared vocabulary.
#pragma once

#include "telvanix/platform/types.h"

namespace telvanix {

// Flags of CCssPack::CssSkipAny: which delimiters end a run. Blanks, "{" and
// a zero byte always end one; a quote, "(" or "[" opens a stretch that the
// run takes whole.
enum EmCssSkipFlag : UINT {
  emCssStopSemicolon = 0x1,      // ";"
  emCssStopCloseBrace = 0x2,     // "}"
  emCssStopComma = 0x10,         // ","
  emCssStopColon = 0x20,         // ":"
  emCssStopDot = 0x40,           // "."
  emCssStopHash = 0x80,          // "#"
  emCssStopUnused = 0x100,       // carried by the value flag set, tests nothing
  emCssStopBackslash = 0x200,    // "\"
  emCssStopAnyOther = 0x10000,   // every byte but digits and quotes ends the run
};

// The flag sets the library scans with.
constexpr UINT kCssFlagsAtPrelude = emCssStopSemicolon | emCssStopCloseBrace;          // 3
constexpr UINT kCssFlagsSelector = emCssStopComma | emCssStopCloseBrace;               // 18
constexpr UINT kCssFlagsPropertyName = emCssStopColon;                                 // 32
constexpr UINT kCssFlagsBlockValue = emCssStopSemicolon | emCssStopCloseBrace | emCssStopUnused;  // 259
constexpr UINT kCssFlagsValue = 0;

// Space, tab, CR, LF and form feed.
inline bool IsCssBlank(unsigned char ch) {
  return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n' || ch == '\f';
}

}  // namespace telvanix
