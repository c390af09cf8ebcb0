#include "telvanix/foundation/path_utils.h"

#include <dirent.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "telvanix/foundation/hash_fold.h"
#include "telvanix/foundation/text_utils.h"
#include "telvanix/platform/path_lookup.h"

namespace telvanix {

namespace {

inline bool IsSep(unsigned char c) { return c == '\\' || c == '/'; }
inline bool IsAsciiLetter(unsigned char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
inline unsigned char LowerAscii(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + 32 : c; }

// Width of the character at p: 2 for a lead byte followed by a trail byte.
inline int CharWidth(const unsigned char* p, bool dbcs) {
  return (dbcs && p[1] != 0 && IsLeadByteHere(*p)) ? 2 : 1;
}

void CopyCut(char* out, int size, const char* from, size_t count) {
  if (!out) return;
  const size_t n = std::min(count, static_cast<size_t>(size - 1));
  std::memcpy(out, from, n);
  out[n] = 0;
}

struct PathParts {
  std::string drive, dir, fname, ext;
};

// Offsets into `path` of the folder start, name start and extension start.
void SplitOffsets(const char* path, size_t& dirStart, size_t& nameStart, size_t& extStart, size_t& end) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(path);
  const bool dbcs = IsDBCS() != 0;
  dirStart = (p[0] != 0 && p[1] == ':') ? 2 : 0;
  nameStart = dirStart;
  size_t lastDot = std::string::npos;
  size_t i = dirStart;
  while (p[i]) {
    const int w = CharWidth(p + i, dbcs);
    if (w == 1 && IsSep(p[i])) {
      nameStart = i + 1;
      lastDot = std::string::npos;
    } else if (w == 1 && p[i] == '.') {
      lastDot = i;
    }
    i += static_cast<size_t>(w);
  }
  end = i;
  extStart = lastDot == std::string::npos ? end : lastDot;
}

PathParts Split(const char* path) {
  PathParts parts;
  if (!path) return parts;
  size_t dirStart, nameStart, extStart, end;
  SplitOffsets(path, dirStart, nameStart, extStart, end);
  parts.drive.assign(path, dirStart);
  parts.dir.assign(path + dirStart, nameStart - dirStart);
  parts.fname.assign(path + nameStart, extStart - nameStart);
  parts.ext.assign(path + extStart, end - extStart);
  return parts;
}

// True when the text ends with a separator that is not a trail byte.
bool EndsWithSep(const std::string& text) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text.c_str());
  const bool dbcs = IsDBCS() != 0;
  bool last = false;
  while (*p) {
    const int w = CharWidth(p, dbcs);
    last = w == 1 && IsSep(*p);
    p += w;
  }
  return last;
}

// Separator to add after a folder: the one it already uses, "\" by default.
char SeparatorOf(const std::string& folder) {
  const bool hasBack = folder.find('\\') != std::string::npos;
  const bool hasSlash = folder.find('/') != std::string::npos;
  return (hasSlash && !hasBack) ? '/' : '\\';
}

// The platform's full-path function as pure text: roots the name, collapses
// "." and ".." and doubled separators, keeps a trailing separator. Fails for
// results of kMaxPath characters or more.
bool FullPathText(const std::string& name, std::string& out) {
  std::string text = name;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text.c_str());
  std::string root;
  char style;
  size_t pos;
  size_t keep = 0;  // components ".." may not climb above (UNC server and share)
  if (text.size() >= 2 && IsAsciiLetter(p[0]) && p[1] == ':') {
    style = '\\';
    root = text.substr(0, 2) + "\\";
    pos = 2;
  } else if (text.size() >= 2 && IsSep(p[0]) && IsSep(p[1])) {
    style = static_cast<char>(p[0]);
    root = std::string(2, style);
    pos = 2;
    keep = 2;
  } else if (!text.empty() && IsSep(p[0])) {
    style = static_cast<char>(p[0]);
    root = std::string(1, style);
    pos = 1;
  } else {
    char cwd[4096];
    if (!getcwd(cwd, sizeof(cwd))) return false;
    return FullPathText(std::string(cwd) + "/" + text, out);
  }

  std::vector<std::string> parts;
  const bool dbcs = IsDBCS() != 0;
  std::string current;
  auto flush = [&]() {
    if (current == "..") {
      if (parts.size() > keep) parts.pop_back();
    } else if (!current.empty() && current != ".") {
      parts.push_back(current);
    }
    current.clear();
  };
  bool trailingSep = false;
  const unsigned char* q = reinterpret_cast<const unsigned char*>(text.c_str()) + pos;
  while (*q) {
    const int w = CharWidth(q, dbcs);
    trailingSep = w == 1 && IsSep(*q);
    if (trailingSep) flush();
    else current.append(reinterpret_cast<const char*>(q), static_cast<size_t>(w));
    q += w;
  }
  flush();

  out = root;
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i) out += style;
    out += parts[i];
  }
  if (trailingSep && !parts.empty()) out += style;
  return out.size() < static_cast<size_t>(kMaxPath);
}

bool IsDirectoryEntry(const std::string& path, bool& isLink) {
  struct stat st {};
  isLink = lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode);
  if (stat(path.c_str(), &st) != 0) return false;
  return S_ISDIR(st.st_mode);
}

// Multi-byte aware, ASCII case-blind equality.
bool SameTextNoCase(const char* a, const char* b) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(a);
  const unsigned char* q = reinterpret_cast<const unsigned char*>(b);
  const bool dbcs = IsDBCS() != 0;
  while (*p && *q) {
    if (CharWidth(p, dbcs) == 2) {
      if (p[0] != q[0] || p[1] != q[1]) return false;
      p += 2;
      q += 2;
      continue;
    }
    if (LowerAscii(*p) != LowerAscii(*q)) return false;
    ++p;
    ++q;
  }
  return *p == 0 && *q == 0;
}

void FindFiles(const std::string& folder, const std::string& wanted, CStringList& found, bool recursive) {
  CString resolved;
  LookupPath(folder.c_str(), resolved);
  DIR* dir = opendir(resolved.GetLength() ? resolved.GetString() : ".");
  if (!dir) return;
  std::vector<std::string> names;
  while (dirent* entry = readdir(dir)) {
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      names.emplace_back(entry->d_name);
  }
  closedir(dir);
  std::sort(names.begin(), names.end());

  std::string osFolder = resolved.str();
  if (!osFolder.empty() && osFolder.back() != '/') osFolder += '/';
  const bool all = wanted == "*";
  for (const std::string& name : names) {
    bool isLink = false;
    if (IsDirectoryEntry(osFolder + name, isLink)) {
      // Linked folders are not followed: a link cycle must not make the search endless.
      if (recursive && name[0] != '.' && !isLink) {
        std::string sub = folder + name;
        sub += SeparatorOf(folder);
        FindFiles(sub, wanted, found, recursive);
      }
      continue;
    }
    const size_t dot = name.rfind('.');
    if (all || (dot != std::string::npos && SameTextNoCase(name.c_str() + dot + 1, wanted.c_str())))
      found.AddTail(CString((folder + name).c_str()));
  }
}

}  // namespace

void SplitPath(const char* path, char* drive, char* dir, char* fname, char* ext) {
  if (drive) *drive = 0;
  if (dir) *dir = 0;
  if (fname) *fname = 0;
  if (ext) *ext = 0;
  if (!path) return;
  size_t dirStart, nameStart, extStart, end;
  SplitOffsets(path, dirStart, nameStart, extStart, end);
  CopyCut(drive, kMaxDrive, path, dirStart);
  CopyCut(dir, kMaxDir, path + dirStart, nameStart - dirStart);
  CopyCut(fname, kMaxFname, path + nameStart, extStart - nameStart);
  CopyCut(ext, kMaxExt, path + extStart, end - extStart);
}

BOOL IsExistingFile(const char* path) {
  if (!path || !*path) return FALSE;
  return GetFileAttributes(path) != INVALID_FILE_ATTRIBUTES;
}

std::int64_t GetFileLength(const char* path) {
  if (!path || !*path) return -1;
  return GetFileSize(path);
}

CString GetNormalizedFullPathName(const char* name, const char* base) {
  if (!name) return CString();
  const unsigned char* n = reinterpret_cast<const unsigned char*>(name);
  const bool rooted = (n[0] != 0 && n[1] == ':') || IsSep(n[0]);
  std::string joined;
  if (!base || !*base || rooted) {
    joined = name;
  } else {
    const PathParts parts = Split(base);
    std::string folder = parts.drive + parts.dir;
    if (!folder.empty() && !EndsWithSep(folder)) folder += SeparatorOf(parts.dir);
    joined = folder + name;
  }
  std::string out;
  if (!FullPathText(joined, out)) return CString();
  return CString(out.c_str());
}

CString GetRelativePathNameByFilePathNames(const char* target, const char* base) {
  if (!target) return CString();
  if (!base) return CString(target);
  const PathParts t = Split(target);
  const PathParts b = Split(base);
  if (!SameTextNoCase(t.drive.c_str(), b.drive.c_str())) return CString(target);

  // Drop the leading folder components the two share, compared by hash.
  const bool dbcs = IsDBCS() != 0;
  const unsigned char* tp = reinterpret_cast<const unsigned char*>(t.dir.c_str());
  const unsigned char* bp = reinterpret_cast<const unsigned char*>(b.dir.c_str());
  for (;;) {
    const unsigned char* te = tp;
    DWORD th = 0;
    while (*te && !IsSep(*te)) {
      const int w = CharWidth(te, dbcs);
      for (int k = 0; k < w; ++k) th = FoldHashStep(th, te[k]);
      te += w;
    }
    const unsigned char* be = bp;
    DWORD bh = 0;
    while (*be && !IsSep(*be)) {
      const int w = CharWidth(be, dbcs);
      for (int k = 0; k < w; ++k) bh = FoldHashStep(bh, be[k]);
      be += w;
    }
    if (!*te || !*be || th != bh) break;
    tp = te + 1;
    bp = be + 1;
  }

  std::string out;
  for (const unsigned char* q = bp; *q;) {
    const int w = CharWidth(q, dbcs);
    if (w == 1 && IsSep(*q)) {
      out += "..";
      out += static_cast<char>(*q);
    }
    q += w;
  }
  out += reinterpret_cast<const char*>(tp);
  out += t.fname;
  out += t.ext;
  return CString(out.c_str());
}

int ChangeSlashInPath(char* path, BOOL toBackslash) {
  if (!path) return 1;
  const bool dbcs = IsDBCS() != 0;
  const char from = toBackslash ? '/' : '\\';
  const char to = toBackslash ? '\\' : '/';
  unsigned char* p = reinterpret_cast<unsigned char*>(path);
  while (*p) {
    const int w = CharWidth(p, dbcs);
    if (w == 1 && *p == static_cast<unsigned char>(from)) *p = static_cast<unsigned char>(to);
    p += w;
  }
  return 1;
}

int ChangeSlashInPath(CString& path, BOOL toBackslash) {
  if (path.IsEmpty()) return 1;
  ChangeSlashInPath(path.GetBuffer(path.GetLength()), toBackslash);
  path.ReleaseBuffer(path.GetLength());
  return 1;
}

int SplitUrlAndBookMark(const char* url, char* address, char* bookmark) {
  if (!url) return 0;
  const char* hash = std::strchr(url, '#');
  const size_t addressLen = hash ? static_cast<size_t>(hash - url) : std::strlen(url);
  CopyCut(address, kMaxBookmark, url, addressLen);
  if (hash) CopyCut(bookmark, kMaxBookmark, hash, std::strlen(hash));
  else if (bookmark) *bookmark = 0;
  return 1;
}

int SplitPathAndBookMark(const char* path, char* drive, char* folder, char* name, char* ext, char* bookmark) {
  if (!path) return 0;
  char address[kMaxBookmark];
  char mark[kMaxBookmark];
  SplitUrlAndBookMark(path, address, mark);
  char addressExt[kMaxExt];
  SplitPath(address, nullptr, nullptr, nullptr, addressExt);
  if (strncasecmp(addressExt, ".htm", 4) == 0) {
    SplitPath(address, drive, folder, name, ext);
    CopyCut(bookmark, kMaxBookmark, mark, std::strlen(mark));
  } else {
    SplitPath(path, drive, folder, name, ext);
    if (bookmark) *bookmark = 0;
  }
  return 1;
}

int LocalFindAllFiles(const char* folder, const char* ext, CStringList& found, BOOL recursive) {
  if (!folder || !*folder || !ext || !*ext) return 0;
  std::string dir = folder;
  if (!EndsWithSep(dir)) dir += SeparatorOf(dir);
  std::string wanted = ext[0] == '.' ? ext + 1 : ext;
  if (wanted.empty()) return 0;
  FindFiles(dir, wanted, found, recursive != 0);
  return 1;
}

}  // namespace telvanix
