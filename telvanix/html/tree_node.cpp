#include "telvanix/html/tree_node.h"

#include "telvanix/html/token_list.h"

namespace telvanix {

// ---- CHtmlTreeNode::CExParam ----

CHtmlTreeNode::CExParam::CExParam(int nParam) : m_nParam(nParam) {}
CHtmlTreeNode::CExParam::CExParam(const CExParam& other) : CRglObject(), m_nParam(other.m_nParam) {}
CHtmlTreeNode::CExParam& CHtmlTreeNode::CExParam::operator=(const CExParam& other) {
  m_nParam = other.m_nParam;
  return *this;
}
CHtmlTreeNode::CExParam::~CExParam() = default;

// ---- CHtmlTreeNode ----

CHtmlTreeNode::CHtmlTreeNode(CHtmlEntityNode* pParent, EmNodeType nType, POSITION pos, int nTagId)
    : m_pParent(pParent), m_nNodeType(nType), m_posToken(pos), m_nTagId(nTagId), m_pExParam(nullptr) {}

CHtmlTreeNode::CHtmlTreeNode(const CHtmlTreeNode& other)
    : CRglObject(),
      m_pParent(other.m_pParent),
      m_nNodeType(other.m_nNodeType),
      m_posToken(other.m_posToken),
      m_nTagId(other.m_nTagId),
      m_pExParam(other.m_pExParam) {}

CHtmlTreeNode& CHtmlTreeNode::operator=(const CHtmlTreeNode& other) {
  m_pParent = other.m_pParent;
  m_nNodeType = other.m_nNodeType;
  m_posToken = other.m_posToken;
  m_nTagId = other.m_nTagId;
  m_pExParam = other.m_pExParam;
  return *this;
}

CHtmlTreeNode::~CHtmlTreeNode() { delete m_pExParam; }

int CHtmlTreeNode::SetExParam(CExParam* pParam) {
  if (pParam != m_pExParam) delete m_pExParam;
  m_pExParam = pParam;
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

CHtmlTokenNode::CHtmlTokenNode(CHtmlEntityNode* pParent, POSITION pos, int nTagId)
    : CHtmlTreeNode(pParent, emTokenNode, pos, nTagId), m_pTagFormat(nullptr) {}

CHtmlTokenNode::CHtmlTokenNode(const CHtmlTokenNode& other)
    : CHtmlTreeNode(other), m_pTagFormat(other.m_pTagFormat) {}

CHtmlTokenNode& CHtmlTokenNode::operator=(const CHtmlTokenNode& other) {
  CHtmlTreeNode::operator=(other);
  m_pTagFormat = other.m_pTagFormat;
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
  return 1;
}

int CHtmlTokenNode::RemoveTagFormat() {
  delete m_pTagFormat;
  m_pTagFormat = nullptr;
  return 1;
}

// ---- CHtmlEntityNode ----

CHtmlEntityNode::CHtmlEntityNode(CHtmlEntityNode* pParent, POSITION pos, int nTagId)
    : CHtmlTreeNode(pParent, emEntityNode, pos, nTagId), m_ChildList(10) {}

CHtmlEntityNode::~CHtmlEntityNode() {
  // Each element's children are moved onto this list before the element is
  // deleted, so no destructor below this one ever has children to delete.
  // They are moved before the element leaves the list, so the list does not
  // run empty (and give back its block) once per level of a deep chain.
  while (!m_ChildList.IsEmpty()) {
    CHtmlTreeNode* pNode = m_ChildList.GetHead();
    if (pNode != nullptr && pNode->IsEntityNode()) {
      CChildList& grand = static_cast<CHtmlEntityNode*>(pNode)->m_ChildList;
      while (!grand.IsEmpty()) m_ChildList.AddTail(grand.RemoveHead());
    }
    m_ChildList.RemoveHead();
    delete pNode;
  }
  m_ChildList.RemoveAll();
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
