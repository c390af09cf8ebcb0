#include "telvanix/html/token_arena.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace telvanix {

namespace {
constexpr std::size_t kMinBlock = 64 * 1024;
constexpr std::size_t kHeader = 16;  // keeps block data 16-aligned
}  // namespace

CHtmlTokenArena::CHtmlTokenArena() : m_pBlocks(nullptr), m_pNext(nullptr), m_pEnd(nullptr), m_nReserved(0) {}

CHtmlTokenArena::~CHtmlTokenArena() {
  while (m_pBlocks) {
    Block* next = m_pBlocks->pNext;
    FreeBlock(m_pBlocks);
    m_pBlocks = next;
  }
}

void CHtmlTokenArena::FreeBlock(Block* block) { std::free(block); }

void CHtmlTokenArena::NewBlock(std::size_t minSize) {
  // Grow with what is already held, so a large page needs few blocks and
  // the slack stays below half of what is in use.
  std::size_t size = m_nReserved / 2;
  if (size < kMinBlock)
    size = kMinBlock;
  if (size < minSize)
    size = minSize;
  void* raw = std::malloc(kHeader + size);
  if (!raw)
    throw std::bad_alloc();
  Block* block = static_cast<Block*>(raw);
  block->nSize = size;
  block->pNext = m_pBlocks;
  m_pBlocks = block;
  m_nReserved += size;
  m_pNext = static_cast<char*>(raw) + kHeader;
  m_pEnd = m_pNext + size;
}

void* CHtmlTokenArena::AllocateSlow(std::size_t size) {
  NewBlock(size);
  void* p = m_pNext;
  m_pNext += size;
  return p;
}

char* CHtmlTokenArena::CopyText(const void* text, std::size_t n) {
  char* p = static_cast<char*>(Allocate(n + 1));
  if (n)
    std::memcpy(p, text, n);
  p[n] = 0;
  return p;
}

void CHtmlTokenArena::Reserve(std::size_t size) {
  if (static_cast<std::size_t>(m_pEnd - m_pNext) >= size)
    return;
  NewBlock(size);
}

void CHtmlTokenArena::Reset() {
  if (!m_pBlocks)
    return;
  Block* keep = m_pBlocks;
  for (Block* b = m_pBlocks->pNext; b; b = b->pNext)
    if (b->nSize > keep->nSize)
      keep = b;
  Block* b = m_pBlocks;
  while (b) {
    Block* next = b->pNext;
    if (b != keep)
      FreeBlock(b);
    b = next;
  }
  keep->pNext = nullptr;
  m_pBlocks = keep;
  m_nReserved = keep->nSize;
  m_pNext = reinterpret_cast<char*>(keep) + kHeader;
  m_pEnd = m_pNext + keep->nSize;
}

}  // namespace telvanix
