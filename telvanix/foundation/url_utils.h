// URL classification: which links leave the project (a known scheme or
// "www.") and which file extensions are multimedia. Both lookups are
// case-blind keyword searches over tables prepared once.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// 1 when the text before the first ":" is a known scheme ("http", "file",
// "javascript", ...; so "C:" is not one), or, without ":", when the text
// begins with "www." in any letter case. 0 for null.
TELVANIX_API BOOL IsRemoteUrlEx(const char* url);

// 1 for a multimedia extension given with its dot (".wav", ".MP3", ...).
TELVANIX_API BOOL IsSupportedMultimediaFileExtName(const char* ext);
// 1 when the path's extension is a multimedia one.
TELVANIX_API BOOL IsSupportedMultimediaFileName(const char* path);

}  // namespace telvanix
