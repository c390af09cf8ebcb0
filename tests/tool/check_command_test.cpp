// `telvanix check` on copies of the sample project (its report on the sample
// itself is a case under tests/data/tool): fixing its four deliberate faults
// gives a clean project and fixing one leaves the other three (every other
// kind of finding is planted in tests/data/check/planted).
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
  std::function<void(const LanternCopy&)> fix;  // makes the fault go away
};

const std::vector<SampleFault>& SampleFaults() {
  static const std::vector<SampleFault> faults = {
      {"missing-file", "topics/troubleshooting.htm", "../images/conflict_banner.png",
       [](const LanternCopy& c) { fs::copy_file(c.file("images/logo.png"), c.file("images/conflict_banner.png")); }},
      {"inexact-reference", "topics/getting_started.htm", "Edit_Note.htm",
       [](const LanternCopy& c) {
         ReplaceInFile(c.file("topics/getting_started.htm"), "href=\"Edit_Note.htm\"", "href=\"edit_note.htm\"");
       }},
      {"missing-bookmark", "topics/search.htm", "glossary.htm#wildcards",
       [](const LanternCopy& c) {
         ReplaceInFile(c.file("topics/glossary.htm"), "</dl>",
                       "<dt><a name=\"wildcards\">Wildcard</a></dt><dd>A * that stands for any letters.</dd>\r\n</dl>");
       }},
      {"orphan-topic", "topics/release_notes.htm", "",
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

}  // namespace
}  // namespace telvanix::tool_test
