#include "telvanix/html/entity_stack.h"

#include <cstring>

#include "telvanix/html/tag_item.h"

namespace telvanix {

CHtmlTagItem* CHtmlEntityStack::GetSentinelTag() {
  // An empty tag: no name, id 0, row 0 of the syntax table, so it holds
  // nothing (content type 0). Shared and never changed after construction.
  static CHtmlTagItem s_Sentinel;
  return &s_Sentinel;
}

CHtmlEntityStack::CHtmlEntityStack() : CHtmlEntityStack(0) {}

// The stack lives on the call stack of every build pass, so zeroing all
// 4096 items each time would cost more than the pass itself on a small page.
// Only the items up to the highest level written since the last Resume are
// ever read (a push fills its item before anything reads it), so only those
// are zeroed and copied.

CHtmlEntityStack::CHtmlEntityStack(int bOwnsAttachments)
    : m_nLevel(0), m_bOwnsAttachments(bOwnsAttachments), m_nHighWater(0) {
  Resume();
}

CHtmlEntityStack::CHtmlEntityStack(const CHtmlEntityStack& other)
    : m_nLevel(other.m_nLevel), m_bOwnsAttachments(other.m_bOwnsAttachments), m_nHighWater(other.m_nHighWater) {
  std::memcpy(m_Items, other.m_Items, sizeof(EntityStackItem) * static_cast<std::size_t>(m_nHighWater + 1));
}

CHtmlEntityStack& CHtmlEntityStack::operator=(const CHtmlEntityStack& other) {
  if (this != &other) {
    m_nLevel = other.m_nLevel;
    m_nHighWater = other.m_nHighWater;
    std::memcpy(m_Items, other.m_Items, sizeof(EntityStackItem) * static_cast<std::size_t>(m_nHighWater + 1));
    m_bOwnsAttachments = other.m_bOwnsAttachments;
  }
  return *this;
}

CHtmlEntityStack::~CHtmlEntityStack() { BackStackLevel(0); }

int CHtmlEntityStack::Resume() {
  m_nLevel = 0;
  std::memset(m_Items, 0, sizeof(EntityStackItem) * static_cast<std::size_t>(m_nHighWater + 1));
  m_nHighWater = 0;
  CHtmlTagItem* pSentinel = GetSentinelTag();
  m_Items[0].m_pTag = pSentinel;
  m_Items[0].m_nTagId = pSentinel->GetTagId();
  return 1;
}

int CHtmlEntityStack::Push(CHtmlTagItem* pTag, POSITION pos) {
  if (pTag == nullptr || pTag->IsEndTag()) return 0;
  if (!pTag->IsUnknownTag() && pTag->GetCntType() == CHtmlTagItem::emCntEmpty) return 0;
  // The last level is reused rather than exceeded: a page nested that deep
  // keeps its innermost open element in the top slot.
  if (m_nLevel >= emMaxStackLevel) return 0;
  ++m_nLevel;
  if (m_nLevel > m_nHighWater) m_nHighWater = m_nLevel;
  EntityStackItem& item = m_Items[m_nLevel];
  item.m_pTag = pTag;
  item.m_nTagId = pTag->GetTagId();
  item.m_Position = pos;
  item.m_pAttachment = nullptr;
  return m_nLevel < emMaxStackLevel ? 1 : 0;
}

int CHtmlEntityStack::Pop() {
  EntityStackItem& item = m_Items[m_nLevel];
  item.m_pTag = nullptr;
  item.m_nTagId = 0;
  item.m_Position = nullptr;
  if (item.m_pAttachment != nullptr && m_bOwnsAttachments) delete item.m_pAttachment;
  item.m_pAttachment = nullptr;
  if (m_nLevel <= 0) {
    m_nLevel = 0;
    return 0;
  }
  --m_nLevel;
  return 1;
}

EntityStackItem* CHtmlEntityStack::GetTop() { return &m_Items[m_nLevel]; }

EntityStackItem* CHtmlEntityStack::GetEntityStackItem(int nLevel) {
  if (nLevel < 0 || nLevel > m_nLevel) return nullptr;
  return &m_Items[nLevel];
}

int CHtmlEntityStack::BackStackLevel(int nLevel) {
  // A level that popping cannot reach (negative, or above the present one)
  // unwinds everything down to level 0 and stops there.
  if (nLevel < 0 || nLevel > m_nLevel) nLevel = 0;
  while (m_nLevel > nLevel) Pop();
  return 1;
}

}  // namespace telvanix
