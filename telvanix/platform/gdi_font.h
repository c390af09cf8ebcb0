// A font object of the host framework, reduced to what the font records
// need: make a logical font from a size in tenths of a point and a face name,
// read its 60-byte record back, and delete it. Sizes are mapped to heights
// for a 96 dots-per-inch screen, as a display device context reports them.
#pragma once

#include "telvanix/platform/win_records.h"

namespace telvanix {

class TELVANIX_API CFont {
 public:
  CFont() = default;
  ~CFont() { DeleteObject(); }
  CFont(const CFont&) = delete;
  CFont& operator=(const CFont&) = delete;

  // 0 when the face name is null or a font is already held.
  BOOL CreatePointFont(int tenthsOfPoint, LPCSTR faceName);
  // Copies up to `bytes` bytes of the held LOGFONTA into `out` and returns
  // the count, or sizeof(LOGFONTA) when `out` is null; 0 when nothing is held.
  int GetObject(int bytes, LPVOID out) const;
  BOOL DeleteObject();
  bool IsCreated() const { return m_created; }

  // Pixels per inch of the screen the sizes are mapped for.
  static constexpr int ms_nScreenPixelsPerInch = 96;

 private:
  LOGFONTA m_logFont{};
  bool m_created = false;
};

}  // namespace telvanix
