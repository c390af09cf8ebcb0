// A change to many files of a project as one step: every new file is written
// beside its target under a temporary name, a journal in the project root
// lists the renames, the renames run, and the journal goes. A journal found
// later is completed (or, when the change never reached its renames, undone),
// so the project is always as before or as after, never between.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "telvanix/platform/export.h"

namespace telvanix {

class TELVANIX_API CHtmlProjectTransaction {
 public:
  // What a file looked like when it was read: a later commit refuses the
  // change when the file is no longer so.
  struct CFileStamp {
    std::int64_t m_nSize = -1;  // -1: the file did not exist
    std::int64_t m_nModified = 0;  // modification time in nanoseconds
    std::uint64_t m_nInode = 0;
  };

  // The journal's name in the project root.
  static const char* const ms_szJournalName;

  // `root`: the project folder; every path given later is relative to it,
  // "/"-separated, and may not leave it.
  explicit CHtmlProjectTransaction(const char* root);

  static int GetFileStamp(const char* path, CFileStamp& stamp);
  // The project path a relative symbolic link at root/path names; empty for
  // a file that is no such link or a link that leads out of the root.
  static std::string GetLinkTarget(const char* root, const char* path);

  // Staged operations; nothing touches the disk before Commit. Each returns
  // 0 (and sets GetError()) for a path outside the root.
  // New bytes for `path` (an existing file read with `read`, or a new one).
  int AddWrite(const char* path, std::string bytes, const CFileStamp& read);
  // `from` becomes `to`, with new bytes when `bytes` is not null. A
  // relative symbolic link is made again so that it still names its file.
  int AddMove(const char* from, const char* to, const std::string* bytes, const CFileStamp& read);
  // The relative symbolic link at `path` is made again to name its file
  // where the change's moves put it.
  int AddRelink(const char* path, const CFileStamp& read);
  // `path` is removed.
  int AddRemove(const char* path, const CFileStamp& read);
  // A folder that is removed after the renames when it is then empty.
  void AddEmptiedFolder(const char* path);

  // Refusals, checked before anything is written: a file read-only or in a
  // read-only folder, changed since read, a target that exists or is
  // named twice. 1 when the change may go ahead; 0 with GetError().
  int Check();
  // Check, then write, journal, rename. 1 done; 0 refused or failed (nothing
  // changed, or a journal is left that Recover completes).
  int Commit();
  const std::string& GetError() const { return m_strError; }

  // Completes or undoes a journal left in `root`. 1 when there was none or
  // it was completed (`done` tells which: 0 none, 1 completed forward, 2
  // undone); 0 with `error` when it could not be.
  static int Recover(const char* root, int& done, std::string& error);

 private:
  struct COperation {
    enum EmKind { emWrite, emMove, emRemove, emRelink } m_emKind;
    std::string m_strFrom, m_strTo;  // m_strFrom empty for a write
    bool m_bHasBytes = false;
    std::string m_bytes;
    CFileStamp m_read;
    std::string m_strTemp;  // the temporary beside m_strTo
    std::string m_strLink;  // a moved relative symbolic link: its new text
  };

  bool Inside(const std::string& path);
  std::string Full(const std::string& rel) const;
  bool Step();
  int RunJournal(int& done, std::string& error);  // counts a write or rename; the fault switch ends the process here

  std::string m_strRoot;
  std::vector<COperation> m_ops;
  std::vector<std::string> m_emptied;
  std::string m_strError;
  long m_nFaultAfter = 0;
  long m_nSteps = 0;
};

}  // namespace telvanix
