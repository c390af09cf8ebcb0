// Text fields as the sitemap classes keep them: an empty field reads as null,
// and a null text leaves the field as it was.
#pragma once

#include "telvanix/platform/string_types.h"

namespace telvanix::sitemap_detail {

inline const char* TextOrNull(const CString& text) {
  return text.IsEmpty() ? nullptr : static_cast<const char*>(text);
}

inline int SetText(CString& field, const char* text) {
  if (!text)
    return 0;
  field = text;
  return 1;
}

}  // namespace telvanix::sitemap_detail
