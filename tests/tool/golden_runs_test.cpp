// Command lines as data: tests/data/tool/NAME.run holds one command line a
// line, and NAME.expected what each printed and its exit status. Arguments
// are split at blanks ('...' keeps blanks and quotes); $DATA and $SAMPLES
// name the test data and sample folders. Three lines are no tool runs:
// "env NAME=VALUE" sets a variable for the rest of the case, "copy DIR"
// copies a folder to a fresh scratch folder that $SCRATCH then names,
// "cat FILE" prints a file, and "diff DIR DIR" names the files that differ
// between two folders. A line starting with "#" is a comment.
#include <cstdlib>

#include "golden_cases.h"
#include "tool/tool_runner.h"

namespace telvanix::tool_test {
namespace {

std::vector<std::string> SplitArguments(const std::string& line) {
  std::vector<std::string> args;
  for (size_t i = 0; i < line.size();) {
    if (line[i] == ' ') {
      ++i;
      continue;
    }
    const bool quoted = line[i] == '\'';
    size_t end = quoted ? line.find('\'', i + 1) : line.find(' ', i);
    if (end == std::string::npos) end = line.size();
    args.push_back(line.substr(i + quoted, end - i - quoted));
    i = end + quoted;
  }
  return args;
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  if (from.empty()) return;
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

std::string RunCase(const std::string& script) {
  ScratchDir scratch;
  std::string copy;
  int copies = 0;
  std::vector<std::string> variables;
  const std::pair<std::string, std::string> folders[] = {{"$DATA", TELVANIX_TEST_DATA_DIR},
                                                         {"$SAMPLES", TELVANIX_SAMPLES_DIR}};
  std::string out;
  for (std::string line : Lines(script)) {
    if (line.empty() || line[0] == '#') continue;
    out += "$ " + line + "\n";
    ReplaceAll(line, "$SCRATCH", copy);
    for (const auto& [name, path] : folders) ReplaceAll(line, name, path);
    std::vector<std::string> args = SplitArguments(line);
    ToolRun r;
    if (args.size() == 2 && args[0] == "env") {
      const size_t eq = args[1].find('=');
      variables.push_back(args[1].substr(0, eq));
      ::setenv(variables.back().c_str(), args[1].substr(eq + 1).c_str(), 1);
      continue;
    } else if (args.size() == 2 && args[0] == "copy") {
      copy = scratch / std::to_string(++copies);
      fs::copy(args[1], copy, fs::copy_options::recursive);
      continue;
    } else if (args.size() == 3 && args[0] == "diff") {
      std::map<std::string, std::string> a = Snapshot(args[1]), b = Snapshot(args[2]);
      for (const auto& [name, bytes] : a)
        if (!b.count(name) || b[name] != bytes) r.out += "differs: " + name + "\n";
      for (const auto& [name, bytes] : b)
        if (!a.count(name)) r.out += "differs: " + name + "\n";
      if (r.out.empty()) r.out = "no differences\n";
      r.status = 0;
    } else if (args.size() == 2 && args[0] == "cat") {
      r = {0, false, ReadFile(args[1]), ""};
    } else {
      r = RunTool(args);
    }
    std::string shown = r.out + "[exit " + std::to_string(r.status) + "]\n";
    if (!r.err.empty()) shown += "[stderr]\n" + r.err;
    if (!copy.empty()) ReplaceAll(shown, copy, "$SCRATCH");
    for (const auto& [name, path] : folders) ReplaceAll(shown, path, name);
    out += shown;
  }
  for (const std::string& v : variables) ::unsetenv(v.c_str());
  return out;
}

TEST(ToolRuns, EveryCaseOfTestsDataTool) {
  test::RunGoldenCases("tool", ".run", [](const std::string&, const std::string& script) { return RunCase(script); },
                       9);
}

}  // namespace
}  // namespace telvanix::tool_test
