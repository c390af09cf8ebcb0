#include "telvanix/foundation/url_utils.h"

#include <strings.h>

#include <cstring>
#include <string>

#include "telvanix/foundation/path_utils.h"
#include "telvanix/foundation/url_tables.h"

namespace telvanix {

namespace {

// Prepared while the library loads, so lookups from many threads only read.
const bool g_bTablesPrepared = [] {
  QuickMapStringToValue(g_tUrlSchemeTable, sizeof(g_tUrlSchemeTable), "http", FALSE);
  QuickMapStringToValue(g_tMultimediaExtTable, sizeof(g_tMultimediaExtTable), ".wav", FALSE);
  return true;
}();

}  // namespace

BOOL IsRemoteUrlEx(const char* url) {
  if (!url) return FALSE;
  if (const char* colon = std::strchr(url, ':')) {
    const std::string scheme(url, static_cast<size_t>(colon - url));
    return QuickMapStringToValue(g_tUrlSchemeTable, sizeof(g_tUrlSchemeTable), scheme.c_str(), FALSE) != -1;
  }
  return strncasecmp(url, "www.", 4) == 0;
}

BOOL IsSupportedMultimediaFileExtName(const char* ext) {
  if (!ext || !*ext) return FALSE;
  return QuickMapStringToValue(g_tMultimediaExtTable, sizeof(g_tMultimediaExtTable), ext, FALSE) != -1;
}

BOOL IsSupportedMultimediaFileName(const char* path) {
  if (!path) return FALSE;
  char ext[kMaxExt];
  SplitPath(path, nullptr, nullptr, nullptr, ext);
  return IsSupportedMultimediaFileExtName(ext);
}

}  // namespace telvanix
