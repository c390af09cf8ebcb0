// Helpers shared by the topic document's source files (not installed for
// hosts): the tag ids the walk and the scanners test, and small text
// comparisons that step over double-byte characters whole.
#pragma once

#include <cstring>

#include "telvanix/foundation/path_utils.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix::topic_detail {

// The topic services' names for the tag ids they look at (tag_vocabulary.h).
constexpr int kTagHtml = CHtmlTagItem::emTagIdHtml;
constexpr int kTagHead = CHtmlTagItem::emTagIdHead;
constexpr int kTagBody = CHtmlTagItem::emTagIdBody;
constexpr int kTagFrameset = CHtmlTagItem::emTagIdFrameset;
constexpr int kTagComment = CHtmlTagItem::emTagIdComment;
constexpr int kTagTitle = CHtmlTagItem::emTagIdTitle;
constexpr int kTagBase = CHtmlTagItem::emTagIdBase;
constexpr int kTagStyle = CHtmlTagItem::emTagIdStyle;
constexpr int kTagMeta = CHtmlTagItem::emTagIdMeta;
constexpr int kTagLink = CHtmlTagItem::emTagIdLink;
constexpr int kTagA = CHtmlTagItem::emTagIdA;
constexpr int kTagImg = CHtmlTagItem::emTagIdImg;
constexpr int kTagObject = CHtmlTagItem::emTagIdObject;
constexpr int kTagMap = CHtmlTagItem::emTagIdMap;
constexpr int kTagArea = CHtmlTagItem::emTagIdArea;
constexpr int kTagParam = CHtmlTagItem::emTagIdParam;
constexpr int kTagIFrame = CHtmlTagItem::emTagIdIFrame;
constexpr int kTagEmbed = CHtmlTagItem::emTagIdEmbed;
constexpr int kTagScript = CHtmlTagItem::emTagIdScript;
constexpr int kTagInput = CHtmlTagItem::emTagIdInput;
constexpr int kTagTable = CHtmlTagItem::emTagIdTable;
constexpr int kTagFrame = CHtmlTagItem::emTagIdFrame;
constexpr int kTagBgSound = CHtmlTagItem::emTagIdBgSound;
constexpr int kTagLi = CHtmlTagItem::emTagIdLi;
constexpr int kTagUl = CHtmlTagItem::emTagIdUl;
constexpr int kEndBit = CHtmlTagItem::emTagIdEndBit;

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

// The next live tag from walk on, walk moved past it; its position in *at.
// Null at the end.
inline CHtmlTagItem* NextLiveTag(CHtmlTokenList& list, POSITION& walk, POSITION* at = nullptr) {
  while (walk) {
    const POSITION here = walk;
    CHtmlTokenItem* token = list.GetNext(walk);
    CHtmlTagItem* tag = token && !token->IsDiscardedToken() ? token->GetSafeTagItemPtr() : nullptr;
    if (tag) {
      if (at)
        *at = here;
      return tag;
    }
  }
  return nullptr;
}

// The token's text alone, as a save would print it.
inline CString TokenText(CHtmlTokenItem* token) {
  return token ? token->GetPrintableText(CHtmlTokenItem::emTextTokenOnly) : CString();
}

// "bitmap:shortcut.bmp" or "icon:x.ico" names an image; the part after ":".
inline const char* ButtonImage(const char* value) {
  if (MbsNCompareNoCase(value, "icon", 4) != 0 && MbsNCompareNoCase(value, "bitm", 4) != 0)
    return nullptr;
  const char* colon = std::strchr(value, ':');
  if (!colon || !colon[1])
    return nullptr;
  return colon + 1;
}

// The last ";"-separated segment of an item value. A ";" that closes a
// character reference ("&amp;") is not a separator.
inline const char* LastSegment(const char* value) {
  const int length = static_cast<int>(std::strlen(value));
  int i = length - 1;
  while (i >= 0) {
    if (value[i] != ';') {
      --i;
      continue;
    }
    int j = i - 1;
    while (j >= 0 && value[j] != ';' && value[j] != '&')
      --j;
    if (j >= 0 && value[j] == '&') {
      const int span = i - j + 1;
      CByteString decoded;
      CHtmlPack::HtmlToText(decoded, reinterpret_cast<const unsigned char*>(value + j), span);
      if (decoded.GetLength() <= span - 2) {
        i = j - 1;
        continue;
      }
    }
    return value + i + 1;
  }
  return value;
}

inline bool IsPageName(const char* name) {
  char ext[kMaxExt] = {0};
  SplitPath(name, nullptr, nullptr, nullptr, ext);
  return MbsNCompareNoCase(ext, ".htm", 4) == 0;
}

}  // namespace telvanix::topic_detail
