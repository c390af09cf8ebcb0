// Global memory blocks for the page-setup records. Every live handle is kept
// in a set, so a stale or foreign handle is refused instead of dereferenced.
#include "telvanix/platform/win_records.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_set>

namespace telvanix {

struct GlobalTag {
  std::size_t bytes;
  int locks;
  alignas(std::max_align_t) unsigned char data[1];
};

namespace {

std::mutex& GlobalBlocksLock() {
  static std::mutex lock;
  return lock;
}

// Never destroyed: blocks may still be freed by a host at process exit.
std::unordered_set<HGLOBAL>& LiveGlobalBlocks() {
  static auto* blocks = new std::unordered_set<HGLOBAL>;
  return *blocks;
}

}  // namespace

HGLOBAL GlobalAlloc(UINT flags, std::size_t bytes) {
  if (bytes > (static_cast<std::size_t>(1) << 31)) {
    return nullptr;
  }
  std::size_t total = offsetof(GlobalTag, data) + (bytes ? bytes : 1);
  void* raw = std::malloc(total);
  if (!raw) {
    return nullptr;
  }
  // Blocks are always zeroed: an uninitialised printer record is never useful.
  (void)flags;
  std::memset(raw, 0, total);
  auto* block = static_cast<GlobalTag*>(raw);
  block->bytes = bytes;
  block->locks = 0;
  try {
    std::lock_guard<std::mutex> guard(GlobalBlocksLock());
    LiveGlobalBlocks().insert(block);
  } catch (...) {
    std::free(raw);
    return nullptr;
  }
  return block;
}

LPVOID GlobalLock(HGLOBAL block) {
  std::lock_guard<std::mutex> guard(GlobalBlocksLock());
  if (!block || !LiveGlobalBlocks().count(block)) {
    return nullptr;
  }
  ++block->locks;
  return block->data;
}

BOOL GlobalUnlock(HGLOBAL block) {
  std::lock_guard<std::mutex> guard(GlobalBlocksLock());
  if (!block || !LiveGlobalBlocks().count(block) || block->locks == 0) {
    return FALSE;
  }
  --block->locks;
  return block->locks > 0 ? TRUE : FALSE;
}

std::size_t GlobalSize(HGLOBAL block) {
  std::lock_guard<std::mutex> guard(GlobalBlocksLock());
  if (!block || !LiveGlobalBlocks().count(block)) {
    return 0;
  }
  return block->bytes;
}

HGLOBAL GlobalFree(HGLOBAL block) {
  if (!block) {
    return nullptr;
  }
  {
    std::lock_guard<std::mutex> guard(GlobalBlocksLock());
    if (LiveGlobalBlocks().erase(block) == 0) {
      return block;
    }
  }
  std::free(block);
  return nullptr;
}

BOOL MessageBeep(UINT type) {
  (void)type;
  return TRUE;
}

}  // namespace telvanix
