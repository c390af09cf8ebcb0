// The help of every command. What the reading commands (text, toc,
// roundtrip) print, and the answers to bad command lines, are cases under
// tests/data/tool.
#include <nlohmann/json.hpp>

#include "tool/tool_runner.h"

namespace telvanix::tool_test {
namespace {

const std::vector<std::string> kCommands = {"check", "text", "props", "tags", "format", "toc", "roundtrip"};

TEST(ToolUsage, HelpOfEveryCommandExitsZero) {
  ToolRun top = RunTool({"--help"});
  EXPECT_EQ(top.status, 0) << top;
  for (const std::string& c : kCommands) {
    EXPECT_NE(top.out.find("\n  " + c + " "), std::string::npos) << c << " missing from\n" << top.out;
    for (const char* flag : {"--help", "-h"}) {
      ToolRun r = RunTool({c, flag});
      EXPECT_EQ(r.status, 0) << c << " " << flag << "\n" << r;
      EXPECT_EQ(r.out.rfind("usage: telvanix " + c + " ", 0), 0u) << r;
      EXPECT_EQ(r.err, "") << r;
      // Every option the help explains is in its usage line.
      const std::string usage = r.out.substr(0, r.out.find('\n'));
      for (const std::string& line : Lines(r.out)) {
        if (line.rfind("  --", 0) == 0) {
          EXPECT_NE(usage.find(line.substr(2, line.find(' ', 2) - 2)), std::string::npos) << c << ": " << line;
        }
      }
    }
  }
}

// Messages and statuses of bad command lines are cases under tests/data/tool.
TEST(ToolUsage, NoCommandExitsTwo) {
  ToolRun none = RunTool({});
  EXPECT_EQ(none.status, 2) << none;
  EXPECT_EQ(none.out, "");
}

// A page of several megabytes has its words taken while it is analysed:
// they must be those of its repeated part, copy after copy, beside the
// title and keywords that the analysis finds.
TEST(TextCommand, LargePageGivesEveryCopyOfItsWords) {
  ScratchDir dir;
  const std::string unit = "<p>word <img alt=\"pic\"> &#8220;q&#8221;</p>\n";
  std::string page =
      "<html><head><meta charset=\"utf-8\"><title>Big &amp; long</title>"
      "<meta name=\"keywords\" content=\"one, two\"></head><body>\n";
  std::string words;
  while (page.size() < (5u << 20)) {
    page += unit;
    words += std::string(words.empty() ? "" : "\r\n") + "word pic \u201cq\u201d";
  }
  WriteFile(dir / "big.htm", page + "</body></html>\n");
  ToolRun r = RunTool({"text", dir / "big.htm"}, 300);
  ASSERT_EQ(r.status, 0) << r.err;
  const nlohmann::json line = nlohmann::json::parse(r.out);
  EXPECT_EQ(line.at("title"), "Big & long");
  EXPECT_EQ(line.at("keywords"), nlohmann::json::array({"one", "two"}));
  EXPECT_TRUE(line.at("text") == words) << "the words of " << page.size() << " bytes differ";
}

}  // namespace
}  // namespace telvanix::tool_test
