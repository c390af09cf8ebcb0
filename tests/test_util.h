// Helpers shared by the test suites.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>
#include <algorithm>

#include "telvanix/platform/code_page.h"

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

// A fresh folder under the system's temporary folder, removed with all its
// contents when the object goes.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "telvanix-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()))
      m_path = pattern;
  }
  ~TempDir() {
    std::error_code ignored;
    if (!m_path.empty())
      std::filesystem::remove_all(m_path, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return m_path; }
  std::string operator/(const std::string& relative) const { return m_path + "/" + relative; }

  // Writes bytes to a file below the folder, making the folders it needs.
  void Write(const std::string& relative, const std::string& bytes) const {
    std::filesystem::path full(m_path + "/" + relative);
    std::filesystem::create_directories(full.parent_path());
    std::ofstream(full, std::ios::binary) << bytes;
  }
  std::string Read(const std::string& relative) const {
    std::ifstream in(m_path + "/" + relative, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
  }
  // Names of the entries directly in a folder below this one, sorted.
  std::string List(const std::string& relative = "") const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_path + "/" + relative))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    std::string joined;
    for (const auto& name : names)
      joined += (joined.empty() ? "" : " ") + name;
    return joined;
  }

 private:
  std::string m_path;
};

// Sets (or with null, removes) an environment variable until the object goes.
class EnvScope {
 public:
  EnvScope(const char* name, const char* value) : m_name(name) {
    const char* old = std::getenv(name);
    m_had = old != nullptr;
    if (m_had)
      m_old = old;
    if (value)
      ::setenv(name, value, 1);
    else
      ::unsetenv(name);
  }
  ~EnvScope() {
    if (m_had)
      ::setenv(m_name.c_str(), m_old.c_str(), 1);
    else
      ::unsetenv(m_name.c_str());
  }
  EnvScope(const EnvScope&) = delete;
  EnvScope& operator=(const EnvScope&) = delete;

 private:
  std::string m_name, m_old;
  bool m_had = false;
};

// Makes another code page the active one until the object goes.
class CodePageScope {
 public:
  explicit CodePageScope(UINT codePage) : m_previous(SetActiveCodePage(codePage)) {}
  ~CodePageScope() { SetActiveCodePage(m_previous); }
  CodePageScope(const CodePageScope&) = delete;
  CodePageScope& operator=(const CodePageScope&) = delete;

 private:
  UINT m_previous;
};

}  // namespace telvanix::test
