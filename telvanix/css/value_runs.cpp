#include "telvanix/css/internal/value_runs.h"

#include "telvanix/css/css_pack.h"
#include "telvanix/foundation/text_utils.h"

namespace telvanix {

const unsigned char* CssRunTextEnd(const unsigned char* p, const unsigned char* runEnd) {
  const bool dbcs = IsDBCS() != 0;
  for (const unsigned char* s = p; s < runEnd; ++s) {
    if (dbcs && IsLeadByteHere(*s)) {
      ++s;
      continue;
    }
    unsigned char closer = 0;
    if (*s == '\'' || *s == '"')
      closer = *s;
    else if (*s == '(')
      closer = ')';
    else if (*s == '[')
      closer = ']';
    if (!closer)
      continue;
    // The scanner ends a run at its first quoted stretch, so the first
    // closer after the opener is the run's last byte.
    for (const unsigned char* t = s + 1; t < runEnd; ++t) {
      if (dbcs && IsLeadByteHere(*t)) {
        ++t;
        continue;
      }
      if (*t == closer)
        return t + 1;
    }
    return runEnd;
  }
  return runEnd;
}

bool CssNextValueRun(const unsigned char*& p, const unsigned char* end, UINT flags, CString& run) {
  run.Empty();
  while (p < end) {
    p = CCssPack::CssSkipSpaces(p, end, 1);
    if (p >= end || *p == '\0')
      return false;
    const unsigned char* q = CCssPack::CssSkipAny(p, end, flags);
    if (q > p) {
      run = CString(reinterpret_cast<const char*>(p), static_cast<int>(CssRunTextEnd(p, q) - p));
      p = q;
      return true;
    }
    ++p;
  }
  return false;
}

}  // namespace telvanix
