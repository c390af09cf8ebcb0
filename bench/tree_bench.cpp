// The element tree's own passes (tag matching, outline repair, building)
// over token lists read and repaired once, as RebuildEntityTree runs them.
// Reading with the tree (level 4) against level 2 and the peer parsers is
// in html_bench. Pages: see page_corpus.h.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "page_corpus.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/html_pack.h"

namespace telvanix {
namespace {

void BM_BuildTreeOnly(benchmark::State& state) {
  const bench::PageCorpus& corpus = bench::GetPageCorpus();
  std::vector<CByteString> buffers;
  buffers.reserve(corpus.pages.size());
  std::vector<std::unique_ptr<CHtmlPack>> packs;
  for (const std::string& page : corpus.pages) {
    buffers.emplace_back(reinterpret_cast<const unsigned char*>(page.data()), static_cast<int>(page.size()));
    packs.push_back(std::make_unique<CHtmlPack>(buffers.back(), nullptr));
    packs.back()->Parse(CHtmlPack::emParseHtmlTree);
  }
  for (auto _ : state) {
    for (auto& pack : packs) benchmark::DoNotOptimize(pack->RebuildEntityTree());
  }
  state.SetBytesProcessed(state.iterations() * corpus.bytes);
}
BENCHMARK(BM_BuildTreeOnly)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace telvanix
