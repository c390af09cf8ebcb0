// telvanix check DIR: the main job. Reads every topic, stylesheet and sitemap
// of a help project and reports broken and inexact references, missing
// bookmarks, orphans, repaired pages and the build tags in use.
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>

#include "cli/attribute_text.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/project_check.h"
#include "cli/project_edit.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix check DIR [--json]\n"
    "\n"
    "Reads every topic page (.htm, .html in any letter case), stylesheet and\n"
    "contents/index file under DIR and reports:\n"
    "  - referenced files that do not exist (images and srcset candidates,\n"
    "    every LINK and @import, scripts, backgrounds, sounds, multimedia,\n"
    "    OBJECT data, help-control images, related topics, contents/index\n"
    "    files, local links, frames)\n"
    "  - references that resolve only without regard to letter case or with\n"
    "    \\ turned into /\n"
    "  - links to bookmarks that the target page does not define\n"
    "  - contents and index entries that point to missing topics, and\n"
    "    contents/index files that are empty or whose lists do not close\n"
    "  - topics and images that nothing refers to\n"
    "  - pages whose structure needed repair (missing or stray outline tags)\n"
    "  - files the project file (.hhp) names that do not exist: listed\n"
    "    files, the default topic, contents and index files, window files\n"
    "  - the build tags in use (for information)\n"
    "\n"
    "  --json   one JSON object on stdout instead of the summary\n"
    "\n"
    "Nothing is modified (a change that mv or rm left unfinished is first\n"
    "completed). Exit status: 0 clean, 1 problems found, 2 usage or\n"
    "I/O error (the other files are still checked).\n";

nlohmann::json ToJson(const ProjectReport& r) {
  nlohmann::json findings = nlohmann::json::array();
  for (const Finding& f : r.findings) {
    nlohmann::json j = {{"kind", FindingKindName(f.kind)}, {"file", FileNameToUtf8(f.file)}};
    if (!f.reference.empty()) j["reference"] = PageTextToUtf8(f.reference.c_str(), f.codePage);  // in its file's charset
    if (!f.what.empty()) j["detail"] = ToUtf8(f.what.c_str());
    if (!f.resolved.empty()) j["resolves_to"] = FileNameToUtf8(f.resolved);
    findings.push_back(j);
  }
  nlohmann::json topicTags = nlohmann::json::object(), elementTags = nlohmann::json::object();
  for (const auto& [tag, n] : r.topicBuildTags) topicTags[ToUtf8(tag.c_str())] = n;
  for (const auto& [tag, n] : r.elementBuildTags) elementTags[ToUtf8(tag.c_str())] = n;
  return {{"root", FileNameToUtf8(r.root)},
          {"counts",
           {{"topics", r.topics}, {"stylesheets", r.stylesheets}, {"sitemaps", r.sitemaps},
            {"images", r.images}, {"references", r.references}}},
          {"problems", r.findings.size()},
          {"findings", findings},
          {"build_tags", {{"topics", topicTags}, {"elements", elementTags}}},
          {"errors", r.errors}};
}

void PrintSummary(const ProjectReport& r) {
  std::printf("%s: %zu topics, %zu stylesheets, %zu contents/index files, %zu images, %zu references\n",
              r.root.c_str(), r.topics, r.stylesheets, r.sitemaps, r.images, r.references);
  bool first = true;
  for (size_t i = 0; i < r.findings.size(); ++i) {
    const Finding& f = r.findings[i];
    if (first || f.kind != r.findings[i - 1].kind) {
      size_t n = 0;
      for (const Finding& g : r.findings) n += g.kind == f.kind;
      std::printf("\n%s (%zu):\n", FindingKindTitle(f.kind), n);
      first = false;
    }
    std::printf("  %s", f.file.c_str());
    if (!f.reference.empty()) std::printf(": %s", f.reference.c_str());
    if (!f.what.empty()) std::printf(" (%s)", f.what.c_str());
    if (!f.resolved.empty()) std::printf(" -> %s", f.resolved.c_str());
    std::printf("\n");
  }
  if (!r.topicBuildTags.empty() || !r.elementBuildTags.empty()) {
    std::printf("\nBuild tags in use:\n");
    std::map<std::string, std::pair<size_t, size_t>> all;
    for (const auto& [t, n] : r.topicBuildTags) all[t].first = n;
    for (const auto& [t, n] : r.elementBuildTags) all[t].second = n;
    for (const auto& [t, n] : all) std::printf("  %s: %zu topics, %zu elements\n", t.c_str(), n.first, n.second);
  }
  std::printf("\n%zu problem%s found.\n", r.findings.size(), r.findings.size() == 1 ? "" : "s");
}

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"json", 0}}, kHelp, cl, 1, 1); rc >= 0) return rc;
  const std::string root = cl.operands()[0];
  std::error_code ec;
  if (!std::filesystem::is_directory(root, ec)) {
    PrintError(root + ": " + (std::filesystem::exists(root, ec) ? "not a folder" : "no such folder"));
    return kExitError;
  }
  ProjectReport report = CheckProject(root);
  if (cl.Has("json"))
    std::printf("%s\n", ToJson(report).dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
  else
    PrintSummary(report);
  for (const std::string& e : report.errors) PrintError(e);
  if (!report.errors.empty()) return kExitError;
  return report.findings.empty() ? kExitClean : kExitProblems;
}

}  // namespace

extern const Command kCheckCommand = {"check", "report broken references, orphans and repairs in a help project", Run};

}  // namespace telvanix::tool
