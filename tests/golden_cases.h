// Golden cases: a folder under tests/data holds NAME.<ext> inputs, each with
// NAME.expected beside it. A runner describes what the library makes of the
// input and compares that text with the expected file. With
// TELVANIX_WRITE_EXPECTED set, the expected files are written instead, for
// review in the diff before they are committed.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "test_util.h"

namespace telvanix::test {

// Stems of the files in tests/data/FOLDER ending in `extension` (".html"),
// in sorted order so that every run walks the cases alike.
inline std::vector<std::string> GoldenCaseNames(const std::string& folder, const std::string& extension) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(TELVANIX_TEST_DATA_DIR) + "/" + folder, ec)) {
    const std::string file = entry.path().filename().string();
    if (file.size() > extension.size() && file.compare(file.size() - extension.size(), extension.size(), extension) == 0)
      names.push_back(file.substr(0, file.size() - extension.size()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

inline bool RewritingExpected() { return std::getenv("TELVANIX_WRITE_EXPECTED") != nullptr; }

// Compares `actual` with tests/data/RELATIVE, or rewrites that file.
inline void ExpectGolden(const std::string& relative, const std::string& actual) {
  if (RewritingExpected()) {
    std::ofstream(std::string(TELVANIX_TEST_DATA_DIR) + "/" + relative, std::ios::binary) << actual;
    return;
  }
  const std::string expected = ReadDataFile(relative);
  if (expected.empty() && !actual.empty()) {
    ADD_FAILURE() << "missing " << relative << " (run with TELVANIX_WRITE_EXPECTED=1 to write it)";
    return;
  }
  EXPECT_EQ(actual, expected) << relative;
}

// Calls describe(name, input) for every case of FOLDER and compares what it
// returns with NAME.expected. A folder with fewer than `minimum` cases fails,
// so a moved data folder cannot pass by running nothing.
template <class Describe>
void RunGoldenCases(const std::string& folder, const std::string& extension, Describe describe, size_t minimum = 1) {
  const std::vector<std::string> names = GoldenCaseNames(folder, extension);
  ASSERT_GE(names.size(), minimum) << "cases in tests/data/" << folder;
  for (const std::string& name : names) {
    SCOPED_TRACE(folder + "/" + name + extension);
    const std::string input = ReadDataFile(folder + "/" + name + extension);
    ExpectGolden(folder + "/" + name + ".expected", describe(name, input));
  }
}

}  // namespace telvanix::test
