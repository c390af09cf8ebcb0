// Helpers shared by the test suites.
#pragma once

#include <fstream>
#include <sstream>
#include <string>

#ifndef TELVANIX_TEST_DATA_DIR
#define TELVANIX_TEST_DATA_DIR "tests/data"
#endif

namespace telvanix::test {

// Whole contents of a file under tests/data, or "" when it cannot be read.
inline std::string ReadDataFile(const std::string& relative) {
  std::ifstream in(std::string(TELVANIX_TEST_DATA_DIR) + "/" + relative, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

}  // namespace telvanix::test
