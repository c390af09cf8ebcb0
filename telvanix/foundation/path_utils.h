// File and path helpers: existence and length, full and relative path names,
// slash conversion, bookmark splitting and directory search. Every helper
// accepts both "\" and "/" as separators and recognises "C:" drives; those
// that touch the file system resolve names case-blind (see path_lookup.h).
// Lead bytes of a double-byte code page are never split.
#pragma once

#include <cstdint>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// Buffer sizes, terminator included, of the path splitter's outputs.
constexpr int kMaxPath = 260;
constexpr int kMaxDrive = 3;
constexpr int kMaxDir = 256;
constexpr int kMaxFname = 256;
constexpr int kMaxExt = 256;
// Buffer size of an address or bookmark from the bookmark splitters.
constexpr int kMaxBookmark = 256;

// The platform's path splitter: "C:" drive, folder up to and including the
// last separator, name, and extension from the last "." of the name. Any
// output may be null; outputs are cut to the sizes above.
TELVANIX_API void SplitPath(const char* path, char* drive, char* dir, char* fname, char* ext);

// 1 when the path is non-empty and names an existing file or folder.
TELVANIX_API BOOL IsExistingFile(const char* path);
// Length in bytes, -1 when the file does not exist or is not a file.
TELVANIX_API std::int64_t GetFileLength(const char* path);

// `name` resolved against the folder of the file `base` (or, without base,
// against the current folder), "." and ".." collapsed. Pure text: nothing
// needs to exist. Paths with a drive or a leading "\" come back with "\"
// separators, others with "/". Empty for null name or a result of 260
// characters or more.
TELVANIX_API CString GetNormalizedFullPathName(const char* name, const char* base);

// `target` written relative to the folder of the file `base`, e.g.
// "..\img\x.gif"; the target unchanged when the drives differ.
TELVANIX_API CString GetRelativePathNameByFilePathNames(const char* target, const char* base);

// In place: "/" to "\" when toBackslash is non-zero, "\" to "/" otherwise.
// Always 1.
TELVANIX_API int ChangeSlashInPath(char* path, BOOL toBackslash);
TELVANIX_API int ChangeSlashInPath(CString& path, BOOL toBackslash);

// Text before the first "#" into address, the rest from "#" on into
// bookmark, each cut to kMaxBookmark bytes with its terminator; outputs may
// be null. 0 for null url, else 1.
TELVANIX_API int SplitUrlAndBookMark(const char* url, char* address, char* bookmark);
// Splits a topic path "dir\page.htm#top" into its parts and bookmark. Only
// an extension beginning with ".htm" has a bookmark split off; otherwise the
// whole text is split and bookmark is empty. Outputs (sized as above) may be
// null. 0 for null path, else 1.
TELVANIX_API int SplitPathAndBookMark(const char* path, char* drive, char* folder, char* name, char* ext,
                                      char* bookmark);

// Appends to `found` folder + name of every file in the folder whose
// extension (with or without its dot; "*" for all) matches ignoring case,
// searching sub-folders not beginning with "." when recursive. Entries come
// sorted by name. 0 for empty folder or extension, else 1.
TELVANIX_API int LocalFindAllFiles(const char* folder, const char* ext, CStringList& found, BOOL recursive);

}  // namespace telvanix
