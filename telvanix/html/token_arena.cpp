#include "telvanix/html/token_arena.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>
#include <thread>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace telvanix {

namespace {
// Small: a host with a whole project open holds thousands of small pages,
// and each keeps the unused end of its last block.
constexpr std::size_t kMinBlock = 4 * 1024;
constexpr std::size_t kHeader = 16;  // keeps block data 16-aligned
// What a thread keeps of the blocks of arenas that went away: enough for
// the next few pages of usual size, not the whole of a huge one.
constexpr std::size_t kSpareLimit = 8u << 20;

struct SpareBlocks {
  void* blocks[4] = {};
  std::size_t sizes[4] = {};
  ~SpareBlocks() {
    for (void*& b : blocks) {
      std::free(b);
      b = nullptr;
    }
  }
};
thread_local SpareBlocks t_spare;

// A block this large, or any block of an arena that already holds this
// much (a page of several megabytes), is asked to be backed by huge pages
// where the system grants them on request: filling it then takes one page
// fault per 2 MB instead of one per 4 KB, which was a quarter of the time
// spent reading a 30 MB page. Blocks are filled in order, so only the last
// huge page of the last block is partly unused.
constexpr std::size_t kHugeBlock = 32u << 20;
constexpr std::uintptr_t kHugePage = 2u << 20;

void AdviseHugePages(void* block, std::size_t size) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  const auto first = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t begin = (first + kHugePage - 1) & ~(kHugePage - 1);
  const std::uintptr_t end = (first + size) & ~(kHugePage - 1);
  if (end > begin)
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);  // only advice: failure changes nothing
#else
  (void)block;
  (void)size;
#endif
}

// A kept block of at least minSize bytes, or null.
void* TakeSpare(std::size_t minSize, std::size_t& size) {
  int best = -1;
  for (int i = 0; i < 4; ++i)
    if (t_spare.blocks[i] && t_spare.sizes[i] >= minSize && (best < 0 || t_spare.sizes[i] < t_spare.sizes[best]))
      best = i;
  if (best < 0)
    return nullptr;
  void* block = t_spare.blocks[best];
  size = t_spare.sizes[best];
  t_spare.blocks[best] = nullptr;
  return block;
}

// Keeps a block for the next arena when there is room; true when kept.
bool KeepSpare(void* block, std::size_t size) {
  if (size > kSpareLimit)
    return false;
  int slot = -1;
  for (int i = 0; i < 4; ++i) {
    if (!t_spare.blocks[i]) {
      slot = i;
      break;
    }
    if (slot < 0 || t_spare.sizes[i] < t_spare.sizes[slot])
      slot = i;
  }
  if (t_spare.blocks[slot]) {
    if (t_spare.sizes[slot] >= size)
      return false;
    std::free(t_spare.blocks[slot]);
    t_spare.blocks[slot] = nullptr;
  }
  // The kept blocks together stay within the limit too: the smallest go
  // first to make room.
  for (;;) {
    std::size_t kept = size;
    int smallest = -1;
    for (int i = 0; i < 4; ++i) {
      if (!t_spare.blocks[i])
        continue;
      kept += t_spare.sizes[i];
      if (smallest < 0 || t_spare.sizes[i] < t_spare.sizes[smallest])
        smallest = i;
    }
    if (kept <= kSpareLimit || smallest < 0)
      break;
    std::free(t_spare.blocks[smallest]);
    t_spare.blocks[smallest] = nullptr;
  }
  t_spare.blocks[slot] = block;
  t_spare.sizes[slot] = size;
  return true;
}
}  // namespace

struct CHtmlTokenArena::CPrefault {
  std::thread thread;
};

CHtmlTokenArena::CHtmlTokenArena()
    : m_nUsedBefore(0),
      m_pBlocks(nullptr),
      m_pFree(nullptr),
      m_pPrefault(nullptr),
      m_pNext(nullptr),
      m_pEnd(nullptr),
      m_nReserved(0) {}

CHtmlTokenArena::~CHtmlTokenArena() {
  JoinPrefault();
  for (Block* list : {m_pBlocks, m_pFree})
    while (list) {
      Block* next = list->pNext;
      FreeBlock(list);
      list = next;
    }
}

CHtmlTokenArena::Block* CHtmlTokenArena::TakeFree(std::size_t minSize) {
  Block** best = nullptr;
  for (Block** b = &m_pFree; *b; b = &(*b)->pNext)
    if ((*b)->nSize >= minSize && (!best || (*b)->nSize < (*best)->nSize))
      best = b;
  if (!best)
    return nullptr;
  Block* block = *best;
  *best = block->pNext;
  return block;
}

void CHtmlTokenArena::FreeBlock(Block* block) {
  if (!KeepSpare(block, block->nSize))
    std::free(block);
}

std::size_t CHtmlTokenArena::GetUsedBytes() const {
  if (!m_pBlocks)
    return 0;
  return m_nUsedBefore + static_cast<std::size_t>(m_pNext - (reinterpret_cast<char*>(m_pBlocks) + kHeader));
}

void CHtmlTokenArena::NewBlock(std::size_t minSize) {
  // Grow by a thirty-second of what is already held: a large page still needs
  // few blocks (each is one allocation), and the unused end of the last one
  // stays small beside what is in use.
  std::size_t size = m_nReserved / 32;
  if (size < kMinBlock)
    size = kMinBlock;
  if (size < minSize)
    size = minSize;
  if (m_pBlocks) {
    const std::size_t used = static_cast<std::size_t>(m_pNext - (reinterpret_cast<char*>(m_pBlocks) + kHeader));
    m_nUsedBefore += used;
    if (!used) {
      // A block too small for the first request after a Reset (a page read
      // again that has grown) waits on the free list for a later one.
      Block* empty = m_pBlocks;
      m_pBlocks = empty->pNext;
      m_nReserved -= empty->nSize;
      empty->pNext = m_pFree;
      m_pFree = empty;
    }
  }
  std::size_t spareSize = 0;
  void* raw = TakeFree(size);
  if (raw)
    spareSize = static_cast<Block*>(raw)->nSize;
  else
    raw = TakeSpare(size, spareSize);
  if (raw) {
    size = spareSize;
  } else {
    raw = std::malloc(kHeader + size);
    if (!raw)
      throw std::bad_alloc();
    if (size >= kHugeBlock || m_nReserved >= kHugeBlock) {
      AdviseHugePages(raw, kHeader + size);
      StartPrefault(raw, kHeader + size);
    }
  }
  Block* block = static_cast<Block*>(raw);
  block->nSize = size;
  block->pNext = m_pBlocks;
  m_pBlocks = block;
  m_nReserved += size;
  m_pNext = static_cast<char*>(raw) + kHeader;
  m_pEnd = m_pNext + size;
}

void CHtmlTokenArena::StartPrefault(void* block, std::size_t size) {
#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
  JoinPrefault();
  // Populating changes no byte, so the writer may fill the block meanwhile;
  // a kernel without it refuses the advice and the writer faults as usual.
  const std::uintptr_t page = 4096;
  const auto first = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t begin = (first + page - 1) & ~(page - 1);
  const std::uintptr_t end = (first + size) & ~(page - 1);
  if (end <= begin)
    return;
  try {
    m_pPrefault = new CPrefault{std::thread(
        [begin, end] { madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE); })};
  } catch (...) {
    m_pPrefault = nullptr;  // no thread to spare: the writer faults as usual
  }
#else
  (void)block;
  (void)size;
#endif
}

void CHtmlTokenArena::JoinPrefault() {
  if (!m_pPrefault)
    return;
  m_pPrefault->thread.join();
  delete m_pPrefault;
  m_pPrefault = nullptr;
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
  for (Block* b = m_pBlocks; b;) {
    Block* next = b->pNext;
    if (b != keep) {
      b->pNext = m_pFree;
      m_pFree = b;
    }
    b = next;
  }
  keep->pNext = nullptr;
  m_pBlocks = keep;
  m_nUsedBefore = 0;
  m_nReserved = keep->nSize;
  m_pNext = reinterpret_cast<char*>(keep) + kHeader;
  m_pEnd = m_pNext + keep->nSize;
}

}  // namespace telvanix
