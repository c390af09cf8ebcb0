// Throughput of character-entity decoding and encoding over a large page
// text: prose with named and numeric references and raw Windows-1252 bytes.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "telvanix/html/html_pack.h"

using namespace telvanix;

namespace {

// About `bytes` of text; a fixed seed keeps runs comparable.
std::string MakeText(size_t bytes) {
  static const char* const kPieces[] = {
      "The quick brown fox ", "jumps over the lazy dog", "&amp;", "&lt;b&gt;", " caf&eacute; ", "&nbsp;",
      "&#169;", "&#x41;", " na\xEFve ", "&copy; 2001 ", "\r\n", "&foo; ", "R&amp;D ", "&quot;quoted&quot; ",
      "plain words without any reference at all ", "&mdash;", "&#8364;5 ", "& loose ampersand ",
  };
  std::string text;
  text.reserve(bytes + 64);
  std::uint32_t seed = 12345;
  while (text.size() < bytes) {
    seed = seed * 1103515245u + 12345u;
    text += kPieces[(seed >> 16) % (sizeof(kPieces) / sizeof(kPieces[0]))];
  }
  return text;
}

const std::string& Text() {
  static const std::string text = MakeText(4u << 20);
  return text;
}

void BM_HtmlToTextWords(benchmark::State& state) {
  const std::string& text = Text();
  CWordString out;
  for (auto _ : state) {
    CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()), 1);
    benchmark::DoNotOptimize(out.GetContent());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_HtmlToTextWords)->Unit(benchmark::kMillisecond);

void BM_HtmlToTextBytes(benchmark::State& state) {
  const std::string& text = Text();
  CByteString out;
  for (auto _ : state) {
    CHtmlPack::HtmlToText(out, reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    benchmark::DoNotOptimize(out.GetContent());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_HtmlToTextBytes)->Unit(benchmark::kMillisecond);

// Encodes the marked decoding of the text; bytes counted are the encoded output.
void BM_TextToHtml(benchmark::State& state) {
  const std::string& text = Text();
  CWordString units;
  CHtmlPack::HtmlToText(units, reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()), 1);
  int64_t produced = 0;
  for (auto _ : state) {
    CByteString out;
    CHtmlPack::TextToHtml(out, units.GetContent(), units.GetLength());
    produced = out.GetLength();
    benchmark::DoNotOptimize(out.GetContent());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * produced);
}
BENCHMARK(BM_TextToHtml)->Unit(benchmark::kMillisecond);

}  // namespace
