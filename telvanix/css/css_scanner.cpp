// The stylesheet scanners of CCssPack. They walk bytes with pointers, never
// read at or past `end`, and stop at a zero byte, so they are safe on any
// buffer whether or not it is terminated. The loops live in css_scan_core.h,
// shared with the parser's own calls.
#include <cstring>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/internal/css_scan_core.h"

namespace telvanix {

const unsigned char* CCssPack::CssSkipSpaces(const unsigned char* p, const unsigned char* end, int withComments) {
  if (!p || !end)
    return p;
  return css_scan::SkipSpaces(p, end, withComments != 0);
}

const unsigned char* CCssPack::CssSkipComment(const unsigned char* p, const unsigned char* end) {
  if (!p || !end)
    return p;
  return css_scan::SkipComment(p, end);
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
  return css_scan::SkipAny(p, end, flags, css_scan::LeadCodePage());
}

const unsigned char* CCssPack::CssSkipBlock(const unsigned char* p, const unsigned char* end) {
  if (!p || !end)
    return p;
  return css_scan::SkipBlock(p, end, css_scan::LeadCodePage());
}

const unsigned char* CCssPack::CssSkipDeclaration(const unsigned char* p, const unsigned char* end) {
  if (!p || !end)
    return p;
  return css_scan::SkipDeclaration(p, end, css_scan::LeadCodePage());
}

CString CCssPack::CssFetchFirstAny(const unsigned char* p, const unsigned char* end, UINT flags) {
  if (!p)
    return CString();
  if (!end)
    end = p + std::strlen(reinterpret_cast<const char*>(p));
  if (p >= end)
    return CString(reinterpret_cast<const char*>(p));
  const unsigned char* s = css_scan::SkipSpaces(p, end, true);
  const unsigned char* e = css_scan::SkipAny(s, end, flags, css_scan::LeadCodePage());
  if (e <= s)
    return CString();
  return CString(reinterpret_cast<const char*>(s), static_cast<int>(e - s));
}

}  // namespace telvanix
