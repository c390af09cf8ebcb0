// telvanix mv SRC... DST: moves or renames files and folders of a help
// project and rewrites every reference to them (pages, stylesheets, contents
// and index files, the project file) as one all-or-nothing change.
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <mutex>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "cli/project_edit.h"
#include "cli/project_files.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix mv SRC... DST [--root DIR] [--dry-run] [--json]\n"
    "\n"
    "Moves or renames files and folders inside a help project and rewrites\n"
    "every reference to them, and the moved pages' own references, in pages,\n"
    "stylesheets, contents and index files and the project file (.hhp). With\n"
    "one SRC, DST is its new name unless DST is an existing folder; with\n"
    "several, DST is the folder they move into. Only the rewritten values\n"
    "change; every other byte stays. The change is all or nothing: refused\n"
    "as a whole (nothing changed) for a read-only file, a file changed since\n"
    "it was read, a target that exists, a target outside the project, or a\n"
    "folder moved into itself.\n"
    "\n"
    "  --root DIR   the project folder (default: the nearest folder at or\n"
    "               above SRC holding a .hhp file)\n"
    "  --dry-run    list the moves and the references that would change\n"
    "  --json       with --dry-run: one JSON object\n"
    "\n"
    "Exit status: 0 done, 1 refused, 2 usage or I/O error.\n";

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"root", 1}, {"dry-run", 0}, {"json", 0}}, kHelp, cl, 2); rc >= 0) return rc;
  std::vector<std::string> ops = cl.operands();
  const std::string dst = ops.back();
  ops.pop_back();
  CHtmlProjectIndex index;
  const std::string root = OpenProject(cl.Values("root").empty() ? "" : cl.Values("root")[0], ops[0], index);
  if (root.empty()) return kExitError;
  std::string error;

  std::string dstRel;
  std::error_code ec;
  const bool intoFolder = ops.size() > 1 || std::filesystem::is_directory(dst, ec);
  if (!ToProjectPath(root, dst, dstRel, error, true)) {
    PrintError(error);
    return kExitProblems;
  }
  std::vector<std::pair<std::string, std::string>> moves;
  CHtmlFileEx::CReplaceContext context;
  for (const std::string& src : ops) {
    std::string rel;
    if (!ToProjectPath(root, src, rel, error)) {
      PrintError(error);
      return kExitProblems;
    }
    const std::string name = rel.substr(rel.find_last_of('/') + 1);
    std::string to = !intoFolder ? dstRel : dstRel.empty() ? name : dstRel + "/" + name;
    moves.emplace_back(rel, to);
  }
  CHtmlProjectIndex::CMovePlan plan;
  if (!index.PlanMove(moves, plan, error)) {
    PrintError(error);
    return kExitProblems;
  }
  for (const auto& [from, to] : moves) {
    const bool folder = index.FindFile(from) < 0;
    if (!context.AddMove(from.c_str(), to.c_str(), folder)) {
      PrintError(from + ": cannot move to " + to);
      return kExitProblems;
    }
  }

  // Every file that moves, and every file that may refer to one.
  std::map<std::string, std::string> newPath(plan.m_files.begin(), plan.m_files.end());
  std::vector<std::string> sources;
  for (const auto& m : moves) sources.push_back(m.first);
  std::vector<size_t> candidates = CandidateReferrers(index, sources);
  std::set<std::string> work;
  for (size_t i : candidates) work.insert(index.GetFiles()[i].path);
  for (const auto& [from, to] : plan.m_files)
    if (ClassifyFile(from) != FileKind::kImage && ClassifyFile(from) != FileKind::kOther) work.insert(from);
  std::vector<std::string> list(work.begin(), work.end());
  std::vector<FileRewrite> rewrites(list.size());
  ParallelFor(list.size(), [&](size_t k) {
    auto it = newPath.find(list[k]);
    rewrites[k] = RewriteFile(root, list[k], it == newPath.end() ? list[k] : it->second, context);
  }, "rewrite");
  std::vector<std::string> errors;
  for (const FileRewrite& r : rewrites)
    if (!r.error.empty()) errors.push_back(r.error);
  if (!errors.empty()) {
    for (const std::string& e : errors) PrintError(e);
    PrintError("nothing was changed");
    return kExitError;
  }

  if (cl.Has("dry-run")) {
    if (cl.Has("json")) {
      nlohmann::json out = {{"root", FileNameToUtf8(root)}, {"moves", nlohmann::json::array()},
                            {"changes", nlohmann::json::array()}};
      for (const auto& [from, to] : plan.m_files)
        out["moves"].push_back({{"from", FileNameToUtf8(from)}, {"to", FileNameToUtf8(to)}});
      for (const FileRewrite& r : rewrites)
        for (const CFileReference& c : r.changes)
          out["changes"].push_back({{"file", FileNameToUtf8(r.path)}, {"line", c.m_nLine},
                                    {"element", ToUtf8(c.m_strElement)}, {"attribute", ToUtf8(c.m_strAttribute)},
                                    {"from", ToUtf8(c.m_strWritten)}, {"to", ToUtf8(c.m_strNewValue)}});
      std::printf("%s\n", out.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    } else {
      for (const auto& [from, to] : plan.m_files) std::printf("move %s -> %s\n", from.c_str(), to.c_str());
      for (const FileRewrite& r : rewrites)
        for (const CFileReference& c : r.changes) std::printf("%s\n", DescribeChange(r.path, c).c_str());
    }
    return kExitClean;
  }

  CHtmlProjectTransaction change(root.c_str());
  std::map<std::string, const FileRewrite*> byPath;
  for (const FileRewrite& r : rewrites) byPath[r.path] = &r;
  size_t rewritten = 0;
  for (const auto& [from, to] : plan.m_files) {
    auto it = byPath.find(from);
    const FileRewrite* r = it == byPath.end() ? nullptr : it->second;
    CHtmlProjectTransaction::CFileStamp stamp;
    if (r) stamp = r->stamp;
    else CHtmlProjectTransaction::GetFileStamp((root + "/" + from).c_str(), stamp);
    rewritten += r && r->changed;
    change.AddMove(from.c_str(), to.c_str(), r && r->changed ? &r->bytes : nullptr, stamp);
  }
  for (const FileRewrite& r : rewrites)
    if (r.changed && r.newPath == r.path) {
      change.AddWrite(r.path.c_str(), r.bytes, r.stamp);
      ++rewritten;
    }
  // Symbolic links that stay but name a moved file are made again.
  for (const ProjectFile& f : index.GetFiles()) {
    if (newPath.count(f.path)) continue;
    const std::string target = CHtmlProjectTransaction::GetLinkTarget(root.c_str(), f.path.c_str());
    if (!target.empty() && newPath.count(target)) {
      CHtmlProjectTransaction::CFileStamp stamp;
      CHtmlProjectTransaction::GetFileStamp((root + "/" + f.path).c_str(), stamp);
      change.AddRelink(f.path.c_str(), stamp);
    }
  }
  for (const std::string& f : plan.m_folders) change.AddEmptiedFolder(f.c_str());
  if (int rc = CommitChange(change); rc >= 0) return rc;
  std::printf("moved %zu file%s, rewrote references in %zu file%s\n", plan.m_files.size(),
              plan.m_files.size() == 1 ? "" : "s", rewritten, rewritten == 1 ? "" : "s");
  return kExitClean;
}

}  // namespace

extern const Command kMvCommand = {"mv", "move or rename files and folders; every reference follows", Run};

}  // namespace telvanix::tool
