#include "telvanix/platform/file_mapping.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <cstdint>
#include <utility>

#include "telvanix/platform/file.h"

namespace telvanix {

namespace {
const BYTE kEmptyData[1] = {0};
}

CFileMapping::CFileMapping(CFileMapping&& other) noexcept
    : m_pData(other.m_pData), m_nSize(other.m_nSize), m_bMapped(other.m_bMapped), m_strPath(std::move(other.m_strPath)) {
  other.m_pData = nullptr;
  other.m_nSize = 0;
  other.m_bMapped = false;
}

CFileMapping& CFileMapping::operator=(CFileMapping&& other) noexcept {
  if (this != &other) {
    Close();
    m_pData = other.m_pData;
    m_nSize = other.m_nSize;
    m_bMapped = other.m_bMapped;
    m_strPath = std::move(other.m_strPath);
    other.m_pData = nullptr;
    other.m_nSize = 0;
    other.m_bMapped = false;
  }
  return *this;
}

BOOL CFileMapping::Open(const char* path) {
  Close();
  HANDLE file = kolmCreateFile(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE)
    return FALSE;
  BOOL ok = FALSE;
  LONGLONG size = kolmGetFileSize(file);
  int fd = kolmGetFileDescriptor(file);
  if (size == 0) {
    m_pData = kEmptyData;
    m_nSize = 0;
    m_bMapped = false;
    ok = TRUE;
  } else if (size > 0 && static_cast<std::uint64_t>(size) <= SIZE_MAX && fd >= 0) {
    void* view = ::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_PRIVATE, fd, 0);
    if (view != MAP_FAILED) {
      ::madvise(view, static_cast<std::size_t>(size), MADV_SEQUENTIAL);
      m_pData = static_cast<const BYTE*>(view);
      m_nSize = static_cast<std::size_t>(size);
      m_bMapped = true;
      ok = TRUE;
    }
  }
  // The view outlives the descriptor; nothing else is kept open.
  kolmCloseFile(file);
  if (ok)
    m_strPath = path;
  return ok;
}

void CFileMapping::Close() {
  if (m_bMapped && m_pData)
    ::munmap(const_cast<BYTE*>(m_pData), m_nSize);
  m_pData = nullptr;
  m_nSize = 0;
  m_bMapped = false;
  m_strPath.Empty();
}

}  // namespace telvanix
