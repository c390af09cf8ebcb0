#include "telvanix/foundation/text_utils.h"

#include "telvanix/platform/code_page.h"

namespace telvanix {

int TrimLeftAndRight(CString& text) {
  static const char kBlanks[] = " \t\n\r\a";
  if (text.IsEmpty()) return 1;
  text.TrimLeft(kBlanks);
  text.TrimRight(kBlanks);
  return 1;
}

UINT IsDBCS() {
  const UINT cp = GetActiveCodePage();
  switch (cp) {
    case 874: case 932: case 936: case 949: case 950:
    case 1254: case 1255: case 1256: case 1257: case 1200:
      return cp;
    default:
      return 0;
  }
}

BOOL IsLeadByteHere(BYTE ch) {
  return ch >= 0x80 && IsDBCS() != 0 && IsDBCSLeadByte(ch);
}

}  // namespace telvanix
