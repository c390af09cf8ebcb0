// The stylesheet text the CSS benchmarks and the corpus check read: every
// ".css" file under TELVANIX_CSS_CORPUS (sorted by path), or the samples of
// the test suite when that is not set. bench/css_peer.py builds the same.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace telvanix::bench {

inline std::vector<std::string> CssCorpusFiles() {
  namespace fs = std::filesystem;
  fs::path root;
  if (const char* dir = std::getenv("TELVANIX_CSS_CORPUS"))
    root = dir;
  else
    root = fs::path(__FILE__).parent_path() / ".." / "tests" / "data" / "css";
  std::vector<std::string> files;
  std::error_code ec;
  for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec))
    if (it->is_regular_file() && it->path().extension() == ".css")
      files.push_back(it->path().string());
  std::sort(files.begin(), files.end());
  return files;
}

inline std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

}  // namespace telvanix::bench
