// Documents used on several threads at once, each thread with its own: topic
// pages (the describe dump, an edited copy, the tree), stylesheets (inline
// and linked) and sitemaps. The threads start together in a fresh process,
// so whatever the library prepares on first use is raced for; every result
// must equal the one a single thread gets. The ThreadSanitizer build reports
// any data race.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <latch>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "golden_cases.h"
#include "html/tree_dump.h"
#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/css_style.h"
#include "telvanix/css/style_format.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "test_util.h"
#include "topic/topic_describe.h"

namespace telvanix {
namespace {

constexpr int kThreads = 6;

std::string Str(const CByteString& bytes) {
  return bytes.GetLength() ? std::string(static_cast<const char*>(bytes), static_cast<size_t>(bytes.GetLength()))
                           : std::string();
}

CByteString Bytes(const std::string& text) {
  return CByteString(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
}

// Every case file of the data folders, read before any thread starts.
std::vector<std::string> Cases(const std::string& folder, const std::string& extension) {
  std::vector<std::string> inputs;
  for (const std::string& name : test::GoldenCaseNames(folder, extension))
    inputs.push_back(test::ReadDataFile(folder + "/" + name + extension));
  return inputs;
}

std::string Page(const std::string& html, int n) {
  std::ostringstream out;
  test::TopicPage page(html);
  out << test::DescribeTopic(page.doc());
  CHtmlFileEx copy(page.doc());
  CHtmlFileEx::CStringArrayEx keywords;
  CString word(("k" + std::to_string(n)).c_str());
  keywords.Add(word);
  out << copy.SetHtmlTitle("New <title>") << copy.SetTopicAuthor("Editor &") << copy.SetKeywordK(&keywords)
      << copy.SetColor(CHtmlFileEx::emColorBgColor, static_cast<COLORREF>(0x10203 * n))
      << copy.ReplaceBuildTag("Web", "Paper") << copy.SetBodyHtmlText("<p>added</p>", n % 2) << "\n";
  CByteString saved;
  copy.Save(&saved, CHtmlPack::emSaveLayout);
  out << Str(saved) << test::DescribeTopic(copy);
  CByteString source = Bytes(html);
  CHtmlPack pack(source, nullptr);
  out << pack.Parse(CHtmlPack::emParseHtmlTree) << test::DumpTree(pack.GetTokenList());
  return out.str();
}

// Properties of every kind, an @import and comments; each job reads it once
// as a STYLE block and once as a linked file.
const char kSheet[] =
    "/* sheet */\n@import url(base.css);\nBODY { font-family: Verdana, \"Courier New\", monospace; font-size: 9pt; "
    "color: #003366; background: white url(img/bg.gif) no-repeat fixed }\n"
    "H1 { font: bold italic 16px/1.2 Arial; text-align: center; text-decoration: underline; margin: 1em 2px 3pt 4% }\n"
    "P.note, UL LI { border: 1px solid red; padding: 4px; list-style: square url(b.png) inside }\n"
    "A:hover { color: Navy; text-transform: uppercase; vertical-align: super; display: block }\n"
    "@media print { P { color: black } }\n.x { cursor: url(c.cur), auto; filter: alpha(opacity=50); white-space: pre; "
    "letter-spacing: -1px; line-height: 150% }\nbroken { color: ; ; font-weight: 700 }  unclosed { width: 3in\n";

std::string Sheet(const std::string& sheet, const char* path) {
  CByteString content = Bytes(sheet);
  CCssPackEx pack(path, path ? nullptr : &content);
  std::string out = std::to_string(pack.Parse());
  POSITION pos = nullptr;
  for (CCssStyle* style = pack.GetFirstStyle(pos); style; style = pack.GetNextStyle(pos)) {
    out += style->GetPrintableString(&pack).str();
    if (CCssStyleFormat* format = style->GetStyleFormat())
      out += format->GetDisplay().str() + format->GetFirstFontFamily().str();
  }
  for (CString url = pack.GetFirstImportCssUrl(pos); !url.IsEmpty(); url = pack.GetNextImportCssUrl(pos))
    out += url.str();
  UINT index = 0;
  for (CString name = pack.GetFirstBaggageFile(index); !name.IsEmpty(); name = pack.GetNextBaggageFile(index))
    out += name.str();
  CByteString saved;
  pack.Save(saved);
  return out + Str(saved);
}

std::string Sitemap(const std::string& text) {
  CByteString source = Bytes(text);
  CHtmlFileSitemap sitemap;
  std::string out = std::to_string(sitemap.Read(source));
  CByteString written;
  sitemap.Write(written);
  return out + Str(written);
}

struct Job {
  std::string (*run)(const std::string&, int);
  std::string input;
};

std::vector<Job> MakeJobs(const test::TempDir& dir) {
  std::vector<Job> jobs;
  for (const char* folder : {"topic", "topic_text"})
    for (std::string& page : Cases(folder, ".htm")) jobs.push_back({&Page, page});
  std::vector<std::string> sheets = Cases("css", ".css");
  sheets.push_back(kSheet);
  for (std::string& sheet : sheets) {
    jobs.push_back({[](const std::string& s, int) { return Sheet(s, nullptr); }, sheet});
    dir.Write(std::to_string(jobs.size()) + ".css", sheet);
    jobs.push_back({[](const std::string& path, int) { return Sheet("", path.c_str()); },
                    dir / (std::to_string(jobs.size()) + ".css")});
  }
  for (const char* extension : {".hhc", ".hhk"})
    for (std::string& sitemap : Cases("sitemap", extension))
      jobs.push_back({[](const std::string& s, int) { return Sitemap(s); }, sitemap});
  return jobs;
}

// The whole run in a process of its own; the exit code is 0 when every
// threaded result equals the single-threaded one.
[[noreturn]] void RunThreadsThenCompare(const std::vector<Job>& jobs) {
  const int count = static_cast<int>(jobs.size());
  std::vector<std::string> threaded(jobs.size());
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      start.arrive_and_wait();
      for (int n = t; n < count; n += kThreads) threaded[n] = jobs[n].run(jobs[n].input, n);
    });
  for (std::thread& thread : threads) thread.join();
  int failures = 0;
  for (int n = 0; n < count; ++n) {
    const std::string alone = jobs[n].run(jobs[n].input, n);
    if (alone == threaded[n]) continue;
    size_t at = 0;
    while (at < alone.size() && at < threaded[n].size() && alone[at] == threaded[n][at]) ++at;
    std::fprintf(stderr, "job %d differs at byte %zu:\n  alone:    %s\n  threaded: %s\n", n, at,
                 alone.substr(at > 40 ? at - 40 : 0, 120).c_str(), threaded[n].substr(at > 40 ? at - 40 : 0, 120).c_str());
    ++failures;
  }
  // exit, not _Exit: the sanitizers report and set the exit code at exit.
  std::exit(failures == 0 ? 0 : 1);
}

TEST(ConcurrencyDeathTest, ThreadsWorkingOnTheirOwnDocumentsGetTheSingleThreadResults) {
  // The "threadsafe" style runs the test again in a fresh process, so that
  // no earlier test has prepared anything.
  const std::string style = GTEST_FLAG_GET(death_test_style);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  test::TempDir dir;
  const std::vector<Job> jobs = MakeJobs(dir);
  ASSERT_GE(jobs.size(), 80u);
  EXPECT_EXIT(RunThreadsThenCompare(jobs), ::testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, style);
}

}  // namespace
}  // namespace telvanix
