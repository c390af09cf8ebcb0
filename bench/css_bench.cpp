// Stylesheet parsing speed over a corpus (see css_corpus.h): bytes/s and
// rules/s (at-rules and style rules read, merged rules counted once each
// time they are read).
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "css_corpus.h"
#include "telvanix/css/css_pack.h"

namespace telvanix {
namespace {

struct Corpus {
  std::vector<CByteString> sheets;
  int64_t bytes = 0;
};

const Corpus& GetCorpus() {
  static const Corpus corpus = [] {
    Corpus c;
    for (const std::string& path : bench::CssCorpusFiles()) {
      const std::string text = bench::ReadWholeFile(path);
      if (text.empty())
        continue;
      c.sheets.emplace_back(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
      c.bytes += static_cast<int64_t>(text.size());
    }
    return c;
  }();
  return corpus;
}

// One pack a file, as the library reads a project's stylesheets.
void BM_CssParse(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  int64_t rules = 0;
  for (auto _ : state) {
    for (const CByteString& sheet : corpus.sheets) {
      CCssPack pack(&sheet);
      pack.Parse();
      rules += pack.GetListLine().GetCount();
    }
  }
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
  state.counters["rules"] = benchmark::Counter(static_cast<double>(rules), benchmark::Counter::kIsRate);
  state.counters["files"] = static_cast<double>(corpus.sheets.size());
}
BENCHMARK(BM_CssParse)->Unit(benchmark::kMillisecond);

void BM_CssParseAndSave(benchmark::State& state) {
  const Corpus& corpus = GetCorpus();
  int64_t rules = 0;
  for (auto _ : state) {
    for (const CByteString& sheet : corpus.sheets) {
      CCssPack pack(&sheet);
      pack.Parse();
      CByteString out;
      pack.Save(out);
      benchmark::DoNotOptimize(out.GetLength());
      rules += pack.GetListLine().GetCount();
    }
  }
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
  state.counters["rules"] = benchmark::Counter(static_cast<double>(rules), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_CssParseAndSave)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace telvanix
