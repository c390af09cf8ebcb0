#include "telvanix/foundation/module_resources.h"

#include <dlfcn.h>
#include <strings.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "telvanix/foundation/internal/module_resources_data.h"

namespace telvanix {

namespace {

// The names this library answers to, found once from the loader's record of
// the object that holds this function.
struct ModuleIdentity {
  std::string path;      // as loaded
  std::string fileName;  // its last component
  std::string realName;  // last component after following links
  ModuleIdentity() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&LoadStringResource), &info) == 0 || !info.dli_fname) return;
    path = info.dli_fname;
    fileName = path.substr(path.rfind('/') + 1);
    if (char* real = realpath(path.c_str(), nullptr)) {
      const std::string r(real);
      std::free(real);
      realName = r.substr(r.rfind('/') + 1);
    }
  }
};

const ModuleIdentity& Identity() {
  static const ModuleIdentity identity;
  return identity;
}

bool IsOwnModule(const char* module) {
  if (!module) return true;
  if (strcasecmp(module, "telvanix.dll") == 0) return true;
  const ModuleIdentity& self = Identity();
  if (self.path.empty() || !*module) return false;
  return module == self.path || module == self.fileName || (!self.realName.empty() && module == self.realName);
}

// Resource id of a name: MAKEINTRESOURCE values and "#nnn" texts.
bool ResourceIdOf(const char* name, UINT& id) {
  if (IS_INTRESOURCE(name)) {
    id = static_cast<UINT>(reinterpret_cast<std::uintptr_t>(name));
    return true;
  }
  if (name[0] != '#' || name[1] < '0' || name[1] > '9') return false;
  char* end = nullptr;
  const unsigned long value = std::strtoul(name + 1, &end, 10);
  if (*end != 0 || value > 0xFFFF) return false;
  id = static_cast<UINT>(value);
  return true;
}

}  // namespace

int LoadStringResource(CString* out, UINT id, const char* module) {
  if (!out || !IsOwnModule(module)) return 0;
  const char* text = "";
  for (int i = 0; i < g_nStringResourceTableSize; ++i) {
    if (g_tStringResourceTable[i].nId == id) {
      text = g_tStringResourceTable[i].pszText;
      break;
    }
  }
  // The string passes through a 256-byte buffer, as the platform loads it.
  const size_t length = strnlen(text, 255);
  *out = CString(text, static_cast<int>(length));
  return 1;
}

int LoadBinaryResource(CByteString* out, const char* name, const char* module) {
  if (!out || !name || !IsOwnModule(module)) return 0;
  UINT id = 0;
  if (!ResourceIdOf(name, id) || id != IDR_DEFAULT_STYLESHEET) return 0;
  out->Assign(reinterpret_cast<const unsigned char*>(g_szDefaultStyleSheet), g_nDefaultStyleSheetSize);
  return 1;
}

CString GetModuleFileNameOfLibrary() { return CString(Identity().path.c_str()); }

}  // namespace telvanix
