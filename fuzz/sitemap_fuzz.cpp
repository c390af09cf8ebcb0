// Any bytes handed to the sitemap reader: it must never crash, hang or read
// out of bounds, and whatever it reads must print and read back to the same
// page. Values other than names are printed as they are, so a double quote
// read inside one cannot survive printing, and names and titles lose control
// characters when encoded: inputs holding either are only read.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "telvanix/sitemap/file_sitemap.h"

using namespace telvanix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 16))
    return 0;
  CByteString source;
  if (size)
    source.Assign(data, static_cast<int>(size));
  CHtmlFileSitemap file;
  file.Read(source);

  CByteString page;
  file.Write(page);
  for (size_t i = 0; i < size; ++i) {
    if (data[i] == '"' || (data[i] < 0x20 && data[i] != '\t' && data[i] != '\r' && data[i] != '\n'))
      return 0;
  }
  CHtmlFileSitemap again;
  if (!again.Read(page))
    std::abort();  // a written page always holds the site properties object
  CByteString page2;
  again.Write(page2);
  if (page.GetLength() != page2.GetLength() ||
      std::memcmp(page.GetContent(), page2.GetContent(), static_cast<size_t>(page.GetLength())) != 0)
    std::abort();
  return 0;
}
