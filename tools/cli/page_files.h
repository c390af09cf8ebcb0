// Shared steps of the commands that work page by page: expanding operands
// into topic files, loading a page's bytes, and writing a page back only
// when its bytes changed.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "telvanix/foundation/byte_string.h"

namespace telvanix::tool {

// Files named by the operands: a file stays as given; a folder gives every
// topic page under it (sorted). Unreadable folders, and broken links named
// like pages, add a line to `errors`; other files are not looked at.
std::vector<std::string> ExpandTopicOperands(const std::vector<std::string>& operands,
                                             std::vector<std::string>& errors);

// Loads a whole file into `bytes`; false with a one-line `error` otherwise.
bool LoadPage(const std::string& path, CByteString& bytes, std::string& error);

// A zero byte among the first 8 KB: the file is not a page of text.
bool LooksBinary(const CByteString& bytes);

// LoadPage for a topic that is to be parsed: binary data is refused.
bool LoadTopicBytes(const std::string& path, CByteString& bytes, std::string& error);

// LoadTopicBytes of the file's first 8 KB only, for a command whose parser
// reads the page itself: false with the reason the page cannot be read.
bool ProbeTopicFile(const std::string& path, CByteString& start, std::string& error);

// True when both hold the same bytes.
bool SameBytes(const CByteString& a, const CByteString& b);

// Writes `bytes` over `path` atomically. Returns 1 written, -1 on failure
// (error set).
int WritePage(const std::string& path, const CByteString& bytes, std::string& error);

// Writes `bytes` over `path` atomically, but only when they differ from
// `original`. Returns 1 written, 0 unchanged, -1 on failure (error set).
int WriteIfChanged(const std::string& path, const CByteString& original, const CByteString& bytes,
                   std::string& error);

// Prints "telvanix: <message>" on stderr.
void PrintError(const std::string& message);

// The end of a command that changes pages: the count of changed pages (when
// it was asked to change any), then the pages refused and the errors, each on
// stderr. Returns the exit status: 2 on any error, else 1 if a page was
// refused, else 0.
int FinishPageEdits(bool changing, size_t changed, size_t pages, const std::vector<std::string>& refused,
                    const std::vector<std::string>& errors);

// Text as a JSON-safe string for output when bytes are not valid UTF-8:
// pages are in the active code page, so 1252 bytes are mapped to code points.
std::string ToUtf8(const char* text);

// A file name for JSON output: names on disk are UTF-8 as a rule and stay as
// they are; a name that is not valid UTF-8 is read as the code page's text.
std::string FileNameToUtf8(const std::string& name);

}  // namespace telvanix::tool

namespace telvanix {
class CHtmlFileEx;
}

namespace telvanix::tool {

// A topic page opened for reading or editing: its bytes as read and the
// analysed document over them.
struct OpenTopic {
  CByteString source;
  std::unique_ptr<CHtmlFileEx> doc;
};

// Loads and analyses a topic; false with a one-line `error` otherwise.
bool OpenTopicPage(const std::string& path, OpenTopic& topic, std::string& error);

// Looks at a page read back from the bytes an edit would write: empty when
// they hold what the edit meant, else the reason they do not.
using ReadBackCheck = std::function<std::string(CHtmlFileEx& reread)>;

// Saves the (edited) document over its file, atomically and only when the
// bytes change. With `check`, the new bytes are first read back as a topic
// and checked. Returns 1 written, 0 unchanged, -1 on failure, -2 when the
// check refused the new bytes (the file is left as it was); error set.
int SaveTopicIfChanged(const std::string& path, OpenTopic& topic, std::string& error,
                       const ReadBackCheck& check = nullptr);

}  // namespace telvanix::tool
