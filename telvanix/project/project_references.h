// Turning a reference written in a page (href, src, url(...), a sitemap's
// "Local") into a file of the project, and finding that file among the
// project's files the way a help compiler on Windows would: "\" as "/" and
// letter case ignored. Every resolution (the project index's, `toc --check`'s)
// goes through the same ProjectIndex::Resolve, bookmarks included.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "telvanix/platform/export.h"
#include "telvanix/project/project_files.h"

namespace telvanix {
class CHtmlFileEx;
}

namespace telvanix::project {

enum class RefKind {
  kLocal,        // a file of the project (maybe with a bookmark)
  kSamePage,     // "#bookmark" alone
  kExternal,     // a scheme (http:, mailto:, javascript:, ...) or a compiled-file reference
  kEmpty,        // nothing to check
  kOutside,      // an absolute or drive path, or ".." above the project root
};

struct Reference {
  RefKind kind = RefKind::kEmpty;
  std::string path;      // project-relative, "/"-separated, "." and ".." collapsed
  std::string bookmark;  // after "#", percent-decoded
  bool backslashes = false;  // the reference was written with "\"
};

// `fromDir` is the project-relative folder of the referring file ("" = root).
TELVANIX_API Reference ParseReference(const std::string& fromDir, const std::string& text);

enum class Presence { kExact, kSlashed, kCaseBlind, kMissing };

// Folder part of a project-relative path ("a/b.htm" -> "a", "b.htm" -> "").
TELVANIX_API std::string DirectoryOf(const std::string& relative);

// The parts of a "/"-separated path, "." dropped and ".." taking the part
// before it away (a leading ".." stays).
TELVANIX_API std::vector<std::string> PathParts(const std::string& path);
// The shortest relative way from folder `dir` to file `target`.
TELVANIX_API std::string RelativePath(const std::string& dir, const std::string& target);

// No file of the project.
constexpr size_t kNoFile = static_cast<size_t>(-1);

// What one reference comes to in the project.
struct Resolution {
  Reference ref;
  Presence presence = Presence::kMissing;  // for RefKind::kLocal
  size_t file = kNoFile;                   // index of the project file it names
  std::string actual;                      // that file's path, as spelled on disk
  bool bookmarkMissing = false;            // the named (or same) topic does not define ref.bookmark

  bool Outside() const { return ref.kind == RefKind::kOutside; }
  bool Missing() const { return ref.kind == RefKind::kLocal && presence == Presence::kMissing; }
  // Found, but only case-blind or with "\" read as "/".
  bool Inexact() const {
    return ref.kind == RefKind::kLocal && presence != Presence::kMissing && presence != Presence::kExact;
  }
};

// Bookmarks the topic at `file` (an index into the project's files)
// defines; null when they are not known (unreadable, binary), and then no
// bookmark is reported.
using BookmarkLookup = std::function<const std::set<std::string>*(size_t file)>;

// The project's files by exact and by case-blind name: the one resolver of
// `check` and `toc --check`.
class TELVANIX_API ProjectIndex {
 public:
  // `files`: sorted by path (the first of several case-blind spellings wins).
  explicit ProjectIndex(std::vector<ProjectFile> files);
  const std::vector<ProjectFile>& files() const { return m_files; }
  // Resolves `text`, written in the project file `from`; bookmarks are
  // looked up in topics only.
  Resolution Resolve(const std::string& from, const std::string& text, const BookmarkLookup& bookmarks) const;

 private:
  Presence Find(const Reference& ref, size_t& file) const;

  std::vector<ProjectFile> m_files;
  std::unordered_map<std::string, size_t> m_exact, m_folded;
};

// A value as written in a page or sitemap, its entities decoded ("" for null).
TELVANIX_API std::string Decoded(const char* written);

// The bookmarks a page defines (A names and ids), decoded from HTML.
TELVANIX_API std::set<std::string> PageBookmarks(CHtmlFileEx& page);

}  // namespace telvanix::project
