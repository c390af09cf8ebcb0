#include "telvanix/foundation/keyword_map.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <vector>

#include "telvanix/foundation/hash_fold.h"

namespace telvanix {

namespace {

std::mutex& PrepareLock() {
  static std::mutex lock;
  return lock;
}

// The first row's hash doubles as the "prepared" flag, so it is published
// last: a reader that sees it non-zero sees every other row already sorted.
void PrepareTable(QuickMapStringToValueItem* table, int rows) {
  std::lock_guard<std::mutex> guard(PrepareLock());
  if (std::atomic_ref<DWORD>(table[0].dwHashCode).load(std::memory_order_relaxed) != 0) return;
  std::vector<QuickMapStringToValueItem> sorted(table, table + rows);
  for (auto& row : sorted) row.dwHashCode = GenHashCode(row.pszKey);
  std::sort(sorted.begin(), sorted.end(),
            [](const QuickMapStringToValueItem& a, const QuickMapStringToValueItem& b) {
              return a.dwHashCode < b.dwHashCode;
            });
  for (int i = 1; i < rows; ++i) table[i] = sorted[static_cast<size_t>(i)];
  table[0].pszKey = sorted[0].pszKey;
  table[0].nValue = sorted[0].nValue;
  std::atomic_ref<DWORD>(table[0].dwHashCode).store(sorted[0].dwHashCode, std::memory_order_release);
}

bool SameKey(const char* key, const char* text) {
  return key != nullptr && std::strcmp(key, text) == 0;
}

}  // namespace

int QuickMapStringToValue(QuickMapStringToValueItem* table, int tableBytes, const char* text,
                          BOOL exact) {
  if (!table || !text || tableBytes <= 0) return -1;
  const int rows = tableBytes / static_cast<int>(sizeof(QuickMapStringToValueItem));
  if (rows <= 0) return -1;
  if (std::atomic_ref<DWORD>(table[0].dwHashCode).load(std::memory_order_acquire) == 0)
    PrepareTable(table, rows);

  const DWORD hash = GenHashCode(text);
  int lo = 0;
  int hi = rows - 1;
  int found = -1;
  while (lo <= hi) {
    const int mid = lo + (hi - lo) / 2;
    const DWORD h = table[mid].dwHashCode;
    if (h == hash) {
      found = mid;
      break;
    }
    if (h < hash) lo = mid + 1;
    else hi = mid - 1;
  }
  if (found < 0) return -1;
  if (!exact) return table[found].nValue;

  if (SameKey(table[found].pszKey, text)) return table[found].nValue;
  int first = found;
  while (first > 0 && table[first - 1].dwHashCode == hash) --first;
  for (int i = first; i < rows && table[i].dwHashCode == hash; ++i)
    if (SameKey(table[i].pszKey, text)) return table[i].nValue;
  return -1;
}

}  // namespace telvanix
