// The root of the library's class family and the block storage its lists
// draw their nodes from. Every class derived from CRglObject is created and
// freed through the class-level operators below.
#pragma once

#include <cstddef>

#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CRglObject {
 public:
  CRglObject() = default;
  virtual ~CRglObject();

  // Forward to the global allocator unchanged.
  static void* operator new(std::size_t size);
  static void* operator new[](std::size_t size);
  static void* operator new(std::size_t size, void* place) noexcept { (void)size; return place; }
  static void operator delete(void* p) noexcept;
  static void operator delete[](void* p) noexcept;
  static void operator delete(void* p, void* place) noexcept { (void)p; (void)place; }
};

// One block of equal-sized elements, preceded by the link to the next block.
// A container keeps the head of the chain and frees the chain as a whole.
struct TELVANIX_API CRglPlex {
  CRglPlex* pNext;

  void* data() { return this + 1; }

  // Allocates room for count elements of elementSize bytes, pushes the block
  // on the front of the chain and returns it. Null for a zero or overflowing
  // request (the chain is then unchanged).
  static CRglPlex* Create(CRglPlex*& head, UINT count, UINT elementSize);
  // Frees this block and every block after it in the chain.
  void FreeDataChain();
};

}  // namespace telvanix
