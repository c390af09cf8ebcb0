// telvanix recover [DIR]: completes (or undoes, when it never reached its
// renames) a change that mv or rm left unfinished, and does nothing else.
#include <cstdio>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/project_edit.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix recover [DIR] [--root DIR]\n"
    "\n"
    "A change by mv or rm that was interrupted leaves a journal\n"
    "(.telvanix-journal) in the project folder. recover completes it, or\n"
    "undoes it when it had not reached its renames, so that the project is\n"
    "as before or as after the change. Every other command does this\n"
    "first on its own.\n"
    "\n"
    "  --root DIR   the project folder (default: the nearest folder at or\n"
    "               above DIR, or the current folder, holding a .hhp file)\n"
    "\n"
    "Exit status: 0 done (also when nothing was pending), 2 usage or I/O error.\n";

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"root", 1}}, kHelp, cl, 0, 1); rc >= 0) return rc;
  std::string error;
  const std::string start = cl.operands().empty() ? "." : cl.operands()[0];
  std::string root = FindProjectRoot(cl.Values("root").empty() ? "" : cl.Values("root")[0], start, error);
  // A project without a .hhp is named directly.
  if (root.empty() && !cl.operands().empty()) root = cl.operands()[0];
  if (root.empty()) {
    PrintError(error);
    return kExitError;
  }
  int done = 0;
  if (!CHtmlProjectTransaction::Recover(root.c_str(), done, error)) {
    PrintError(error);
    return kExitError;
  }
  std::printf("%s\n", done == 1   ? "completed an interrupted change"
                      : done == 2 ? "undid an interrupted change (it had not reached its renames)"
                                  : "nothing to recover");
  return kExitClean;
}

}  // namespace

extern const Command kRecoverCommand = {"recover", "complete a change that mv or rm left unfinished", Run};

}  // namespace telvanix::tool
