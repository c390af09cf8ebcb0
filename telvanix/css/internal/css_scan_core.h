// The stylesheet scanners' loops, inline for the library's own hot paths.
// CCssPack's public Css* scanners are thin wrappers over these; the parser,
// the declaration reader and name normalisation call them directly with the
// code page looked up once, so a rule is cut without a call per run and
// without asking for the code page at every step. One byte table gives, for
// each byte, the run flags it stops and its role for the blank skipper and
// the block matcher. Internal to the stylesheet classes.
#pragma once

#include <cstring>

#include "telvanix/css/css_scanner.h"
#include "telvanix/foundation/text_utils.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/platform/types.h"

namespace telvanix::css_scan {

using Byte = unsigned char;

// Run flags a byte can stop (the flags CssSkipAny reads; others are ignored).
constexpr UINT kRunFlags = emCssStopSemicolon | emCssStopCloseBrace | emCssStopComma | emCssStopColon |
                           emCssStopDot | emCssStopHash | emCssStopBackslash | emCssStopAnyOther;
constexpr UINT kBlockByte = 0x02000000u;  // "{", "}", "/" or zero: the block matcher looks
constexpr UINT kSpaceByte = 0x04000000u;  // "<", "-" or "/": may start what the blank skipper skips
constexpr UINT kBlankByte = 0x08000000u;  // space, tab, CR, LF, form feed
constexpr UINT kLeadByte = 0x20000000u;   // 0x80 and above: a lead byte under a double-byte code page
constexpr UINT kQuoteByte = 0x40000000u;  // "'", double quote, "(" or "[": opens a quoted stretch
constexpr UINT kEndByte = 0x80000000u;    // blank, "{" or zero: ends every run

constexpr UINT ClassOf(unsigned ch) {
  UINT c = 0;
  if (ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n' || ch == '\f')
    return kBlankByte | kEndByte;
  switch (ch) {
    case 0: return kEndByte | kBlockByte;
    case '{': return kEndByte | kBlockByte;
    case '\'': case '"': case '(': case '[': return kQuoteByte;
    case ';': c = emCssStopSemicolon; break;
    case '}': c = emCssStopCloseBrace | kBlockByte; break;
    case ',': c = emCssStopComma; break;
    case ':': c = emCssStopColon; break;
    case '.': c = emCssStopDot; break;
    case '#': c = emCssStopHash; break;
    case '\\': c = emCssStopBackslash; break;
    case '/': c = kBlockByte | kSpaceByte; break;
    case '<': case '-': c = kSpaceByte; break;
    default: break;
  }
  if (ch >= '0' && ch <= '9')
    return 0;  // a digit never ends a run
  c |= emCssStopAnyOther;
  if (ch >= 0x80)
    c |= kLeadByte;
  return c;
}

struct ByteTable {
  UINT v[256];
};

constexpr ByteTable MakeByteTable() {
  ByteTable t{};
  for (unsigned i = 0; i < 256; ++i)
    t.v[i] = ClassOf(i);
  return t;
}

inline constexpr ByteTable kByteTable = MakeByteTable();

inline UINT ClassAt(const Byte* p) { return kByteTable.v[*p]; }

// The code page whose lead bytes must be honoured, 0 when none.
inline UINT LeadCodePage() { return IsDBCS() ? GetActiveCodePage() : 0; }

inline bool IsLead(UINT cp, Byte ch) { return cp != 0 && ch >= 0x80 && IsDBCSLeadByteEx(cp, ch); }

// One character: two bytes for a lead byte (never past end).
inline const Byte* StepChar(UINT cp, const Byte* p, const Byte* end) {
  if (IsLead(cp, *p) && end - p >= 2)
    return p + 2;
  return p + 1;
}

inline const Byte* SkipComment(const Byte* p, const Byte* end) {
  if (end - p < 4 || p[0] != '/' || p[1] != '*')
    return p;
  // One-state matcher: a star arms it, and only a "/" right after closes.
  // Any other byte, a second star too, disarms it, so "**/" does not close.
  for (const Byte* q = p + 2; q < end; ++q) {
    const Byte ch = *q;
    if (ch == '*') {
      if (++q >= end)
        break;
      if (*q == '/')
        return q + 1;
      if (*q == 0)
        return q;
      continue;  // the byte after the star, a star too, disarmed it
    }
    if (ch == 0)
      return q;
  }
  return p;
}

inline const Byte* SkipSpaces(const Byte* p, const Byte* end, bool withComments) {
  while (p < end) {
    const UINT c = ClassAt(p);
    if (c & kBlankByte) {
      ++p;
      continue;
    }
    if (!(c & kSpaceByte))
      break;
    const Byte ch = *p;
    if (ch == '<' && end - p >= 4 && p[1] == '!' && p[2] == '-' && p[3] == '-') {
      p += 4;  // "<!--" that hides a style block from old browsers
    } else if (ch == '-' && end - p >= 3 && p[1] == '-' && p[2] == '>') {
      p += 3;
    } else if (ch == '/' && withComments) {
      const Byte* q = SkipComment(p, end);
      if (q == p)
        break;
      p = q;
    } else {
      break;
    }
  }
  return p;
}

// At a quote, "(" or "[": past its closer (with the blanks and comments
// after it), the zero byte inside, or end. `textEnd` gets the end of the
// stretch itself (after the closer; the stop otherwise).
inline const Byte* SkipQuoted(const Byte* p, const Byte* end, UINT cp, const Byte*& textEnd) {
  const Byte opener = *p;
  const Byte closer = opener == '(' ? ')' : (opener == '[' ? ']' : opener);
  ++p;
  if (!cp) {
    for (; p < end; ++p) {
      const Byte c = *p;
      if (c == closer) {
        textEnd = p + 1;
        return SkipSpaces(p + 1, end, true);
      }
      if (c == 0) {
        textEnd = p;
        return p;
      }
    }
  } else {
    while (p < end) {
      const Byte c = *p;
      if (c == 0) {
        textEnd = p;
        return p;
      }
      if (IsLead(cp, c)) {
        p = StepChar(cp, p, end);
        continue;
      }
      if (c == closer) {
        textEnd = p + 1;
        return SkipSpaces(p + 1, end, true);
      }
      ++p;
    }
  }
  textEnd = end;
  return end;
}

// One run (see CCssPack::CssSkipAny). `textEnd` gets where the run's own
// text ends: before the blanks and comments a closed quoted stretch takes.
inline const Byte* SkipAnyRun(const Byte* p, const Byte* end, UINT flags, UINT cp, const Byte*& textEnd) {
  const UINT stop = (flags & kRunFlags) | kEndByte;
  const UINT mask = stop | kQuoteByte | (cp ? kLeadByte : 0);
  while (p < end) {
    const UINT c = ClassAt(p);
    if (!(c & mask)) {
      ++p;
      continue;
    }
    if ((c & kLeadByte) && IsLead(cp, *p)) {
      p = StepChar(cp, p, end);
      continue;
    }
    if (c & kQuoteByte)
      return SkipQuoted(p, end, cp, textEnd);
    if (c & stop)
      break;
    ++p;
  }
  textEnd = p;
  return p;
}

inline const Byte* SkipAny(const Byte* p, const Byte* end, UINT flags, UINT cp) {
  const Byte* textEnd;
  return SkipAnyRun(p, end, flags, cp, textEnd);
}

inline const Byte* SkipBlock(const Byte* p, const Byte* end, UINT cp) {
  if (p >= end || *p != '{')
    return p;
  int depth = 1;
  const Byte* q = p + 1;
  while (q < end) {
    if (!(ClassAt(q) & kBlockByte)) {
      q = cp ? StepChar(cp, q, end) : q + 1;
      continue;
    }
    const Byte ch = *q;
    if (ch == 0)
      return p;
    if (ch == '/') {
      // A comment may hold braces of its own.
      const Byte* r = SkipComment(q, end);
      if (r > q) {
        q = r;
        continue;
      }
    } else if (ch == '{') {
      ++depth;
    } else if (ch == '}') {
      if (--depth == 0)
        return SkipSpaces(q + 1, end, true);
    }
    ++q;
  }
  return p;
}

inline const Byte* SkipDeclaration(const Byte* p, const Byte* end, UINT cp) {
  if (p >= end)
    return p;
  const Byte* q = SkipAny(p, end, kCssFlagsPropertyName | emCssStopSemicolon | emCssStopCloseBrace, cp);
  q = SkipSpaces(q, end, true);
  if (q >= end || *q != ':')
    return p;
  ++q;
  for (;;) {
    q = SkipSpaces(q, end, true);
    if (q >= end || *q == 0)
      return p;
    if (*q == ';' || *q == '}')
      return q;
    if (*q == '{') {
      const Byte* r = SkipBlock(q, end, cp);
      if (r == q)
        return p;
      q = r;
      continue;
    }
    const Byte* r = SkipAny(q, end, kCssFlagsBlockValue, cp);
    q = r > q ? r : q + 1;
  }
}

}  // namespace telvanix::css_scan
