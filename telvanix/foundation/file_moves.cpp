#include "telvanix/foundation/file_moves.h"

#include <string>
#include <cctype>
#include <string_view>

#include "telvanix/foundation/path_utils.h"

namespace telvanix {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f'; }

char Fold(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

bool SameNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size())
    return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (Fold(a[i]) != Fold(b[i]))
      return false;
  return true;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9')
    return c - '0';
  if (c >= 'a' && c <= 'f')
    return c - 'a' + 10;
  if (c >= 'A' && c <= 'F')
    return c - 'A' + 10;
  return -1;
}

// Joins `dir` and `name` ("/" separated) and collapses "." and ".."; false
// when nothing is left, or when ".." climbs above the root unless `above`
// allows that (the path then begins with "../").
bool Collapse(const std::string& dir, const std::string& name, std::string& out, bool above = false) {
  std::string joined = dir.empty() ? name : dir + "/" + name;
  std::string result;
  size_t start = 0;
  while (start <= joined.size()) {
    size_t slash = joined.find('/', start);
    if (slash == std::string::npos)
      slash = joined.size();
    const std::string_view part(joined.data() + start, slash - start);
    const bool climbed = result == ".." || (result.size() >= 3 && result.compare(result.size() - 3, 3, "/..") == 0);
    if (part == ".." && (result.empty() || climbed)) {
      if (!above)
        return false;
      result += result.empty() ? ".." : "/..";
    } else if (part == "..") {
      const size_t cut = result.find_last_of('/');
      result.resize(cut == std::string::npos ? 0 : cut);
    } else if (!part.empty() && part != ".") {
      if (!result.empty())
        result += '/';
      result += part;
    }
    start = slash + 1;
  }
  out = std::move(result);
  return !out.empty();
}

// A project path as this class keeps it; false for an empty or absolute one
// or one above the root.
bool ProjectPath(const char* text, std::string& out) {
  if (!text)
    return false;
  std::string path(text);
  for (char& c : path)
    if (c == '\\')
      c = '/';
  while (!path.empty() && IsBlank(path.back()))
    path.pop_back();
  if (path.empty() || path[0] == '/' || (path.size() >= 2 && path[1] == ':'))
    return false;
  return Collapse("", path, out);
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

// `path` lies inside (or is) the folder `folder`, letter case ignored.
bool IsWithin(const std::string& path, const std::string& folder) {
  return path.size() >= folder.size() && SameNoCase(std::string_view(path).substr(0, folder.size()), folder) &&
         (path.size() == folder.size() || path[folder.size()] == '/');
}

// The parts of a written reference: blanks around it, the path as written,
// and the "?query#fragment" rest as written.
struct Parts {
  std::string lead, path, rest, trail;
};

Parts Split(const char* written) {
  Parts p;
  std::string_view text(written ? written : "");
  size_t b = 0, e = text.size();
  while (b < e && IsBlank(text[b]))
    ++b;
  while (e > b && IsBlank(text[e - 1]))
    --e;
  p.lead = text.substr(0, b);
  p.trail = text.substr(e);
  std::string_view core = text.substr(b, e - b);
  const size_t cut = core.find_first_of("?#");
  p.path = core.substr(0, cut);
  if (cut != std::string_view::npos)
    p.rest = core.substr(cut);
  return p;
}

// A scheme ("http:", two letters or more), a drive, or a compiled-file
// reference: nothing of the project.
bool IsForeign(const std::string& core) {
  std::string lower(core);
  for (char& c : lower)
    c = Fold(c);
  if (lower.find(".chm::") != std::string::npos)
    return true;
  const size_t colon = core.find(':');
  if (colon == std::string::npos)
    return false;
  if (colon == 1)
    return true;
  size_t i = 0;
  while (i < colon && (std::isalnum(static_cast<unsigned char>(core[i])) || core[i] == '+' || core[i] == '-' ||
                       core[i] == '.'))
    ++i;
  return i == colon && colon >= 2;
}

std::string PercentDecode(const std::string& s, bool* encoded = nullptr) {
  std::string out;
  for (size_t i = 0; i < s.size(); ++i) {
    const int hi = i + 2 < s.size() + 0 && s[i] == '%' ? HexValue(s[i + 1]) : -1;
    const int lo = hi >= 0 ? HexValue(s[i + 2]) : -1;
    if (hi >= 0 && lo >= 0) {
      const unsigned char c = static_cast<unsigned char>(hi * 16 + lo);
      if (encoded)
        encoded[c] = true;
      out += static_cast<char>(c);
      i += 2;
    } else {
      out += s[i];
    }
  }
  return out;
}

// The written path part, plain: %-decoded, "\" read as "/".
std::string PlainPath(const std::string& written, bool* encoded = nullptr) {
  std::string path = PercentDecode(written, encoded);
  for (char& c : path)
    if (c == '\\')
      c = '/';
  return path;
}

}  // namespace

CFileMoves::CFileMoves() = default;
CFileMoves::~CFileMoves() = default;

int CFileMoves::Add(const char* oldPath, const char* newPath, int isFolder, int deletion) {
  try {
    std::string from, to;
    if (!ProjectPath(oldPath, from))
      return 0;
    if (!deletion) {
      if (!ProjectPath(newPath, to) || to == from)
        return 0;
      // A folder cannot go inside itself.
      if (isFolder && IsWithin(to, from))
        return 0;
    }
    for (const Move& m : m_moves)
      if (SameNoCase(m.from.str(), from))
        return 0;
    m_moves.push_back(Move{CString(from.c_str()), CString(to.c_str()), isFolder ? 1 : 0, deletion});
    return 1;
  } catch (...) {
    return 0;
  }
}

int CFileMoves::AddMove(const char* oldPath, const char* newPath, int isFolder) {
  return Add(oldPath, newPath, isFolder, 0);
}

int CFileMoves::AddDeletion(const char* path, int isFolder) { return Add(path, nullptr, isFolder, 1); }

int CFileMoves::SetDocument(const char* oldPath, const char* newPath) {
  try {
    std::string from, to;
    if (!ProjectPath(oldPath, from))
      return 0;
    if (newPath && *newPath) {
      if (!ProjectPath(newPath, to))
        return 0;
    } else {
      to = from;
    }
    m_strDocOld = from.c_str();
    m_strDocNew = to.c_str();
    return 1;
  } catch (...) {
    return 0;
  }
}

void CFileMoves::RemoveAll() {
  m_moves.clear();
  m_strDocOld.Empty();
  m_strDocNew.Empty();
}

int CFileMoves::GetMoveCount() const { return static_cast<int>(m_moves.size()); }

CFileMoves::EmRewrite CFileMoves::MapPath(const char* path, CString& out) const {
  try {
    out = path;
    std::string p;
    if (!ProjectPath(path, p))
      return emUnchanged;
    const Move* best = nullptr;
    for (const Move& m : m_moves) {
      const std::string& from = m.from.str();
      const bool hit = m.folder ? IsWithin(p, from) : SameNoCase(p, from);
      if (hit && (!best || from.size() > best->from.str().size()))
        best = &m;
    }
    if (best) {
      if (best->deletion) {
        out.Empty();
        return emDeleted;
      }
      out = (best->to.str() + p.substr(best->from.GetLength())).c_str();
      return emRewritten;
    }
    // The document's own move, when the host did not list it.
    if (!m_strDocOld.IsEmpty() && m_strDocOld != m_strDocNew && SameNoCase(p, m_strDocOld.str())) {
      out = m_strDocNew;
      return emRewritten;
    }
    return emUnchanged;
  } catch (...) {
    return emUnchanged;
  }
}

CString CFileMoves::ResolveReference(const char* written) const {
  try {
    std::string resolved;
    if (!Resolve(written, resolved, false))
      return CString();
    return CString(resolved.c_str());
  } catch (...) {
    return CString();
  }
}

bool CFileMoves::Resolve(const char* written, std::string& resolved, bool above) const {
  const Parts parts = Split(written);
  if (parts.path.empty() || IsForeign(parts.path))
    return false;
  const std::string plain = PlainPath(parts.path);
  // Characters no file name holds: this is no file reference.
  for (char c : plain)
    if (static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '<' || c == '>' || c == '|' || c == '*' || c == ':')
      return false;
  return !plain.empty() && plain[0] != '/' && Collapse(FolderOf(m_strDocOld.str()), plain, resolved, above);
}

CFileMoves::EmRewrite CFileMoves::RewriteReference(const char* written, CString& out, CString* target) const {
  try {
    out.Empty();
    if (target)
      target->Empty();
    // A file beside the project ("../../shared/x.gif" above the root) moves
    // with nothing, but is re-based when the document moves.
    std::string resolved;
    if (!Resolve(written, resolved, true))
      return emUnchanged;
    const bool beside = resolved.compare(0, 2, "..") == 0;
    const CString named(resolved.c_str());
    if (target && !beside)
      *target = named;
    CString moved = named;
    const EmRewrite how = beside ? emUnchanged : MapPath(named, moved);
    if (how == emDeleted)
      return emDeleted;
    const Parts parts = Split(written);
    bool encoded[256] = {};
    const std::string plain = PlainPath(parts.path, encoded);
    const std::string newFolder = FolderOf(m_strDocNew.str());
    // Nothing moved for this reference: it stays as written, whatever its
    // spelling ("./x.htm").
    if (how == emUnchanged && newFolder == FolderOf(m_strDocOld.str()))
      return emUnchanged;
    // The new path relative to the document's new folder ("/" separated). A
    // reference written the long way climbs as many folders as before when
    // the new path still lies below that point ("../db/x.htm" in db/ becomes
    // "../database/x.htm", not "x.htm"), so that the inverse move writes it
    // back as it was.
    std::string relative;
    size_t ups = 0;
    const bool shortest = GetRelativePathNameByFilePathNames(named, m_strDocOld).str() == plain;
    while (!shortest && plain.compare(ups * 3, 3, "../") == 0)
      ++ups;
    std::string base = newFolder;
    bool climbed = moved.str().compare(0, 2, "..") != 0;
    for (size_t i = 0; i < ups && climbed; ++i) {
      climbed = !base.empty();
      base = FolderOf(base);
    }
    if (!shortest && climbed &&
        (base.empty() || (IsWithin(moved.str(), base) && moved.GetLength() > static_cast<int>(base.size())))) {
      for (size_t i = 0; i < ups; ++i)
        relative += "../";
      relative += moved.str().substr(base.empty() ? 0 : base.size() + 1);
    } else {
      relative = GetRelativePathNameByFilePathNames(moved, m_strDocNew).str();
    }
    if (!plain.empty() && plain.back() == '/')
      relative += '/';  // a folder written as one
    if (relative == plain)
      return emUnchanged;
    const bool backslashes = parts.path.find('\\') != std::string::npos;
    bool upperHex = true;
    for (size_t i = 0; i + 2 < parts.path.size(); ++i)
      if (parts.path[i] == '%' && (HexValue(parts.path[i + 1]) >= 10 || HexValue(parts.path[i + 2]) >= 10)) {
        upperHex = (parts.path[i + 1] >= 'A' && parts.path[i + 1] <= 'F') ||
                   (parts.path[i + 2] >= 'A' && parts.path[i + 2] <= 'F');
        break;
      }
    // Characters that would be read as something else are always encoded.
    encoded[static_cast<unsigned char>('%')] = encoded[static_cast<unsigned char>('#')] =
        encoded[static_cast<unsigned char>('?')] = true;
    std::string text = parts.lead;
    static const char kUpper[] = "0123456789ABCDEF";
    static const char kLower[] = "0123456789abcdef";
    for (char c : relative) {
      const unsigned char u = static_cast<unsigned char>(c);
      if (c == '/' || c == '\\') {
        text += backslashes ? '\\' : '/';
      } else if (encoded[u]) {
        const char* digits = upperHex ? kUpper : kLower;
        text += '%';
        text += digits[u >> 4];
        text += digits[u & 15];
      } else {
        text += c;
      }
    }
    text += parts.rest;
    text += parts.trail;
    out = text.c_str();
    return emRewritten;
  } catch (...) {
    return emUnchanged;
  }
}

}  // namespace telvanix
