// telvanix: check, index, edit and reformat the files of an HTML help project.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/project_edit.h"
#include "telvanix/platform/code_page.h"

namespace {

void PrintUsage(FILE* out) {
  std::fprintf(out,
               "usage: telvanix COMMAND [ARGS...]\n"
               "\n"
               "Commands:\n");
  for (const auto& c : telvanix::tool::AllCommands()) std::fprintf(out, "  %-10s %s\n", c.name, c.summary);
  std::fprintf(out,
               "\n"
               "Run 'telvanix COMMAND --help' for a command's options.\n"
               "Exit status: 0 clean, 1 problems found, 2 usage or I/O error.\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    PrintUsage(stderr);
    return telvanix::tool::kExitError;
  }
  std::string name = argv[1];
  if (name == "--help" || name == "-h" || name == "help") {
    PrintUsage(stdout);
    return telvanix::tool::kExitClean;
  }
  // A code page that cannot be read would quietly garble every page.
  if (const char* error = telvanix::GetCodePageEnvironmentError()) {
    std::fprintf(stderr, "telvanix: %s\n", error);
    return telvanix::tool::kExitError;
  }
  std::vector<std::string> args(argv + 2, argv + argc);
  for (const auto& c : telvanix::tool::AllCommands()) {
    if (name != c.name) continue;
    // Whatever it is asked, a command first completes a change a killed mv or rm left.
    if (name != "recover" && !telvanix::tool::CompletePendingChanges(args)) return telvanix::tool::kExitError;
    return c.run(args);
  }
  std::fprintf(stderr, "telvanix: unknown command '%s'\n", name.c_str());
  PrintUsage(stderr);
  return telvanix::tool::kExitError;
}
