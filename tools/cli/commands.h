// The tool's commands. Each takes its own arguments (after the command name)
// and returns the process exit status: 0 clean, 1 problems found, 2 usage or
// I/O error.
#pragma once

#include <string>
#include <vector>

namespace telvanix::tool {

constexpr int kExitClean = 0;
constexpr int kExitProblems = 1;
constexpr int kExitError = 2;

struct Command {
  const char* name;
  const char* summary;
  int (*run)(const std::vector<std::string>& args);
};

// Every command the tool knows, in the order `telvanix --help` lists them.
const std::vector<Command>& AllCommands();

}  // namespace telvanix::tool
