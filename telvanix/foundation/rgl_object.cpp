#include "telvanix/foundation/rgl_object.h"

#include <cstdint>
#include <new>

namespace telvanix {

CRglObject::~CRglObject() = default;

void* CRglObject::operator new(std::size_t size) { return ::operator new(size); }
void* CRglObject::operator new[](std::size_t size) { return ::operator new[](size); }
void CRglObject::operator delete(void* p) noexcept { ::operator delete(p); }
void CRglObject::operator delete[](void* p) noexcept { ::operator delete[](p); }

CRglPlex* CRglPlex::Create(CRglPlex*& head, UINT count, UINT elementSize) {
  if (count == 0 || elementSize == 0)
    return nullptr;
  std::uint64_t bytes = static_cast<std::uint64_t>(count) * elementSize;
  if (bytes > SIZE_MAX - sizeof(CRglPlex))
    return nullptr;
  auto* block = static_cast<CRglPlex*>(::operator new(sizeof(CRglPlex) + static_cast<std::size_t>(bytes)));
  block->pNext = head;
  head = block;
  return block;
}

void CRglPlex::FreeDataChain() {
  CRglPlex* block = this;
  while (block) {
    CRglPlex* next = block->pNext;
    ::operator delete(static_cast<void*>(block));
    block = next;
  }
}

}  // namespace telvanix
