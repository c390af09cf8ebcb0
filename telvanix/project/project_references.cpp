#include "telvanix/project/project_references.h"

#include <cctype>
#include <utility>
#include <vector>

#include "telvanix/topic/html_file_ex.h"

namespace telvanix::project {

namespace {

std::string PercentDecode(const std::string& s) {
  std::string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '%' && i + 2 < s.size() && std::isxdigit(static_cast<unsigned char>(s[i + 1])) &&
        std::isxdigit(static_cast<unsigned char>(s[i + 2]))) {
      out += static_cast<char>(std::stoi(s.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      out += s[i];
    }
  }
  return out;
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// Joins and collapses "." and ".."; false when ".." climbs above the root.
bool Collapse(const std::string& joined, std::string& out) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (start <= joined.size()) {
    size_t slash = joined.find('/', start);
    if (slash == std::string::npos) slash = joined.size();
    std::string part = joined.substr(start, slash - start);
    if (part == "..") {
      if (parts.empty()) return false;
      parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    start = slash + 1;
  }
  out.clear();
  for (const std::string& p : parts) {
    if (!out.empty()) out += '/';
    out += p;
  }
  return true;
}

}  // namespace

std::vector<std::string> PathParts(const std::string& path) {
  std::vector<std::string> parts;
  for (size_t start = 0; start <= path.size();) {
    size_t slash = path.find('/', start);
    if (slash == std::string::npos) slash = path.size();
    std::string part = path.substr(start, slash - start);
    if (part == ".." && !parts.empty() && parts.back() != "..") parts.pop_back();
    else if (!part.empty() && part != ".") parts.push_back(part);
    start = slash + 1;
  }
  return parts;
}

std::string RelativePath(const std::string& dir, const std::string& target) {
  const std::vector<std::string> d = PathParts(dir), t = PathParts(target);
  size_t common = 0;
  while (common < d.size() && common + 1 < t.size() && d[common] == t[common]) ++common;
  std::string out;
  for (size_t i = common; i < d.size(); ++i) out += "../";
  for (size_t i = common; i < t.size(); ++i) out += (i > common ? "/" : "") + t[i];
  return out;
}

std::string DirectoryOf(const std::string& relative) {
  size_t slash = relative.find_last_of('/');
  return slash == std::string::npos ? std::string() : relative.substr(0, slash);
}

Reference ParseReference(const std::string& fromDir, const std::string& text) {
  Reference r;
  size_t b = 0, e = text.size();
  while (b < e && std::isspace(static_cast<unsigned char>(text[b]))) ++b;
  while (e > b && std::isspace(static_cast<unsigned char>(text[e - 1]))) --e;
  std::string ref = text.substr(b, e - b);
  if (ref.empty()) return r;
  // A reference into a compiled help file ("a.chm::/x.htm") is not ours to check.
  if (Lower(ref).find(".chm::") != std::string::npos) {
    r.kind = RefKind::kExternal;
    return r;
  }
  // A scheme is two or more letters before ":"; a single letter is a drive.
  size_t colon = ref.find(':');
  if (colon != std::string::npos) {
    size_t i = 0;
    while (i < colon && (std::isalnum(static_cast<unsigned char>(ref[i])) || ref[i] == '+' || ref[i] == '-' ||
                         ref[i] == '.'))
      ++i;
    if (i == colon && colon >= 2) {
      r.kind = RefKind::kExternal;
      return r;
    }
    if (colon == 1) {
      r.kind = RefKind::kOutside;
      r.path = ref;
      return r;
    }
  }
  if (size_t hash = ref.find('#'); hash != std::string::npos) {
    r.bookmark = PercentDecode(ref.substr(hash + 1));
    ref.resize(hash);
  }
  if (size_t q = ref.find('?'); q != std::string::npos) ref.resize(q);
  if (ref.empty()) {
    r.kind = r.bookmark.empty() ? RefKind::kEmpty : RefKind::kSamePage;
    return r;
  }
  ref = PercentDecode(ref);
  for (char& c : ref)
    if (c == '\\') {
      c = '/';
      r.backslashes = true;
    }
  if (ref[0] == '/') {
    r.kind = RefKind::kOutside;
    r.path = ref;
    return r;
  }
  std::string joined = fromDir.empty() ? ref : fromDir + "/" + ref;
  if (!Collapse(joined, r.path)) {
    r.kind = RefKind::kOutside;
    r.path = ref;
    return r;
  }
  r.kind = RefKind::kLocal;
  return r;
}

ProjectIndex::ProjectIndex(std::vector<ProjectFile> files) : m_files(std::move(files)) {
  for (size_t i = 0; i < m_files.size(); ++i) {
    m_exact.emplace(m_files[i].path, i);
    m_folded.emplace(Lower(m_files[i].path), i);  // sorted input: the first spelling wins
  }
}

Presence ProjectIndex::Find(const Reference& ref, size_t& file) const {
  if (auto it = m_exact.find(ref.path); it != m_exact.end()) {
    file = it->second;
    return ref.backslashes ? Presence::kSlashed : Presence::kExact;
  }
  auto it = m_folded.find(Lower(ref.path));
  if (it == m_folded.end()) return Presence::kMissing;
  file = it->second;
  return Presence::kCaseBlind;
}

Resolution ProjectIndex::Resolve(const std::string& from, const std::string& text,
                                 const BookmarkLookup& bookmarks) const {
  Resolution r;
  r.ref = ParseReference(DirectoryOf(from), text);
  size_t target = kNoFile;
  if (r.ref.kind == RefKind::kSamePage) {
    if (auto it = m_exact.find(from); it != m_exact.end()) target = it->second;
  } else if (r.ref.kind == RefKind::kLocal) {
    r.presence = Find(r.ref, r.file);
    if (r.presence == Presence::kMissing) return r;
    r.actual = m_files[r.file].path;
    target = r.file;
  }
  if (target != kNoFile && !r.ref.bookmark.empty() && m_files[target].kind == FileKind::kTopic) {
    const std::set<std::string>* defined = bookmarks(target);
    r.bookmarkMissing = defined && !defined->count(r.ref.bookmark);
  }
  return r;
}

std::string Decoded(const char* written) {
  return written && *written ? CHtmlPack::HtmlToText(written).str() : std::string();
}

std::set<std::string> PageBookmarks(CHtmlFileEx& page) {
  std::set<std::string> names;
  unsigned int i = 0;
  for (const char* v = page.GetFirstBookmark(i); v; v = page.GetNextBookmark(i))
    if (*v) names.insert(Decoded(v));
  return names;
}

}  // namespace telvanix::project
