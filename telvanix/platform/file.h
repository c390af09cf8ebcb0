// The in-house file services over POSIX calls: an unbuffered file class
// (CkolmFile), a buffered one (CkolmStdioFile) and handle-style open/close
// functions. Read, Write, Seek and Close throw CkolmFileException on failure,
// as the host framework's file classes do; library operations catch it.
//
// Writing never touches the target directly: a file opened for writing is a
// temporary file in the target's folder that replaces the target by rename
// on Close. A file destroyed (or aborted) before Close leaves the target as
// it was and removes the temporary file, so no page is ever half-written.
//
// Paths may use "\" or "/"; a path that does not exist as written is looked
// up without regard to letter case (see path_lookup.h).
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using HANDLE = void*;
#define INVALID_HANDLE_VALUE (reinterpret_cast<::telvanix::HANDLE>(static_cast<std::intptr_t>(-1)))

class TELVANIX_API CkolmFileException : public std::exception {
 public:
  enum EmCause {
    none = 0,
    genericException = 1,
    fileNotFound = 2,
    badPath = 3,
    tooManyOpenFiles = 4,
    accessDenied = 5,
    invalidFile = 6,
    removeCurrentDir = 7,
    directoryFull = 8,
    badSeek = 9,
    hardIO = 10,
    sharingViolation = 11,
    lockViolation = 12,
    diskFull = 13,
    endOfFile = 14,
  };

  CkolmFileException() = default;
  CkolmFileException(int cause, int osError, const char* path);

  // The cause that best describes an errno value.
  static int CauseFromErrno(int error);

  int GetCause() const { return m_cause; }
  int GetErrno() const { return m_lOsError; }
  const CString& GetFileName() const { return m_strFileName; }
  const char* what() const noexcept override { return m_strMessage.c_str(); }

  int m_cause = none;
  int m_lOsError = 0;
  CString m_strFileName;

 private:
  std::string m_strMessage;
};

class TELVANIX_API CkolmFile {
 public:
  enum OpenFlags : UINT {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    shareCompat = 0x0000,
    shareExclusive = 0x0010,
    shareDenyWrite = 0x0020,
    shareDenyRead = 0x0030,
    shareDenyNone = 0x0040,
    modeNoInherit = 0x0080,
    modeCreate = 0x1000,
    modeNoTruncate = 0x2000,
    typeText = 0x4000,
    typeBinary = 0x8000,
  };
  enum SeekPosition : UINT { begin = 0, current = 1, end = 2 };

  CkolmFile();
  // Opens at once; throws CkolmFileException when the file cannot be opened.
  CkolmFile(const char* path, UINT openFlags);
  CkolmFile(const CkolmFile&) = delete;
  CkolmFile& operator=(const CkolmFile&) = delete;
  // An open file is aborted: a pending write is dropped, the target kept.
  virtual ~CkolmFile();

  // FALSE when the file cannot be opened (the reason goes to pError when
  // given); nothing is thrown. Write modes: modeCreate truncates (or makes)
  // the target, modeCreate|modeNoTruncate keeps an existing one's contents,
  // and modeWrite/modeReadWrite alone need the target to exist.
  virtual BOOL Open(const char* path, UINT openFlags, CkolmFileException* pError = nullptr);

  // Bytes read, fewer than count only at the end of the file.
  virtual UINT Read(void* buffer, UINT count);
  virtual void Write(const void* buffer, UINT count);
  virtual ULONGLONG Seek(LONGLONG offset, UINT from);
  ULONGLONG SeekToEnd() { return Seek(0, end); }
  void SeekToBegin() { Seek(0, begin); }
  virtual ULONGLONG GetPosition() const;
  virtual ULONGLONG GetLength() const;
  virtual void SetLength(ULONGLONG newLength);
  virtual void Flush();
  // Commits a pending write (the temporary file replaces the target) and
  // closes; throws when that fails, after removing the temporary file.
  virtual void Close();
  // Closes without throwing; a pending write is dropped.
  virtual void Abort();

  BOOL IsOpen() const { return m_hFile >= 0; }
  // The path the file was opened as, after "\" and letter-case resolution.
  CString GetFilePath() const { return m_strFileName; }
  // The descriptor reading and writing go through (-1 when closed).
  int GetFileDescriptor() const { return m_hFile; }

 protected:
  [[noreturn]] void ThrowErrno(int error) const;
  void CloseDescriptor(bool commit);

  int m_hFile = -1;
  UINT m_nOpenFlags = 0;
  CString m_strFileName;  // the target
  CString m_strTempName;  // the file written until Close, empty when reading
};

// Buffered file: the same modes, plus text lines.
class TELVANIX_API CkolmStdioFile : public CkolmFile {
 public:
  CkolmStdioFile();
  CkolmStdioFile(const char* path, UINT openFlags);
  ~CkolmStdioFile() override;

  BOOL Open(const char* path, UINT openFlags, CkolmFileException* pError = nullptr) override;
  UINT Read(void* buffer, UINT count) override;
  void Write(const void* buffer, UINT count) override;
  ULONGLONG Seek(LONGLONG offset, UINT from) override;
  ULONGLONG GetPosition() const override;
  ULONGLONG GetLength() const override;
  void SetLength(ULONGLONG newLength) override;
  void Flush() override;
  void Close() override;
  void Abort() override;

  // Reads one line without its "\n" (and a "\r" before it); FALSE at the end
  // of the file with nothing read.
  BOOL ReadString(CString& line);
  // Up to maxChars - 1 bytes of a line, the "\n" kept, zero-terminated; null
  // at the end of the file or for a bad buffer.
  char* ReadString(char* buffer, UINT maxChars);
  void WriteString(const char* text);

 private:
  void FlushWrite();
  void DropReadAhead();
  int FillBuffer();

  std::vector<char> m_buffer;
  std::size_t m_nBufPos = 0;  // next byte to hand out (reading)
  std::size_t m_nBufLen = 0;  // bytes held (reading: read ahead; writing: pending)
  bool m_bWriting = false;
};

// Handle-style services, shaped like the platform's file-open/close calls.
constexpr DWORD GENERIC_READ = 0x80000000u;
constexpr DWORD GENERIC_WRITE = 0x40000000u;
constexpr DWORD FILE_SHARE_READ = 0x1;
constexpr DWORD FILE_SHARE_WRITE = 0x2;
constexpr DWORD FILE_SHARE_DELETE = 0x4;
constexpr DWORD CREATE_NEW = 1;
constexpr DWORD CREATE_ALWAYS = 2;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD OPEN_ALWAYS = 4;
constexpr DWORD TRUNCATE_EXISTING = 5;

// INVALID_HANDLE_VALUE when the file cannot be opened (never throws). A
// handle opened with GENERIC_WRITE writes a temporary file that replaces the
// target on kolmCloseFile.
TELVANIX_API HANDLE kolmCreateFile(const char* path, DWORD desiredAccess, DWORD shareMode, void* securityAttributes,
                                   DWORD creationDisposition, DWORD flagsAndAttributes, HANDLE templateFile);
// TRUE when the handle was open and everything pending was committed.
TELVANIX_API BOOL kolmCloseFile(HANDLE file);
// The file's length; -1 for a bad handle.
TELVANIX_API LONGLONG kolmGetFileSize(HANDLE file);
// The descriptor of an open handle (for mapping it), -1 for a bad handle.
TELVANIX_API int kolmGetFileDescriptor(HANDLE file);
// Bytes read or written, -1 on failure.
TELVANIX_API LONGLONG kolmReadFile(HANDLE file, void* buffer, DWORD count);
TELVANIX_API LONGLONG kolmWriteFile(HANDLE file, const void* buffer, DWORD count);

}  // namespace telvanix
