#include "telvanix/platform/path_lookup.h"

#include <dirent.h>
#include <sys/stat.h>

#include <climits>
#include <cstring>
#include <string>

namespace telvanix {

namespace {

// Longer paths are refused outright rather than handed to the OS.
constexpr std::size_t kMaxPathLength = PATH_MAX;

bool StatPath(const std::string& path, struct stat* st) {
  return ::stat(path.c_str(), st) == 0;
}

bool PathExists(const std::string& path) {
  struct stat st;
  return StatPath(path, &st);
}

// ASCII letters fold together; every other byte must match exactly, so
// names in other encodings are never confused.
bool EqualNoCase(const char* a, const char* b) {
  for (;; ++a, ++b) {
    unsigned char ca = static_cast<unsigned char>(*a);
    unsigned char cb = static_cast<unsigned char>(*b);
    if (ca >= 'A' && ca <= 'Z')
      ca = static_cast<unsigned char>(ca + 32);
    if (cb >= 'A' && cb <= 'Z')
      cb = static_cast<unsigned char>(cb + 32);
    if (ca != cb)
      return false;
    if (ca == 0)
      return true;
  }
}

std::string Join(const std::string& folder, const std::string& name) {
  if (folder.empty())
    return name;
  if (folder.back() == '/')
    return folder + name;
  return folder + "/" + name;
}

// The entry of folder whose name equals name ignoring case; several matches
// give the smallest in byte order, so the choice does not depend on the
// directory's order.
bool FindEntryNoCase(const std::string& folder, const std::string& name, std::string& found) {
  DIR* dir = ::opendir(folder.empty() ? "." : folder.c_str());
  if (!dir)
    return false;
  bool any = false;
  while (struct dirent* entry = ::readdir(dir)) {
    if (!EqualNoCase(entry->d_name, name.c_str()))
      continue;
    if (!any || std::strcmp(entry->d_name, found.c_str()) < 0)
      found = entry->d_name;
    any = true;
  }
  ::closedir(dir);
  return any;
}

// Walks slashed path component by component. lastMayBeMissing lets the final
// component stay as written when no entry matches it. caseBlind tells whether
// any component was respelled.
bool WalkCaseBlind(const std::string& path, bool lastMayBeMissing, std::string& out, bool& caseBlind) {
  out.clear();
  caseBlind = false;
  if (!path.empty() && path[0] == '/')
    out = "/";
  std::size_t pos = 0;
  while (pos < path.size()) {
    std::size_t slash = path.find('/', pos);
    std::size_t stop = slash == std::string::npos ? path.size() : slash;
    std::string component = path.substr(pos, stop - pos);
    pos = stop + 1;
    if (component.empty())
      continue;
    bool last = path.find_first_not_of('/', stop) == std::string::npos;
    std::string candidate = Join(out, component);
    if (component == "." || component == ".." || PathExists(candidate)) {
      out = candidate;
      continue;
    }
    std::string entry;
    if (FindEntryNoCase(out, component, entry)) {
      out = Join(out, entry);
      caseBlind = true;
      continue;
    }
    if (last && lastMayBeMissing) {
      out = candidate;
      continue;
    }
    return false;
  }
  return true;
}

int Lookup(const char* path, CString& resolved, bool forCreate) {
  resolved.Empty();
  if (!path || !*path)
    return pathNotFound;
  std::size_t length = std::strlen(path);
  std::string slashed(path, length);
  for (char& ch : slashed)
    if (ch == '\\')
      ch = '/';
  if (length >= kMaxPathLength) {
    resolved = CString(slashed);
    return pathNotFound;
  }
  if (PathExists(path)) {
    resolved = path;
    return pathExact;
  }
  bool turned = slashed != path;
  if (turned && PathExists(slashed)) {
    resolved = CString(slashed);
    return pathSlashed;
  }
  std::string walked;
  bool caseBlind = false;
  if (!WalkCaseBlind(slashed, forCreate, walked, caseBlind) || walked.size() >= kMaxPathLength) {
    resolved = CString(slashed);
    return pathNotFound;
  }
  resolved = CString(walked);
  if (!forCreate && !PathExists(walked))
    return pathNotFound;
  if (caseBlind)
    return pathCaseBlind;
  return turned ? pathSlashed : pathExact;
}

bool StatResolved(const char* path, struct stat* st, CString* resolvedOut = nullptr) {
  CString resolved;
  if (Lookup(path, resolved, false) == pathNotFound)
    return false;
  if (resolvedOut)
    *resolvedOut = resolved;
  return StatPath(resolved.str(), st);
}

}  // namespace

CString ToForwardSlashes(const char* path) {
  CString result(path);
  result.Replace('\\', '/');
  return result;
}

int LookupPath(const char* path, CString& resolved) { return Lookup(path, resolved, false); }

int LookupPathForCreate(const char* path, CString& resolved) { return Lookup(path, resolved, true); }

BOOL FileExists(const char* path) {
  struct stat st;
  return StatResolved(path, &st) ? TRUE : FALSE;
}

BOOL IsRegularFile(const char* path) {
  struct stat st;
  return StatResolved(path, &st) && S_ISREG(st.st_mode) ? TRUE : FALSE;
}

BOOL IsDirectory(const char* path) {
  struct stat st;
  return StatResolved(path, &st) && S_ISDIR(st.st_mode) ? TRUE : FALSE;
}

DWORD GetFileAttributes(const char* path) {
  struct stat st;
  CString resolved;
  if (!StatResolved(path, &st, &resolved))
    return INVALID_FILE_ATTRIBUTES;
  DWORD attributes = 0;
  if (S_ISDIR(st.st_mode))
    attributes |= FILE_ATTRIBUTE_DIRECTORY;
  if ((st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
    attributes |= FILE_ATTRIBUTE_READONLY;
  int slash = resolved.ReverseFind('/');
  CString name = resolved.Mid(slash + 1);
  if (name.GetLength() > 0 && name[0] == '.' && name != "." && name != "..")
    attributes |= FILE_ATTRIBUTE_HIDDEN;
  return attributes ? attributes : FILE_ATTRIBUTE_NORMAL;
}

std::int64_t GetFileSize(const char* path) {
  struct stat st;
  if (!StatResolved(path, &st) || !S_ISREG(st.st_mode))
    return -1;
  return static_cast<std::int64_t>(st.st_size);
}

}  // namespace telvanix
