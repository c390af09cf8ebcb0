#include "cli/project_check.h"
#include "cli/popup_check.h"

#include <algorithm>
#include <set>

#include "cli/parallel.h"
#include "cli/references.h"
#include "telvanix/project/project_index.h"

namespace telvanix::tool {

namespace {

std::string Joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& p : parts) text += (text.empty() ? "" : ", ") + p;
  return text;
}

}  // namespace

const char* FindingKindName(FindingKind kind) {
  switch (kind) {
    case FindingKind::kMissingFile: return "missing-file";
    case FindingKind::kInexactReference: return "inexact-reference";
    case FindingKind::kMissingBookmark: return "missing-bookmark";
    case FindingKind::kOutsideProject: return "outside-project";
    case FindingKind::kSitemapMissing: return "sitemap-missing-topic";
    case FindingKind::kProjectMissing: return "project-missing-file";
    case FindingKind::kOrphanTopic: return "orphan-topic";
    case FindingKind::kOrphanImage: return "orphan-image";
    case FindingKind::kRepairedPage: return "repaired-page";
    case FindingKind::kSitemapStructure: return "broken-sitemap";
    case FindingKind::kBinaryPage: return "binary-page";
    case FindingKind::kUnreadable: return "unreadable";
  }
  return "";
}

const char* FindingKindTitle(FindingKind kind) {
  switch (kind) {
    case FindingKind::kMissingFile: return "Referenced files that do not exist";
    case FindingKind::kInexactReference: return "References that resolve only case-blind or with \\ as /";
    case FindingKind::kMissingBookmark: return "Links to bookmarks the target page does not define";
    case FindingKind::kOutsideProject: return "References outside the project";
    case FindingKind::kSitemapMissing: return "Contents and index entries pointing to missing topics";
    case FindingKind::kProjectMissing: return "Files the project file names that do not exist";
    case FindingKind::kOrphanTopic: return "Topics nothing refers to";
    case FindingKind::kOrphanImage: return "Images nothing refers to";
    case FindingKind::kRepairedPage: return "Pages whose structure needed repair";
    case FindingKind::kSitemapStructure: return "Contents and index files that are empty or whose lists do not close";
    case FindingKind::kBinaryPage: return "Pages holding binary data";
    case FindingKind::kUnreadable: return "Files that could not be read";
  }
  return "";
}

namespace {

// The steps of CheckProject, in the order it takes them.

// Count: the files of each kind.
void CountFiles(const std::vector<ProjectFile>& files, ProjectReport& report) {
  for (const ProjectFile& f : files) {
    report.topics += f.kind == FileKind::kTopic;
    report.stylesheets += f.kind == FileKind::kStylesheet;
    report.sitemaps += f.kind == FileKind::kContents || f.kind == FileKind::kIndex;
    report.images += f.kind == FileKind::kImage;
  }
}

bool IsSitemap(FileKind kind) { return kind == FileKind::kContents || kind == FileKind::kIndex; }

// Resolve: the findings about each scanned file and its references; marks
// the files something refers to.
void ResolveReferences(const CHtmlProjectIndex& index, ProjectReport& report, std::vector<bool>& referenced) {
  auto& out = report.findings;
  for (size_t i = 0; i < index.GetFiles().size(); ++i) {
    const ProjectFile& from = index.GetFiles()[i];
    const CHtmlProjectIndex::CFileEntry& s = index.GetEntries()[i];
    if (from.kind == FileKind::kImage || from.kind == FileKind::kOther) continue;
    if (!s.m_strError.empty()) {
      out.push_back({FindingKind::kUnreadable, from.path, "", s.m_strError, ""});
      continue;
    }
    if (s.m_bBinary) {
      out.push_back({FindingKind::kBinaryPage, from.path, "", "not checked", ""});
      continue;
    }
    if (!s.m_structure.empty())
      out.push_back({FindingKind::kSitemapStructure, from.path, "", Joined(s.m_structure), ""});
    if (!s.m_repairs.empty()) out.push_back({FindingKind::kRepairedPage, from.path, "", Joined(s.m_repairs), ""});
    for (const std::string& t : s.m_topicTags) ++report.topicBuildTags[t];
    for (const std::string& t : s.m_elementTags) ++report.elementBuildTags[t];

    // One finding of a kind per reference text and file.
    std::set<std::pair<FindingKind, std::string>> seen;
    auto add = [&](FindingKind kind, const CHtmlProjectIndex::CReference& raw, const std::string& resolved = "") {
      if (seen.emplace(kind, raw.m_strText).second)
        out.push_back({kind, from.path, raw.m_strText, raw.m_szWhat, resolved, s.m_nCodePage});
    };
    const FindingKind missing = from.kind == FileKind::kProject ? FindingKind::kProjectMissing
                                : IsSitemap(from.kind)          ? FindingKind::kSitemapMissing
                                                                : FindingKind::kMissingFile;
    for (const CHtmlProjectIndex::CReference& raw : s.m_refs) {
      ++report.references;
      const Resolution r = index.Resolve(i, raw);
      if (r.Outside()) add(FindingKind::kOutsideProject, raw);
      if (r.Missing() && !(raw.m_nFlags & CHtmlProjectIndex::emRefOutput)) add(missing, raw);
      // A topic's link to itself keeps it no less an orphan; a project
      // file's listing of a file is no use of it.
      const bool self = r.file == i && (raw.m_nFlags & CHtmlProjectIndex::emRefTopicLink);
      if (r.file != kNoFile && !self && !(raw.m_nFlags & CHtmlProjectIndex::emRefListing)) referenced[r.file] = true;
      if (r.Inexact()) add(FindingKind::kInexactReference, raw, r.actual);
      if (r.bookmarkMissing) add(FindingKind::kMissingBookmark, raw);
    }
  }
}

// Orphans: topics and images nothing refers to. A file that could not be
// read or holds binary data is reported as such, not once more as an orphan.
void ReportOrphans(const std::vector<ProjectFile>& files, const std::vector<CHtmlProjectIndex::CFileEntry>& scans,
                   const std::vector<bool>& referenced, ProjectReport& report) {
  for (size_t i = 0; i < files.size(); ++i) {
    if (referenced[i]) continue;
    if (files[i].kind == FileKind::kTopic && scans[i].Checked())
      report.findings.push_back({FindingKind::kOrphanTopic, files[i].path, "", "", ""});
    else if (files[i].kind == FileKind::kImage)
      report.findings.push_back({FindingKind::kOrphanImage, files[i].path, "", "", ""});
  }
}

// Sort: findings by kind, file and reference; errors once each.
void SortReport(ProjectReport& report) {
  std::stable_sort(report.findings.begin(), report.findings.end(), [](const Finding& a, const Finding& b) {
    if (a.kind != b.kind) return a.kind < b.kind;
    if (a.file != b.file) return a.file < b.file;
    return a.reference < b.reference;
  });
  std::sort(report.errors.begin(), report.errors.end());
  report.errors.erase(std::unique(report.errors.begin(), report.errors.end()), report.errors.end());
}

}  // namespace

ProjectReport CheckProject(const std::string& root) {
  ProjectReport report;
  report.root = root;
  CHtmlProjectIndex index;
  index.Build(root.c_str(), [](size_t count, const std::function<void(size_t)>& job) { ParallelFor(count, job, "check"); });
  report.errors = index.GetErrors();
  CountFiles(index.GetFiles(), report);
  std::vector<bool> referenced(index.GetFiles().size(), false);
  ResolveReferences(index, report, referenced);
  ReportOrphans(index.GetFiles(), index.GetEntries(), referenced, report);
  std::vector<std::string> topics;
  for (const ProjectFile& f : index.GetFiles()) if (f.kind == FileKind::kTopic) topics.push_back(f.path);
  const PopupCheck popups = CheckPopups(root, topics);
  for (const PopupProblem& p : popups.problems) report.findings.push_back({p.bookmark ? FindingKind::kMissingBookmark : FindingKind::kMissingFile, p.file, p.target, "popup", ""});
  std::erase_if(report.findings, [&](const Finding& f) { return f.kind == FindingKind::kOrphanTopic && popups.referenced.count(f.file); });
  SortReport(report);
  return report;
}

}  // namespace telvanix::tool
