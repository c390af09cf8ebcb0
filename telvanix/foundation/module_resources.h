// The library's own resources: a string table (ids 3000 to 3020) and the
// default stylesheet (raw-data resource 4001), compiled into the library.
// A module is named as a host would name it: null or "telvanix.dll" or the
// shared object's own file name mean this library; any other name is a
// module that is not loaded.
#pragma once

#include <cstdint>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

constexpr UINT IDR_DEFAULT_STYLESHEET = 4001;
constexpr UINT RT_RCDATA_ID = 10;  // resource type of raw data

// A resource id passed where a name is expected.
#ifndef MAKEINTRESOURCE
#define MAKEINTRESOURCE(id) (reinterpret_cast<const char*>(static_cast<std::uintptr_t>(static_cast<::telvanix::WORD>(id))))
#endif
#ifndef IS_INTRESOURCE
#define IS_INTRESOURCE(p) ((reinterpret_cast<std::uintptr_t>(p) >> 16) == 0)
#endif

// Loads string `id` (at most 255 characters) into *out; an id with no
// string gives "" and still 1. 0 for a null out or a module that is not
// loaded, and then *out is left as it was.
TELVANIX_API int LoadStringResource(CString* out, UINT id, const char* module);

// Assigns the bytes of raw-data resource `name` (an id through
// MAKEINTRESOURCE, or "#4001") to *out, exact size. 0 for a null out or
// name, an unknown module or resource; *out is then untouched.
TELVANIX_API int LoadBinaryResource(CByteString* out, const char* name, const char* module);

// The shared object's own file name (as loaded), for hosts that name the
// module that way; empty when it cannot be told.
TELVANIX_API CString GetModuleFileNameOfLibrary();

}  // namespace telvanix
