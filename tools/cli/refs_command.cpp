// telvanix refs FILE: every reference to a file or folder of a help project,
// with the referring file, its line and the tag or rule.
#include <nlohmann/json.hpp>

#include <cstdio>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
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
  // Listed through the deletion the file would be: each reference to it
  // is then marked.
  CHtmlFileEx::CReplaceContext context;
  context.AddDeletion(rel.c_str(), index.FindFile(rel) < 0);
  std::vector<size_t> candidates = CandidateReferrers(index, {rel});
  std::vector<std::vector<CFileReference>> found(candidates.size());
  std::vector<std::string> errors(candidates.size());
  ParallelFor(candidates.size(), [&](size_t k) {
    found[k] = ListFileReferences(root, index.GetFiles()[candidates[k]].path, context, errors[k]);
  }, "refs");
  nlohmann::json list = nlohmann::json::array();
  int status = kExitClean;
  const std::string folder = rel + "/";
  for (size_t k = 0; k < candidates.size(); ++k) {
    if (!errors[k].empty()) {
      PrintError(errors[k]);
      status = kExitError;
    }
    const std::string& file = index.GetFiles()[candidates[k]].path;
    for (const CFileReference& c : found[k]) {
      const std::string target = c.m_strTarget.str();
      CString mapped;
      if (target.empty() || context.MapPath(target.c_str(), mapped) != CFileMoves::emDeleted) continue;
      if (cl.Has("json"))
        list.push_back({{"file", FileNameToUtf8(file)}, {"line", c.m_nLine}, {"element", ToUtf8(c.m_strElement)},
                        {"attribute", ToUtf8(c.m_strAttribute)}, {"reference", ToUtf8(c.m_strWritten)}});
      else {
        CFileReference shown = c;
        shown.m_nChange = CFileMoves::emUnchanged;  // listed, not changed
        std::printf("%s\n", DescribeChange(file, shown).c_str());
      }
    }
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
