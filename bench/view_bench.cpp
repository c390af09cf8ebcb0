// The formatting view over the page corpus (page_corpus.h): every element's
// effective format with the stylesheets cached (one CCssPackExManager for
// the whole corpus, as a host keeps one per project), against the level-4
// parse alone and libxml2's HTML reader over the same bytes, in one run:
//   telvanix level 4   CHtmlPack::Parse(emParseHtmlTree)
//   telvanix view      CHtmlFileView::BuildView (the level-4 parse included)
//   libxml2 read       htmlReadMemory (recover, no errors or warnings), xmlFreeDoc
// Each run is five passes over every page; the summary gives the fastest
// pass in pages/s and MB/s and the ratios; the goal is a view at least a
// third as fast as the level-4 parse.
#include <benchmark/benchmark.h>

#include <ctime>
#include <map>
#include <string>

#include "corpus_passes.h"
#include "page_corpus.h"
#include "telvanix/css/css_pack_ex_manager.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/view/html_file_view.h"

#ifdef TELVANIX_BENCH_LIBXML2
#include <libxml/HTMLparser.h>
#endif

namespace telvanix {
namespace {

using bench::GetPageCorpus;
using bench::PageCorpus;
using bench::BestPass;
using bench::Buffers;
using bench::RunParsePasses;
using bench::RunPasses;

constexpr const char* kLevel4 = "telvanix level 4";
constexpr const char* kView = "telvanix view";
constexpr const char* kXmlRead = "libxml2 read";

void BM_Level4(benchmark::State& state) { RunParsePasses(state, kLevel4, CHtmlPack::emParseHtmlTree); }
BENCHMARK(BM_Level4)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_View(benchmark::State& state) {
  std::vector<CByteString>& buffers = Buffers();
  CCssPackExManager manager;  // the sheets are read in the first pass and cached after
  RunPasses(state, kView, [&](const PageCorpus& corpus) {
    for (size_t i = 0; i < buffers.size(); ++i) {
      CHtmlFileView view(buffers[i], corpus.paths[i].c_str(), &manager);
      benchmark::DoNotOptimize(view.BuildView());
    }
  });
  state.counters["sheet reads"] = manager.GetLoadCount();
}
BENCHMARK(BM_View)->Unit(benchmark::kMillisecond)->Iterations(5);

#ifdef TELVANIX_BENCH_LIBXML2
void BM_Libxml2Read(benchmark::State& state) {
  xmlInitParser();
  constexpr int kOptions = HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET;
  RunPasses(state, kXmlRead, [&](const PageCorpus& corpus) {
    for (const std::string& page : corpus.pages) {
      htmlDocPtr doc = htmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, nullptr, kOptions);
      if (doc)
        xmlFreeDoc(doc);
    }
  });
}
BENCHMARK(BM_Libxml2Read)->Unit(benchmark::kMillisecond)->Iterations(5);
#endif

void PrintSummary() {
  const PageCorpus& corpus = GetPageCorpus();
  const std::map<std::string, double>& best = BestPass();
  auto seconds = [&](const char* name) {
    auto it = best.find(name);
    return it == best.end() ? 0.0 : it->second;
  };
  const double mb = static_cast<double>(corpus.bytes) / 1e6;
  const double pages = static_cast<double>(corpus.pages.size());
  std::fprintf(stderr, "\n%zu pages, %.1f MB under %s; fastest pass of each run, thread CPU time\n",
               corpus.pages.size(), mb, corpus.root.c_str());
  std::fprintf(stderr, "%-20s %10s %10s %12s %12s\n", "run", "pages/s", "MB/s", "x level 4", "x libxml2");
  for (const char* name : {kLevel4, kView, kXmlRead}) {
    const double s = seconds(name);
    if (s <= 0)
      continue;
    char level4[32] = "-", xml[32] = "-";
    if (seconds(kLevel4) > 0)
      std::snprintf(level4, sizeof level4, "%.2f", seconds(kLevel4) / s);
    if (seconds(kXmlRead) > 0)
      std::snprintf(xml, sizeof xml, "%.2f", seconds(kXmlRead) / s);
    std::fprintf(stderr, "%-20s %10.0f %10.1f %12s %12s\n", name, pages / s, mb / s, level4, xml);
  }
  if (seconds(kView) > 0 && seconds(kLevel4) > 0)
    std::fprintf(stderr, "goal: view >= 1/3 of the level-4 speed: %s\n",
                 seconds(kLevel4) / seconds(kView) >= 1.0 / 3.0 ? "met" : "NOT met");
}

}  // namespace
}  // namespace telvanix

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
  telvanix::PrintSummary();
  benchmark::Shutdown();
  return 0;
}
