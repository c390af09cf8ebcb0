// The project reference index: every file of a project folder and every
// reference between them (topics, stylesheets, contents and index files and
// the ".hhp" project file), read once and in parallel. A host asks it who
// refers to a file, and what a move of files or folders would change.
#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"
#include "telvanix/project/project_references.h"
#include "telvanix/project/project_transaction.h"

namespace telvanix {

class TELVANIX_API CHtmlProjectIndex {
 public:
  enum EmReferenceFlag {
    emRefTopicLink = 1,  // a link to a topic (a topic's link to itself keeps it no less an orphan)
    emRefListing = 2,    // a project file's [FILES] or [TEXT POPUPS] line: lists, does not use
    emRefOutput = 4,     // names a file the compiler writes (compiled file, log): need not exist
  };

  static constexpr std::size_t kNoPosition = static_cast<std::size_t>(-1);

  // Where a reference stands in its file.
  struct CPosition {
    int m_nLine;                 // from 1
    CString m_strElement;    // the tag as written ("IMG", "param"), a sheet's "url" or "@import",
                             // a project file's option key or window name ("project" for other lines)
    CString m_strAttribute;  // "src", "Local", "style", ...; "" where there is none
    CString m_strWritten;    // the value as written, character references kept
  };

  // One reference as written in a file, its entities decoded.
  struct CReference {
    std::string m_strText;
    const char* m_szWhat;  // what kind of reference ("image", "link", "contents file", ...)
    int m_nLine;           // line in its file, from 1; 0 where no position is known
    unsigned m_nFlags;
    std::size_t m_nPosition = kNoPosition;  // its place in the file's m_positions
  };

  // What the index read in one file.
  struct CFileEntry {
    std::vector<CReference> m_refs;
    // Every reference the file holds, in file order, as a rewrite follows
    // them: m_refs and more (each PARAM, "lowsrc", a sitemap's "URL").
    std::vector<CPosition> m_positions;
    std::set<std::string> m_bookmarks;
    std::vector<std::string> m_repairs;    // what the page's outline repair changed
    std::vector<std::string> m_structure;  // a contents or index file's own faults
    std::vector<std::string> m_topicTags, m_elementTags;
    UINT m_nCodePage = 0;  // the charset the references are written in
    bool m_bBinary = false;
    std::string m_strError;  // the file could not be read
    CHtmlProjectTransaction::CFileStamp m_stamp;  // as it was when read

    bool Checked() const { return m_strError.empty() && !m_bBinary; }
  };

  // Runs job(i) for every i below count, in any order and on any threads;
  // a host passes its own pool or progress display. Null: the index's own pool.
  using CRunner = std::function<void(std::size_t count, const std::function<void(std::size_t)>& job)>;

  // Lists and reads the project under `root`. 1 done (files that could not
  // be read are named in their entries and GetErrors()); 0 when `root` is no
  // folder. With `listOnly` the files are listed and not read: the entries
  // stay empty and no reference is known (enough for PlanMove's files).
  int Build(const char* root, const CRunner& runner = nullptr, bool listOnly = false);

  const std::string& GetRoot() const { return m_strRoot; }
  const std::vector<project::ProjectFile>& GetFiles() const { return m_resolver.files(); }
  const std::vector<CFileEntry>& GetEntries() const { return m_entries; }
  const std::vector<std::string>& GetErrors() const { return m_errors; }
  // The file's index in GetFiles(), or -1.
  long FindFile(const std::string& path) const;

  // What a reference of file `file` comes to, bookmarks included.
  project::Resolution Resolve(std::size_t file, const CReference& ref) const;

  struct CReferrer {
    std::size_t m_nFile;  // the referring file
    std::size_t m_nRef;   // its reference
    std::size_t m_nTarget;  // the file referred to
  };
  // Every reference to `path` (project-relative): a file, or a folder and so
  // every file under it. A file's references to itself are included.
  std::vector<CReferrer> GetReferrers(const std::string& path) const;

  // Every written reference to `path` (a file, or a folder and so every
  // file under it; named as it exists, or without regard to case when it
  // does not), in file and position order: where it stands and what it says.
  struct CPlace {
    std::size_t m_nFile;      // the referring file
    std::size_t m_nPosition;  // in its m_positions
  };
  std::vector<CPlace> GetReferencePlaces(const std::string& path) const;

  // What moving `from` to `to` (files or folders, project-relative) would
  // change: the files that move and the files whose references must be
  // rewritten (the moved files among them when they refer out of the moved
  // set). Empty with `error` when the move is refused: a source missing or
  // twice, a target outside the root or already there, a folder moved into
  // itself.
  struct CMovePlan {
    std::vector<std::pair<std::string, std::string>> m_files;  // every file moving, old -> new
    std::vector<std::string> m_folders;  // folders that go when the move leaves them empty
    std::vector<CReferrer> m_references;                          // references that change
    std::vector<std::size_t> m_rewritten;                         // files whose bytes change, sorted
  };
  int PlanMove(const std::vector<std::pair<std::string, std::string>>& moves, CMovePlan& plan,
               std::string& error) const;

 private:
  std::string m_strRoot;
  project::ProjectIndex m_resolver{{}};
  std::vector<CFileEntry> m_entries;
  std::vector<std::string> m_errors;
};

}  // namespace telvanix
