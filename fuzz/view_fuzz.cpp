// A random page with a random stylesheet (the input cut at its first zero
// byte: the sheet, then the page; the sheet goes into a STYLE block ahead
// of the page): the formatting view builds without a fault and gives every
// value of every element; and every style format the sheet's rules make
// prints declarations that read back to the same format.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/css_style.h"
#include "telvanix/css/style_format.h"
#include "telvanix/view/html_file_view.h"
#include "telvanix/view/tag_format.h"

using namespace telvanix;

namespace {

// A format prints text that reads back to an equal format.
void CheckPrintsBack(const CCssStyleFormat* format) {
  if (!format)
    return;
  const CString printed = format->GetPrintableString();
  CCssStyleFormat again;
  again.AnalyseCssProperties(printed);
  if (!again.Compare(format))
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const char* text = reinterpret_cast<const char*>(data);
  const size_t cut = strnlen(text, size);
  const std::string sheet(text, cut);
  const std::string body(cut < size ? text + cut + 1 : "", cut < size ? size - cut - 1 : 0);

  CByteString sheetBytes;
  if (!sheet.empty())
    sheetBytes.Append(reinterpret_cast<const unsigned char*>(sheet.data()), static_cast<int>(sheet.size()));
  CCssPack pack(&sheetBytes);
  pack.Parse();
  POSITION pos = nullptr;
  for (CCssStyle* style = pack.GetFirstStyle(pos); style; style = pack.GetNextStyle(pos))
    CheckPrintsBack(style->GetStyleFormat());

  const std::string page = "<html><head><style>" + sheet + "</style></head>" + body;
  CByteString bytes;
  bytes.Append(reinterpret_cast<const unsigned char*>(page.data()), static_cast<int>(page.size()));
  CHtmlFileView view(bytes, nullptr);
  if (!view.BuildView())
    return 0;
  for (int i = 0; i < view.GetElementCount(); ++i) {
    const CHtmlTagFormat* format = view.GetTagFormat(i);
    if (!format)
      std::abort();
    for (int p = 0; p < CCssStyleCombine::emPropertyCount; ++p) {
      const auto property = static_cast<CCssStyleCombine::EmProperty>(p);
      (void)format->GetComputedValue(property);
      (void)format->GetOriginText(property);
    }
    (void)view.IsElementSelected(i, sheet.c_str());
  }
  return 0;
}
