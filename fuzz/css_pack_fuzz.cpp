// Stylesheet parsing and saving on arbitrary bytes: Parse over a terminated
// copy, BuildList over an exact-size one (so any read past the end shows),
// then everything a host reads back from the lines.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/css_style.h"

using namespace telvanix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20))
    return 0;
  CByteString content(data, static_cast<int>(size));
  CCssPackEx pack(&content);
  pack.Parse();
  CByteString saved;
  pack.Save(saved);

  POSITION pos = nullptr;
  for (CCssStyle* style = pack.GetFirstStyle(pos); style; style = pack.GetNextStyle(pos)) {
    style->GetStyleName();
    style->GetLastSelector();
    style->GetUniqueBlockStyleName();
    style->GetOriginalString();
  }
  for (CString url = pack.GetFirstImportCssUrl(pos); !url.IsEmpty(); url = pack.GetNextImportCssUrl(pos)) {
  }
  UINT index = 0;
  for (CString name = pack.GetFirstBaggageFile(index); !name.IsEmpty(); name = pack.GetNextBaggageFile(index)) {
  }

  // Saved text must read again without trouble.
  CCssPack again(&saved);
  again.Parse();

  std::vector<unsigned char> exact(data, data + size);
  CCssPack direct(static_cast<const CByteString*>(nullptr));
  direct.BuildList(exact.data(), exact.data() + exact.size());
  return 0;
}
