// Resources asked for by module name from a host linked to the shared library.
#include <gtest/gtest.h>

#include <string>

#include "telvanix/telvanix.h"

using namespace telvanix;

TEST(HostModuleName, SharedObjectAnswersToItsFileName) {
  const std::string path = GetModuleFileNameOfLibrary().str();
  const std::string library = TELVANIX_LIBRARY_FILE;
  const std::string fileName = path.substr(path.rfind('/') + 1);
  // The loader's name for the library is the shared object, not this program.
  EXPECT_NE(fileName.find("telvanix"), std::string::npos) << path;
  EXPECT_EQ(fileName.find("tests"), std::string::npos) << path;

  CString text;
  EXPECT_EQ(LoadStringResource(&text, 3001, fileName.c_str()), 1);
  EXPECT_EQ(text, "Arial");
  const std::string real = library.substr(library.rfind('/') + 1);
  EXPECT_EQ(LoadStringResource(&text, 3000, real.c_str()), 1) << real;
  EXPECT_EQ(LoadStringResource(&text, 3000, "telvanix.dll"), 1);
  EXPECT_EQ(LoadStringResource(&text, 3000, "telvanix_host_tests"), 0);

  CByteString css;
  EXPECT_EQ(LoadBinaryResource(&css, MAKEINTRESOURCE(4001), fileName.c_str()), 1);
  EXPECT_EQ(css.GetLength(), 2089);
}
