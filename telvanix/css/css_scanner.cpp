// The stylesheet scanners of CCssPack. They walk bytes with pointers, never
// read at or past `end`, and stop at a zero byte, so they are safe on any
// buffer whether or not it is terminated.
#include <cstring>

#include "telvanix/css/css_pack.h"
#include "telvanix/foundation/text_utils.h"
#include "telvanix/platform/code_page.h"

namespace telvanix {

namespace {

// The code page whose lead bytes must be honoured, 0 when none.
inline UINT LeadByteCodePage() {
  return IsDBCS() ? GetActiveCodePage() : 0;
}

inline bool IsLead(UINT cp, unsigned char ch) {
  return cp != 0 && ch >= 0x80 && IsDBCSLeadByteEx(cp, ch);
}

// Steps over one character: two bytes for a lead byte (never past end).
inline const unsigned char* StepChar(UINT cp, const unsigned char* p, const unsigned char* end) {
  if (IsLead(cp, *p) && end - p >= 2)
    return p + 2;
  return p + 1;
}

}  // namespace

const unsigned char* CCssPack::CssSkipSpaces(const unsigned char* p, const unsigned char* end, int withComments) {
  if (!p || !end)
    return p;
  while (p < end) {
    const unsigned char ch = *p;
    if (IsCssBlank(ch)) {
      ++p;
    } else if (ch == '<' && end - p >= 4 && p[1] == '!' && p[2] == '-' && p[3] == '-') {
      p += 4;  // "<!--" that hides a style block from old browsers
    } else if (ch == '-' && end - p >= 3 && p[1] == '-' && p[2] == '>') {
      p += 3;
    } else if (ch == '/' && withComments) {
      const unsigned char* q = CssSkipComment(p, end);
      if (q == p)
        break;
      p = q;
    } else {
      break;
    }
  }
  return p;
}

const unsigned char* CCssPack::CssSkipComment(const unsigned char* p, const unsigned char* end) {
  if (!p || !end || end - p < 4 || p[0] != '/' || p[1] != '*')
    return p;
  // One-state matcher: a star arms it, and only a "/" right after closes.
  // Any other byte, a second star too, disarms it, so "**/" does not close.
  bool armed = false;
  for (const unsigned char* q = p + 2; q < end; ++q) {
    const unsigned char ch = *q;
    if (ch == 0)
      return q;
    if (armed) {
      if (ch == '/')
        return q + 1;
      armed = false;
    } else if (ch == '*') {
      armed = true;
    }
  }
  return p;
}

const unsigned char* CCssPack::CssSkipAtKeyword(const unsigned char* p, const unsigned char* end) {
  if (!p || !end || p >= end || *p != '@')
    return p;
  ++p;
  while (p < end && *p != 0 && !IsCssBlank(*p))
    ++p;
  return p;
}

const unsigned char* CCssPack::CssSkipAny(const unsigned char* p, const unsigned char* end, UINT flags) {
  if (!p || !end)
    return p;
  const UINT cp = LeadByteCodePage();
  while (p < end) {
    const unsigned char ch = *p;
    if (IsLead(cp, ch)) {
      p = StepChar(cp, p, end);
      continue;
    }
    if (ch == 0)
      return p;
    unsigned char closer = 0;
    switch (ch) {
      case '\'': closer = '\''; break;
      case '"': closer = '"'; break;
      case '(': closer = ')'; break;
      case '[': closer = ']'; break;
      default: break;
    }
    if (closer) {
      // The stretch is taken whole and its closer ends the run; brackets do
      // not nest.
      for (++p; p < end; ) {
        const unsigned char c = *p;
        if (c == 0)
          return p;
        if (IsLead(cp, c)) {
          p = StepChar(cp, p, end);
          continue;
        }
        if (c == closer)
          return CssSkipSpaces(p + 1, end, 1);
        ++p;
      }
      return end;
    }
    if (IsCssBlank(ch) || ch == '{')
      return p;
    UINT flag = 0;
    switch (ch) {
      case ';': flag = emCssStopSemicolon; break;
      case '}': flag = emCssStopCloseBrace; break;
      case ',': flag = emCssStopComma; break;
      case ':': flag = emCssStopColon; break;
      case '.': flag = emCssStopDot; break;
      case '#': flag = emCssStopHash; break;
      case '\\': flag = emCssStopBackslash; break;
      default: break;
    }
    if (flag & flags)
      return p;
    if (ch >= '0' && ch <= '9') {
      ++p;
      continue;
    }
    if (flags & emCssStopAnyOther)
      return p;
    ++p;
  }
  return end;
}

const unsigned char* CCssPack::CssSkipBlock(const unsigned char* p, const unsigned char* end) {
  if (!p || !end || p >= end || *p != '{')
    return p;
  const UINT cp = LeadByteCodePage();
  int depth = 1;
  const unsigned char* q = p + 1;
  while (q < end) {
    const unsigned char ch = *q;
    if (ch == 0)
      return p;
    if (ch == '/') {
      // A comment may hold braces of its own.
      const unsigned char* r = CssSkipComment(q, end);
      if (r > q) {
        q = r;
        continue;
      }
    } else if (ch == '{') {
      ++depth;
    } else if (ch == '}') {
      if (--depth == 0)
        return CssSkipSpaces(q + 1, end, 1);
    }
    q = StepChar(cp, q, end);
  }
  return p;
}

const unsigned char* CCssPack::CssSkipDeclaration(const unsigned char* p, const unsigned char* end) {
  if (!p || !end || p >= end)
    return p;
  const unsigned char* q = CssSkipAny(p, end, kCssFlagsPropertyName | emCssStopSemicolon | emCssStopCloseBrace);
  q = CssSkipSpaces(q, end, 1);
  if (q >= end || *q != ':')
    return p;
  ++q;
  for (;;) {
    q = CssSkipSpaces(q, end, 1);
    if (q >= end || *q == 0)
      return p;
    if (*q == ';' || *q == '}')
      return q;
    if (*q == '{') {
      const unsigned char* r = CssSkipBlock(q, end);
      if (r == q)
        return p;
      q = r;
      continue;
    }
    const unsigned char* r = CssSkipAny(q, end, kCssFlagsBlockValue);
    q = r > q ? r : q + 1;
  }
}

CString CCssPack::CssFetchFirstAny(const unsigned char* p, const unsigned char* end, UINT flags) {
  if (!p)
    return CString();
  if (!end)
    end = p + std::strlen(reinterpret_cast<const char*>(p));
  if (p >= end)
    return CString(reinterpret_cast<const char*>(p));
  const unsigned char* s = CssSkipSpaces(p, end, 1);
  const unsigned char* e = CssSkipAny(s, end, flags);
  if (e <= s)
    return CString();
  return CString(reinterpret_cast<const char*>(s), static_cast<int>(e - s));
}

}  // namespace telvanix
