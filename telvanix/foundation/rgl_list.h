// CRglList: the library's doubly linked list, addressed by POSITION (a node
// handle, null meaning none). Nodes come from CRglPlex blocks of a per-list
// block size, so a page of thousands of tokens makes one allocation per block
// rather than per token; blocks are only released when the list is emptied.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

#include "telvanix/foundation/rgl_object.h"

namespace telvanix {

template <class TYPE, class ARG_TYPE = const TYPE&>
class CRglList : public CRglObject {
 protected:
  struct CNode {
    CNode* pNext;
    CNode* pPrev;
    alignas(TYPE) unsigned char storage[sizeof(TYPE)];
    TYPE& data() { return *std::launder(reinterpret_cast<TYPE*>(storage)); }
  };
  static_assert(alignof(CNode) <= alignof(CRglPlex), "list nodes must fit the block alignment");

 public:
  explicit CRglList(int nBlockSize = 10)
      : m_pNodeHead(nullptr), m_pNodeTail(nullptr), m_nCount(0), m_pNodeFree(nullptr),
        m_pBlocks(nullptr), m_nBlockSize(nBlockSize > 0 ? nBlockSize : 10), m_pBlockSource(nullptr),
        m_pBlockContext(nullptr) {}
  CRglList(const CRglList&) = delete;
  CRglList& operator=(const CRglList&) = delete;
  ~CRglList() override { RemoveAll(); }

  int GetCount() const { return m_nCount; }
  int GetSize() const { return m_nCount; }
  bool IsEmpty() const { return m_nCount == 0; }

  // On an empty list these give a value-initialised element (null for pointers).
  TYPE& GetHead() { return m_pNodeHead ? m_pNodeHead->data() : Nil(); }
  const TYPE& GetHead() const { return m_pNodeHead ? m_pNodeHead->data() : Nil(); }
  TYPE& GetTail() { return m_pNodeTail ? m_pNodeTail->data() : Nil(); }
  const TYPE& GetTail() const { return m_pNodeTail ? m_pNodeTail->data() : Nil(); }

  TYPE RemoveHead() {
    if (!m_pNodeHead)
      return TYPE();
    CNode* node = m_pNodeHead;
    TYPE value(std::move(node->data()));
    m_pNodeHead = node->pNext;
    if (m_pNodeHead)
      m_pNodeHead->pPrev = nullptr;
    else
      m_pNodeTail = nullptr;
    FreeNode(node);
    return value;
  }
  TYPE RemoveTail() {
    if (!m_pNodeTail)
      return TYPE();
    CNode* node = m_pNodeTail;
    TYPE value(std::move(node->data()));
    m_pNodeTail = node->pPrev;
    if (m_pNodeTail)
      m_pNodeTail->pNext = nullptr;
    else
      m_pNodeHead = nullptr;
    FreeNode(node);
    return value;
  }

  POSITION AddHead(ARG_TYPE newElement) {
    CNode* node = NewNode(nullptr, m_pNodeHead, newElement);
    if (m_pNodeHead)
      m_pNodeHead->pPrev = node;
    else
      m_pNodeTail = node;
    m_pNodeHead = node;
    return Pos(node);
  }
  POSITION AddTail(ARG_TYPE newElement) {
    CNode* node = NewNode(m_pNodeTail, nullptr, newElement);
    if (m_pNodeTail)
      m_pNodeTail->pNext = node;
    else
      m_pNodeHead = node;
    m_pNodeTail = node;
    return Pos(node);
  }
  // Copies the other list's elements in front of / after this list's.
  void AddHead(const CRglList* pNewList) {
    if (!pNewList || pNewList == this)
      return;
    for (CNode* node = pNewList->m_pNodeTail; node; node = node->pPrev)
      AddHead(node->data());
  }
  void AddTail(const CRglList* pNewList) {
    if (!pNewList || pNewList == this)
      return;
    for (CNode* node = pNewList->m_pNodeHead; node; node = node->pNext)
      AddTail(node->data());
  }

  // Destroys every element and frees the whole block chain.
  void RemoveAll() {
    if constexpr (!std::is_trivially_destructible_v<TYPE>) {
      for (CNode* node = m_pNodeHead; node; node = node->pNext)
        node->data().~TYPE();
    }
    m_nCount = 0;
    m_pNodeHead = m_pNodeTail = m_pNodeFree = nullptr;
    if (m_pBlocks && !m_pBlockSource)
      m_pBlocks->FreeDataChain();
    m_pBlocks = nullptr;
  }

  // Node blocks drawn from an outside allocator (e.g. an arena) instead of
  // the heap. The list never frees such blocks: their owner does, after the
  // list is emptied. Takes effect for blocks made from now on.
  using BlockSource = void* (*)(void* pContext, std::size_t nBytes);
  void SetBlockSource(BlockSource pSource, void* pContext) {
    if (m_pBlocks && m_pBlockSource != pSource)
      RemoveAll();
    m_pBlockSource = pSource;
    m_pBlockContext = pContext;
  }

  POSITION GetHeadPosition() const { return Pos(m_pNodeHead); }
  POSITION GetTailPosition() const { return Pos(m_pNodeTail); }

  // Element at rPosition, which moves on to the next (previous) node; a null
  // position gives a value-initialised element and stays null.
  TYPE& GetNext(POSITION& rPosition) {
    CNode* node = Node(rPosition);
    if (!node)
      return Nil();
    rPosition = Pos(node->pNext);
    return node->data();
  }
  const TYPE& GetNext(POSITION& rPosition) const {
    CNode* node = Node(rPosition);
    if (!node)
      return Nil();
    rPosition = Pos(node->pNext);
    return node->data();
  }
  TYPE& GetPrev(POSITION& rPosition) {
    CNode* node = Node(rPosition);
    if (!node)
      return Nil();
    rPosition = Pos(node->pPrev);
    return node->data();
  }
  const TYPE& GetPrev(POSITION& rPosition) const {
    CNode* node = Node(rPosition);
    if (!node)
      return Nil();
    rPosition = Pos(node->pPrev);
    return node->data();
  }

  TYPE& GetAt(POSITION position) { return position ? Node(position)->data() : Nil(); }
  const TYPE& GetAt(POSITION position) const { return position ? Node(position)->data() : Nil(); }
  void SetAt(POSITION position, ARG_TYPE newElement) {
    if (position)
      Node(position)->data() = newElement;
  }

  void RemoveAt(POSITION position) {
    CNode* node = Node(position);
    if (!node)
      return;
    if (node == m_pNodeHead)
      m_pNodeHead = node->pNext;
    else
      node->pPrev->pNext = node->pNext;
    if (node == m_pNodeTail)
      m_pNodeTail = node->pPrev;
    else
      node->pNext->pPrev = node->pPrev;
    FreeNode(node);
  }

  // A null position inserts at the head (before) or the tail (after).
  POSITION InsertBefore(POSITION position, ARG_TYPE newElement) {
    CNode* old = Node(position);
    if (!old)
      return AddHead(newElement);
    CNode* node = NewNode(old->pPrev, old, newElement);
    if (old->pPrev)
      old->pPrev->pNext = node;
    else
      m_pNodeHead = node;
    old->pPrev = node;
    return Pos(node);
  }
  POSITION InsertAfter(POSITION position, ARG_TYPE newElement) {
    CNode* old = Node(position);
    if (!old)
      return AddTail(newElement);
    CNode* node = NewNode(old, old->pNext, newElement);
    if (old->pNext)
      old->pNext->pPrev = node;
    else
      m_pNodeTail = node;
    old->pNext = node;
    return Pos(node);
  }

  // First node equal to value after startAfter (from the head when null), or null.
  POSITION Find(ARG_TYPE searchValue, POSITION startAfter = nullptr) const {
    CNode* node = startAfter ? Node(startAfter)->pNext : m_pNodeHead;
    for (; node; node = node->pNext)
      if (node->data() == searchValue)
        return Pos(node);
    return nullptr;
  }
  // Node at a zero-based index, or null when out of range.
  POSITION FindIndex(int nIndex) const {
    if (nIndex < 0 || nIndex >= m_nCount)
      return nullptr;
    CNode* node = m_pNodeHead;
    while (nIndex-- > 0)
      node = node->pNext;
    return Pos(node);
  }

  int GetBlockSize() const { return m_nBlockSize; }
  // Number of node blocks currently held.
  int GetBlockCount() const {
    int n = 0;
    for (CRglPlex* block = m_pBlocks; block; block = block->pNext)
      ++n;
    return n;
  }

 protected:
  static CNode* Node(POSITION position) { return reinterpret_cast<CNode*>(position); }
  static POSITION Pos(const CNode* node) { return reinterpret_cast<POSITION>(const_cast<CNode*>(node)); }
  static TYPE& Nil() {
    thread_local TYPE s_nil{};
    s_nil = TYPE();
    return s_nil;
  }

  CNode* NewNode(CNode* pPrev, CNode* pNext, ARG_TYPE value) {
    if (!m_pNodeFree) {
      CRglPlex* block;
      if (m_pBlockSource) {
        block = static_cast<CRglPlex*>(
            m_pBlockSource(m_pBlockContext, sizeof(CRglPlex) + sizeof(CNode) * static_cast<std::size_t>(m_nBlockSize)));
        if (block) {
          block->pNext = m_pBlocks;
          m_pBlocks = block;
        }
      } else {
        block = CRglPlex::Create(m_pBlocks, static_cast<UINT>(m_nBlockSize), sizeof(CNode));
      }
      if (!block)
        throw std::bad_alloc();
      // Pushed last to first, so the block's first node is handed out first.
      CNode* node = static_cast<CNode*>(block->data()) + (m_nBlockSize - 1);
      for (int i = m_nBlockSize - 1; i >= 0; --i, --node) {
        node->pNext = m_pNodeFree;
        m_pNodeFree = node;
      }
    }
    CNode* node = m_pNodeFree;
    ::new (static_cast<void*>(node->storage)) TYPE(value);
    m_pNodeFree = m_pNodeFree->pNext;
    node->pPrev = pPrev;
    node->pNext = pNext;
    ++m_nCount;
    return node;
  }

  void FreeNode(CNode* node) {
    node->data().~TYPE();
    node->pNext = m_pNodeFree;
    m_pNodeFree = node;
    --m_nCount;
    // The last element gone counts as emptying the list: give the blocks back.
    if (m_nCount == 0)
      RemoveAll();
  }

  CNode* m_pNodeHead;
  CNode* m_pNodeTail;
  int m_nCount;
  CNode* m_pNodeFree;
  CRglPlex* m_pBlocks;
  int m_nBlockSize;
  BlockSource m_pBlockSource;
  void* m_pBlockContext;
};

}  // namespace telvanix
