// telvanix toc FILE.hhc|FILE.hhk [--check]: print a contents or index file
// as an indented tree, and optionally check its entries against the project.
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "cli/attribute_text.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/project_files.h"
#include "cli/references.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "telvanix/sitemap/sitemap_entry.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix toc FILE.hhc|FILE.hhk [--check] [--root DIR] [--json]\n"
    "\n"
    "Prints the entries of a contents or index file as an indented tree:\n"
    "one line per entry, \"name -> topic\"; an index entry's further topics\n"
    "follow on lines of their own.\n"
    "\n"
    "  --check      also check every topic an entry points to and the bookmark\n"
    "               after its \"#\"; entries are relative to the file's own\n"
    "               folder and resolved as `telvanix check` resolves them\n"
    "  --root DIR   the project folder, above which no entry may point\n"
    "               (default: the file's own folder)\n"
    "  --json       the entries (and problems) as one JSON object\n"
    "\n"
    "Exit status: 0 clean, 1 --check found problems, 2 usage or I/O error.\n";

std::string Str(const char* s) { return s ? s : ""; }

// An index entry may be named by a "Keyword" parameter (kept among the
// unknown ones, so that the file saves back as written); its "Name"
// parameters then name the topics it lists.
// The file is read as UTF-8 (see Run).
std::string EntryName(const CHtmlSitemap& e) {
  for (int k = 0; k < e.GetUnknownParamArraySize(); ++k) {
    const CHtmlSiteParamCouple* p = e.GetUnknownParam(k);
    if (p && p->GetName() && p->GetValue() && CString(p->GetName()).CompareNoCase("Keyword") == 0)
      return AttributeValueToUtf8(p->GetValue(), CP_UTF8);
  }
  return Str(e.GetName());
}

struct Problem {
  int entry;
  std::string reference;  // UTF-8
  std::string what;
};

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"check", 0}, {"json", 0}, {"root", 1}}, kHelp, cl, 1, 1); rc >= 0) return rc;
  const std::string file = cl.operands()[0];
  CHtmlFileSitemap sitemap;
  std::string error;
  if (!ReadSitemapAsUtf8(file, sitemap, error, true)) {
    PrintError(error);
    return kExitError;
  }
  std::string root = cl.Values("root").empty() ? DirectoryOf(file) : cl.Values("root")[0];
  if (root.empty()) root = ".";
  // The sitemap's own name inside the project: entries are relative to its folder.
  std::string from = file.substr(file.find_last_of('/') + 1);
  if (!cl.Values("root").empty()) {
    std::error_code ec;
    std::filesystem::path inside = std::filesystem::absolute(file, ec).lexically_normal().lexically_relative(
        std::filesystem::absolute(root, ec).lexically_normal());
    if (!ec && !inside.empty() && *inside.begin() != "..") from = inside.generic_string();
  }

  std::vector<Problem> problems;
  std::unique_ptr<ProjectIndex> index;
  // Bookmarks of the topics entries point into, each page read once.
  std::map<size_t, std::optional<std::set<std::string>>> pageBookmarks;
  const BookmarkLookup bookmarks = [&](size_t topic) -> const std::set<std::string>* {
    auto [it, fresh] = pageBookmarks.try_emplace(topic);
    if (fresh) {
      std::string path = root + "/" + index->files()[topic].path, error;
      CByteString page;
      if (LoadTopicBytes(path, page, error)) {
        CHtmlFileEx doc(page, path.c_str());
        it->second = PageBookmarks(doc);
      }
    }
    return it->second ? &*it->second : nullptr;
  };
  // Files the listing could not take (broken links, pipes) are no topics:
  // an entry naming one is reported as missing, and nothing else is said.
  if (cl.Has("check")) index = std::make_unique<ProjectIndex>(ClassifyFiles(ListProjectFiles(root).files));
  auto checkRef = [&](int entry, const char* written) {
    if (!index || !written || !*written) return;
    const std::string text = AttributeValueToUtf8(written, CP_UTF8);  // the model keeps values as written
    const Resolution r = index->Resolve(from, text, bookmarks);
    if (r.Outside()) problems.push_back({entry, text, "points outside the project"});
    if (r.Missing()) problems.push_back({entry, text, "topic does not exist"});
    if (r.Inexact()) problems.push_back({entry, text, "resolves only as " + r.actual});
    if (r.bookmarkMissing) problems.push_back({entry, text, "topic does not define the bookmark"});
  };

  nlohmann::json entries = nlohmann::json::array();
  const bool json = cl.Has("json");
  for (int i = 0; i < sitemap.GetSitemapArraySize(); ++i) {
    const CHtmlSitemap* e = sitemap.GetSitemap(i);
    if (!e) continue;
    int level = e->GetLevel() < 1 ? 1 : e->GetLevel();
    std::string indent(static_cast<size_t>(2 * (level - 1)), ' ');
    std::string name = EntryName(*e);
    std::string local = AttributeValueToUtf8(e->GetPrimary(), CP_UTF8);
    nlohmann::json je = {{"level", level}, {"name", name}, {"local", local}};
    if (!json) {
      std::printf("%s%s", indent.c_str(), name.empty() ? "(no name)" : name.c_str());
      if (!local.empty()) std::printf(" -> %s", local.c_str());
      if (e->GetMerge() && *e->GetMerge()) std::printf(" [merge %s]", e->GetMerge());
      std::printf("\n");
    }
    checkRef(i, e->GetPrimary());
    nlohmann::json sections = nlohmann::json::array();
    for (int s = 0; s < e->GetSectionArraySize(); ++s) {
      const CHtmlSitemapSection* sec = e->GetSection(s);
      if (!sec) continue;
      const std::string secLocal = AttributeValueToUtf8(sec->GetPrimary(), CP_UTF8);
      const std::string secName = Str(sec->GetName());
      if (!json) std::printf("%s  - %s -> %s\n", indent.c_str(), secName.c_str(), secLocal.c_str());
      sections.push_back({{"name", secName}, {"local", secLocal}});
      checkRef(i, sec->GetPrimary());
    }
    if (!sections.empty()) je["sections"] = sections;
    entries.push_back(je);
  }
  if (json) {
    nlohmann::json out = {{"file", FileNameToUtf8(file)}, {"title", Str(sitemap.GetTitle())}, {"entries", entries}};
    if (cl.Has("check")) {
      nlohmann::json list = nlohmann::json::array();
      for (const Problem& p : problems)
        list.push_back({{"entry", p.entry}, {"reference", p.reference}, {"problem", p.what}});
      out["problems"] = list;
    }
    std::printf("%s\n", out.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
  } else {
    for (const Problem& p : problems)
      std::printf("%s: entry %d: %s: %s\n", file.c_str(), p.entry + 1, p.reference.c_str(), p.what.c_str());
  }
  return problems.empty() ? kExitClean : kExitProblems;
}

}  // namespace

extern const Command kTocCommand = {"toc", "print a contents or index file as a tree; --check its topics", Run};

}  // namespace telvanix::tool
