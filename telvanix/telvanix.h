// The one header a host includes: every public header of the library.
#pragma once

#include "telvanix/platform/types.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/platform/path_lookup.h"
#include "telvanix/platform/file.h"
#include "telvanix/platform/file_mapping.h"
#include "telvanix/foundation/byte_string.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/foundation/rgl_list.h"
#include "telvanix/foundation/rgl_array.h"
