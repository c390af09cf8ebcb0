// The storage a token list draws its tokens from while it reads a page: one
// bump allocator per list, emptied as a whole when the list is cleared and
// reused for the next page. A page averages about a dozen bytes a token, so
// the fixed cost of one heap allocation per token, attribute or text would
// dominate reading; here each of them is a pointer increment. Blocks of an
// arena that goes away are kept for the next arena of the same thread, so a
// host that makes one document per page still reuses the memory.
#pragma once

#include <cstddef>

#include "telvanix/platform/export.h"

namespace telvanix {

class TELVANIX_API CHtmlTokenArena {
 public:
  CHtmlTokenArena();
  CHtmlTokenArena(const CHtmlTokenArena&) = delete;
  CHtmlTokenArena& operator=(const CHtmlTokenArena&) = delete;
  ~CHtmlTokenArena();

  // size bytes aligned to 8; never null (throws std::bad_alloc like new).
  void* Allocate(std::size_t size) {
    size = (size + 7) & ~static_cast<std::size_t>(7);
    if (static_cast<std::size_t>(m_pEnd - m_pNext) < size)
      return AllocateSlow(size);
    void* p = m_pNext;
    m_pNext += size;
    return p;
  }
  // A copy of n bytes followed by a zero byte.
  char* CopyText(const void* text, std::size_t n);

  // Makes room for at least size more bytes in one block, so that a page
  // whose size is known up front does not chain many small blocks.
  void Reserve(std::size_t size);

  // Forgets everything allocated. The blocks stay with the arena for the
  // next page (the largest in use at once, the others as they are needed),
  // so a list read again does not fault in fresh memory a second time.
  void Reset();

  // Bytes held in the blocks in use, and bytes handed out since the last
  // Reset (for measurements).
  std::size_t GetReservedBytes() const { return m_nReserved; }
  std::size_t GetUsedBytes() const;

 private:
  struct Block {
    Block* pNext;
    std::size_t nSize;  // usable bytes after the header
  };
  void* AllocateSlow(std::size_t size);
  void NewBlock(std::size_t minSize);
  // The smallest block of the free list with at least minSize bytes, unlinked; or null.
  Block* TakeFree(std::size_t minSize);
  static void FreeBlock(Block* block);
  // A block of a large page is faulted in by a second thread ahead of the
  // writer, so that the kernel clears its memory on another core.
  struct CPrefault;
  void StartPrefault(void* block, std::size_t size);
  void JoinPrefault();

  std::size_t m_nUsedBefore;  // handed out from blocks before the current one
  Block* m_pBlocks;  // current block first
  Block* m_pFree;    // blocks left from before the last Reset
  CPrefault* m_pPrefault;
  char* m_pNext;
  char* m_pEnd;
  std::size_t m_nReserved;
};

}  // namespace telvanix
