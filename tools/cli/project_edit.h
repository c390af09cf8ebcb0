// The shared steps of the commands that change a project as a whole (mv, rm)
// or ask about its references (refs): finding the project root, completing
// an interrupted change, and rewriting one file's references for a set of
// moves and deletions, byte for byte elsewhere.
#pragma once

#include <string>
#include <vector>

#include "telvanix/project/project_index.h"
#include "telvanix/project/project_transaction.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::tool {

// The project root: `given` (from --root) when not empty, else the nearest
// folder at or above `start` holding a ".hhp" file. Empty with `error`
// when there is none.
std::string FindProjectRoot(const std::string& given, const std::string& start, std::string& error);

// `path` (as the user gave it) relative to `root`, "/"-separated; false with
// `error` when it lies outside the root (or is the root, unless `rootToo`:
// then rel is empty).
bool ToProjectPath(const std::string& root, const std::string& path, std::string& rel, std::string& error,
                   bool rootToo = false);

// Completes a change a killed command left behind (its journal). Prints what
// it did on stderr; false when the journal could not be completed.
bool CompletePendingChange(const std::string& root);

// Before any command but recover: completes the unfinished change in the
// project root of each existing file or folder among `args` (--root, else
// found upward as mv finds it) and in each folder named. False (the reason
// printed) when one could not be completed.
bool CompletePendingChanges(const std::vector<std::string>& args);

// The common start of mv, rm and refs: the root (--root, else found from
// `start`; an unfinished change there is completed by then) and the project's files listed
// (not read: the rewrite reads the few that may refer). Empty root (the
// error printed) when the command cannot go on.
std::string OpenProject(const std::string& givenRoot, const std::string& start, CHtmlProjectIndex& index);

// Checks and commits a change: exit status 1 when refused, 2 when it failed,
// -1 when done; the reason printed.
int CommitChange(CHtmlProjectTransaction& change);

// One file's part in a change.
struct FileRewrite {
  std::string path, newPath;  // project-relative; the same when the file stays
  CHtmlProjectTransaction::CFileStamp stamp;  // as read
  bool changed = false;
  std::string bytes;                   // the new bytes when changed
  std::vector<CFileReference> changes;  // each reference that changes
  std::string error;
};

// Reads root/path and writes its references again for `moves` (its own
// move from path to newPath included). A page whose untouched save would
// not give its bytes back is refused (error set) rather than changed.
FileRewrite RewriteFile(const std::string& root, const std::string& path, const std::string& newPath,
                        const CHtmlFileEx::CReplaceContext& moves);

// Every reference a file holds, with its position and what `moves` do to it.
std::vector<CFileReference> ListFileReferences(const std::string& root, const std::string& path,
                                               const CHtmlFileEx::CReplaceContext& moves, std::string& error);

// The files that may refer to the moved or deleted paths: those the index
// resolves to them, and any file whose bytes name the last part of one of
// them (the index does not read every kind of reference a rewrite follows).
std::vector<size_t> CandidateReferrers(const CHtmlProjectIndex& index, const std::vector<std::string>& paths);

// One line per reference: "file:line: ELEMENT attribute: old -> new".
std::string DescribeChange(const std::string& file, const CFileReference& ref);

}  // namespace telvanix::tool
