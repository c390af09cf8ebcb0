#include "telvanix/project/project_transaction.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>

#include "telvanix/project/project_files.h"
#include "telvanix/project/project_references.h"

namespace telvanix {

using project::PathParts;
using project::RelativePath;

const char* const CHtmlProjectTransaction::ms_szJournalName = ".telvanix-journal";

namespace {

constexpr char kJournalHead[] = "telvanix journal 1\n";

std::string FolderOf(const std::string& rel) {
  size_t slash = rel.find_last_of('/');
  return slash == std::string::npos ? std::string() : rel.substr(0, slash);
}

std::string NameOf(const std::string& rel) {
  size_t slash = rel.find_last_of('/');
  return slash == std::string::npos ? rel : rel.substr(slash + 1);
}

// Journal lines hold paths with "%", tab and line breaks escaped.
std::string Escape(const std::string& s) {
  std::string out;
  for (char c : s) {
    if (c == '%' || c == '\t' || c == '\n' || c == '\r') {
      static const char hex[] = "0123456789ABCDEF";
      out += '%';
      out += hex[(c >> 4) & 0xF];
      out += hex[c & 0xF];
    } else {
      out += c;
    }
  }
  return out;
}

std::string Unescape(const std::string& s) {
  std::string out;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '%' && i + 2 < s.size()) {
      out += static_cast<char>(std::strtol(s.substr(i + 1, 2).c_str(), nullptr, 16));
      i += 2;
    } else {
      out += s[i];
    }
  }
  return out;
}

// The project path a relative symbolic link at `path` names; "" when it is
// no link, an absolute one, or leads out of the project.
std::string LinkTarget(const std::string& root, const std::string& path) {
  char link[4096];
  ssize_t n = ::readlink((root + "/" + path).c_str(), link, sizeof link - 1);
  if (n <= 0 || link[0] == '/') return "";
  std::string joined = (FolderOf(path).empty() ? "" : FolderOf(path) + "/") + std::string(link, static_cast<size_t>(n));
  std::string out;
  for (const std::string& p : PathParts(joined)) {
    if (p == "..") return "";
    out += (out.empty() ? "" : "/") + p;
  }
  return out;
}

bool Exists(const std::string& path) {
  struct stat st {};
  return ::lstat(path.c_str(), &st) == 0;
}

// Writes `bytes` to a new file `path` with the mode, owner and group of
// `like` (when it exists); false with errno set.
bool WriteNew(const std::string& path, const std::string& bytes, const std::string& like) {
  struct stat st {};
  bool have = !like.empty() && ::stat(like.c_str(), &st) == 0;
  int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, have ? (st.st_mode & 07777) : 0666);
  if (fd < 0) return false;
  size_t done = 0;
  while (done < bytes.size()) {
    ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      int e = errno;
      ::close(fd);
      ::unlink(path.c_str());
      errno = e ? e : EIO;
      return false;
    }
    done += static_cast<size_t>(n);
  }
  if (have) {
    // Where the platform allows: a user may not give a file away.
    if (::fchown(fd, st.st_uid, st.st_gid) != 0) { /* kept as created */ }
    ::fchmod(fd, st.st_mode & 07777);
  }
  if (::close(fd) != 0) {
    ::unlink(path.c_str());
    return false;
  }
  return true;
}

bool MakeFolders(const std::string& root, const std::string& rel, std::vector<std::string>& made) {
  if (rel.empty()) return true;
  std::string so_far;
  size_t start = 0;
  while (start <= rel.size()) {
    size_t slash = rel.find('/', start);
    if (slash == std::string::npos) slash = rel.size();
    so_far = rel.substr(0, slash);
    std::string full = root + "/" + so_far;
    struct stat st {};
    if (::stat(full.c_str(), &st) != 0) {
      if (::mkdir(full.c_str(), 0777) != 0) return false;
      made.push_back(so_far);
    } else if (!S_ISDIR(st.st_mode)) {
      errno = ENOTDIR;
      return false;
    }
    start = slash + 1;
  }
  return true;
}

bool WriteJournal(const std::string& root, const std::string& text) {
  std::string path = root + "/" + CHtmlProjectTransaction::ms_szJournalName;
  std::string temp = path + ".new";
  ::unlink(temp.c_str());
  if (!WriteNew(temp, text, "")) return false;
  return ::rename(temp.c_str(), path.c_str()) == 0;
}

bool IsReadOnly(const std::string& full, std::string& why) {
  struct stat st {};
  if (::stat(full.c_str(), &st) != 0) return false;
  // access() says yes to the superuser; the mode bits say what the author meant.
  if ((st.st_mode & 0222) == 0 || ::access(full.c_str(), W_OK) != 0) {
    why = "is read-only";
    return true;
  }
  return false;
}

}  // namespace

CHtmlProjectTransaction::CHtmlProjectTransaction(const char* root) : m_strRoot(root ? root : "") {
  while (m_strRoot.size() > 1 && m_strRoot.back() == '/') m_strRoot.pop_back();
  if (const char* f = std::getenv("TELVANIX_FAULT_AFTER")) m_nFaultAfter = std::atol(f);
}

int CHtmlProjectTransaction::GetFileStamp(const char* path, CFileStamp& stamp) {
  stamp = CFileStamp();
  struct stat st {};
  if (!path || ::stat(path, &st) != 0) return 0;
  stamp.m_nSize = st.st_size;
  stamp.m_nModified = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  stamp.m_nInode = st.st_ino;
  return 1;
}

std::string CHtmlProjectTransaction::GetLinkTarget(const char* root, const char* path) {
  return root && path ? LinkTarget(root, path) : std::string();
}

std::string CHtmlProjectTransaction::Full(const std::string& rel) const { return m_strRoot + "/" + rel; }

bool CHtmlProjectTransaction::Inside(const std::string& path) {
  bool ok = !path.empty() && path[0] != '/' && path.find('\\') == std::string::npos;
  for (size_t start = 0; ok && start <= path.size();) {
    size_t slash = path.find('/', start);
    if (slash == std::string::npos) slash = path.size();
    std::string part = path.substr(start, slash - start);
    ok = !part.empty() && part != "." && part != "..";
    start = slash + 1;
  }
  if (!ok) m_strError = path + ": outside the project root";
  return ok;
}

int CHtmlProjectTransaction::AddWrite(const char* path, std::string bytes, const CFileStamp& read) {
  if (!path || !Inside(path)) return 0;
  COperation op{COperation::emWrite, "", path, true, std::move(bytes), read, "", ""};
  m_ops.push_back(std::move(op));
  return 1;
}

int CHtmlProjectTransaction::AddMove(const char* from, const char* to, const std::string* bytes,
                                     const CFileStamp& read) {
  if (!from || !to || !Inside(from) || !Inside(to)) return 0;
  COperation op{COperation::emMove, from, to, bytes != nullptr, bytes ? *bytes : std::string(), read, "", ""};
  m_ops.push_back(std::move(op));
  return 1;
}

int CHtmlProjectTransaction::AddRelink(const char* path, const CFileStamp& read) {
  if (!path || !Inside(path)) return 0;
  m_ops.push_back({COperation::emRelink, path, path, false, std::string(), read, "", ""});
  return 1;
}

int CHtmlProjectTransaction::AddRemove(const char* path, const CFileStamp& read) {
  if (!path || !Inside(path)) return 0;
  m_ops.push_back({COperation::emRemove, path, "", false, std::string(), read, "", ""});
  return 1;
}

void CHtmlProjectTransaction::AddEmptiedFolder(const char* path) {
  if (path && Inside(path)) m_emptied.push_back(path);
}

int CHtmlProjectTransaction::Check() {
  if (!m_strError.empty()) return 0;
  if (Exists(Full(ms_szJournalName))) {
    m_strError = std::string("an unfinished change is pending (") + ms_szJournalName + "); run 'telvanix recover'";
    return 0;
  }
  std::set<std::string> targets, sources;
  for (const COperation& op : m_ops)
    if (!op.m_strFrom.empty()) sources.insert(op.m_strFrom);
  for (const COperation& op : m_ops) {
    const std::string& read = op.m_emKind == COperation::emWrite ? op.m_strTo : op.m_strFrom;
    std::string why;
    CFileStamp now;
    GetFileStamp(Full(read).c_str(), now);
    if (now.m_nSize != op.m_read.m_nSize || now.m_nModified != op.m_read.m_nModified ||
        now.m_nInode != op.m_read.m_nInode) {
      m_strError = read + ": changed on disk since it was read";
      return 0;
    }
    if (IsReadOnly(Full(read), why)) {
      m_strError = read + ": " + why;
      return 0;
    }
    const std::string folder = m_strRoot + (FolderOf(read).empty() ? "" : "/" + FolderOf(read));
    if (::access(folder.c_str(), W_OK) != 0) {
      m_strError = read + ": its folder is read-only";
      return 0;
    }
    if (op.m_emKind == COperation::emRemove) continue;
    if (!targets.insert(op.m_strTo).second) {
      m_strError = op.m_strTo + ": named as the target twice";
      return 0;
    }
    if (op.m_emKind == COperation::emMove && (Exists(Full(op.m_strTo)) || sources.count(op.m_strTo))) {
      m_strError = op.m_strTo + ": already exists";
      return 0;
    }
  }
  return 1;
}

bool CHtmlProjectTransaction::Step() {
  if (m_nFaultAfter > 0 && ++m_nSteps == m_nFaultAfter) ::kill(::getpid(), SIGKILL);
  return true;
}

int CHtmlProjectTransaction::Commit() {
  if (!Check()) return 0;
  if (m_ops.empty()) return 1;
  // The journal first names what will be made, so that an interruption
  // before the renames can be undone.
  std::vector<std::string> made;
  // Relative symbolic links are made again so that they name their file
  // (moved or not) from where they now stand.
  {
    std::map<std::string, std::string> moves;
    for (const COperation& op : m_ops)
      if (op.m_emKind == COperation::emMove) moves[op.m_strFrom] = op.m_strTo;
    for (COperation& op : m_ops) {
      if (op.m_emKind != COperation::emMove && op.m_emKind != COperation::emRelink) continue;
      std::string target = LinkTarget(m_strRoot, op.m_strFrom);
      if (target.empty()) continue;
      if (auto it = moves.find(target); it != moves.end()) target = it->second;
      op.m_strLink = RelativePath(FolderOf(op.m_strTo), target);
    }
  }
  for (COperation& op : m_ops) {
    if (op.m_emKind == COperation::emRemove || (!op.m_bHasBytes && op.m_strLink.empty())) continue;
    const std::string folder = FolderOf(op.m_strTo);
    op.m_strTemp = (folder.empty() ? "" : folder + "/") + "." + NameOf(op.m_strTo) + ".telvanix-" +
                   std::to_string(::getpid()) + ".tmp";
  }
  // Folders to be created are listed before they exist.
  std::vector<std::string> planned;
  for (const COperation& op : m_ops) {
    if (op.m_emKind != COperation::emMove) continue;
    std::string rel = FolderOf(op.m_strTo);
    for (std::string f = rel; !f.empty(); f = FolderOf(f))
      if (!Exists(Full(f)) && std::find(planned.begin(), planned.end(), f) == planned.end()) planned.push_back(f);
  }
  std::sort(planned.begin(), planned.end());
  std::string journal = kJournalHead;
  for (const std::string& f : planned) journal += "dir\t" + Escape(f) + "\n";
  for (const COperation& op : m_ops)
    if (!op.m_strTemp.empty()) journal += "tmp\t" + Escape(op.m_strTemp) + "\n";
  for (const COperation& op : m_ops) {
    if (!op.m_strTemp.empty()) journal += "rename\t" + Escape(op.m_strTemp) + "\t" + Escape(op.m_strTo) + "\n";
    else if (op.m_emKind == COperation::emMove) journal += "rename\t" + Escape(op.m_strFrom) + "\t" + Escape(op.m_strTo) + "\n";
  }
  for (const COperation& op : m_ops)
    if (op.m_emKind == COperation::emRemove || (op.m_emKind == COperation::emMove && !op.m_strTemp.empty()))
      journal += "remove\t" + Escape(op.m_strFrom) + "\n";
  std::vector<std::string> emptied = m_emptied;
  std::sort(emptied.begin(), emptied.end(), [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
  for (const std::string& f : emptied) journal += "rmdir\t" + Escape(f) + "\n";
  if (!WriteJournal(m_strRoot, journal)) {
    m_strError = std::string(ms_szJournalName) + ": cannot be written (" + std::strerror(errno) + ")";
    return 0;
  }
  Step();
  auto fail = [&](const std::string& what) {
    m_strError = what + " (" + std::strerror(errno ? errno : EIO) + "); nothing was changed";
    int done = 0;
    std::string ignored;
    RunJournal(done, ignored);
    return 0;
  };
  for (COperation& op : m_ops) {
    if (op.m_strTemp.empty()) continue;
    if (!MakeFolders(m_strRoot, FolderOf(op.m_strTo), made)) return fail(FolderOf(op.m_strTo) + ": cannot be made");
    const std::string like = op.m_emKind == COperation::emWrite ? op.m_strTo : op.m_strFrom;
    if (!op.m_strLink.empty() ? ::symlink(op.m_strLink.c_str(), Full(op.m_strTemp).c_str()) != 0
                              : !WriteNew(Full(op.m_strTemp), op.m_bytes, Full(like)))
      return fail(op.m_strTo + ": cannot be written");
    Step();
  }
  for (const COperation& op : m_ops)
    if (op.m_emKind == COperation::emMove && op.m_strTemp.empty() && !MakeFolders(m_strRoot, FolderOf(op.m_strTo), made))
      return fail(FolderOf(op.m_strTo) + ": cannot be made");
  // The new files reach the disk before the change is decided: one flush
  // of the file system instead of one per file.
  if (int rootFd = ::open(m_strRoot.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); rootFd >= 0) {
    ::syncfs(rootFd);
    ::close(rootFd);
  }
  // From here on the change is decided: a journal found later is completed.
  {
    int fd = ::open(Full(ms_szJournalName).c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (fd < 0 || ::write(fd, "commit\n", 7) != 7 || ::fsync(fd) != 0) {
      if (fd >= 0) ::close(fd);
      return fail(std::string(ms_szJournalName) + ": cannot be written");
    }
    ::close(fd);
    Step();
  }
  int done = 0;
  std::string error;
  if (!RunJournal(done, error)) {
    m_strError = error;
    return 0;
  }
  return 1;
}

int CHtmlProjectTransaction::Recover(const char* root, int& done, std::string& error) {
  CHtmlProjectTransaction t(root);  // the fault switch counts here too
  return t.RunJournal(done, error);
}

int CHtmlProjectTransaction::RunJournal(int& done, std::string& error) {
  done = 0;
  CHtmlProjectTransaction& t = *this;
  const std::string journalPath = t.Full(ms_szJournalName);
  ::unlink((journalPath + ".new").c_str());  // a journal never completed names nothing yet
  if (!Exists(journalPath)) return 1;
  CByteString bytes;
  if (!project::ReadWholeFile(journalPath, bytes, error)) {
    error = journalPath + ": " + error;
    return 0;
  }
  const std::string text = bytes.GetLength() > 0 ? std::string(reinterpret_cast<const char*>(bytes.GetContent()), static_cast<size_t>(bytes.GetLength())) : std::string();
  if (text.compare(0, sizeof kJournalHead - 1, kJournalHead) != 0) {
    error = journalPath + ": not a journal of this tool; left as it is";
    return 0;
  }
  struct Line {
    std::string verb, a, b;
  };
  std::vector<Line> lines;
  bool committed = false;
  for (size_t start = sizeof kJournalHead - 1; start < text.size();) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) break;  // a torn last line was never acted on
    std::string line = text.substr(start, end - start);
    start = end + 1;
    if (line == "commit") {
      committed = true;
      continue;
    }
    Line l;
    size_t t1 = line.find('\t');
    l.verb = line.substr(0, t1);
    if (t1 != std::string::npos) {
      size_t t2 = line.find('\t', t1 + 1);
      l.a = Unescape(line.substr(t1 + 1, t2 == std::string::npos ? std::string::npos : t2 - t1 - 1));
      if (t2 != std::string::npos) l.b = Unescape(line.substr(t2 + 1));
    }
    lines.push_back(l);
  }
  auto failed = [&](const std::string& what) {
    error = what + " (" + std::strerror(errno ? errno : EIO) + "); the journal is kept, run 'telvanix recover' again";
    return 0;
  };
  if (committed) {
    for (const Line& l : lines)
      if (l.verb == "rename" && Exists(t.Full(l.a))) {
        if (::rename(t.Full(l.a).c_str(), t.Full(l.b).c_str()) != 0) return failed(l.a + ": cannot be renamed");
        t.Step();
      }
    for (const Line& l : lines)
      if (l.verb == "remove" && Exists(t.Full(l.a))) {
        if (::unlink(t.Full(l.a).c_str()) != 0) return failed(l.a + ": cannot be removed");
        t.Step();
      }
    for (const Line& l : lines)
      if (l.verb == "rmdir") ::rmdir(t.Full(l.a).c_str());  // only when empty
    done = 1;
  } else {
    for (const Line& l : lines)
      if (l.verb == "tmp" && Exists(t.Full(l.a))) {
        if (::unlink(t.Full(l.a).c_str()) != 0) return failed(l.a + ": cannot be removed");
        t.Step();
      }
    for (auto it = lines.rbegin(); it != lines.rend(); ++it)
      if (it->verb == "dir") ::rmdir(t.Full(it->a).c_str());  // only when empty
    done = 2;
  }
  if (::unlink(journalPath.c_str()) != 0) return failed(std::string(ms_szJournalName) + ": cannot be removed");
  return 1;
}

}  // namespace telvanix
