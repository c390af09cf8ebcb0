// CRglArray: the library's growable array. Unless a grow-by step is set it
// grows geometrically by one eighth of its size, at least 4 and at most 1024
// elements per step, so attribute arrays stay small and large ones do not
// reallocate on every addition. New elements are value-initialised (zero).
#pragma once

#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "telvanix/foundation/rgl_object.h"

namespace telvanix {

template <class TYPE, class ARG_TYPE = const TYPE&>
class CRglArray : public CRglObject {
 public:
  CRglArray() : m_pData(nullptr), m_nSize(0), m_nMaxSize(0), m_nGrowBy(0) {}
  CRglArray(const CRglArray& other) : CRglArray() { Copy(other); }
  CRglArray& operator=(const CRglArray& other) {
    Copy(other);
    return *this;
  }
  ~CRglArray() override { RemoveAll(); }

  int GetSize() const { return m_nSize; }
  int GetCount() const { return m_nSize; }
  int GetUpperBound() const { return m_nSize - 1; }
  bool IsEmpty() const { return m_nSize == 0; }
  // Number of elements the current block holds.
  int GetAllocSize() const { return m_nMaxSize; }
  int GetGrowBy() const { return m_nGrowBy; }
  // 0 (or less) restores automatic growth.
  void SetGrowBy(int nGrowBy) { m_nGrowBy = nGrowBy > 0 ? nGrowBy : 0; }

  // nGrowBy >= 0 also sets the step (0 = automatic). A negative size is ignored.
  void SetSize(int nNewSize, int nGrowBy = -1) {
    if (nGrowBy >= 0)
      m_nGrowBy = nGrowBy;
    if (nNewSize < 0)
      return;
    if (nNewSize == 0) {
      DestroyRange(0, m_nSize);
      ::operator delete(static_cast<void*>(m_pData));
      m_pData = nullptr;
      m_nSize = m_nMaxSize = 0;
    } else if (!m_pData) {
      m_pData = AllocBlock(nNewSize);
      ConstructRange(0, nNewSize);
      m_nSize = m_nMaxSize = nNewSize;
    } else if (nNewSize <= m_nMaxSize) {
      if (nNewSize > m_nSize)
        ConstructRange(m_nSize, nNewSize);
      else
        DestroyRange(nNewSize, m_nSize);
      m_nSize = nNewSize;
    } else {
      int step = m_nGrowBy;
      if (step == 0) {
        step = m_nSize / 8;
        step = step < 4 ? 4 : (step > 1024 ? 1024 : step);
      }
      std::int64_t wanted = static_cast<std::int64_t>(m_nMaxSize) + step;
      int newMax = nNewSize > wanted ? nNewSize : static_cast<int>(wanted > INT32_MAX ? INT32_MAX : wanted);
      TYPE* block = AllocBlock(newMax);
      Relocate(block, m_pData, m_nSize);
      ::operator delete(static_cast<void*>(m_pData));
      m_pData = block;
      ConstructRange(m_nSize, nNewSize);
      m_nSize = nNewSize;
      m_nMaxSize = newMax;
    }
  }

  // Gives back the room beyond the size.
  void FreeExtra() {
    if (m_nSize == m_nMaxSize)
      return;
    TYPE* block = m_nSize ? AllocBlock(m_nSize) : nullptr;
    Relocate(block, m_pData, m_nSize);
    ::operator delete(static_cast<void*>(m_pData));
    m_pData = block;
    m_nMaxSize = m_nSize;
  }
  void RemoveAll() { SetSize(0); }

  // An index outside the array gives a value-initialised element.
  const TYPE& GetAt(int nIndex) const { return InRange(nIndex) ? m_pData[nIndex] : Nil(); }
  TYPE& ElementAt(int nIndex) { return InRange(nIndex) ? m_pData[nIndex] : Nil(); }
  const TYPE& operator[](int nIndex) const { return GetAt(nIndex); }
  TYPE& operator[](int nIndex) { return ElementAt(nIndex); }
  const TYPE* GetData() const { return m_pData; }
  TYPE* GetData() { return m_pData; }

  // Setting at or beyond the size first resizes to nIndex + 1; a negative
  // index is ignored.
  void SetAt(int nIndex, ARG_TYPE newElement) { SetAtGrow(nIndex, newElement); }
  void SetAtGrow(int nIndex, ARG_TYPE newElement) {
    if (nIndex < 0)
      return;
    if (nIndex >= m_nSize) {
      if (IsOwnElement(newElement)) {
        TYPE copy(newElement);
        SetSize(nIndex + 1);
        m_pData[nIndex] = std::move(copy);
        return;
      }
      SetSize(nIndex + 1);
    }
    m_pData[nIndex] = newElement;
  }
  // Index of the new element.
  int Add(ARG_TYPE newElement) {
    int index = m_nSize;
    SetAtGrow(index, newElement);
    return index;
  }
  // Index of the first appended element.
  int Append(const CRglArray& src) {
    int old = m_nSize;
    if (&src == this) {
      CRglArray copy(src);
      return Append(copy);
    }
    SetSize(m_nSize + src.m_nSize);
    for (int i = 0; i < src.m_nSize; ++i)
      m_pData[old + i] = src.m_pData[i];
    return old;
  }
  void Copy(const CRglArray& src) {
    if (&src == this)
      return;
    SetSize(src.m_nSize);
    for (int i = 0; i < src.m_nSize; ++i)
      m_pData[i] = src.m_pData[i];
  }

  // Inserts nCount copies at nIndex (an index past the end grows the array).
  void InsertAt(int nIndex, ARG_TYPE newElement, int nCount = 1) {
    if (nIndex < 0 || nCount <= 0)
      return;
    TYPE value(newElement);
    if (nIndex >= m_nSize) {
      SetSize(nIndex + nCount);
    } else {
      int oldSize = m_nSize;
      SetSize(m_nSize + nCount);
      // The tail moves up by its storage; the gap is then rebuilt.
      DestroyRange(oldSize, m_nSize);
      RelocateOverlapping(m_pData + nIndex + nCount, m_pData + nIndex, oldSize - nIndex);
      ConstructRange(nIndex, nIndex + nCount);
    }
    for (int i = 0; i < nCount; ++i)
      m_pData[nIndex + i] = value;
  }
  void InsertAt(int nStartIndex, const CRglArray* pNewArray) {
    if (!pNewArray || nStartIndex < 0 || pNewArray->m_nSize == 0)
      return;
    CRglArray copy(*pNewArray);
    InsertAt(nStartIndex, copy.m_pData[0], copy.m_nSize);
    for (int i = 0; i < copy.m_nSize; ++i)
      m_pData[nStartIndex + i] = copy.m_pData[i];
  }

  // Removes up to nCount elements from nIndex, moving the rest down.
  void RemoveAt(int nIndex, int nCount = 1) {
    if (nIndex < 0 || nCount <= 0 || nIndex >= m_nSize)
      return;
    if (nCount > m_nSize - nIndex)
      nCount = m_nSize - nIndex;
    DestroyRange(nIndex, nIndex + nCount);
    RelocateOverlapping(m_pData + nIndex, m_pData + nIndex + nCount, m_nSize - nIndex - nCount);
    m_nSize -= nCount;
  }

 protected:
  bool InRange(int nIndex) const { return nIndex >= 0 && nIndex < m_nSize; }
  bool IsOwnElement(const TYPE& value) const {
    const TYPE* p = &value;
    return m_pData && p >= m_pData && p < m_pData + m_nMaxSize;
  }
  template <class T>
  bool IsOwnElement(const T&) const { return false; }

  static TYPE& Nil() {
    thread_local TYPE s_nil{};
    s_nil = TYPE();
    return s_nil;
  }
  static TYPE* AllocBlock(int count) {
    return static_cast<TYPE*>(::operator new(static_cast<std::size_t>(count) * sizeof(TYPE)));
  }
  // Zero-filled, then value-initialised in place.
  void ConstructRange(int from, int to) {
    if (to <= from)
      return;
    std::memset(static_cast<void*>(m_pData + from), 0, static_cast<std::size_t>(to - from) * sizeof(TYPE));
    if constexpr (!std::is_trivially_default_constructible_v<TYPE>) {
      for (int i = from; i < to; ++i)
        ::new (static_cast<void*>(m_pData + i)) TYPE();
    }
  }
  void DestroyRange(int from, int to) {
    if constexpr (!std::is_trivially_destructible_v<TYPE>) {
      for (int i = from; i < to; ++i)
        m_pData[i].~TYPE();
    }
    (void)from;
    (void)to;
  }
  // Moves count live elements from src into raw storage at dst (no overlap).
  static void Relocate(TYPE* dst, TYPE* src, int count) {
    if (count <= 0)
      return;
    if constexpr (std::is_trivially_copyable_v<TYPE>) {
      std::memcpy(static_cast<void*>(dst), static_cast<const void*>(src), static_cast<std::size_t>(count) * sizeof(TYPE));
    } else {
      for (int i = 0; i < count; ++i) {
        ::new (static_cast<void*>(dst + i)) TYPE(std::move(src[i]));
        src[i].~TYPE();
      }
    }
  }
  // As Relocate, for ranges of the same block that may overlap; dst's slots
  // outside the source range are raw storage.
  static void RelocateOverlapping(TYPE* dst, TYPE* src, int count) {
    if (count <= 0 || dst == src)
      return;
    if constexpr (std::is_trivially_copyable_v<TYPE>) {
      std::memmove(static_cast<void*>(dst), static_cast<const void*>(src), static_cast<std::size_t>(count) * sizeof(TYPE));
    } else if (dst < src) {
      for (int i = 0; i < count; ++i) {
        ::new (static_cast<void*>(dst + i)) TYPE(std::move(src[i]));
        src[i].~TYPE();
      }
    } else {
      for (int i = count - 1; i >= 0; --i) {
        ::new (static_cast<void*>(dst + i)) TYPE(std::move(src[i]));
        src[i].~TYPE();
      }
    }
  }

  TYPE* m_pData;
  int m_nSize;
  int m_nMaxSize;
  int m_nGrowBy;
};

}  // namespace telvanix
