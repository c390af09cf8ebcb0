// Keyword tables: static arrays of QuickMapStringToValueItem rows searched
// case-blind through the folding hash. A table's hash fields are filled and
// its rows sorted by hash the first time it is searched, once, under a lock
// shared by all tables; afterwards lookups only read it.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

struct QuickMapStringToValueItem {
  DWORD dwHashCode;      // 0 until the table is prepared
  const char* pszKey;
  int nValue;
};

// Value of the row whose keyword matches `text`, or -1. `tableBytes` is
// sizeof(table). With `exact` 0 only the hashes are compared (case-blind,
// equal hashes are not told apart); otherwise the keyword must also equal
// `text` byte for byte. The table is reordered when first searched.
TELVANIX_API int QuickMapStringToValue(QuickMapStringToValueItem* table, int tableBytes,
                                       const char* text, BOOL exact);

}  // namespace telvanix
