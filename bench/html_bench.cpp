// Reading speed of pages at level 2 (tokens, attributes, decoded text)
// against libxml2's HTML reader (htmlReadMemory, recovering, silent, no
// network) and gumbo over the same bytes, reported as bytes/s and as ratios
// to libxml2. Also the heap a parsed page holds, as a multiple of its size.
// Pages: every ".htm"/".html" file under TELVANIX_HTML_CORPUS, else under
// the repository's corpus/ folder (scripts/fetch-corpus.sh), else samples/.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "telvanix/html/html_pack.h"
#include "telvanix/html/token_list.h"

#ifdef TELVANIX_BENCH_LIBXML2
#include <libxml/HTMLparser.h>
#endif
#ifdef TELVANIX_BENCH_GUMBO
#include <gumbo.h>
#endif

namespace telvanix {
namespace {

struct Corpus {
  std::vector<std::string> pages;
  int64_t bytes = 0;
};

const Corpus& GetCorpus() {
  static const Corpus corpus = [] {
    namespace fs = std::filesystem;
    fs::path here = fs::path(__FILE__).parent_path() / "..";
    fs::path root;
    if (const char* dir = std::getenv("TELVANIX_HTML_CORPUS"))
      root = dir;
    else if (fs::exists(here / "corpus" / "fp-docs"))
      root = here / "corpus" / "fp-docs";
    else
      root = here / "samples";
    std::vector<std::string> files;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec)) {
      const std::string ext = it->path().extension().string();
      if (it->is_regular_file() && (ext == ".htm" || ext == ".html"))
        files.push_back(it->path().string());
    }
    std::sort(files.begin(), files.end());
    Corpus c;
    for (const std::string& path : files) {
      std::ifstream in(path, std::ios::binary);
      std::ostringstream text;
      text << in.rdbuf();
      if (text.str().empty())
        continue;
      c.pages.push_back(text.str());
      c.bytes += static_cast<int64_t>(c.pages.back().size());
    }
    return c;
  }();
  return corpus;
}

const unsigned char* U(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.data()); }

// One list for the whole corpus: its arena is reset and reused per page.
void TelvanixPass(const Corpus& corpus, CHtmlTokenList& list) {
  for (const std::string& page : corpus.pages) {
    list.BuildTokenList(U(page), U(page) + page.size(), 0x103);
    benchmark::DoNotOptimize(list.GetCount());
  }
}

#ifdef TELVANIX_BENCH_LIBXML2
constexpr int kXmlOptions = HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET;
void Libxml2Pass(const Corpus& corpus) {
  for (const std::string& page : corpus.pages) {
    htmlDocPtr doc = htmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, nullptr, kXmlOptions);
    benchmark::DoNotOptimize(doc);
    xmlFreeDoc(doc);
  }
}
#endif

#ifdef TELVANIX_BENCH_GUMBO
void GumboPass(const Corpus& corpus) {
  for (const std::string& page : corpus.pages) {
    GumboOutput* out = gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size());
    benchmark::DoNotOptimize(out);
    gumbo_destroy_output(&kGumboDefaultOptions, out);
  }
}
#endif

// Seconds of the fastest of a few whole-corpus passes.
template <class F>
double BestOf(int runs, F pass) {
  double best = 1e30;
  for (int i = 0; i < runs; ++i) {
    auto start = std::chrono::steady_clock::now();
    pass();
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

double Libxml2Seconds() {
#ifdef TELVANIX_BENCH_LIBXML2
  static const double seconds = BestOf(3, [] { Libxml2Pass(GetCorpus()); });
  return seconds;
#else
  return 0;
#endif
}

void ReportRatio(benchmark::State& state, double seconds) {
  const Corpus& corpus = GetCorpus();
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
  double xml = Libxml2Seconds();
  if (xml > 0 && seconds > 0)
    state.counters["x_libxml2"] = xml / seconds;
}

void BM_TelvanixLevel2ReusedList(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  Libxml2Seconds();
  CHtmlTokenList list;
  double total = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    TelvanixPass(corpus, list);
    total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  ReportRatio(state, total / static_cast<double>(state.iterations()));
}

// As a host does it: a new document per page, parsed at level 2.
void BM_TelvanixLevel2PackPerPage(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  Libxml2Seconds();
  std::vector<CByteString> buffers;
  for (const std::string& page : corpus.pages)
    buffers.emplace_back(U(page), static_cast<int>(page.size()));
  double total = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    for (CByteString& source : buffers) {
      CHtmlPack pack(source, nullptr);
      benchmark::DoNotOptimize(pack.Parse(CHtmlPack::emParseAttributes));
    }
    total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  ReportRatio(state, total / static_cast<double>(state.iterations()));
}

#ifdef TELVANIX_BENCH_LIBXML2
void BM_Libxml2HtmlReadMemory(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  for (auto _ : state)
    Libxml2Pass(corpus);
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
}
BENCHMARK(BM_Libxml2HtmlReadMemory)->Unit(benchmark::kMillisecond);
#endif

#ifdef TELVANIX_BENCH_GUMBO
void BM_Gumbo(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  Libxml2Seconds();
  double total = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    GumboPass(corpus);
    total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  ReportRatio(state, total / static_cast<double>(state.iterations()));
}
BENCHMARK(BM_Gumbo)->Unit(benchmark::kMillisecond);
#endif

// What a parsed page holds (tokens, attributes, texts, list nodes, the
// page copy) as a multiple of its size: the largest ratio over the pages of
// at least 16 KiB, and the ratio for all pages together.
void BM_HeapPerPageSize(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  double worst = 0, held = 0, bytes = 0, tokens = 0;
  for (auto _ : state) {
    worst = held = bytes = tokens = 0;
    CHtmlTokenList list;
    for (const std::string& page : corpus.pages) {
      list.BuildTokenList(U(page), U(page) + page.size(), 0x103);
      // List nodes come in blocks of ten: three pointers each, plus the link.
      double use = static_cast<double>(list.GetCount()) * 3 * sizeof(void*) +
                   static_cast<double>((list.GetCount() + 9) / 10) * sizeof(void*) +
                   static_cast<double>(list.GetArenaUsedBytes());
      held += use;
      bytes += static_cast<double>(page.size());
      tokens += list.GetCount();
      if (page.size() >= 16384)
        worst = std::max(worst, use / static_cast<double>(page.size()));
    }
  }
  state.counters["worst_x_size"] = worst;
  state.counters["all_x_size"] = bytes > 0 ? held / bytes : 0;
  state.counters["bytes_per_token"] = tokens > 0 ? bytes / tokens : 0;
}
BENCHMARK(BM_HeapPerPageSize)->Unit(benchmark::kMillisecond)->Iterations(1);

BENCHMARK(BM_TelvanixLevel2ReusedList)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TelvanixLevel2PackPerPage)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace telvanix
