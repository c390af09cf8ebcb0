// `telvanix check` on the sample project: its four deliberate faults are
// found, in the summary and in JSON, and nothing else; fixing them gives a
// clean project; every other kind of finding shows up when it is planted.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <set>
#include <tuple>

#include "tool/tool_runner.h"

namespace telvanix::tool_test {
namespace {

using Json = nlohmann::json;
// kind, file, reference
using Key = std::tuple<std::string, std::string, std::string>;

std::set<Key> FindingKeys(const Json& report) {
  std::set<Key> keys;
  for (const Json& f : report.at("findings"))
    keys.emplace(f.at("kind").get<std::string>(), f.at("file").get<std::string>(), f.value("reference", ""));
  return keys;
}

Json CheckJson(const std::string& root, int expectedStatus) {
  ToolRun r = RunTool({"check", root, "--json"});
  EXPECT_EQ(r.status, expectedStatus) << r;
  EXPECT_EQ(r.err, "") << r;
  Json j = Json::parse(r.out, nullptr, false);
  EXPECT_FALSE(j.is_discarded()) << r;
  return j.is_discarded() ? Json::object({{"findings", Json::array()}}) : j;
}

struct SampleFault {
  const char* kind;
  const char* file;
  const char* reference;
  const char* summaryLine;                     // as the text summary lists it
  std::function<void(const LanternCopy&)> fix;  // makes the fault go away
};

const std::vector<SampleFault>& SampleFaults() {
  static const std::vector<SampleFault> faults = {
      {"missing-file", "topics/troubleshooting.htm", "../images/conflict_banner.png",
       "  topics/troubleshooting.htm: ../images/conflict_banner.png (image)",
       [](const LanternCopy& c) { fs::copy_file(c.file("images/logo.png"), c.file("images/conflict_banner.png")); }},
      {"inexact-reference", "topics/getting_started.htm", "Edit_Note.htm",
       "  topics/getting_started.htm: Edit_Note.htm (link) -> topics/edit_note.htm",
       [](const LanternCopy& c) {
         ReplaceInFile(c.file("topics/getting_started.htm"), "href=\"Edit_Note.htm\"", "href=\"edit_note.htm\"");
       }},
      {"missing-bookmark", "topics/search.htm", "glossary.htm#wildcards",
       "  topics/search.htm: glossary.htm#wildcards (link)",
       [](const LanternCopy& c) {
         ReplaceInFile(c.file("topics/glossary.htm"), "</dl>",
                       "<dt><a name=\"wildcards\">Wildcard</a></dt><dd>A * that stands for any letters.</dd>\r\n</dl>");
       }},
      {"orphan-topic", "topics/release_notes.htm", "", "  topics/release_notes.htm",
       [](const LanternCopy& c) {
         ReplaceInFile(c.file("index.htm"), "<li><a href=\"topics/sync.htm\">Keeping devices in step</a></li>",
                       "<li><a href=\"topics/sync.htm\">Keeping devices in step</a></li>\n"
                       "<li><a href=\"topics/release_notes.htm\">What is new</a></li>");
       }},
  };
  return faults;
}

std::set<Key> SampleFaultKeys(const std::string& except = "") {
  std::set<Key> keys;
  for (const SampleFault& f : SampleFaults())
    if (except != f.kind) keys.emplace(f.kind, f.file, f.reference);
  return keys;
}

TEST(CheckSample, SummaryListsExactlyTheDeliberateFaults) {
  ToolRun r = RunTool({"check", kLantern});
  ASSERT_EQ(r.status, 1) << r;
  EXPECT_EQ(r.err, "") << r;
  std::vector<std::string> lines = Lines(r.out);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), kLantern + ": 12 topics, 2 stylesheets, 2 contents/index files, 11 images, 65 references");
  EXPECT_EQ(lines.back(), "4 problems found.");
  // Findings are the indented lines before the build tag listing.
  std::multiset<std::string> listed;
  for (const std::string& line : lines) {
    if (line == "Build tags in use:") break;
    if (line.rfind("  ", 0) == 0) listed.insert(line);
  }
  std::multiset<std::string> expected;
  for (const SampleFault& f : SampleFaults()) expected.insert(f.summaryLine);
  EXPECT_EQ(listed, expected) << r;
  EXPECT_NE(r.out.find("\nBuild tags in use:\n  online: 2 topics, 0 elements\n  print: 3 topics, 2 elements\n"),
            std::string::npos)
      << r;
}

TEST(CheckSample, JsonReportParsesAndListsExactlyTheDeliberateFaults) {
  Json j = CheckJson(kLantern, 1);
  EXPECT_EQ(FindingKeys(j), SampleFaultKeys());
  EXPECT_EQ(j.at("problems"), 4);
  EXPECT_EQ(j.at("findings").size(), 4u);
  EXPECT_TRUE(j.at("errors").empty());
  EXPECT_EQ(j.at("root"), kLantern);
  EXPECT_EQ(j.at("counts"),
            Json({{"topics", 12}, {"stylesheets", 2}, {"sitemaps", 2}, {"images", 11}, {"references", 65}}));
  for (const Json& f : j.at("findings")) {
    if (f.at("kind") == "inexact-reference") {
      EXPECT_EQ(f.at("resolves_to"), "topics/edit_note.htm");
    }
  }
  EXPECT_EQ(j.at("build_tags"),
            Json({{"topics", {{"online", 2}, {"print", 3}}}, {"elements", {{"print", 2}}}}));
}

TEST(CheckSample, FixedCopyIsClean) {
  LanternCopy copy;
  for (const SampleFault& f : SampleFaults()) f.fix(copy);
  ToolRun r = RunTool({"check", copy.root()});
  EXPECT_EQ(r.status, 0) << r;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(Lines(r.out).back(), "0 problems found.") << r;
  Json j = CheckJson(copy.root(), 0);
  EXPECT_TRUE(j.at("findings").empty()) << j.dump(2);
}

// Fixing one fault removes exactly its finding: each finding is tied to its
// own cause, not to the sample as a whole.
class CheckOneFaultFixed : public ::testing::TestWithParam<size_t> {};

TEST_P(CheckOneFaultFixed, LeavesTheOtherThree) {
  const SampleFault& fault = SampleFaults()[GetParam()];
  LanternCopy copy;
  fault.fix(copy);
  EXPECT_EQ(FindingKeys(CheckJson(copy.root(), 1)), SampleFaultKeys(fault.kind)) << "fixed: " << fault.kind;
}

INSTANTIATE_TEST_SUITE_P(EachFault, CheckOneFaultFixed, ::testing::Range<size_t>(0, 4));

TEST(CheckPlanted, EveryKindOfFindingIsReportedWhereItWasPlanted) {
  LanternCopy copy;
  for (const SampleFault& f : SampleFaults()) f.fix(copy);
  ReplaceInFile(copy.file("lantern.hhc"), "value=\"topics/glossary.htm\"", "value=\"topics/missing.htm\"");
  ReplaceInFile(copy.file("index.htm"), "<a href=\"topics/sync.htm\">", "<a href=\"topics\\sync.htm\">");
  // External and compiled-file references are not the project's to check.
  ReplaceInFile(copy.file("index.htm"), "<p>Open the",
                "<p><a href=\"../../outside.htm\">out</a> <a href=\"#nowhere\">here</a> "
                "<a href=\"http://example.invalid/a.htm\">web</a> <a href=\"mailto:a@b.invalid\">mail</a> "
                "<a href=\"other.chm::/a.htm\">chm</a> Open the");
  WriteFile(copy.file("css/lantern.css"), "@import url(missing.css);\n" + ReadFile(copy.file("css/lantern.css")));
  fs::copy_file(copy.file("images/go.png"), copy.file("images/unused.png"));
  // No outline at all: the tree inserts it. Linked from the contents so it is
  // no orphan.
  WriteFile(copy.file("topics/bare.htm"), "<title>Bare</title>\n<p>No outline.\n");
  ReplaceInFile(copy.file("lantern.hhc"), "value=\"topics/sync.htm\"", "value=\"topics/bare.htm\"");

  Json j = CheckJson(copy.root(), 1);
  std::set<Key> expected = {
      {"sitemap-missing-topic", "lantern.hhc", "topics/missing.htm"},
      {"inexact-reference", "index.htm", "topics\\sync.htm"},
      {"outside-project", "index.htm", "../../outside.htm"},
      {"missing-bookmark", "index.htm", "#nowhere"},
      {"missing-file", "css/lantern.css", "missing.css"},
      {"orphan-image", "images/unused.png", ""},
      {"repaired-page", "topics/bare.htm", ""},
  };
  EXPECT_EQ(FindingKeys(j), expected) << j.dump(2);
  for (const Json& f : j.at("findings")) {
    if (f.at("kind") == "inexact-reference") {
      EXPECT_EQ(f.at("resolves_to"), "topics/sync.htm");
    }
    if (f.at("kind") == "repaired-page") {
      EXPECT_NE(f.at("detail").get<std::string>().find("inserted <BODY>"), std::string::npos);
    }
  }
}

// One line a finding: kind, file, reference and detail, tab-separated.
TEST(CheckData, EveryReferenceIsFollowedAsListed) {
  std::multiset<std::string> expected, found;
  for (const std::string& line : Lines(ReadFile(kReferences + ".findings"))) expected.insert(line);
  Json report = CheckJson(kReferences, 1);
  for (const Json& f : report.at("findings"))
    found.insert(f.at("kind").get<std::string>() + "\t" + f.at("file").get<std::string>() + "\t" +
                 f.value("reference", "") + "\t" + f.value("detail", ""));
  EXPECT_EQ(found, expected);
}

TEST(CheckPlanted, CheckChangesNoFile) {
  LanternCopy copy;
  auto before = Snapshot(copy.root());
  ToolRun r = RunTool({"check", copy.root()});
  EXPECT_EQ(r.status, 1) << r;
  EXPECT_EQ(Snapshot(copy.root()), before);
}

}  // namespace
}  // namespace telvanix::tool_test
