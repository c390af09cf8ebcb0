// Stylesheet parsing speed over a corpus (see css_corpus.h): bytes/s and
// rules/s (at-rules and style rules read, merged rules counted once each
// time they are read). After the benchmarks, a summary sets the parse speed
// beside the reference parser tinycss2 (bench/css_peer.py, run on the same
// files in the same run) and beside the HTML tokenizer (level 2 over the
// fp-docs pages in corpus/, when fetched).
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "css_corpus.h"
#include "telvanix/css/css_pack.h"
#include "telvanix/html/html_pack.h"

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

// Best of five passes of `pass`, in seconds.
template <class Pass>
double BestSeconds(Pass pass) {
  double best = 1e30;
  for (int i = 0; i < 5; ++i) {
    auto start = std::chrono::steady_clock::now();
    pass();
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

// MB/s that css_peer.py reports for tinycss2, or 0 when it cannot run.
double PeerMegabytesPerSecond() {
  std::string script = (std::filesystem::path(__FILE__).parent_path() / "css_peer.py").string();
  // The system interpreter, which Debian's python3-tinycss2 installs into.
  std::string python = std::filesystem::exists("/usr/bin/python3") ? "/usr/bin/python3" : "python3";
  FILE* pipe = popen((python + " '" + script + "' 2>/dev/null").c_str(), "r");
  if (!pipe) return 0;
  char line[512] = {};
  std::string out;
  while (std::fgets(line, sizeof line, pipe)) out += line;
  pclose(pipe);
  size_t unit = out.find(" MB/s");
  if (unit == std::string::npos) return 0;
  size_t start = out.rfind(' ', unit - 1);
  return std::atof(out.substr(start + 1, unit - start - 1).c_str());
}

// Level-2 HTML parsing MB/s over the fetched fp-docs pages (up to 20 MB), or 0.
double HtmlMegabytesPerSecond() {
  namespace fs = std::filesystem;
  fs::path root = fs::path(__FILE__).parent_path() / ".." / "corpus" / "fp-docs";
  std::vector<CByteString> pages;
  int64_t bytes = 0;
  std::error_code ec;
  for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end && bytes < 20000000; it.increment(ec)) {
    if (!it->is_regular_file() || it->path().extension() != ".html") continue;
    std::string text = bench::ReadWholeFile(it->path().string());
    if (text.empty()) continue;
    pages.emplace_back(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    bytes += static_cast<int64_t>(text.size());
  }
  if (!bytes) return 0;
  double s = BestSeconds([&] {
    for (CByteString& page : pages) {
      CHtmlPack pack(page, nullptr);
      pack.Parse(CHtmlPack::emParseAttributes);
    }
  });
  return static_cast<double>(bytes) / s / 1e6;
}

void PrintSummary() {
  const Corpus& corpus = GetCorpus();
  if (!corpus.bytes) return;
  double s = BestSeconds([&] {
    for (const CByteString& sheet : corpus.sheets) {
      CCssPack pack(&sheet);
      pack.Parse();
    }
  });
  const double ours = static_cast<double>(corpus.bytes) / s / 1e6;
  const double peer = PeerMegabytesPerSecond();
  const double html = HtmlMegabytesPerSecond();
  std::fprintf(stderr, "\nstylesheet parse: %.2f MB/s over %.2f MB (%zu files)\n", ours, corpus.bytes / 1e6,
               corpus.sheets.size());
  if (peer > 0)
    std::fprintf(stderr, "tinycss2 on the same files: %.2f MB/s; ratio %.1fx (goal: at least 30x)\n", peer,
                 ours / peer);
  else
    std::fprintf(stderr, "tinycss2 not run (apt-get install python3-tinycss2)\n");
  if (html > 0)
    std::fprintf(stderr, "HTML level-2 parse: %.1f MB/s; the stylesheet parser runs at %.2f of it\n", html,
                 ours / html);
}

}  // namespace
}  // namespace telvanix

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  telvanix::PrintSummary();
  benchmark::Shutdown();
  return 0;
}
