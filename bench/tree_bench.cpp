// Page parsing speed with and without the element tree: bytes/s of level 2
// (tokens, attributes, decoded text), level 4 (the same plus matching,
// outline repair and tree building), the tree build alone over parsed
// tokens, and, when built with libxml2, that library's HTML tree reader over
// the same pages for comparison. Pages: every ".htm"/".html" file under
// TELVANIX_HTML_CORPUS, or the sample project's topics when that is not set.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "telvanix/html/entity_tree.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/html/token_list.h"

#ifdef TELVANIX_BENCH_LIBXML2
#include <libxml/HTMLparser.h>
#endif

namespace telvanix {
namespace {

struct Corpus {
  std::vector<CByteString> pages;
  int64_t bytes = 0;
};

const Corpus& GetCorpus() {
  static const Corpus corpus = [] {
    namespace fs = std::filesystem;
    fs::path root;
    if (const char* dir = std::getenv("TELVANIX_HTML_CORPUS"))
      root = dir;
    else
      root = fs::path(__FILE__).parent_path() / ".." / "samples";
    std::vector<std::string> files;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec)) {
      const std::string ext = it->path().extension().string();
      if (it->is_regular_file() && (ext == ".htm" || ext == ".html")) files.push_back(it->path().string());
    }
    std::sort(files.begin(), files.end());
    Corpus c;
    for (const std::string& path : files) {
      std::ifstream in(path, std::ios::binary);
      std::ostringstream text;
      text << in.rdbuf();
      const std::string s = text.str();
      if (s.empty()) continue;
      c.pages.emplace_back(reinterpret_cast<const unsigned char*>(s.data()), static_cast<int>(s.size()));
      c.bytes += static_cast<int64_t>(s.size());
    }
    return c;
  }();
  return corpus;
}

void ParseAtLevel(benchmark::State& state, int nLevel) {
  const Corpus& corpus = GetCorpus();
  for (auto _ : state) {
    for (const CByteString& page : corpus.pages) {
      CByteString& source = const_cast<CByteString&>(page);
      CHtmlPack pack(source, nullptr);
      benchmark::DoNotOptimize(pack.Parse(static_cast<CHtmlPack::EmParseFlag>(nLevel)));
    }
  }
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
}

void BM_ParseLevel2(benchmark::State& state) { ParseAtLevel(state, 2); }
void BM_ParseLevel4(benchmark::State& state) { ParseAtLevel(state, 4); }

// The three tree passes alone, over token lists parsed (and repaired) once.
void BM_BuildTreeOnly(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  std::vector<std::unique_ptr<CHtmlPack>> packs;
  for (const CByteString& page : corpus.pages) {
    packs.push_back(std::make_unique<CHtmlPack>(const_cast<CByteString&>(page), nullptr));
    packs.back()->Parse(static_cast<CHtmlPack::EmParseFlag>(4));
  }
  for (auto _ : state) {
    for (auto& pack : packs) benchmark::DoNotOptimize(pack->RebuildEntityTree());
  }
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
}

BENCHMARK(BM_ParseLevel2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseLevel4)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildTreeOnly)->Unit(benchmark::kMillisecond);

#ifdef TELVANIX_BENCH_LIBXML2
void BM_Libxml2HtmlTree(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  for (auto _ : state) {
    for (const CByteString& page : corpus.pages) {
      htmlDocPtr doc = htmlReadMemory(reinterpret_cast<const char*>(page.GetContent()), page.GetLength(), nullptr,
                                      "ISO-8859-1", HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                                                          HTML_PARSE_NONET);
      benchmark::DoNotOptimize(doc);
      xmlFreeDoc(doc);
    }
  }
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
}
BENCHMARK(BM_Libxml2HtmlTree)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
}  // namespace telvanix
