#include "telvanix/references.h"

#include <cctype>
#include <vector>

#include "telvanix/platform/path_lookup.h"

namespace telvanix::tool {

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

Presence FindInProject(const std::string& root, const std::string& relative, std::string& onDisk) {
  std::string full = root.empty() || root.back() == '/' ? root + relative : root + "/" + relative;
  CString resolved;
  int how = LookupPath(full.c_str(), resolved);
  onDisk = relative;
  if (how == pathNotFound) return Presence::kMissing;
  std::string found = resolved.str();
  std::string prefix = root.empty() || root.back() == '/' ? root : root + "/";
  if (found.compare(0, prefix.size(), prefix) == 0) onDisk = found.substr(prefix.size());
  if (how == pathExact) return Presence::kExact;
  if (how == pathSlashed) return Presence::kSlashed;
  return Presence::kCaseBlind;
}

}  // namespace telvanix::tool
