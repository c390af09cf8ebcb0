// Reading and writing a large index: entries per second at several sizes up
// to 100,000 entries, with the fitted complexity (it should come out linear)
// and the process's peak resident memory after each run.
#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <string>

#include "telvanix/sitemap/file_sitemap.h"

using namespace telvanix;

namespace {

// An index as help projects have them: keywords with sub-keywords, some with
// several topics, names with markup characters, a few merge entries.
void FillIndex(CHtmlFileSitemap& file, int count) {
  file.SetTitle("Index");
  file.GetSiteProperties()->SetSiteType(CHtmlSiteProperties::emSiteTypeIndex);
  file.GetSiteProperties()->SetFont("Tahoma,8,0");
  for (int i = 0; i < count; ++i) {
    auto* entry = new CHtmlSitemap;
    entry->SetLevel(i % 5 == 0 ? 1 : 2);
    std::string name = "keyword " + std::to_string(i) + (i % 7 == 0 ? " & <more>" : "");
    entry->SetName(name.c_str());
    if (i % 9 == 0) {
      entry->AddSection(("Topic A" + std::to_string(i)).c_str(), ("topics\\a" + std::to_string(i) + ".htm").c_str());
      entry->AddSection(("Topic B" + std::to_string(i)).c_str(), ("topics\\b" + std::to_string(i) + ".htm").c_str());
    } else {
      entry->SetPrimary(("topics\\t" + std::to_string(i) + ".htm").c_str());
    }
    if (i % 1000 == 999)
      entry->SetMerge("part.chm::/part.hhk");
    file.AddSitemap(entry);
  }
}

double PeakMemoryMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // ru_maxrss is in KiB
}

void BM_WriteIndex(benchmark::State& state) {
  CHtmlFileSitemap file;
  FillIndex(file, static_cast<int>(state.range(0)));
  CByteString out;
  for (auto _ : state) {
    file.Write(out);
    benchmark::DoNotOptimize(out.GetContent());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(state.iterations() * out.GetLength());
  state.SetComplexityN(state.range(0));
  state.counters["entries/s"] = benchmark::Counter(static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["peak MiB"] = PeakMemoryMiB();
}

void BM_ReadIndex(benchmark::State& state) {
  CHtmlFileSitemap source;
  FillIndex(source, static_cast<int>(state.range(0)));
  CByteString page;
  source.Write(page);
  for (auto _ : state) {
    CHtmlFileSitemap file;
    if (!file.Read(page) || file.GetSitemapArraySize() != state.range(0))
      state.SkipWithError("the index did not read back whole");
    benchmark::DoNotOptimize(file.GetSitemap(0));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(state.iterations() * page.GetLength());
  state.SetComplexityN(state.range(0));
  state.counters["entries/s"] = benchmark::Counter(static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["peak MiB"] = PeakMemoryMiB();
}

BENCHMARK(BM_WriteIndex)->Arg(12500)->Arg(25000)->Arg(50000)->Arg(100000)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(BM_ReadIndex)->Arg(12500)->Arg(25000)->Arg(50000)->Arg(100000)->Unit(benchmark::kMillisecond)->Complexity();

}  // namespace
