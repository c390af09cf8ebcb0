// The pages the page benchmarks read, held in memory: every ".htm"/".html"
// file under TELVANIX_HTML_CORPUS (sorted by path), else under the
// repository's corpus/fp-docs (scripts/fetch-corpus.sh), else the sample
// projects under samples/. GetLargePage makes one page of them all.
#pragma once

#include <algorithm>
#include <cctype>
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

namespace detail {
// Where `what` (lower case) starts in text from `from` on, letter case
// aside; npos when it does not.
inline std::size_t FindNoCase(const std::string& text, const char* what, std::size_t from) {
  const std::size_t n = std::char_traits<char>::length(what);
  for (std::size_t i = from; i + n <= text.size(); ++i) {
    std::size_t k = 0;
    while (k < n && std::tolower(static_cast<unsigned char>(text[i + k])) == what[k]) ++k;
    if (k == n) return i;
  }
  return std::string::npos;
}
}  // namespace detail

// One page of about 30 MB made from the corpus as scripts/make-big-page.sh
// makes it: the bodies of every other page, then of the pages between, one
// after another inside one HTML/HEAD/BODY (smaller when the corpus is).
inline const std::string& GetLargePage() {
  static const std::string page = [] {
    constexpr std::size_t kTarget = 30u * 1000 * 1000;
    const PageCorpus& c = GetPageCorpus();
    std::string out =
        "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">\n<html>\n<head>\n"
        "<meta content=\"text/html; charset=utf-8\" http-equiv=\"Content-Type\">\n"
        "<title>Free Pascal manuals on one page</title>\n"
        "<link rel=\"stylesheet\" href=\"fpdoc.css\" type=\"text/css\">\n</head>\n<body>\n";
    const std::size_t head = out.size();
    for (std::size_t start : {0, 1}) {
      for (std::size_t i = start; i < c.pages.size() && out.size() - head < kTarget; i += 2) {
        const std::string& p = c.pages[i];
        std::size_t b = detail::FindNoCase(p, "<body", 0);
        if (b == std::string::npos || (b = p.find('>', b)) == std::string::npos) continue;
        std::size_t e = std::string::npos;
        for (std::size_t at = detail::FindNoCase(p, "</body>", b); at != std::string::npos;
             at = detail::FindNoCase(p, "</body>", at + 1))
          e = at;
        if (e != std::string::npos) out.append(p, b + 1, e - b - 1);
      }
    }
    return out + "</body>\n</html>\n";
  }();
  return page;
}

}  // namespace telvanix::bench
