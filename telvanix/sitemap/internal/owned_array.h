// Arrays of owned object pointers as the sitemap classes keep them: the
// container deletes its objects and copies them deeply.
#pragma once

#include "telvanix/foundation/rgl_array.h"

namespace telvanix::sitemap_detail {

template <class T>
void DeleteOwned(CRglArray<T*, T*>& array) {
  for (int i = 0; i < array.GetSize(); ++i)
    delete array.GetAt(i);
  array.RemoveAll();
}

// dst must hold no objects of its own (they would leak).
template <class T>
void CopyOwned(CRglArray<T*, T*>& dst, const CRglArray<T*, T*>& src) {
  dst.RemoveAll();
  dst.SetSize(0);
  for (int i = 0; i < src.GetSize(); ++i) {
    T* item = src.GetAt(i);
    if (item)
      dst.Add(new T(*item));
  }
}

template <class T>
T* OwnedAt(const CRglArray<T*, T*>& array, int index) {
  return index >= 0 && index < array.GetSize() ? array.GetAt(index) : nullptr;
}

template <class T>
int AddOwned(CRglArray<T*, T*>& array, T* item) {
  return item ? array.Add(item) : -1;
}

}  // namespace telvanix::sitemap_detail
