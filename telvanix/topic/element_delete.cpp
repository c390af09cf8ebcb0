// Removing a link, an object or an element from a page. Tokens are
// discarded, never rebuilt, so the rest of the page saves as it was read;
// the blanks that followed a removed tag stay in the page.
#include <cstring>

#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

namespace {

// The printed bytes of a token end at the start of a line (a line break,
// then blanks at most).
bool EndsAtLineStart(const CHtmlTokenItem* token) {
  const unsigned char* p = token->GetOriginalData();
  int n = token->GetOriginalLength() + token->GetIndentAfterLength();
  while (n > 0 && (p[n - 1] == ' ' || p[n - 1] == '\t'))
    --n;
  return n > 0 && (p[n - 1] == '\n' || p[n - 1] == '\r');
}

}  // namespace

void CHtmlFileEx::DiscardKeepingBlanks(POSITION pos) {
  CHtmlTokenItem* token = m_TokenList.GetTokenItem(pos);
  if (!token || token->IsDiscardedToken())
    return;
  token->DiscardToken();
  int blanks = token->GetIndentAfterLength();
  if (blanks <= 0)
    return;
  for (POSITION walk = pos; walk;) {
    m_TokenList.GetPrev(walk);
    CHtmlTokenItem* previous = walk ? m_TokenList.GetTokenItem(walk) : nullptr;
    if (!previous || previous->IsDiscardedToken())
      continue;
    const unsigned char* mine = token->GetIndentAfter();
    const unsigned char* theirs = previous->GetIndentAfter();
    int keep = previous->GetIndentAfterLength();
    if (EndsAtLineStart(previous)) {
      // A tag that began a line takes its line with it: the line break and
      // indentation after it replace those in front of it.
      if (!std::memchr(mine, '\n', static_cast<size_t>(blanks)) &&
          !std::memchr(mine, '\r', static_cast<size_t>(blanks)))
        return;
      while (keep > 0 && theirs[keep - 1] != '\n' && theirs[keep - 1] != '\r')
        --keep;
      if (keep == 0)
        return;
      while (keep > 0 && (theirs[keep - 1] == '\n' || theirs[keep - 1] == '\r'))
        --keep;
      while (blanks > 0 && (*mine == ' ' || *mine == '\t')) {
        ++mine;
        --blanks;
      }
    }
    CByteString indent;
    indent.Append(theirs, keep);
    indent.Append(mine, blanks);
    previous->SetOriginalIndentAfter(indent.GetContent(), indent.GetContent() + indent.GetLength() - 1);
    return;
  }
}

POSITION CHtmlFileEx::FindMatchingEnd(POSITION pos) {
  CHtmlTagItem* start = GetLiveTag(pos);
  if (!start || start->IsEndTag())
    return nullptr;
  const int id = start->GetTagId();
  int depth = 0;
  POSITION walk = pos, here = nullptr;
  m_TokenList.GetNext(walk);
  while (CHtmlTagItem* tag = NextLiveTag(m_TokenList, walk, &here)) {
    if (tag->GetTagId() == id)
      ++depth;
    else if (tag->GetTagId() == EndOf(id) && depth-- == 0)
      return here;
  }
  return nullptr;
}

int CHtmlFileEx::DeleteAnchor(POSITION pos) {
  try {
    CHtmlTagItem* tag = GetLiveTag(pos);
    if (!tag || tag->GetTagId() != kTagA)
      return 0;
    // Links do not nest: the first end tag before another link closes it.
    POSITION end = nullptr, here = nullptr;
    POSITION walk = pos;
    m_TokenList.GetNext(walk);
    while (CHtmlTagItem* next = end ? nullptr : NextLiveTag(m_TokenList, walk, &here)) {
      if (next->GetTagId() == kTagA)
        break;
      if (next->GetTagId() == EndOf(kTagA))
        end = here;
    }
    DiscardKeepingBlanks(pos);
    if (end)
      DiscardKeepingBlanks(end);
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::DeleteEntity(POSITION pos) {
  try {
    CHtmlTagItem* tag = GetLiveTag(pos);
    if (!tag || tag->IsEndTag() || tag->GetTagId() == kTagComment)
      return 0;
    // An empty element, or one whose end tag is missing, goes alone.
    POSITION end = nullptr;
    if (tag->GetCntType() != CHtmlTagItem::emCntEmpty && tag->GetXmlType() != CHtmlTagItem::emXmlEmptyTag)
      end = FindMatchingEnd(pos);
    if (!end) {
      DiscardKeepingBlanks(pos);
      return 1;
    }
    for (POSITION walk = pos; walk;) {
      const POSITION here = walk;
      CHtmlTokenItem* token = m_TokenList.GetNext(walk);
      if (here == end)
        break;
      if (token)
        token->DiscardToken();
    }
    DiscardKeepingBlanks(end);
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::DeleteObject(POSITION pos) {
  try {
    CHtmlTagItem* tag = GetLiveTag(pos);
    if (!tag || tag->GetTagId() != kTagObject)
      return 0;
    if (FindMatchingEnd(pos))
      return DeleteEntity(pos);
    // Without an end tag: the OBJECT and the PARAMs that follow it.
    CPositionArray params;
    CollectObjectParams(pos, params);
    DiscardKeepingBlanks(pos);
    for (int i = 0; i < params.GetSize(); ++i)
      DiscardKeepingBlanks(params[i]);
    return 1;
  } catch (...) {
    return 0;
  }
}

}  // namespace telvanix
