// Page reading and writing speed over a corpus held in memory, side by side
// with libxml2's HTML reader and gumbo over the same bytes:
//   level 2         a new pack per page, Parse(2): tokens, attributes, text
//   level 4         a new pack per page, Parse(4): the same plus tag matching,
//                   outline repair and the element tree
//   level 2 + save  Parse(2), then Save into a new buffer with flag 2
//   libxml2 read    htmlReadMemory (recover, no errors, no warnings, no
//                   network), xmlFreeDoc
//   libxml2 read + dump   the same plus htmlDocDumpMemory into a new buffer
//   gumbo           gumbo_parse_with_options, gumbo_destroy_output
// Each runs five corpus passes. After the runs a summary gives each one's
// MB/s from its fastest pass in thread CPU time (the machine may be
// shared) and its ratio to libxml2: reading to libxml2 read, reading and
// writing to libxml2 read + dump. The BM_LargePage runs read one page of
// about 30 MB made of the corpus, five times: level 2, level 4, level 2
// with the repairs of a tree build made without its nodes (as `telvanix
// check` reads a page), libxml2 read and gumbo; the summary gives them
// against libxml2 read too. Pages: see page_corpus.h (the fp-docs corpus
// when fetched).
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "corpus_passes.h"
#include "page_corpus.h"
#include "telvanix/html/html_pack.h"

#include "telvanix/html/entity_tree.h"

#ifdef TELVANIX_BENCH_LIBXML2
#include <libxml/HTMLparser.h>
#include <libxml/HTMLtree.h>
#endif
#ifdef TELVANIX_BENCH_GUMBO
#include <gumbo.h>
#endif

namespace telvanix {
namespace {

using bench::GetPageCorpus;
using bench::PageCorpus;
using bench::BestPass;
using bench::Buffers;
using bench::RunParsePasses;
using bench::RunPasses;
using bench::ThreadSeconds;

constexpr const char* kLevel2 = "telvanix level 2";
constexpr const char* kLevel4 = "telvanix level 4";
constexpr const char* kLevel2Save = "telvanix level 2 + save";
constexpr const char* kXmlRead = "libxml2 read";
constexpr const char* kXmlReadDump = "libxml2 read + dump";
constexpr const char* kGumbo = "gumbo";

void BM_TelvanixLevel2(benchmark::State& state) { RunParsePasses(state, kLevel2, CHtmlPack::emParseAttributes); }
BENCHMARK(BM_TelvanixLevel2)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_TelvanixLevel4(benchmark::State& state) { RunParsePasses(state, kLevel4, CHtmlPack::emParseHtmlTree); }
BENCHMARK(BM_TelvanixLevel4)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_TelvanixLevel2Save(benchmark::State& state) {
  std::vector<CByteString>& buffers = Buffers();
  RunPasses(state, kLevel2Save, [&](const PageCorpus&) {
    for (CByteString& source : buffers) {
      CHtmlPack pack(source, nullptr);
      pack.Parse(CHtmlPack::emParseAttributes);
      CByteString out;
      pack.Save(&out, CHtmlPack::emSave);
      benchmark::DoNotOptimize(out.GetContent());
    }
  });
}
BENCHMARK(BM_TelvanixLevel2Save)->Unit(benchmark::kMillisecond)->Iterations(5);

#ifdef TELVANIX_BENCH_LIBXML2
constexpr int kXmlOptions = HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET;

void BM_Libxml2Read(benchmark::State& state) {
  xmlInitParser();
  RunPasses(state, kXmlRead, [](const PageCorpus& corpus) {
    for (const std::string& page : corpus.pages) {
      htmlDocPtr doc = htmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, nullptr, kXmlOptions);
      benchmark::DoNotOptimize(doc);
      xmlFreeDoc(doc);
    }
  });
}
BENCHMARK(BM_Libxml2Read)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_Libxml2ReadDump(benchmark::State& state) {
  xmlInitParser();
  RunPasses(state, kXmlReadDump, [](const PageCorpus& corpus) {
    for (const std::string& page : corpus.pages) {
      htmlDocPtr doc = htmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, nullptr, kXmlOptions);
      xmlChar* out = nullptr;
      int size = 0;
      if (doc != nullptr)
        htmlDocDumpMemory(doc, &out, &size);
      benchmark::DoNotOptimize(out);
      xmlFree(out);
      xmlFreeDoc(doc);
    }
  });
}
BENCHMARK(BM_Libxml2ReadDump)->Unit(benchmark::kMillisecond)->Iterations(5);
#endif

#ifdef TELVANIX_BENCH_GUMBO
void BM_Gumbo(benchmark::State& state) {
  RunPasses(state, kGumbo, [](const PageCorpus& corpus) {
    for (const std::string& page : corpus.pages) {
      GumboOutput* out = gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size());
      benchmark::DoNotOptimize(out);
      gumbo_destroy_output(&kGumboDefaultOptions, out);
    }
  });
}
BENCHMARK(BM_Gumbo)->Unit(benchmark::kMillisecond)->Iterations(5);
#endif

// ---- one large page ----

// Fastest reading of the large page, by name, for the summary.
std::map<std::string, double>& BestLarge() {
  static std::map<std::string, double> best;
  return best;
}

template <class F>
void RunLargePage(benchmark::State& state, const char* name, F read) {
  const std::string& page = bench::GetLargePage();
  static CByteString buffer(reinterpret_cast<const unsigned char*>(page.data()), static_cast<int>(page.size()));
  double& best = BestLarge().try_emplace(name, 1e30).first->second;
  for (auto _ : state) {
    const double start = ThreadSeconds();
    read(page, buffer);
    best = std::min(best, ThreadSeconds() - start);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(page.size()));
}

void ReadLargePack(CByteString& buffer, CHtmlPack::EmParseFlag level, bool repairWithoutNodes) {
  CHtmlPack pack(buffer, nullptr);
  benchmark::DoNotOptimize(pack.Parse(level));
  if (repairWithoutNodes)
    pack.GetTokenList()->BuildEntityTree(CHtmlEntityTree::emBuildHtml | CHtmlEntityTree::emBuildNoNodes);
}

constexpr const char* kLargeRepair = "telvanix level 2 + repair";

void BM_LargePageLevel2(benchmark::State& state) {
  RunLargePage(state, kLevel2, [](const std::string&, CByteString& b) { ReadLargePack(b, CHtmlPack::emParseAttributes, false); });
}
BENCHMARK(BM_LargePageLevel2)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_LargePageLevel4(benchmark::State& state) {
  RunLargePage(state, kLevel4, [](const std::string&, CByteString& b) { ReadLargePack(b, CHtmlPack::emParseHtmlTree, false); });
}
BENCHMARK(BM_LargePageLevel4)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_LargePageRepair(benchmark::State& state) {
  RunLargePage(state, kLargeRepair,
               [](const std::string&, CByteString& b) { ReadLargePack(b, CHtmlPack::emParseAttributes, true); });
}
BENCHMARK(BM_LargePageRepair)->Unit(benchmark::kMillisecond)->Iterations(5);

#ifdef TELVANIX_BENCH_LIBXML2
void BM_LargePageLibxml2Read(benchmark::State& state) {
  xmlInitParser();
  RunLargePage(state, kXmlRead, [](const std::string& page, CByteString&) {
    htmlDocPtr doc = htmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, nullptr, kXmlOptions);
    benchmark::DoNotOptimize(doc);
    xmlFreeDoc(doc);
  });
}
BENCHMARK(BM_LargePageLibxml2Read)->Unit(benchmark::kMillisecond)->Iterations(5);
#endif

#ifdef TELVANIX_BENCH_GUMBO
void BM_LargePageGumbo(benchmark::State& state) {
  RunLargePage(state, kGumbo, [](const std::string& page, CByteString&) {
    GumboOutput* out = gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size());
    benchmark::DoNotOptimize(out);
    gumbo_destroy_output(&kGumboDefaultOptions, out);
  });
}
BENCHMARK(BM_LargePageGumbo)->Unit(benchmark::kMillisecond)->Iterations(5);
#endif

void PrintLargePageSummary() {
  const std::map<std::string, double>& best = BestLarge();
  if (best.empty())
    return;
  const double mb = static_cast<double>(bench::GetLargePage().size()) / 1e6;
  const auto xml = best.find(kXmlRead);
  std::fprintf(stderr, "\nOne page of %.1f MB; fastest of five readings, thread CPU time\n", mb);
  std::fprintf(stderr, "%-26s %10s %9s\n", "run", "MB/s", "x libxml2");
  for (const char* name : {kLevel2, kLevel4, kLargeRepair, kXmlRead, kGumbo}) {
    const auto it = best.find(name);
    if (it == best.end())
      continue;
    char ratio[32] = "-";
    if (xml != best.end())
      std::snprintf(ratio, sizeof ratio, "%.2f", xml->second / it->second);
    std::fprintf(stderr, "%-26s %10.1f %9s\n", name, mb / it->second, ratio);
  }
}

void PrintSummary() {
  const PageCorpus& corpus = GetPageCorpus();
  const std::map<std::string, double>& best = BestPass();
  if (best.empty())
    return;
  auto seconds = [&](const char* name) {
    auto it = best.find(name);
    return it == best.end() ? 0.0 : it->second;
  };
  const double mb = static_cast<double>(corpus.bytes) / 1e6;
  std::fprintf(stderr, "\n%zu pages, %.1f MB under %s; fastest pass of each run, thread CPU time\n",
               corpus.pages.size(), mb, corpus.root.c_str());
  std::fprintf(stderr, "%-26s %10s %9s  %-20s %s\n", "run", "MB/s", "x libxml2", "against", "goal");
  struct Row {
    const char* name;
    const char* base;
    double goal;
  };
  const Row rows[] = {{kLevel2, kXmlRead, 8},      {kLevel4, kXmlRead, 5},        {kLevel2Save, kXmlReadDump, 8},
                      {kXmlRead, kXmlRead, 0},     {kXmlReadDump, kXmlReadDump, 0}, {kGumbo, kXmlRead, 0}};
  for (const Row& row : rows) {
    const double s = seconds(row.name), base = seconds(row.base);
    if (s <= 0)
      continue;
    char ratio[32] = "-", goal[48] = "";
    if (base > 0)
      std::snprintf(ratio, sizeof ratio, "%.2f", base / s);
    if (row.goal > 0 && base > 0)
      std::snprintf(goal, sizeof goal, ">= %.0fx: %s", row.goal, base / s >= row.goal ? "met" : "NOT met");
    std::fprintf(stderr, "%-26s %10.1f %9s  %-20s %s\n", row.name, mb / s, ratio, row.base, goal);
  }
}

}  // namespace
}  // namespace telvanix

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
  telvanix::PrintSummary();
  telvanix::PrintLargePageSummary();
  benchmark::Shutdown();
  return 0;
}
