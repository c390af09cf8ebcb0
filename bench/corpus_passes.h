// Whole-corpus passes for the page benchmarks: each benchmark runs its pass
// over every page of the corpus once per iteration, and the fastest pass of
// each name is kept for the ratio summary a benchmark prints at the end.
#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "page_corpus.h"
#include "telvanix/foundation/byte_string.h"
#include "telvanix/html/html_pack.h"

namespace telvanix::bench {

// CPU time of this thread: the passes are single-threaded, and other work
// on a shared machine should not count.
inline double ThreadSeconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// Fastest whole-corpus pass of each run, by name, for the summary.
inline std::map<std::string, double>& BestPass() {
  static std::map<std::string, double> best;
  return best;
}

// Runs pass once per iteration and keeps its fastest time.
template <class F>
void RunPasses(benchmark::State& state, const char* name, F pass) {
  const PageCorpus& corpus = GetPageCorpus();
  double& best = BestPass().try_emplace(name, 1e30).first->second;
  for (auto _ : state) {
    const double start = ThreadSeconds();
    pass(corpus);
    best = std::min(best, ThreadSeconds() - start);
  }
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
  state.counters["pages"] = static_cast<double>(corpus.pages.size());
}

// The pages as host buffers, made once outside the timed passes.
inline std::vector<CByteString>& Buffers() {
  static std::vector<CByteString> buffers = [] {
    std::vector<CByteString> v;
    for (const std::string& page : GetPageCorpus().pages)
      v.emplace_back(reinterpret_cast<const unsigned char*>(page.data()), static_cast<int>(page.size()));
    return v;
  }();
  return buffers;
}

// Every page read at one parse level, one pass a run: the reference the
// other passes of a benchmark are measured against in the same run.
inline void RunParsePasses(benchmark::State& state, const char* name, CHtmlPack::EmParseFlag level) {
  std::vector<CByteString>& buffers = Buffers();
  RunPasses(state, name, [&](const PageCorpus&) {
    for (CByteString& source : buffers) {
      CHtmlPack pack(source, nullptr);
      benchmark::DoNotOptimize(pack.Parse(level));
    }
  });
}

}  // namespace telvanix::bench
