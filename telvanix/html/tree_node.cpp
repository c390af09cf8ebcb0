#include "telvanix/html/tree_node.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#include "telvanix/html/token_arena.h"
#include "telvanix/html/token_list.h"

namespace telvanix {

// ---- Allocation ----

void* CHtmlTreeNode::operator new(std::size_t size) {
  void* raw = std::malloc(size + kNodeHeader);
  if (raw == nullptr) throw std::bad_alloc();
  *static_cast<std::uint64_t*>(raw) = kNodeFromHeap;
  return static_cast<char*>(raw) + kNodeHeader;
}

void CHtmlTreeNode::operator delete(void* p) noexcept {
  if (p == nullptr) return;
  void* raw = static_cast<char*>(p) - kNodeHeader;
  if (*static_cast<std::uint64_t*>(raw) == kNodeFromHeap) std::free(raw);
}

void CHtmlTreeNode::operator delete(void* p, CNodeStore& store) noexcept {
  (void)p;
  (void)store;
}

// ---- CHtmlTreeNode::CExParam ----

CHtmlTreeNode::CExParam::CExParam(int nParam) : m_nParam(nParam) {}
CHtmlTreeNode::CExParam::CExParam(const CExParam& other) : CRglObject(), m_nParam(other.m_nParam) {}
CHtmlTreeNode::CExParam& CHtmlTreeNode::CExParam::operator=(const CExParam& other) {
  m_nParam = other.m_nParam;
  return *this;
}
CHtmlTreeNode::CExParam::~CExParam() = default;

// ---- CHtmlTreeNode ----

CHtmlTreeNode::CHtmlTreeNode(const CHtmlTreeNode& other)
    : CRglObject(),
      m_pParent(other.m_pParent),
      m_nNodeType(other.m_nNodeType),
      m_posToken(other.m_posToken),
      m_nTagId(other.m_nTagId),
      m_pExParam(other.m_pExParam),
      m_pStore(nullptr) {}

CHtmlTreeNode& CHtmlTreeNode::operator=(const CHtmlTreeNode& other) {
  m_pParent = other.m_pParent;
  m_nNodeType = other.m_nNodeType;
  m_posToken = other.m_posToken;
  m_nTagId = other.m_nTagId;
  m_pExParam = other.m_pExParam;
  if (m_pExParam != nullptr) NoteOwning();
  return *this;
}

CHtmlTreeNode::~CHtmlTreeNode() { delete m_pExParam; }

int CHtmlTreeNode::SetExParam(CExParam* pParam) {
  if (pParam != m_pExParam) delete m_pExParam;
  m_pExParam = pParam;
  if (pParam != nullptr) NoteOwning();
  return 1;
}

CHtmlTreeNode* CHtmlTreeNode::GetNextSiblingNode() const {
  if (m_pParent == nullptr) return nullptr;
  POSITION pos = m_pParent->GetFirstChildPosition();
  while (pos != nullptr) {
    if (m_pParent->GetNextChild(pos) == this) return pos != nullptr ? m_pParent->GetNextChild(pos) : nullptr;
  }
  return nullptr;
}

CHtmlTreeNode* CHtmlTreeNode::GetPrevSiblingNode() const {
  if (m_pParent == nullptr) return nullptr;
  CHtmlTreeNode* pPrev = nullptr;
  POSITION pos = m_pParent->GetFirstChildPosition();
  while (pos != nullptr) {
    CHtmlTreeNode* pNode = m_pParent->GetNextChild(pos);
    if (pNode == this) return pPrev;
    pPrev = pNode;
  }
  return nullptr;
}

// ---- CHtmlTokenNode ----

CHtmlTokenNode::CHtmlTokenNode(const CHtmlTokenNode& other)
    : CHtmlTreeNode(other), m_pTagFormat(other.m_pTagFormat) {}

CHtmlTokenNode& CHtmlTokenNode::operator=(const CHtmlTokenNode& other) {
  CHtmlTreeNode::operator=(other);
  m_pTagFormat = other.m_pTagFormat;
  if (m_pTagFormat != nullptr) NoteOwning();
  return *this;
}

CHtmlTokenNode::~CHtmlTokenNode() { RemoveTagFormat(); }

CHtmlTagItem* CHtmlTokenNode::GetTagItem(CHtmlTokenList* pList) const {
  if (pList == nullptr || GetTokenPosition() == nullptr) return nullptr;
  return pList->GetTagItem(GetTokenPosition());
}

CHtmlTextItem* CHtmlTokenNode::GetTextItem(CHtmlTokenList* pList) const {
  if (pList == nullptr || GetTokenPosition() == nullptr) return nullptr;
  return pList->GetTextItem(GetTokenPosition());
}

int CHtmlTokenNode::SetTagFormat(CRglObject* pFormat) {
  if (pFormat == m_pTagFormat) return 1;  // already owned: deleting it would leave a dangling pointer
  RemoveTagFormat();
  m_pTagFormat = pFormat;
  if (pFormat != nullptr) NoteOwning();
  return 1;
}

int CHtmlTokenNode::RemoveTagFormat() {
  delete m_pTagFormat;
  m_pTagFormat = nullptr;
  return 1;
}

int CHtmlTokenNode::ReleaseTagFormat() {
  if (m_pTagFormat == nullptr) return 1;
  RemoveTagFormat();
  CNodeStore* store = GetNodeStore();
  if (store != nullptr && store->m_nOwningNodes > 0) --store->m_nOwningNodes;
  return 1;
}

// ---- CHtmlEntityNode ----

void CHtmlEntityNode::CChildList::GrantNodes() {
  CHtmlTokenArena& arena = m_pStore->m_Arena;
  // Most elements hold three children (start tag, text, end tag): the first
  // grant is small, later ones are a whole block.
  const int nNodes = m_nCount == 0 ? 3 : m_nBlockSize;
  CNode* pNodes = static_cast<CNode*>(arena.Allocate(sizeof(CNode) * static_cast<std::size_t>(nNodes)));
  // Chained first to last, so the first is handed out first; RemoveAll just
  // forgets them (they belong to the arena, not to the block chain).
  for (int i = nNodes - 1; i >= 0; --i) {
    pNodes[i].pNext = m_pNodeFree;
    m_pNodeFree = &pNodes[i];
  }
}

CHtmlEntityNode::~CHtmlEntityNode() {
  // Elements whose children are still to be deleted wait on a stack threaded
  // through their parent pointers, which nothing reads any more. Each is
  // deleted only once its children list is empty, so no destructor below this
  // one has anything left to do.
  CHtmlEntityNode* pPending = nullptr;
  auto release = [&pPending](CHtmlEntityNode* pNode) {
    for (POSITION pos = pNode->m_ChildList.GetHeadPosition(); pos != nullptr;) {
      CHtmlTreeNode* pChild = pNode->m_ChildList.GetNext(pos);
      if (pChild == nullptr) continue;
      if (pChild->IsEntityNode()) {
        CHtmlEntityNode* pEntity = static_cast<CHtmlEntityNode*>(pChild);
        pEntity->m_pParent = pPending;
        pPending = pEntity;
      } else if (!IsBareArenaNode(pChild)) {
        delete pChild;
      }
    }
    pNode->m_ChildList.RemoveAll();
  };
  release(this);
  while (pPending != nullptr) {
    CHtmlEntityNode* pNode = pPending;
    pPending = pNode->m_pParent;
    release(pNode);
    if (!IsBareArenaNode(pNode)) delete pNode;
  }
}

bool CHtmlEntityNode::IsBareArenaNode(const CHtmlTreeNode* pNode) {
  // A node of a tree's store that owns nothing (its children already
  // released) needs no destructor: its memory goes with the store.
  if (pNode->GetNodeStore() == nullptr || pNode->GetExParam() != nullptr) return false;
  if (pNode->IsEntityNode()) return static_cast<const CHtmlEntityNode*>(pNode)->m_ChildList.GetBlockCount() == 0;
  return static_cast<const CHtmlTokenNode*>(pNode)->GetTagFormat() == nullptr;
}

CHtmlTreeNode* CHtmlEntityNode::AddChildNode(CHtmlTreeNode* pChild) {
  if (pChild != nullptr) m_ChildList.AddTail(pChild);
  return pChild;
}

int CHtmlEntityNode::GetChildCount() const { return static_cast<int>(m_ChildList.GetCount()); }

POSITION CHtmlEntityNode::GetFirstChildPosition() const { return m_ChildList.GetHeadPosition(); }
POSITION CHtmlEntityNode::GetLastChildPosition() const { return m_ChildList.GetTailPosition(); }

CHtmlTreeNode* CHtmlEntityNode::GetNextChild(POSITION& pos) const {
  if (pos == nullptr) return nullptr;
  return m_ChildList.GetNext(pos);
}

CHtmlTreeNode* CHtmlEntityNode::GetPrevChild(POSITION& pos) const {
  if (pos == nullptr) return nullptr;
  return m_ChildList.GetPrev(pos);
}

CHtmlTreeNode* CHtmlEntityNode::GetFirstChild() const {
  return m_ChildList.IsEmpty() ? nullptr : m_ChildList.GetHead();
}

CHtmlTreeNode* CHtmlEntityNode::GetLastChild() const {
  return m_ChildList.IsEmpty() ? nullptr : m_ChildList.GetTail();
}

CHtmlTokenNode* CHtmlEntityNode::GetStartTagNode() const {
  CHtmlTreeNode* pFirst = GetFirstChild();
  if (pFirst == nullptr || !pFirst->IsTokenNode() || pFirst->GetTokenPosition() != GetTokenPosition()) return nullptr;
  return static_cast<CHtmlTokenNode*>(pFirst);
}

}  // namespace telvanix
