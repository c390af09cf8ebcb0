// The pages the page benchmarks read, held in memory: every ".htm"/".html"
// file under TELVANIX_HTML_CORPUS (sorted by path), else under the
// repository's corpus/fp-docs (scripts/fetch-corpus.sh), else the sample
// projects under samples/.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace telvanix::bench {

struct PageCorpus {
  std::string root;
  std::vector<std::string> paths;
  std::vector<std::string> pages;
  int64_t bytes = 0;
};

inline const PageCorpus& GetPageCorpus() {
  static const PageCorpus corpus = [] {
    namespace fs = std::filesystem;
    const fs::path repo = fs::path(__FILE__).parent_path() / "..";
    fs::path root;
    if (const char* dir = std::getenv("TELVANIX_HTML_CORPUS"))
      root = dir;
    else if (fs::exists(repo / "corpus" / "fp-docs"))
      root = repo / "corpus" / "fp-docs";
    else
      root = repo / "samples";
    root = root.lexically_normal();
    std::vector<std::string> files;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec)) {
      const std::string ext = it->path().extension().string();
      if (it->is_regular_file() && (ext == ".htm" || ext == ".html"))
        files.push_back(it->path().string());
    }
    std::sort(files.begin(), files.end());
    PageCorpus c;
    c.root = root.string();
    for (const std::string& path : files) {
      std::ifstream in(path, std::ios::binary);
      std::ostringstream text;
      text << in.rdbuf();
      if (text.str().empty())
        continue;
      c.paths.push_back(path);
      c.pages.push_back(text.str());
      c.bytes += static_cast<int64_t>(c.pages.back().size());
    }
    return c;
  }();
  return corpus;
}

}  // namespace telvanix::bench
