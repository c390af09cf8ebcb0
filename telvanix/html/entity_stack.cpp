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

CHtmlEntityStack::CHtmlEntityStack(int bOwnsAttachments)
    : m_nLevel(0), m_bOwnsAttachments(bOwnsAttachments) {
  Resume();
}

CHtmlEntityStack::CHtmlEntityStack(const CHtmlEntityStack& other)
    : m_nLevel(other.m_nLevel), m_bOwnsAttachments(other.m_bOwnsAttachments) {
  std::memcpy(m_Items, other.m_Items, sizeof(m_Items));
}

CHtmlEntityStack& CHtmlEntityStack::operator=(const CHtmlEntityStack& other) {
  if (this != &other) {
    m_nLevel = other.m_nLevel;
    std::memcpy(m_Items, other.m_Items, sizeof(m_Items));
    m_bOwnsAttachments = other.m_bOwnsAttachments;
  }
  return *this;
}

CHtmlEntityStack::~CHtmlEntityStack() { BackStackLevel(0); }

int CHtmlEntityStack::Resume() {
  m_nLevel = 0;
  std::memset(m_Items, 0, sizeof(m_Items));
  CHtmlTagItem* pSentinel = GetSentinelTag();
  m_Items[0].m_pTag = pSentinel;
  m_Items[0].m_nTagId = pSentinel->GetTagId();
  return 1;
}

int CHtmlEntityStack::Push(CHtmlTagItem* pTag, POSITION pos) {
  if (pTag == nullptr || pTag->IsEndTag()) return 0;
  if (!pTag->IsUnknownTag() && pTag->GetCntType() == 0) return 0;
  // The last level is reused rather than exceeded: a page nested that deep
  // keeps its innermost open element in the top slot.
  if (m_nLevel >= emMaxStackLevel) return 0;
  ++m_nLevel;
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
