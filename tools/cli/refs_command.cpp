// telvanix refs FILE: every reference to a file or folder of a help project,
// with the referring file, its line and the tag or rule.
#include <nlohmann/json.hpp>

#include <cstdio>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/project_edit.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix refs FILE [--root DIR] [--json]\n"
    "\n"
    "Lists every reference to FILE (or to any file under a folder FILE) in\n"
    "the project's pages, stylesheets, contents and index files and project\n"
    "file: \"file:line: TAG attribute: reference\". Nothing is modified.\n"
    "\n"
    "  --root DIR   the project folder (default: the nearest folder at or\n"
    "               above FILE holding a .hhp file)\n"
    "  --json       one JSON object\n"
    "\n"
    "Exit status: 0 done (also when nothing refers to FILE), 2 usage or I/O error.\n";

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"root", 1}, {"json", 0}}, kHelp, cl, 1, 1); rc >= 0) return rc;
  CHtmlProjectIndex index;
  const std::string root = OpenProject(cl.Values("root").empty() ? "" : cl.Values("root")[0], cl.operands()[0], index);
  std::string error, rel;
  if (root.empty()) return kExitError;
  if (!ToProjectPath(root, cl.operands()[0], rel, error)) {
    PrintError(error);
    return kExitError;
  }
  // Read whole: the index knows where each reference stands.
  if (!index.Build(root.c_str())) {
    PrintError(root + ": no such folder");
    return kExitError;
  }
  int status = kExitClean;
  for (const std::string& e : index.GetErrors()) {
    PrintError(e);
    status = kExitError;
  }
  nlohmann::json list = nlohmann::json::array();
  for (const CHtmlProjectIndex::CPlace& p : index.GetReferencePlaces(rel)) {
    const std::string& file = index.GetFiles()[p.m_nFile].path;
    const CHtmlProjectIndex::CPosition& at = index.GetEntries()[p.m_nFile].m_positions[p.m_nPosition];
    if (cl.Has("json")) {
      list.push_back({{"file", FileNameToUtf8(file)}, {"line", at.m_nLine}, {"element", ToUtf8(at.m_strElement)},
                      {"attribute", ToUtf8(at.m_strAttribute)}, {"reference", ToUtf8(at.m_strWritten)}});
      continue;
    }
    CFileReference shown;
    shown.m_nLine = at.m_nLine;
    shown.m_strElement = at.m_strElement;
    shown.m_strAttribute = at.m_strAttribute;
    shown.m_strWritten = at.m_strWritten;
    std::printf("%s\n", DescribeChange(file, shown).c_str());
  }
  if (cl.Has("json"))
    std::printf("%s\n", nlohmann::json({{"file", FileNameToUtf8(rel)}, {"references", list}})
                            .dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
                            .c_str());
  return status;
}

}  // namespace

extern const Command kRefsCommand = {"refs", "list every reference to a file or folder", Run};

}  // namespace telvanix::tool
