// Turning a reference written in a page (href, src, url(...), a sitemap's
// "Local") into a file of the project, and finding that file on disk the way
// a help compiler on Windows would: "\" as "/" and letter case ignored.
#pragma once

#include <string>

namespace telvanix::tool {

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
Reference ParseReference(const std::string& fromDir, const std::string& text);

enum class Presence { kExact, kSlashed, kCaseBlind, kMissing };

// Looks `relative` up under `root`. `onDisk` receives the project-relative
// spelling actually found (for kSlashed and kCaseBlind, the real name).
Presence FindInProject(const std::string& root, const std::string& relative, std::string& onDisk);

// Folder part of a project-relative path ("a/b.htm" -> "a", "b.htm" -> "").
std::string DirectoryOf(const std::string& relative);

}  // namespace telvanix::tool
