#include "telvanix/platform/gdi_font.h"

#include <cstdlib>
#include <cstring>

namespace telvanix {

namespace {

// a × b / c rounded half away from zero, -1 when c is 0, as the platform's MulDiv.
LONG MulDiv(LONG a, LONG b, LONG c) {
  if (c == 0) {
    return -1;
  }
  long long product = static_cast<long long>(a) * b;
  long long quotient = product / c;
  long long remainder = product % c;
  if (2 * std::llabs(remainder) >= std::llabs(static_cast<long long>(c))) {
    quotient += ((product < 0) != (c < 0)) ? -1 : 1;
  }
  return static_cast<LONG>(quotient);
}

}  // namespace

BOOL CFont::CreatePointFont(int tenthsOfPoint, LPCSTR faceName) {
  if (!faceName || m_created) {
    return FALSE;
  }
  std::memset(&m_logFont, 0, sizeof(m_logFont));
  m_logFont.lfCharSet = DEFAULT_CHARSET;
  std::strncpy(m_logFont.lfFaceName, faceName, LF_FACESIZE - 1);
  // A negative height asks for the character height, without internal leading.
  LONG pixels = MulDiv(ms_nScreenPixelsPerInch, tenthsOfPoint, 720);
  m_logFont.lfHeight = -std::abs(pixels);
  m_created = true;
  return TRUE;
}

int CFont::GetObject(int bytes, LPVOID out) const {
  if (!m_created || bytes < 0) {
    return 0;
  }
  if (!out) {
    return static_cast<int>(sizeof(LOGFONTA));
  }
  int count = bytes < static_cast<int>(sizeof(LOGFONTA)) ? bytes : static_cast<int>(sizeof(LOGFONTA));
  std::memcpy(out, &m_logFont, static_cast<std::size_t>(count));
  return count;
}

BOOL CFont::DeleteObject() {
  if (!m_created) {
    return FALSE;
  }
  m_created = false;
  std::memset(&m_logFont, 0, sizeof(m_logFont));
  return TRUE;
}

}  // namespace telvanix
