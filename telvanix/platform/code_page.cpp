#include "telvanix/platform/code_page.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace telvanix {

namespace {

UINT ParseCodePage(const char* text) {
  if (!text)
    return 0;
  if (::strncasecmp(text, "windows-", 8) == 0)
    text += 8;
  else if (::strncasecmp(text, "cp", 2) == 0)
    text += 2;
  if (*text < '0' || *text > '9')
    return 0;
  char* end = nullptr;
  unsigned long value = std::strtoul(text, &end, 10);
  if (*end != '\0' || value == 0 || value > 65535)
    return 0;
  return static_cast<UINT>(value);
}

// Read once: the environment is not consulted again after the first query.
UINT EnvironmentCodePage() {
  static const UINT s_codePage = [] {
    UINT cp = ParseCodePage(std::getenv("TELVANIX_CODEPAGE"));
    return cp ? cp : kDefaultCodePage;
  }();
  return s_codePage;
}

std::atomic<UINT> g_activeCodePage{0};  // 0: not set by the host

}  // namespace

UINT GetActiveCodePage() {
  UINT cp = g_activeCodePage.load(std::memory_order_relaxed);
  return cp ? cp : EnvironmentCodePage();
}

UINT SetActiveCodePage(UINT codePage) {
  UINT previous = GetActiveCodePage();
  g_activeCodePage.store(codePage, std::memory_order_relaxed);
  return previous;
}

BOOL IsDBCSCodePage(UINT codePage) {
  switch (codePage) {
    case 932:
    case 936:
    case 949:
    case 950:
      return TRUE;
    default:
      return FALSE;
  }
}

BOOL IsDBCSLeadByteEx(UINT codePage, BYTE ch) {
  if (codePage == CP_ACP)
    codePage = GetActiveCodePage();
  switch (codePage) {
    case 932:  // Shift-JIS: 0x81-0x9F and 0xE0-0xFC
      return ((ch >= 0x81 && ch <= 0x9F) || (ch >= 0xE0 && ch <= 0xFC)) ? TRUE : FALSE;
    case 936:  // GBK
    case 949:  // Unified Hangul Code
    case 950:  // Big5
      return (ch >= 0x81 && ch <= 0xFE) ? TRUE : FALSE;
    default:
      return FALSE;
  }
}

BOOL IsDBCSLeadByte(BYTE ch) { return IsDBCSLeadByteEx(GetActiveCodePage(), ch); }

}  // namespace telvanix
