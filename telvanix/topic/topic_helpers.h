// Helpers shared by the topic document's source files (not installed for
// hosts): the tag ids the walk and the scanners test, and small text
// comparisons that step over double-byte characters whole.
#pragma once

#include <cstring>

#include "telvanix/html/tag_item.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix::topic_detail {

// Ids of the tag syntax table rows the topic services look at.
constexpr int kTagHtml = 0x20;
constexpr int kTagHead = 0x30;
constexpr int kTagBody = 0x40;
constexpr int kTagFrameset = 0x50;
constexpr int kTagComment = 0x60;
constexpr int kTagTitle = 0x10000;
constexpr int kTagBase = 0x10010;
constexpr int kTagStyle = 0x10020;
constexpr int kTagMeta = 0x10030;
constexpr int kTagLink = 0x10040;
constexpr int kTagA = 0x20200;
constexpr int kTagImg = 0x20210;
constexpr int kTagObject = 0x20230;
constexpr int kTagMap = 0x20270;
constexpr int kTagArea = 0x20271;
constexpr int kTagParam = 0x20221;
constexpr int kTagIFrame = 0x202E0;
constexpr int kTagEmbed = 0x202F0;
constexpr int kTagScript = 0x22060;
constexpr int kTagInput = 0x20300;
constexpr int kTagTable = 0x21090;
constexpr int kTagFrame = 0x34000;
constexpr int kTagBgSound = 0x40001;
constexpr int kEndBit = 0x10000000;

constexpr int EndOf(int id) { return id | kEndBit; }

inline char FoldAscii(unsigned char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : static_cast<char>(c);
}

// Compares at most n bytes without regard to ASCII letter case; a lead byte
// and its trail byte are compared as they are. n < 0 compares to the end.
inline int MbsNCompareNoCase(const char* a, const char* b, int n) {
  if (!a || !b)
    return a == b ? 0 : (a ? 1 : -1);
  const unsigned char* p = reinterpret_cast<const unsigned char*>(a);
  const unsigned char* q = reinterpret_cast<const unsigned char*>(b);
  for (int i = 0; n < 0 || i < n; ++i) {
    unsigned char c = p[i], d = q[i];
    if (c && IsDBCSLeadByte(c)) {
      if (c != d)
        return c < d ? -1 : 1;
      if (n >= 0 && i + 1 >= n)
        return 0;
      ++i;
      if (p[i] != q[i])
        return p[i] < q[i] ? -1 : 1;
      if (!p[i])
        return 0;
      continue;
    }
    char fc = FoldAscii(c), fd = FoldAscii(d);
    if (fc != fd)
      return static_cast<unsigned char>(fc) < static_cast<unsigned char>(fd) ? -1 : 1;
    if (!c)
      return 0;
  }
  return 0;
}

inline bool MbsEqualNoCase(const char* a, const char* b) {
  return a && b && MbsNCompareNoCase(a, b, -1) == 0;
}

// The tag at pos when it is a live (not discarded) tag token.
inline CHtmlTagItem* LiveTagAt(CHtmlTokenList& list, POSITION pos) {
  CHtmlTokenItem* token = pos ? list.GetTokenItem(pos) : nullptr;
  if (!token || token->IsDiscardedToken())
    return nullptr;
  return token->GetSafeTagItemPtr();
}

// The token's text alone, as a save would print it.
inline CString TokenText(CHtmlTokenItem* token) {
  return token ? token->GetPrintableText(CHtmlTokenItem::emTextTokenOnly) : CString();
}

}  // namespace telvanix::topic_detail
