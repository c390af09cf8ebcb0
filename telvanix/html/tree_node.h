// Nodes of the element tree built over a token list. A node never copies
// token text; it names a token by its list position and caches its tag id.
// An entity node (element) owns its children; a token node (leaf) stands for
// one text run or one tag and may carry a format object hung on it by a view.
#pragma once

#include <cstddef>
#include <cstdint>

#include "telvanix/foundation/rgl_list.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/html/token_arena.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CHtmlEntityNode;
class CHtmlTokenList;
class CHtmlTagItem;
class CHtmlTextItem;

class TELVANIX_API CHtmlTreeNode : public CRglObject {
 public:
  enum EmNodeType : int32_t { emTokenNode = 1, emEntityNode = 2 };

  // Tag id given to text leaves.
  enum : int32_t { emTextNodeId = 0x40000000, emEndTagIdBit = 0x10000000 };

  // A slot for the host: one integer. The library never sets one.
  class TELVANIX_API CExParam : public CRglObject {
   public:
    explicit CExParam(int nParam);
    CExParam(const CExParam& other);
    CExParam& operator=(const CExParam& other);
    ~CExParam() override;

    int GetParam() const { return m_nParam; }
    void SetParam(int nParam) { m_nParam = nParam; }

   private:
    int m_nParam;
  };

  CHtmlTreeNode(const CHtmlTreeNode& other);
  CHtmlTreeNode& operator=(const CHtmlTreeNode& other);
  ~CHtmlTreeNode() override;

  // The storage of one tree's nodes: an arena, and a count of the nodes in
  // it that were given something to own (a format, a parameter, a child made
  // elsewhere). While the count is 0 the tree goes with its arena, without a
  // walk over its nodes.
  class TELVANIX_API CNodeStore {
   public:
    CHtmlTokenArena m_Arena;
    int m_nOwningNodes = 0;
  };

  // Nodes come from the heap (plain new) or from a tree's store; delete is
  // right for both (store memory goes back with the tree).
  static void* operator new(std::size_t size);
  static void* operator new(std::size_t size, CNodeStore& store) {
    void* raw = store.m_Arena.Allocate(size + kNodeHeader);
    *static_cast<std::uint64_t*>(raw) = kNodeFromArena;
    return static_cast<char*>(raw) + kNodeHeader;
  }
  static void* operator new(std::size_t size, void* place) noexcept { (void)size; return place; }
  static void operator delete(void* p) noexcept;
  static void operator delete(void* p, CNodeStore& store) noexcept;
  static void operator delete(void* p, void* place) noexcept { (void)p; (void)place; }

  CHtmlEntityNode* GetParentNode() const { return m_pParent; }
  EmNodeType GetNodeType() const { return m_nNodeType; }
  POSITION GetTokenPosition() const { return m_posToken; }
  int GetTagId() const { return m_nTagId; }
  int IsTokenNode() const { return m_nNodeType == emTokenNode ? 1 : 0; }
  int IsEntityNode() const { return m_nNodeType == emEntityNode ? 1 : 0; }

  // The host's extra parameter; the node owns it. Setting deletes the old one.
  CExParam* GetExParam() const { return m_pExParam; }
  int SetExParam(CExParam* pParam);

  // The node after / before this one among its parent's children; null at
  // either end or for the root. Linear in the number of siblings before it:
  // to walk all children use the parent's GetFirstChildPosition/GetNextChild.
  CHtmlTreeNode* GetNextSiblingNode() const;
  CHtmlTreeNode* GetPrevSiblingNode() const;

  // The store a tree made this node in; null for a node made with plain new.
  CNodeStore* GetNodeStore() const { return m_pStore; }
  // Called by the tree right after making the node in its store.
  void SetNodeStore(CNodeStore* pStore) { m_pStore = pStore; }

 protected:
  CHtmlTreeNode(CHtmlEntityNode* pParent, EmNodeType nType, POSITION pos, int nTagId)
      : m_pParent(pParent),
        m_nNodeType(nType),
        m_posToken(pos),
        m_nTagId(nTagId),
        m_pExParam(nullptr),
        m_pStore(nullptr) {}

  // The node was given something to own: its tree can no longer be dropped
  // without a walk.
  void NoteOwning() {
    if (m_pStore != nullptr) ++m_pStore->m_nOwningNodes;
  }

  // One word in front of every node tells where its memory came from, so
  // that delete is right for nodes of a tree's storage and a host's own.
  static constexpr std::size_t kNodeHeader = 8;
  static constexpr std::uint64_t kNodeFromHeap = 0x48454150u;
  static constexpr std::uint64_t kNodeFromArena = 0x4152454eu;

  CHtmlEntityNode* m_pParent;

 private:
  EmNodeType m_nNodeType;
  POSITION m_posToken;
  int m_nTagId;
  CExParam* m_pExParam;
  CNodeStore* m_pStore;  // not copied: a copy lives elsewhere
};

// A leaf: a text run, an empty element, an element's own start or end tag,
// or a stray end tag.
class TELVANIX_API CHtmlTokenNode : public CHtmlTreeNode {
 public:
  CHtmlTokenNode(CHtmlEntityNode* pParent, POSITION pos, int nTagId)
      : CHtmlTreeNode(pParent, emTokenNode, pos, nTagId), m_pTagFormat(nullptr) {}
  // Shallow: the format pointer is shared, not duplicated.
  CHtmlTokenNode(const CHtmlTokenNode& other);
  CHtmlTokenNode& operator=(const CHtmlTokenNode& other);
  ~CHtmlTokenNode() override;

  // Bit 30 of the tag id decides; every other leaf counts as a tag.
  int IsTextNode() const { return (GetTagId() & emTextNodeId) != 0 ? 1 : 0; }
  int IsTagNode() const { return IsTextNode() ? 0 : 1; }

  // The token this leaf names, typed; null for a null list or position, or
  // when the token is of the other type.
  CHtmlTagItem* GetTagItem(CHtmlTokenList* pList) const;
  CHtmlTextItem* GetTextItem(CHtmlTokenList* pList) const;

  // The leaf owns its format: setting deletes the previous one. Returns 1.
  int SetTagFormat(CRglObject* pFormat);
  CRglObject* GetTagFormat() const { return m_pTagFormat; }
  int RemoveTagFormat();
  // RemoveTagFormat that also takes back the owning mark SetTagFormat made,
  // for a holder that drops formats it set: a tree whose nodes then own
  // nothing goes with its arena, without a walk over its nodes. Returns 1.
  int ReleaseTagFormat();

 private:
  CRglObject* m_pTagFormat;
};

// An element: its start tag's leaf first, then its content in document order,
// then the leaf of its end tag when one closed it. The root has no parent, no
// position and tag id 0.
class TELVANIX_API CHtmlEntityNode : public CHtmlTreeNode {
 public:
  // The children, in document order. A list like any other, except that the
  // tree builder can hand it list nodes from the tree's storage, so building
  // allocates nothing per element.
  class TELVANIX_API CChildList : public CRglList<CHtmlTreeNode*> {
   public:
    CChildList() : CRglList<CHtmlTreeNode*>(10), m_pStore(nullptr) {}

    // The insertions of the list, noting in the store children that were
    // not made in it (they must be deleted with the tree) and drawing list
    // nodes from the store's arena.
    POSITION AddHead(CHtmlTreeNode* pChild) { Admit(pChild); return CRglList::AddHead(pChild); }
    POSITION AddTail(CHtmlTreeNode* pChild) { Admit(pChild); return CRglList::AddTail(pChild); }
    POSITION InsertBefore(POSITION pos, CHtmlTreeNode* pChild) {
      Admit(pChild);
      return CRglList::InsertBefore(pos, pChild);
    }
    POSITION InsertAfter(POSITION pos, CHtmlTreeNode* pChild) {
      Admit(pChild);
      return CRglList::InsertAfter(pos, pChild);
    }
    void SetAt(POSITION pos, CHtmlTreeNode* pChild) {
      Admit(pChild);
      CRglList::SetAt(pos, pChild);
    }

    CNodeStore* GetNodeStore() const { return m_pStore; }
    void SetNodeStore(CNodeStore* pStore) { m_pStore = pStore; }

   private:
    void Admit(CHtmlTreeNode* pChild) {
      if (m_pStore == nullptr) return;
      if (pChild == nullptr || pChild->GetNodeStore() != m_pStore) ++m_pStore->m_nOwningNodes;
      if (m_pNodeFree == nullptr) GrantNodes();
    }
    // A block of list nodes from the store's arena.
    void GrantNodes();

    CNodeStore* m_pStore;
  };

  CHtmlEntityNode(CHtmlEntityNode* pParent, POSITION pos, int nTagId)
      : CHtmlTreeNode(pParent, emEntityNode, pos, nTagId) {}
  // An element owns its children, so it cannot be copied.
  CHtmlEntityNode(const CHtmlEntityNode&) = delete;
  CHtmlEntityNode& operator=(const CHtmlEntityNode&) = delete;
  // Deletes the whole subtree without recursing (and without allocating), so
  // a page nested thousands of levels deep cannot exhaust the call stack.
  ~CHtmlEntityNode() override;

  // Appends a child (taking ownership) and returns it.
  CHtmlTreeNode* AddChildNode(CHtmlTreeNode* pChild);

  int GetChildCount() const;
  // Walks the children in document order: GetFirstChildPosition, then
  // GetNextChild until the position is null.
  POSITION GetFirstChildPosition() const;
  POSITION GetLastChildPosition() const;
  CHtmlTreeNode* GetNextChild(POSITION& pos) const;
  CHtmlTreeNode* GetPrevChild(POSITION& pos) const;
  CHtmlTreeNode* GetFirstChild() const;
  CHtmlTreeNode* GetLastChild() const;

  // The leaf of the element's start tag (its first child), when it is one.
  CHtmlTokenNode* GetStartTagNode() const;

  // Reached directly by the tree builder and the walkers.
  CChildList m_ChildList;

 private:
  static bool IsBareArenaNode(const CHtmlTreeNode* pNode);
};

}  // namespace telvanix
