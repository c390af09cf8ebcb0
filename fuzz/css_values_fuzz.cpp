// Feeds arbitrary text to the style-value readers and the declaration-list
// reader, then prints and converts what they read. Any crash, sanitizer
// report or out-of-bounds read is a finding.
#include <cstddef>
#include <cstdint>
#include <string>

#include "telvanix/css/style_format.h"
#include "telvanix/css/style_property.h"
#include "telvanix/css/style_values.h"

using namespace telvanix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0)
    return 0;
  const uint8_t selector = data[0];
  std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const char* p = text.c_str();

  switch (selector % 4) {
    case 0: {
      CSttNumber number(p);
      CSttNumber other(p + text.size() / 2);
      (void)number.GetPrintableString();
      (void)number.GetPoints(12, 75, 1200);
      (void)number.GetPoints(-1, -1, -1);
      number += other;
      (void)number.GetPrintableString();
      break;
    }
    case 1: {
      CSttColor color(p);
      (void)color.GetPrintableString();
      break;
    }
    case 2: {
      CSttUrl url(p);
      (void)url.GetPrintableString();
      (void)CSttUrl::MakeNormalizedUrl(p, '\'');
      (void)CCssStyleProperty::GetFileNameFromUrlPairValue(p);
      (void)CCssStyleProperty::DeQuotePairValue(p, static_cast<int>(selector) - 2);
      break;
    }
    default: {
      CCssStyleProperty list;
      list.Analyse(p);
      (void)list.GetPrintableString("  ");
      CCssStyleFormat* format = list.GetStyleFormat();
      if (format)
        (void)format->GetFirstFontFamily();
      CCssStyleProperty copy;
      copy.Copy(&list);
      copy.Concat(&list);
      break;
    }
  }
  return 0;
}
