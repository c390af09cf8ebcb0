// The resources compiled into the library, read through module_resources.h.
#pragma once

#include "telvanix/platform/types.h"

namespace telvanix {

struct StringResourceItem {
  UINT nId;
  const char* pszText;
};

extern const StringResourceItem g_tStringResourceTable[];
extern const int g_nStringResourceTableSize;

// Raw-data resource 4001, not zero-terminated as far as its size goes.
extern const char g_szDefaultStyleSheet[];
extern const int g_nDefaultStyleSheetSize;

}  // namespace telvanix
