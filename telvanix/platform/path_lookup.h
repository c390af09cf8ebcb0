// Turning help-project paths into paths the file system knows. Projects
// written on Windows use "\" and rely on case-blind names; every function here
// that touches the file system turns "\" into "/" first and, when the path
// does not exist as written, looks for it one component at a time without
// regard to (ASCII) letter case.
#pragma once

#include <cstdint>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// How a path was found on disk.
enum EmPathLookup {
  pathNotFound = 0,
  pathExact = 1,      // exists exactly as written
  pathSlashed = 2,    // exists once "\" is turned into "/"
  pathCaseBlind = 3,  // exists only when letter case is ignored
};

constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x01;
constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x02;
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFFu;

// The text with every "\" turned into "/"; empty for null.
TELVANIX_API CString ToForwardSlashes(const char* path);

// Finds path on disk. resolved receives the path to hand to the OS: the
// on-disk spelling when found, else the slash-turned text. Null, empty or
// over-long paths are not found.
TELVANIX_API int LookupPath(const char* path, CString& resolved);

// As LookupPath, for a file about to be created: the folders are resolved
// case-blind and so is an existing last component; a missing last component
// keeps its spelling. pathNotFound only when the folder does not exist;
// otherwise how resolved (the full path, file present or not) was formed.
TELVANIX_API int LookupPathForCreate(const char* path, CString& resolved);

// TRUE when the path names an existing file or folder (case-blind).
TELVANIX_API BOOL FileExists(const char* path);
// TRUE when the path names an existing regular file (case-blind).
TELVANIX_API BOOL IsRegularFile(const char* path);
// TRUE when the path names an existing folder (case-blind).
TELVANIX_API BOOL IsDirectory(const char* path);
// FILE_ATTRIBUTE_* bits of the path, INVALID_FILE_ATTRIBUTES when missing.
// Read-only means the process may not write it; hidden means a leading ".".
TELVANIX_API DWORD GetFileAttributes(const char* path);
// Length in bytes of an existing regular file, -1 otherwise.
TELVANIX_API std::int64_t GetFileSize(const char* path);

}  // namespace telvanix
