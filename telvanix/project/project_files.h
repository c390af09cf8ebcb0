// Finding the files of a help project (".hhp" is the project file): a recursive walk that survives
// unreadable folders and symlink loops, and sorts what it finds so that every
// command reports in the same order on every run.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/platform/export.h"

namespace telvanix::project {

enum class FileKind { kTopic, kContents, kIndex, kStylesheet, kImage, kProject, kOther };

// By extension, without regard to letter case (".HTM" is a topic).
TELVANIX_API FileKind ClassifyFile(const std::string& path);

// A file of a project, classified once.
struct ProjectFile {
  std::string path;  // relative to the root, "/"-separated
  FileKind kind;
};

// `paths` with their kinds, in the same order.
TELVANIX_API std::vector<ProjectFile> ClassifyFiles(const std::vector<std::string>& paths);

struct ProjectFiles {
  std::vector<std::string> files;   // every regular file, relative to the root, "/"-separated, sorted
  std::vector<std::string> errors;  // one line per folder or entry that could not be read
};

// Walks `root` (a folder). Symlinked folders are followed once; a link back
// into a folder already being walked is reported and skipped. A broken link
// or a pipe is reported only when named like a project file (with
// `topicsOnly`, like a topic page): a broken link to a script is no error.
TELVANIX_API ProjectFiles ListProjectFiles(const std::string& root, bool topicsOnly = false);

// Largest file read whole: a buffer length of the library is a 32-bit int.
constexpr unsigned long long kMaxFileBytes = 0x7FFFFFF0u;

// Reads a whole regular file; false with `error` set when it cannot be read,
// is not a regular file (never blocks on a pipe) or is over kMaxFileBytes.
TELVANIX_API bool ReadWholeFile(const std::string& path, CByteString& bytes, std::string& error);

// ReadWholeFile with `error` as "PATH: reason"; a folder is refused as one.
TELVANIX_API bool LoadWholeFile(const std::string& path, CByteString& bytes, std::string& error);

// LoadWholeFile of at most the first `limit` bytes: enough to tell what a
// file is (and why it cannot be read) without reading all of it.
TELVANIX_API bool LoadFileStart(const std::string& path, std::size_t limit, CByteString& bytes, std::string& error);

// A zero byte among the first 8 KB: the file is not a page of text.
TELVANIX_API bool LooksBinary(const CByteString& bytes);

}  // namespace telvanix::project
