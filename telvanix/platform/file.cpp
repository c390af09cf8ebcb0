#include "telvanix/platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <unordered_set>

#include "telvanix/platform/path_lookup.h"

namespace telvanix {

namespace {

constexpr std::size_t kStdioBufferSize = 64 * 1024;

std::string FolderOf(const std::string& path) {
  std::size_t slash = path.rfind('/');
  if (slash == std::string::npos)
    return std::string();
  if (slash == 0)
    return "/";
  return path.substr(0, slash + 1);
}

std::string NameOf(const std::string& path) {
  std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Creates a fresh file beside the target. The name starts with "." so a
// folder listing does not show it as a page, and carries the process id and
// a counter so concurrent writers never share one.
int CreateTempBeside(const std::string& target, std::string& tempName) {
  static std::atomic<unsigned> s_counter{0};
  std::string base = NameOf(target);
  if (base.size() > 200)
    base.resize(200);  // stay well inside the file system's name limit
  std::string folder = FolderOf(target);
  for (int attempt = 0; attempt < 100; ++attempt) {
    unsigned serial = s_counter.fetch_add(1, std::memory_order_relaxed);
    tempName = folder + "." + base + ".tvx" + std::to_string(::getpid()) + "-" + std::to_string(serial);
    int fd = ::open(tempName.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST)
      return fd;
  }
  errno = EEXIST;
  return -1;
}

bool CopyContents(int from, int to) {
  char buffer[16 * 1024];
  for (;;) {
    ssize_t got = ::read(from, buffer, sizeof buffer);
    if (got < 0) {
      if (errno == EINTR)
        continue;
      return false;
    }
    if (got == 0)
      return true;
    for (ssize_t done = 0; done < got;) {
      ssize_t put = ::write(to, buffer + done, static_cast<std::size_t>(got - done));
      if (put < 0) {
        if (errno == EINTR)
          continue;
        return false;
      }
      done += put;
    }
  }
}

void Fail(CkolmFileException* pError, int error, const char* path) {
  if (pError)
    *pError = CkolmFileException(CkolmFileException::CauseFromErrno(error), error, path);
  errno = error;
}

}  // namespace

// ---------------------------------------------------------------------------
// CkolmFileException

CkolmFileException::CkolmFileException(int cause, int osError, const char* path)
    : m_cause(cause), m_lOsError(osError), m_strFileName(path) {
  m_strMessage = std::string(osError ? std::strerror(osError) : "file error");
  if (!m_strFileName.IsEmpty())
    m_strMessage += std::string(": ") + m_strFileName.GetString();
}

int CkolmFileException::CauseFromErrno(int error) {
  switch (error) {
    case 0:
      return none;
    case ENOENT:
      return fileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return badPath;
    case EMFILE:
    case ENFILE:
      return tooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS:
    case EEXIST:
      return accessDenied;
    case EBADF:
      return invalidFile;
    case ESPIPE:
      return badSeek;
    case EIO:
      return hardIO;
    case EBUSY:
    case ETXTBSY:
      return sharingViolation;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return diskFull;
    default:
      return genericException;
  }
}

// ---------------------------------------------------------------------------
// CkolmFile

CkolmFile::CkolmFile() = default;

CkolmFile::CkolmFile(const char* path, UINT openFlags) {
  CkolmFileException error;
  if (!CkolmFile::Open(path, openFlags, &error))
    throw error;
}

CkolmFile::~CkolmFile() { CkolmFile::Abort(); }

BOOL CkolmFile::Open(const char* path, UINT openFlags, CkolmFileException* pError) {
  if (IsOpen())
    CkolmFile::Abort();
  if (!path || !*path) {
    Fail(pError, ENOENT, path);
    return FALSE;
  }
  UINT access = openFlags & 0x3;
  if (access == 0x3) {
    Fail(pError, EINVAL, path);
    return FALSE;
  }

  if (access == modeRead) {
    CString resolved;
    if (LookupPath(path, resolved) == pathNotFound) {
      Fail(pError, resolved.GetLength() >= PATH_MAX ? ENAMETOOLONG : ENOENT, path);
      return FALSE;
    }
    // Non-blocking, so that a pipe or device under a page's name cannot
    // stall the open; only regular files are read.
    int fd = ::open(resolved, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
      Fail(pError, errno, path);
      return FALSE;
    }
    struct stat st;
    int error = ::fstat(fd, &st) != 0 ? errno : S_ISDIR(st.st_mode) ? EISDIR : !S_ISREG(st.st_mode) ? EINVAL : 0;
    if (!error) {
      int flags = ::fcntl(fd, F_GETFL);
      if (flags == -1 || ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) == -1)
        error = errno;
    }
    if (error) {
      ::close(fd);
      Fail(pError, error, path);
      return FALSE;
    }
    m_hFile = fd;
    m_nOpenFlags = openFlags;
    m_strFileName = resolved;
    m_strTempName.Empty();
    return TRUE;
  }

  // Writing: find the target, then work on a temporary file beside it.
  CString resolved;
  if (LookupPathForCreate(path, resolved) == pathNotFound) {
    Fail(pError, resolved.GetLength() >= PATH_MAX ? ENAMETOOLONG : ENOENT, path);
    return FALSE;
  }
  std::string target = resolved.str();
  struct stat st;
  bool exists = ::stat(target.c_str(), &st) == 0;
  if (exists) {
    if (!S_ISREG(st.st_mode)) {
      // Renaming over a folder, pipe or device would replace it, not write it.
      Fail(pError, S_ISDIR(st.st_mode) ? EISDIR : EINVAL, path);
      return FALSE;
    }
    // Replace what a link points to, not the link.
    if (char* real = ::realpath(target.c_str(), nullptr)) {
      target = real;
      std::free(real);
    }
    if (::access(target.c_str(), W_OK) != 0) {
      Fail(pError, errno, path);
      return FALSE;
    }
  } else if (!(openFlags & modeCreate)) {
    Fail(pError, ENOENT, path);
    return FALSE;
  }

  std::string tempName;
  int fd = CreateTempBeside(target, tempName);
  if (fd < 0) {
    Fail(pError, errno, path);
    return FALSE;
  }
  bool keep = exists && (!(openFlags & modeCreate) || (openFlags & modeNoTruncate));
  if (exists) {
    int error = 0;
    if (::fchmod(fd, st.st_mode & 07777) != 0)
      error = errno;
    if (!error && keep) {
      int source = ::open(target.c_str(), O_RDONLY | O_CLOEXEC);
      if (source < 0 || !CopyContents(source, fd))
        error = errno ? errno : EIO;
      if (source >= 0)
        ::close(source);
      if (!error && ::lseek(fd, 0, SEEK_SET) < 0)
        error = errno;
    }
    if (error) {
      ::close(fd);
      ::unlink(tempName.c_str());
      Fail(pError, error, path);
      return FALSE;
    }
  }
  m_hFile = fd;
  m_nOpenFlags = openFlags;
  m_strFileName = CString(target);
  m_strTempName = CString(tempName);
  return TRUE;
}

void CkolmFile::ThrowErrno(int error) const {
  throw CkolmFileException(CkolmFileException::CauseFromErrno(error), error, m_strFileName);
}

UINT CkolmFile::Read(void* buffer, UINT count) {
  if (!IsOpen())
    ThrowErrno(EBADF);
  if (count == 0)
    return 0;
  if (!buffer)
    ThrowErrno(EINVAL);
  if ((m_nOpenFlags & 0x3) == modeWrite)
    ThrowErrno(EBADF);
  char* out = static_cast<char*>(buffer);
  UINT done = 0;
  while (done < count) {
    ssize_t got = ::read(m_hFile, out + done, count - done);
    if (got < 0) {
      if (errno == EINTR)
        continue;
      ThrowErrno(errno);
    }
    if (got == 0)
      break;
    done += static_cast<UINT>(got);
  }
  return done;
}

void CkolmFile::Write(const void* buffer, UINT count) {
  if (!IsOpen())
    ThrowErrno(EBADF);
  if (m_strTempName.IsEmpty())
    ThrowErrno(EBADF);  // opened for reading
  if (count == 0)
    return;
  if (!buffer)
    ThrowErrno(EINVAL);
  const char* in = static_cast<const char*>(buffer);
  UINT done = 0;
  while (done < count) {
    ssize_t put = ::write(m_hFile, in + done, count - done);
    if (put < 0) {
      if (errno == EINTR)
        continue;
      ThrowErrno(errno);
    }
    if (put == 0)
      ThrowErrno(ENOSPC);
    done += static_cast<UINT>(put);
  }
}

ULONGLONG CkolmFile::Seek(LONGLONG offset, UINT from) {
  if (!IsOpen())
    ThrowErrno(EBADF);
  int whence = from == begin ? SEEK_SET : from == current ? SEEK_CUR : from == end ? SEEK_END : -1;
  if (whence < 0)
    ThrowErrno(EINVAL);
  off_t result = ::lseek(m_hFile, static_cast<off_t>(offset), whence);
  if (result < 0)
    ThrowErrno(errno == EINVAL ? ESPIPE : errno);
  return static_cast<ULONGLONG>(result);
}

ULONGLONG CkolmFile::GetPosition() const {
  if (!IsOpen())
    ThrowErrno(EBADF);
  off_t result = ::lseek(m_hFile, 0, SEEK_CUR);
  if (result < 0)
    ThrowErrno(errno);
  return static_cast<ULONGLONG>(result);
}

ULONGLONG CkolmFile::GetLength() const {
  if (!IsOpen())
    ThrowErrno(EBADF);
  struct stat st;
  if (::fstat(m_hFile, &st) != 0)
    ThrowErrno(errno);
  return static_cast<ULONGLONG>(st.st_size);
}

void CkolmFile::SetLength(ULONGLONG newLength) {
  if (!IsOpen() || m_strTempName.IsEmpty())
    ThrowErrno(EBADF);
  if (newLength > static_cast<ULONGLONG>(INT64_MAX))
    ThrowErrno(EINVAL);
  if (::ftruncate(m_hFile, static_cast<off_t>(newLength)) != 0)
    ThrowErrno(errno);
}

void CkolmFile::Flush() {
  if (!IsOpen())
    ThrowErrno(EBADF);
}

void CkolmFile::CloseDescriptor(bool commit) {
  int fd = m_hFile;
  std::string temp = m_strTempName.str();
  std::string target = m_strFileName.str();
  m_hFile = -1;
  m_nOpenFlags = 0;
  m_strTempName.Empty();
  if (fd < 0)
    return;
  if (temp.empty()) {
    ::close(fd);
    return;
  }
  if (!commit) {
    ::close(fd);
    ::unlink(temp.c_str());
    return;
  }
  // The bytes must be on disk before the new name points at them, or a
  // crash could leave an empty page under the old name.
  int error = 0;
  if (::fdatasync(fd) != 0 && errno != EINVAL && errno != EROFS)
    error = errno;
  if (::close(fd) != 0 && !error && errno != EINTR)
    error = errno;
  if (!error && ::rename(temp.c_str(), target.c_str()) != 0)
    error = errno;
  if (error) {
    ::unlink(temp.c_str());
    ThrowErrno(error);
  }
}

void CkolmFile::Close() { CloseDescriptor(true); }

void CkolmFile::Abort() { CloseDescriptor(false); }

// ---------------------------------------------------------------------------
// CkolmStdioFile

CkolmStdioFile::CkolmStdioFile() = default;

CkolmStdioFile::CkolmStdioFile(const char* path, UINT openFlags) {
  CkolmFileException error;
  if (!CkolmStdioFile::Open(path, openFlags, &error))
    throw error;
}

CkolmStdioFile::~CkolmStdioFile() { CkolmStdioFile::Abort(); }

BOOL CkolmStdioFile::Open(const char* path, UINT openFlags, CkolmFileException* pError) {
  m_nBufPos = m_nBufLen = 0;
  m_bWriting = false;
  if (!CkolmFile::Open(path, openFlags, pError))
    return FALSE;
  if (m_buffer.size() != kStdioBufferSize)
    m_buffer.resize(kStdioBufferSize);
  return TRUE;
}

void CkolmStdioFile::FlushWrite() {
  if (!m_bWriting || m_nBufLen == 0)
    return;
  std::size_t pending = m_nBufLen;
  m_nBufLen = 0;  // a failed write is not retried
  CkolmFile::Write(m_buffer.data(), static_cast<UINT>(pending));
}

void CkolmStdioFile::DropReadAhead() {
  if (m_bWriting)
    return;
  std::size_t unread = m_nBufLen - m_nBufPos;
  m_nBufPos = m_nBufLen = 0;
  if (unread)
    CkolmFile::Seek(-static_cast<LONGLONG>(unread), current);
}

int CkolmStdioFile::FillBuffer() {
  m_nBufPos = 0;
  m_nBufLen = CkolmFile::Read(m_buffer.data(), static_cast<UINT>(m_buffer.size()));
  return static_cast<int>(m_nBufLen);
}

UINT CkolmStdioFile::Read(void* buffer, UINT count) {
  if (!IsOpen())
    ThrowErrno(EBADF);
  if (count == 0)
    return 0;
  if (!buffer)
    ThrowErrno(EINVAL);
  if (m_bWriting) {
    FlushWrite();
    m_bWriting = false;
    m_nBufPos = m_nBufLen = 0;
  }
  char* out = static_cast<char*>(buffer);
  UINT done = 0;
  while (done < count) {
    if (m_nBufPos < m_nBufLen) {
      std::size_t take = std::min<std::size_t>(count - done, m_nBufLen - m_nBufPos);
      std::memcpy(out + done, m_buffer.data() + m_nBufPos, take);
      m_nBufPos += take;
      done += static_cast<UINT>(take);
      continue;
    }
    if (count - done >= m_buffer.size()) {
      UINT got = CkolmFile::Read(out + done, count - done);
      done += got;
      break;
    }
    if (FillBuffer() == 0)
      break;
  }
  return done;
}

void CkolmStdioFile::Write(const void* buffer, UINT count) {
  if (!IsOpen() || m_strTempName.IsEmpty())
    ThrowErrno(EBADF);
  if (count == 0)
    return;
  if (!buffer)
    ThrowErrno(EINVAL);
  if (!m_bWriting) {
    DropReadAhead();
    m_bWriting = true;
    m_nBufPos = m_nBufLen = 0;
  }
  if (m_nBufLen + count > m_buffer.size()) {
    FlushWrite();
    if (count >= m_buffer.size()) {
      CkolmFile::Write(buffer, count);
      return;
    }
  }
  std::memcpy(m_buffer.data() + m_nBufLen, buffer, count);
  m_nBufLen += count;
}

ULONGLONG CkolmStdioFile::Seek(LONGLONG offset, UINT from) {
  if (!IsOpen())
    ThrowErrno(EBADF);
  if (m_bWriting) {
    FlushWrite();
  } else {
    // A relative seek counts from the position the caller sees.
    if (from == current)
      offset -= static_cast<LONGLONG>(m_nBufLen - m_nBufPos);
    m_nBufPos = m_nBufLen = 0;
  }
  return CkolmFile::Seek(offset, from);
}

ULONGLONG CkolmStdioFile::GetPosition() const {
  ULONGLONG position = CkolmFile::GetPosition();
  if (m_bWriting)
    return position + m_nBufLen;
  return position - (m_nBufLen - m_nBufPos);
}

ULONGLONG CkolmStdioFile::GetLength() const {
  ULONGLONG length = CkolmFile::GetLength();
  if (m_bWriting && m_nBufLen) {
    ULONGLONG reach = CkolmFile::GetPosition() + m_nBufLen;
    if (reach > length)
      length = reach;
  }
  return length;
}

void CkolmStdioFile::SetLength(ULONGLONG newLength) {
  if (m_bWriting)
    FlushWrite();
  else
    DropReadAhead();
  CkolmFile::SetLength(newLength);
}

void CkolmStdioFile::Flush() {
  if (!IsOpen())
    ThrowErrno(EBADF);
  FlushWrite();
}

void CkolmStdioFile::Close() {
  if (!IsOpen())
    return;
  try {
    FlushWrite();
  } catch (...) {
    CkolmStdioFile::Abort();
    throw;
  }
  m_bWriting = false;
  m_nBufPos = m_nBufLen = 0;
  CkolmFile::Close();
}

void CkolmStdioFile::Abort() {
  m_bWriting = false;
  m_nBufPos = m_nBufLen = 0;
  CkolmFile::Abort();
}

BOOL CkolmStdioFile::ReadString(CString& line) {
  line.Empty();
  if (!IsOpen())
    ThrowErrno(EBADF);
  if (m_bWriting) {
    FlushWrite();
    m_bWriting = false;
    m_nBufPos = m_nBufLen = 0;
  }
  bool any = false;
  for (;;) {
    if (m_nBufPos >= m_nBufLen && FillBuffer() == 0)
      break;
    const char* start = m_buffer.data() + m_nBufPos;
    std::size_t avail = m_nBufLen - m_nBufPos;
    const char* newline = static_cast<const char*>(std::memchr(start, '\n', avail));
    std::size_t take = newline ? static_cast<std::size_t>(newline - start) : avail;
    line += CString(start, static_cast<int>(take));
    any = true;
    m_nBufPos += take;
    if (newline) {
      ++m_nBufPos;
      break;
    }
  }
  int length = line.GetLength();
  if (length > 0 && line[length - 1] == '\r')
    line = line.Left(length - 1);
  return any ? TRUE : FALSE;
}

char* CkolmStdioFile::ReadString(char* buffer, UINT maxChars) {
  if (!buffer || maxChars == 0)
    return nullptr;
  if (!IsOpen())
    ThrowErrno(EBADF);
  if (m_bWriting) {
    FlushWrite();
    m_bWriting = false;
    m_nBufPos = m_nBufLen = 0;
  }
  UINT done = 0;
  while (done + 1 < maxChars) {
    if (m_nBufPos >= m_nBufLen && FillBuffer() == 0)
      break;
    char ch = m_buffer[m_nBufPos++];
    buffer[done++] = ch;
    if (ch == '\n')
      break;
  }
  buffer[done] = '\0';
  return done ? buffer : nullptr;
}

void CkolmStdioFile::WriteString(const char* text) {
  if (!text)
    return;
  Write(text, static_cast<UINT>(std::strlen(text)));
}

// ---------------------------------------------------------------------------
// Handle-style services

namespace {

std::mutex g_handleLock;
std::unordered_set<CkolmFile*>& Handles() {
  static std::unordered_set<CkolmFile*> s_handles;
  return s_handles;
}

CkolmFile* FromHandle(HANDLE file) {
  auto* object = static_cast<CkolmFile*>(file);
  std::lock_guard<std::mutex> guard(g_handleLock);
  return Handles().count(object) ? object : nullptr;
}

}  // namespace

HANDLE kolmCreateFile(const char* path, DWORD desiredAccess, DWORD shareMode, void* securityAttributes,
                      DWORD creationDisposition, DWORD flagsAndAttributes, HANDLE templateFile) {
  (void)shareMode;
  (void)securityAttributes;
  (void)flagsAndAttributes;
  (void)templateFile;
  bool reading = (desiredAccess & GENERIC_READ) != 0;
  bool writing = (desiredAccess & GENERIC_WRITE) != 0;
  UINT flags = CkolmFile::typeBinary;
  bool exists = path && FileExists(path);
  switch (creationDisposition) {
    case OPEN_EXISTING:
      break;
    case CREATE_NEW:
      if (exists) {
        errno = EEXIST;
        return INVALID_HANDLE_VALUE;
      }
      flags |= CkolmFile::modeCreate;
      break;
    case CREATE_ALWAYS:
      flags |= CkolmFile::modeCreate;
      break;
    case OPEN_ALWAYS:
      flags |= CkolmFile::modeCreate | CkolmFile::modeNoTruncate;
      break;
    case TRUNCATE_EXISTING:
      if (!exists) {
        errno = ENOENT;
        return INVALID_HANDLE_VALUE;
      }
      flags |= CkolmFile::modeCreate;
      break;
    default:
      errno = EINVAL;
      return INVALID_HANDLE_VALUE;
  }
  // Creating a file needs write access to it, whatever was asked for.
  if (!writing && (flags & CkolmFile::modeCreate) && !(exists && (flags & CkolmFile::modeNoTruncate)))
    writing = true;
  if (writing)
    flags |= reading ? CkolmFile::modeReadWrite : CkolmFile::modeWrite;
  auto* file = new CkolmFile;
  if (!file->Open(path, flags)) {
    int error = errno;
    delete file;
    errno = error;
    return INVALID_HANDLE_VALUE;
  }
  std::lock_guard<std::mutex> guard(g_handleLock);
  Handles().insert(file);
  return file;
}

BOOL kolmCloseFile(HANDLE file) {
  CkolmFile* object = FromHandle(file);
  if (!object)
    return FALSE;
  {
    std::lock_guard<std::mutex> guard(g_handleLock);
    Handles().erase(object);
  }
  BOOL ok = TRUE;
  try {
    object->Close();
  } catch (const CkolmFileException&) {
    ok = FALSE;
  }
  delete object;
  return ok;
}

LONGLONG kolmGetFileSize(HANDLE file) {
  CkolmFile* object = FromHandle(file);
  if (!object)
    return -1;
  try {
    return static_cast<LONGLONG>(object->GetLength());
  } catch (const CkolmFileException&) {
    return -1;
  }
}

int kolmGetFileDescriptor(HANDLE file) {
  CkolmFile* object = FromHandle(file);
  return object ? object->GetFileDescriptor() : -1;
}

LONGLONG kolmReadFile(HANDLE file, void* buffer, DWORD count) {
  CkolmFile* object = FromHandle(file);
  if (!object)
    return -1;
  try {
    return object->Read(buffer, count);
  } catch (const CkolmFileException&) {
    return -1;
  }
}

LONGLONG kolmWriteFile(HANDLE file, const void* buffer, DWORD count) {
  CkolmFile* object = FromHandle(file);
  if (!object)
    return -1;
  try {
    object->Write(buffer, count);
    return count;
  } catch (const CkolmFileException&) {
    return -1;
  }
}

}  // namespace telvanix
