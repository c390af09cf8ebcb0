// Byte scans shared by the tokenizer, the tag item and the walks over a
// page's tokens: comment and CDATA closings, case-blind prefixes and line
// counts. Internal to the library.
#pragma once

#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace telvanix::markup {

inline bool IsBlank(unsigned char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// The line feeds in [p, p + n), by memchr: a walk over a whole page counts
// every byte, and line ends are sparse.
inline int CountLines(const unsigned char* p, int n) {
  if (!p || n <= 0)
    return 0;
  int lines = 0;
  for (const unsigned char* end = p + n; p < end; ++lines, ++p) {
    p = static_cast<const unsigned char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
    if (!p)
      break;
  }
  return lines;
}

// "]]" (more "]" allowed) directly followed by ">", searched in [p, end).
// Returns the first "]" of that run, or null; *pClose gets the ">".
inline const unsigned char* FindCdataClose(const unsigned char* p, const unsigned char* end,
                                           const unsigned char** pClose = nullptr) {
  while (p < end) {
    const unsigned char* q = static_cast<const unsigned char*>(std::memchr(p, ']', static_cast<std::size_t>(end - p)));
    if (!q)
      return nullptr;
    const unsigned char* r = q;
    while (r < end && *r == ']')
      ++r;
    if (r - q >= 2 && r < end && *r == '>') {
      if (pClose)
        *pClose = r;
      return q;
    }
    p = r;
  }
  return nullptr;
}

// "--" followed by any blanks or "-" and then ">", searched in [p, end).
// Returns the first "-" of the closing run, or null; *pClose gets the ">".
inline const unsigned char* FindCommentClose(const unsigned char* p, const unsigned char* end,
                                             const unsigned char** pClose = nullptr) {
  while (p + 1 < end) {
    const unsigned char* q =
        static_cast<const unsigned char*>(std::memchr(p, '-', static_cast<std::size_t>(end - 1 - p)));
    if (!q)
      return nullptr;
    if (q[1] == '-') {
      const unsigned char* r = q + 2;
      while (r < end && (*r == '-' || IsBlank(*r)))
        ++r;
      if (r < end && *r == '>') {
        if (pClose)
          *pClose = r;
        return q;
      }
    }
    p = q + 1;
  }
  return nullptr;
}

// The first '"', '\'' or '>' in [p, end), or end. A tag's end is looked
// for with this sixteen bytes at a time: a tag is mostly names and values.
inline const unsigned char* FindQuoteOrClose(const unsigned char* p, const unsigned char* end) {
#if defined(__SSE2__)
  const __m128i dquote = _mm_set1_epi8('"');
  const __m128i squote = _mm_set1_epi8('\'');
  const __m128i close = _mm_set1_epi8('>');
  while (end - p >= 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i hit =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, dquote), _mm_cmpeq_epi8(v, squote)), _mm_cmpeq_epi8(v, close));
    const int mask = _mm_movemask_epi8(hit);
    if (mask != 0)
      return p + __builtin_ctz(static_cast<unsigned>(mask));
    p += 16;
  }
#endif
  for (; p < end; ++p)
    if (*p == '"' || *p == '\'' || *p == '>')
      return p;
  return end;
}

inline unsigned char UpperAscii(unsigned char c) { return c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 32) : c; }

// Whether [p, end) begins with prefix, ASCII letters compared without case.
inline bool StartsNoCase(const unsigned char* p, const unsigned char* end, const char* prefix, std::size_t n) {
  if (static_cast<std::size_t>(end - p) < n)
    return false;
  for (std::size_t i = 0; i < n; ++i)
    if (UpperAscii(p[i]) != UpperAscii(static_cast<unsigned char>(prefix[i])))
      return false;
  return true;
}

}  // namespace telvanix::markup
