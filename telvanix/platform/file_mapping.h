// Read-only mapping of a whole file, the way pages are read: the bytes are
// used in place and copied only into the tokens that keep them.
#pragma once

#include <cstddef>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CFileMapping {
 public:
  CFileMapping() = default;
  CFileMapping(const CFileMapping&) = delete;
  CFileMapping& operator=(const CFileMapping&) = delete;
  CFileMapping(CFileMapping&& other) noexcept;
  CFileMapping& operator=(CFileMapping&& other) noexcept;
  ~CFileMapping() { Close(); }

  // Maps the file (path looked up as the file classes do). FALSE when it
  // cannot be opened or mapped; never throws. An empty file gives an open
  // mapping of size 0 whose data pointer is valid but holds nothing.
  BOOL Open(const char* path);
  // Safe with nothing open.
  void Close();

  BOOL IsOpen() const { return m_pData != nullptr; }
  const BYTE* GetData() const { return m_pData; }
  std::size_t GetSize() const { return m_nSize; }
  const CString& GetFilePath() const { return m_strPath; }

 private:
  const BYTE* m_pData = nullptr;
  std::size_t m_nSize = 0;
  bool m_bMapped = false;  // false for the empty-file stand-in
  CString m_strPath;
};

}  // namespace telvanix
