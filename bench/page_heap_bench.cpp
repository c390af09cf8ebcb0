// Heap a page costs while it is read, as a multiple of the page's size, for
// the largest pages of the corpus (page_corpus.h). This program counts every
// byte the C heap hands out (malloc and friends are wrapped here, so the
// library's own allocations and operator new are all seen) and reports, per
// page and parse level:
//   peak_x_size   most heap in use at once while a new pack is made, parses
//                 and goes away, over what was in use before (the host's
//                 copy of the page is made before and not counted)
//   held_x_size   heap the parsed pack holds when Parse returns
//   kept_MB       heap still in use after the pack went away (blocks the
//                 thread keeps for its next page)
//   warm_peak_x   the same page read again on that thread: the peak counts
//                 the kept blocks too
// Each page is measured on a new thread, so that no blocks kept from an
// earlier page lower the first peak. BM_AllPagesOpen keeps a parsed pack of
// every corpus page alive at once, as a host with a whole project open
// does, and reports the heap they hold over the corpus size. BM_LargePage
// reads one page of about 30 MB made of the corpus (page_corpus.h) at level
// 2, at level 4, and at level 2 with the repairs of a tree build made
// without its nodes (as `telvanix check` reads a page), beside libxml2's
// HTML reader and gumbo on the same bytes; the summary gives each peak over
// the page's size and over libxml2's peak. Timings here are not meaningful:
// the wrapped heap is slower; html_bench has the speeds.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "page_corpus.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/html_pack.h"

#ifdef TELVANIX_BENCH_LIBXML2
#include <libxml/HTMLparser.h>
#endif
#ifdef TELVANIX_BENCH_GUMBO
#include <gumbo.h>
#endif

// ---- the counting heap ----

extern "C" {
void* __libc_malloc(std::size_t);
void __libc_free(void*);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}

namespace {
std::atomic<std::size_t> g_live{0};
std::atomic<std::size_t> g_peak{0};

inline void Took(void* p) {
  if (p == nullptr)
    return;
  const std::size_t now = g_live.fetch_add(malloc_usable_size(p), std::memory_order_relaxed) + malloc_usable_size(p);
  std::size_t peak = g_peak.load(std::memory_order_relaxed);
  while (now > peak && !g_peak.compare_exchange_weak(peak, now, std::memory_order_relaxed)) {
  }
}
inline void Gave(void* p) {
  if (p != nullptr)
    g_live.fetch_sub(malloc_usable_size(p), std::memory_order_relaxed);
}
}  // namespace

extern "C" {
void* malloc(std::size_t n) {
  void* p = __libc_malloc(n);
  Took(p);
  return p;
}
void free(void* p) {
  Gave(p);
  __libc_free(p);
}
void* calloc(std::size_t n, std::size_t size) {
  void* p = __libc_calloc(n, size);
  Took(p);
  return p;
}
void* realloc(void* old, std::size_t n) {
  Gave(old);
  void* p = __libc_realloc(old, n);
  // A failed realloc leaves the old block in place.
  Took(p != nullptr || n == 0 ? p : old);
  return p;
}
void* memalign(std::size_t align, std::size_t n) {
  void* p = __libc_memalign(align, n);
  Took(p);
  return p;
}
void* aligned_alloc(std::size_t align, std::size_t n) { return memalign(align, n); }
int posix_memalign(void** out, std::size_t align, std::size_t n) {
  void* p = memalign(align, n);
  if (p == nullptr)
    return 12;  // ENOMEM
  *out = p;
  return 0;
}
}

namespace telvanix {
namespace {

struct HeapFigures {
  double peak = 0, held = 0, kept = 0, warmPeak = 0;
};

// Reads the page twice on a new thread and measures as described above.
HeapFigures Measure(const std::string& page, CHtmlPack::EmParseFlag level) {
  HeapFigures f;
  std::thread worker([&] {
    CByteString source(reinterpret_cast<const unsigned char*>(page.data()), static_cast<int>(page.size()));
    const std::size_t before = g_live.load();
    g_peak.store(before);
    {
      CHtmlPack pack(source, nullptr);
      pack.Parse(level);
      f.held = static_cast<double>(g_live.load() - before);
    }
    f.peak = static_cast<double>(g_peak.load() - before);
    f.kept = static_cast<double>(g_live.load() - before);
    g_peak.store(g_live.load());
    {
      CHtmlPack pack(source, nullptr);
      pack.Parse(level);
    }
    f.warmPeak = static_cast<double>(g_peak.load() - before);
  });
  worker.join();
  return f;
}

void ReportHeap(benchmark::State& state, const std::string& page, CHtmlPack::EmParseFlag level) {
  HeapFigures f;
  for (auto _ : state)
    f = Measure(page, level);
  const double size = static_cast<double>(page.size());
  state.counters["page_KB"] = size / 1024;
  state.counters["peak_x_size"] = f.peak / size;
  state.counters["held_x_size"] = f.held / size;
  state.counters["kept_MB"] = f.kept / (1024.0 * 1024.0);
  state.counters["warm_peak_x"] = f.warmPeak / size;
}

void BM_AllPagesOpen(benchmark::State& state) {
  const bench::PageCorpus& corpus = bench::GetPageCorpus();
  const auto level = static_cast<CHtmlPack::EmParseFlag>(state.range(0));
  double held = 0;
  for (auto _ : state) {
    std::thread worker([&] {
      std::vector<CByteString> sources;
      sources.reserve(corpus.pages.size());
      for (const std::string& page : corpus.pages)
        sources.emplace_back(reinterpret_cast<const unsigned char*>(page.data()), static_cast<int>(page.size()));
      std::vector<std::unique_ptr<CHtmlPack>> packs;
      packs.reserve(sources.size());
      const std::size_t before = g_live.load();
      for (CByteString& source : sources) {
        packs.push_back(std::make_unique<CHtmlPack>(source, nullptr));
        packs.back()->Parse(level);
      }
      held = static_cast<double>(g_live.load() - before);
    });
    worker.join();
  }
  state.counters["corpus_MB"] = static_cast<double>(corpus.bytes) / (1024.0 * 1024.0);
  state.counters["held_MB"] = held / (1024.0 * 1024.0);
  state.counters["held_x_size"] = held / static_cast<double>(corpus.bytes);
}
BENCHMARK(BM_AllPagesOpen)->Arg(2)->Arg(4)->Iterations(1)->Unit(benchmark::kMillisecond);

// The five largest pages, each at level 2 and level 4.
void RegisterLargestPages() {
  const bench::PageCorpus& corpus = bench::GetPageCorpus();
  std::vector<std::size_t> order(corpus.pages.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return corpus.pages[a].size() > corpus.pages[b].size(); });
  order.resize(std::min<std::size_t>(order.size(), 5));
  for (int level : {2, 4}) {
    for (std::size_t i : order) {
      std::string name = corpus.paths[i];
      if (name.rfind(corpus.root, 0) == 0)
        name = name.substr(corpus.root.size());
      name = "BM_PeakHeap/level" + std::to_string(level) + ":" + name;
      const std::string* page = &corpus.pages[i];
      benchmark::RegisterBenchmark(name.c_str(), [page, level](benchmark::State& state) {
        ReportHeap(state, *page, static_cast<CHtmlPack::EmParseFlag>(level));
      })->Iterations(1)->Unit(benchmark::kMillisecond);
    }
  }
}

// ---- one large page, beside the peers ----

// Peak heap of one reading of the large page, by reader, for the summary.
std::map<std::string, double>& LargePeaks() {
  static std::map<std::string, double> peaks;
  return peaks;
}

constexpr const char* kXmlRead = "libxml2 read";

// The heap in use when the count of one reading starts: after the reader's
// own copy of the page, which is not counted.
std::atomic<std::size_t> g_base{0};
void StartCount() {
  g_base.store(g_live.load());
  g_peak.store(g_base.load());
}

// Reads the large page once on a new thread with `read` and records the
// most heap in use at once, over what was in use when the count started.
void ReportLargePeak(benchmark::State& state, const char* name, const std::function<void(const std::string&)>& read) {
  const std::string& page = bench::GetLargePage();
  double peak = 0;
  for (auto _ : state) {
    std::thread worker([&] {
      StartCount();
      read(page);
      peak = static_cast<double>(g_peak.load() - g_base.load());
    });
    worker.join();
  }
  LargePeaks()[name] = peak;
  state.counters["page_MB"] = static_cast<double>(page.size()) / (1024.0 * 1024.0);
  state.counters["peak_x_size"] = peak / static_cast<double>(page.size());
}

// Telvanix reads from a host buffer, made before the count starts.
void ReadPack(const std::string& page, CHtmlPack::EmParseFlag level, bool repairWithoutNodes) {
  CByteString source(reinterpret_cast<const unsigned char*>(page.data()), static_cast<int>(page.size()));
  StartCount();
  CHtmlPack pack(source, nullptr);
  pack.Parse(level);
  if (repairWithoutNodes)
    pack.GetTokenList()->BuildEntityTree(CHtmlEntityTree::emBuildHtml | CHtmlEntityTree::emBuildNoNodes);
}

void RegisterLargePage() {
  struct Run {
    const char* name;
    std::function<void(const std::string&)> read;
  };
  static const Run runs[] = {
      {"telvanix level 2", [](const std::string& p) { ReadPack(p, CHtmlPack::emParseAttributes, false); }},
      {"telvanix level 4", [](const std::string& p) { ReadPack(p, CHtmlPack::emParseHtmlTree, false); }},
      {"telvanix level 2 + repair", [](const std::string& p) { ReadPack(p, CHtmlPack::emParseAttributes, true); }},
#ifdef TELVANIX_BENCH_LIBXML2
      {kXmlRead,
       [](const std::string& p) {
         xmlInitParser();
         const int options = HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET;
         xmlFreeDoc(htmlReadMemory(p.data(), static_cast<int>(p.size()), nullptr, nullptr, options));
       }},
#endif
#ifdef TELVANIX_BENCH_GUMBO
      {"gumbo",
       [](const std::string& p) {
         gumbo_destroy_output(&kGumboDefaultOptions, gumbo_parse_with_options(&kGumboDefaultOptions, p.data(), p.size()));
       }},
#endif
  };
  for (const Run& run : runs) {
    const std::string name = std::string("BM_LargePage/") + run.name;
    benchmark::RegisterBenchmark(name.c_str(), [&run](benchmark::State& state) {
      ReportLargePeak(state, run.name, run.read);
    })->Iterations(1)->Unit(benchmark::kMillisecond);
  }
}

void PrintLargePageSummary() {
  const std::map<std::string, double>& peaks = LargePeaks();
  if (peaks.empty())
    return;
  const double size = static_cast<double>(bench::GetLargePage().size());
  const auto xml = peaks.find(kXmlRead);
  std::fprintf(stderr, "\nOne page of %.1f MB: most heap in use at once while it is read\n", size / 1e6);
  std::fprintf(stderr, "%-28s %9s %8s %10s\n", "run", "peak MB", "x page", "x libxml2");
  for (const auto& [name, peak] : peaks) {
    char ratio[32] = "-";
    if (xml != peaks.end() && xml->second > 0)
      std::snprintf(ratio, sizeof ratio, "%.2f", peak / xml->second);
    std::fprintf(stderr, "%-28s %9.1f %8.2f %10s\n", name.c_str(), peak / 1e6, peak / size, ratio);
  }
}

}  // namespace
}  // namespace telvanix

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  telvanix::RegisterLargestPages();
  telvanix::RegisterLargePage();
  benchmark::RunSpecifiedBenchmarks();
  telvanix::PrintLargePageSummary();
  benchmark::Shutdown();
  return 0;
}
