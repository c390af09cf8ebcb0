// Shared steps of the commands that work page by page: expanding operands
// into topic files, loading a page's bytes, and writing a page back only
// when its bytes changed.
#pragma once

#include <string>
#include <vector>

#include "telvanix/foundation/byte_string.h"

namespace telvanix::tool {

// Files named by the operands: a file stays as given; a folder gives every
// topic page under it (sorted). Unreadable folders add a line to `errors`.
std::vector<std::string> ExpandTopicOperands(const std::vector<std::string>& operands,
                                             std::vector<std::string>& errors);

// Loads a whole file into `bytes`; false with a one-line `error` otherwise.
bool LoadPage(const std::string& path, CByteString& bytes, std::string& error);

// Writes `bytes` over `path` atomically, but only when they differ from
// `original`. Returns 1 written, 0 unchanged, -1 on failure (error set).
int WriteIfChanged(const std::string& path, const CByteString& original, const CByteString& bytes,
                   std::string& error);

// Prints "telvanix: <message>" on stderr.
void PrintError(const std::string& message);

// Text as a JSON-safe string for output when bytes are not valid UTF-8:
// pages are in the active code page, so 1252 bytes are mapped to code points.
std::string ToUtf8(const char* text);

}  // namespace telvanix::tool
