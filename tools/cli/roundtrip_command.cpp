// telvanix roundtrip DIR: parse and save every page into memory and report
// the pages that do not come back byte for byte.
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstring>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "telvanix/html/html_pack.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix roundtrip DIR|PAGE... [--json]\n"
    "\n"
    "Parses every topic page (tokens, attributes, text) and saves it into memory\n"
    "unchanged, then compares the saved bytes with the file. Pages whose only\n"
    "loss is what the tokenizer drops by rule (a line break before the first\n"
    "tag, the bytes after the last tag when they are a single byte, or an\n"
    "unterminated construct at the end) are listed apart and do not count as\n"
    "failures. A page that loses bytes at both ends by rule is listed by its\n"
    "end, and its first difference is the one at the end.\n"
    "\n"
    "  --json   one JSON object on stdout\n"
    "\n"
    "Exit status: 0 every page comes back, 1 some page differs, 2 usage or I/O error.\n";

enum class Outcome { kIdentical, kLeadingLineBreak, kTrailingByte, kUnterminatedTail, kDiffers, kUnreadable };
constexpr int kOutcomes = 6;

struct PageResult {
  Outcome outcome = Outcome::kIdentical;
  long firstDifference = -1;
  long lost = 0;
  std::string error;
};

const char* OutcomeName(Outcome o) {
  switch (o) {
    case Outcome::kIdentical: return "identical";
    case Outcome::kLeadingLineBreak: return "leading-line-break";
    case Outcome::kTrailingByte: return "trailing-byte";
    case Outcome::kUnterminatedTail: return "unterminated-tail";
    case Outcome::kDiffers: return "differs";
    case Outcome::kUnreadable: return "unreadable";
  }
  return "";
}

PageResult RoundTrip(const std::string& path) {
  PageResult r;
  CByteString source;
  if (!LoadPage(path, source, r.error)) {
    r.outcome = Outcome::kUnreadable;
    return r;
  }
  CHtmlPack pack(source, path.c_str());
  CByteString saved;
  if (!pack.Parse(CHtmlPack::emParseAttributes) || !pack.Save(&saved, CHtmlPack::emSave)) {
    // An empty page parses to nothing and saves nothing; that is a round trip.
    if (source.GetLength() == 0) return r;
    r.outcome = Outcome::kUnreadable;
    r.error = path + ": could not be parsed";
    return r;
  }
  const long n = source.GetLength(), m = saved.GetLength();
  const unsigned char* a = source.GetContent();
  const unsigned char* b = saved.GetContent();
  if (n == m && (n == 0 || std::memcmp(a, b, static_cast<size_t>(n)) == 0)) return r;
  // A line break (CR, LF or CR LF) in front of the first token is dropped by
  // rule; the rest of the page is compared without it.
  long lead = 0;
  if (lead < n && a[lead] == '\r') ++lead;
  if (lead < n && a[lead] == '\n') ++lead;
  if (lead > 0 && m > 0 && b[0] == a[0]) lead = 0;  // kept: the difference is elsewhere
  a += lead;
  const long rest = n - lead;
  long common = 0;
  const long shorter = rest < m ? rest : m;
  while (common < shorter && a[common] == b[common]) ++common;
  r.firstDifference = lead + common;
  r.lost = n - m;
  if (common == rest && rest == m) {
    r.outcome = Outcome::kLeadingLineBreak;
    r.firstDifference = 0;
    return r;
  }
  if (common == m && m < rest) {
    // The saved page is a prefix: bytes were dropped at the end by rule when
    // nothing after the cut is a tag start.
    bool tagAfter = std::memchr(a + m, '<', static_cast<size_t>(rest - m)) != nullptr;
    if (rest - m == 1 && m > 0 && a[m - 1] == '>')
      r.outcome = Outcome::kTrailingByte;
    else if (tagAfter)
      r.outcome = Outcome::kUnterminatedTail;
    else
      r.outcome = Outcome::kDiffers;
    return r;
  }
  r.outcome = Outcome::kDiffers;
  return r;
}

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"json", 0}}, kHelp, cl); rc >= 0) return rc;
  std::vector<std::string> errors;
  std::vector<std::string> pages = ExpandTopicOperands(cl.operands(), errors);
  std::vector<PageResult> results(pages.size());
  ParallelFor(pages.size(), [&](size_t i) { results[i] = RoundTrip(pages[i]); }, "roundtrip");

  size_t counts[kOutcomes] = {};
  for (const PageResult& r : results) ++counts[static_cast<int>(r.outcome)];
  for (const PageResult& r : results)
    if (!r.error.empty()) errors.push_back(r.error);

  if (cl.Has("json")) {
    nlohmann::json out;
    out["pages"] = pages.size();
    nlohmann::json byOutcome = nlohmann::json::object();
    for (int o = 0; o < kOutcomes; ++o) byOutcome[OutcomeName(static_cast<Outcome>(o))] = counts[o];
    out["outcomes"] = byOutcome;
    nlohmann::json list = nlohmann::json::array();
    for (size_t i = 0; i < pages.size(); ++i) {
      if (results[i].outcome == Outcome::kIdentical) continue;
      list.push_back({{"page", FileNameToUtf8(pages[i])},
                      {"outcome", OutcomeName(results[i].outcome)},
                      {"first_difference", results[i].firstDifference},
                      {"bytes_lost", results[i].lost}});
    }
    out["not_identical"] = list;
    out["errors"] = errors;
    std::printf("%s\n", out.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
  } else {
    for (size_t i = 0; i < pages.size(); ++i) {
      const PageResult& r = results[i];
      if (r.outcome == Outcome::kDiffers)
        std::printf("%s: differs from byte %ld\n", pages[i].c_str(), r.firstDifference);
    }
    for (const std::string& e : errors) PrintError(e);
    std::printf("%zu pages: %zu identical, %zu lost a leading line break by rule, %zu lost one trailing byte by rule, "
                "%zu lost an unterminated tail by rule, %zu differ, %zu unreadable\n",
                pages.size(), counts[0], counts[1], counts[2], counts[3], counts[4], counts[5]);
  }
  if (!errors.empty()) return kExitError;
  return counts[static_cast<int>(Outcome::kDiffers)] ? kExitProblems : kExitClean;
}

}  // namespace

extern const Command kRoundtripCommand = {"roundtrip", "parse and save every page in memory; report pages that change",
                                          Run};

}  // namespace telvanix::tool
