// telvanix rm FILE... [--unlink]: removes files or folders of a help project,
// refusing while anything else refers to them, or (with --unlink) removing
// those references too, as one all-or-nothing change.
#include <nlohmann/json.hpp>

#include <cstdio>
#include <set>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "cli/project_edit.h"
#include "cli/references.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix rm FILE... [--unlink] [--root DIR] [--dry-run] [--json]\n"
    "\n"
    "Removes files or folders of a help project. While another file refers to\n"
    "one of them, nothing is removed and the references are listed, unless\n"
    "--unlink: then a link is unwrapped (its text stays), an image, object,\n"
    "script or frame goes, a contents or index entry goes (an entry with\n"
    "children keeps them) and the project file's [FILES] line goes. Refused as\n"
    "a whole, nothing changed, for a read-only file or one changed since read.\n"
    "\n"
    "  --unlink     remove the references as well\n"
    "  --root DIR   the project folder (default: the nearest folder at or\n"
    "               above FILE holding a .hhp file)\n"
    "  --dry-run    list what would be removed and changed\n"
    "  --json       with --dry-run: one JSON object\n"
    "\n"
    "Exit status: 0 done, 1 refused (still referenced), 2 usage or I/O error.\n";

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"root", 1}, {"unlink", 0}, {"dry-run", 0}, {"json", 0}}, kHelp, cl, 1); rc >= 0)
    return rc;
  CHtmlProjectIndex index;
  const std::string root = OpenProject(cl.Values("root").empty() ? "" : cl.Values("root")[0], cl.operands()[0], index);
  if (root.empty()) return kExitError;
  std::string error;

  CHtmlFileEx::CReplaceContext context;
  std::vector<std::string> paths;
  std::set<std::string> removed;  // every file that goes
  std::vector<std::string> folders;
  for (const std::string& op : cl.operands()) {
    std::string rel;
    if (!ToProjectPath(root, op, rel, error)) {
      PrintError(error);
      return kExitProblems;
    }
    const bool folder = index.FindFile(rel) < 0;
    size_t before = removed.size();
    for (const ProjectFile& f : index.GetFiles())
      if (f.path == rel || (folder && f.path.compare(0, rel.size() + 1, rel + "/") == 0)) removed.insert(f.path);
    if (removed.size() == before || !context.AddDeletion(rel.c_str(), folder)) {
      PrintError(op + ": no such file or folder in the project");
      return kExitProblems;
    }
    if (folder) folders.push_back(rel);
    paths.push_back(rel);
  }

  std::vector<std::string> list;
  for (size_t i : CandidateReferrers(index, paths))
    if (!removed.count(index.GetFiles()[i].path)) list.push_back(index.GetFiles()[i].path);
  std::vector<FileRewrite> rewrites(list.size());
  ParallelFor(list.size(), [&](size_t k) { rewrites[k] = RewriteFile(root, list[k], list[k], context); }, "rewrite");
  bool referenced = false, failed = false;
  for (const FileRewrite& r : rewrites) {
    if (!r.error.empty()) PrintError(r.error);
    failed |= !r.error.empty();
    for (const CFileReference& c : r.changes) referenced |= c.m_nChange == CFileMoves::emDeleted;
  }
  if (failed) {
    PrintError("nothing was changed");
    return kExitError;
  }
  const bool listOnly = cl.Has("dry-run") || (referenced && !cl.Has("unlink"));
  if (listOnly) {
    if (cl.Has("json")) {
      nlohmann::json out = {{"root", FileNameToUtf8(root)}, {"remove", nlohmann::json::array()},
                            {"references", nlohmann::json::array()}};
      for (const std::string& f : removed) out["remove"].push_back(FileNameToUtf8(f));
      for (const FileRewrite& r : rewrites)
        for (const CFileReference& c : r.changes)
          out["references"].push_back({{"file", FileNameToUtf8(r.path)}, {"line", c.m_nLine},
                                       {"element", ToUtf8(c.m_strElement)},
                                       {"attribute", ToUtf8(c.m_strAttribute)}, {"reference", ToUtf8(c.m_strWritten)}});
      std::printf("%s\n", out.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    } else {
      if (cl.Has("dry-run"))
        for (const std::string& f : removed) std::printf("remove %s\n", f.c_str());
      for (const FileRewrite& r : rewrites)
        for (const CFileReference& c : r.changes) std::printf("%s\n", DescribeChange(r.path, c).c_str());
    }
    if (cl.Has("dry-run")) return kExitClean;
    PrintError("still referenced (listed above); nothing was removed; --unlink removes the references too");
    return kExitProblems;
  }

  CHtmlProjectTransaction change(root.c_str());
  size_t rewritten = 0;
  for (const FileRewrite& r : rewrites)
    if (r.changed) {
      change.AddWrite(r.path.c_str(), r.bytes, r.stamp);
      ++rewritten;
    }
  for (const std::string& f : removed) {
    CHtmlProjectTransaction::CFileStamp stamp;
    CHtmlProjectTransaction::GetFileStamp((root + "/" + f).c_str(), stamp);
    change.AddRemove(f.c_str(), stamp);
  }
  for (const std::string& folder : folders) {
    std::set<std::string> below{folder};
    for (const std::string& f : removed)
      if (f.compare(0, folder.size() + 1, folder + "/") == 0)
        for (std::string d = DirectoryOf(f); d.size() > folder.size(); d = DirectoryOf(d)) below.insert(d);
    for (const std::string& d : below) change.AddEmptiedFolder(d.c_str());
  }
  if (int rc = CommitChange(change); rc >= 0) return rc;
  std::printf("removed %zu file%s, removed references in %zu file%s\n", removed.size(),
              removed.size() == 1 ? "" : "s", rewritten, rewritten == 1 ? "" : "s");
  return kExitClean;
}

}  // namespace

extern const Command kRmCommand = {"rm", "remove files; refused while referenced unless --unlink", Run};

}  // namespace telvanix::tool
