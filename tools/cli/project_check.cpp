#include "cli/project_check.h"
#include "cli/popup_check.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <set>

#include "cli/attribute_text.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "cli/project_files.h"
#include "cli/references.h"
#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/style_values.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "telvanix/sitemap/sitemap_entry.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::tool {

namespace {

// A reference as found in one file, before it is resolved.
struct RawRef {
  std::string text;
  const char* what;
  bool topicLink;  // counts as a reference to a topic (keeps it from being an orphan)
};

struct FileScan {
  std::vector<RawRef> refs;
  std::set<std::string> bookmarks;
  std::vector<std::string> repairs;
  std::vector<std::string> structure;  // a contents or index file's own faults
  std::vector<std::string> topicTags, elementTags;
  UINT codePage = 0;  // the charset the file's references are written in
  bool binary = false;
  std::string error;

  bool Checked() const { return error.empty() && !binary; }
};

std::string JoinRoot(const std::string& root, const std::string& rel) {
  return root.empty() || root.back() == '/' ? root + rel : root + "/" + rel;
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::string Joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& p : parts) text += (text.empty() ? "" : ", ") + p;
  return text;
}

void AddTags(CHtmlFileEx& doc, const CString& text, std::vector<std::string>& out) {
  CStringList tags;
  doc.ParseBuildTags(text, tags);
  for (POSITION p = tags.GetHeadPosition(); p;) out.push_back(tags.GetNext(p).str());
}

// A dropped token that holds nothing a reader sees and no part of the
// outline: blanks (or nothing: the tokenizer leaves an empty text where it
// drops a line break before the first tag), a comment, an XML declaration or
// processing instruction.
bool IsMarkupAside(CHtmlTokenItem* token) {
  if (CHtmlTagItem* tag = token->GetSafeTagItemPtr()) {
    const CString name = tag->GetTagName();
    const char first = name.IsEmpty() ? '\0' : name[0];
    return tag->GetTagId() == CHtmlTagItem::emTagIdComment || first == '?' || first == '!';
  }
  const unsigned char* p = token->GetOriginalData();
  for (int i = 0; i < token->GetOriginalLength(); ++i)
    if (p[i] != ' ' && p[i] != '\t' && p[i] != '\r' && p[i] != '\n') return false;
  return true;
}

// What the tree's repair changed: tags it inserted and tokens it dropped.
// Markup aside dropped outside the outline changes no structure: no repair.
void CollectRepairs(CHtmlFileEx& doc, std::vector<std::string>& repairs) {
  CHtmlTokenList* list = doc.GetTokenList();
  int dropped = 0;
  for (POSITION p = list->GetHeadPosition(); p;) {
    CHtmlTokenItem* token = list->GetNext(p);
    if (token->IsDiscardedToken() && !token->IsInsertedToken()) {
      if (!IsMarkupAside(token)) ++dropped;
    } else if (token->IsInsertedToken() && !token->IsDiscardedToken() && token->IsTagToken()) {
      auto* tag = static_cast<CHtmlTagItem*>(token);
      std::string name = tag->GetTagName().str();
      if (tag->IsEndTag() && (name.empty() || name[0] != '/')) name.insert(0, "/");
      repairs.push_back("inserted <" + name + ">");
    }
  }
  if (dropped) repairs.push_back("dropped " + std::to_string(dropped) + " token(s) outside the outline");
}

// Candidate URLs of a "srcset": comma-separated, each URL followed by an
// optional width or density descriptor.
std::vector<std::string> SrcsetUrls(const std::string& srcset) {
  std::vector<std::string> urls;
  size_t i = 0, n = srcset.size();
  auto blank = [&](size_t k) { return std::isspace(static_cast<unsigned char>(srcset[k])) != 0; };
  while (i < n) {
    while (i < n && (blank(i) || srcset[i] == ',')) ++i;
    size_t start = i;
    while (i < n && !blank(i)) ++i;
    std::string url = srcset.substr(start, i - start);
    if (!url.empty() && url.back() == ',') {
      while (!url.empty() && url.back() == ',') url.pop_back();  // no descriptor
    } else {
      while (i < n && srcset[i] != ',') ++i;  // the descriptor
    }
    if (!url.empty()) urls.push_back(url);
  }
  return urls;
}

bool HasWord(const char* value, const char* word) {
  return value && Lower(value).find(word) != std::string::npos;
}

// References the library's enumerators leave to the host: every LINK (the
// recorded stylesheet LINK is only the first), "background" on tags other
// than BODY and TABLE, OBJECT "data" and "srcset" candidates.
template <typename Add>
void ScanOtherTags(CHtmlFileEx& doc, Add add) {
  static const int kLink = CHtmlTagItem::GetTagIdFromTagName("LINK", nullptr);
  static const int kBody = CHtmlTagItem::GetTagIdFromTagName("BODY", nullptr);
  static const int kTable = CHtmlTagItem::GetTagIdFromTagName("TABLE", nullptr);
  static const int kObject = CHtmlTagItem::GetTagIdFromTagName("OBJECT", nullptr);
  CHtmlTokenList* list = doc.GetTokenList();
  for (POSITION p = list->GetHeadPosition(); p;) {
    CHtmlTokenItem* token = list->GetNext(p);
    CHtmlTagItem* tag = token->IsDiscardedToken() ? nullptr : token->GetSafeTagItemPtr();
    if (!tag || tag->IsEndTag() || tag->GetTotalAttributesNum() == 0) continue;
    const int id = tag->GetTagId();
    if (id == kLink) {
      if (const char* href = tag->GetAttributeValue("href")) {
        bool sheet = HasWord(tag->GetAttributeValue("rel"), "stylesheet") ||
                     HasWord(tag->GetAttributeValue("rev"), "stylesheet");
        add(Decoded(href), sheet ? "stylesheet" : "LINK", !sheet);
      }
    } else if (id == kObject) {
      if (const char* data = tag->GetAttributeValue("data")) add(Decoded(data), "object data", true);
    }
    if (id != kBody && id != kTable) {
      // As the library takes BODY and TABLE backgrounds: colours are no files.
      const char* bg = tag->GetAttributeValue("background");
      if (bg && std::strchr(bg, '.') && CSttColor(bg).GetColorRef() == CSttColor::ms_nNoColor)
        add(Decoded(bg), "background image", false);
    }
    if (const char* srcset = tag->GetAttributeValue("srcset"))
      for (const std::string& url : SrcsetUrls(Decoded(srcset))) add(url, "image (srcset)", false);
  }
}

FileScan ScanTopic(const std::string& root, const std::string& rel) {
  FileScan s;
  CByteString bytes;
  if (!LoadPage(JoinRoot(root, rel), bytes, s.error)) return s;
  if (LooksBinary(bytes)) {
    s.binary = true;
    return s;
  }
  std::string full = JoinRoot(root, rel);
  CHtmlFileEx doc(bytes, full.c_str());
  if (bytes.GetLength() > 0) {
    // The repairs a tree build makes, without the tree: its nodes would
    // take twice the memory of the tokens, and the topic walk does not
    // use them. The tokens hold their own copy of the page from here on.
    doc.Parse(CHtmlPack::emParseAttributes);
    bytes.Empty();
    doc.GetTokenList()->BuildEntityTree(CHtmlEntityTree::emBuildHtml | CHtmlEntityTree::emBuildNoNodes);
    CollectRepairs(doc, s.repairs);
    s.codePage = doc.GetPageCodePage();
  }
  doc.Analyse();

  auto add = [&](std::string text, const char* what, bool topicLink = false) {
    if (!text.empty()) s.refs.push_back({std::move(text), what, topicLink});
  };
  unsigned int i = 0, stage = 0;
  for (CString v = doc.GetFirstImage(i); !v.IsEmpty(); v = doc.GetNextImage(i)) add(v.str(), "image");
  // The first is the recorded stylesheet LINK, which ScanOtherTags lists
  // with every other LINK; the rest are the STYLE blocks' @imports.
  CHtmlFileEx::CStringArrayEx sheets;
  doc.GetExternalStyleSheetFileNameEx(sheets);
  for (int k = doc.GetStyleSheetLinkPosition() ? 1 : 0; k < sheets.GetSize(); ++k)
    add(sheets.GetAt(k).str(), "stylesheet");
  ScanOtherTags(doc, add);
  for (const char* v = doc.GetFirstScriptSource(i); v; v = doc.GetNextScriptSource(i)) add(Decoded(v), "script");
  CString file;
  if (doc.GetBackgroundImage(file)) add(file.str(), "background image");
  int loop = 0;
  if (doc.GetBackgroundSound(file, loop)) add(Decoded(file), "background sound");
  static const char* const kStages[] = {"help-control image", "image in a style attribute",
                                        "image in a style block", "image in a tag or comment"};
  for (CString v = doc.GetFirstBaggageImage(i, stage); !v.IsEmpty(); v = doc.GetNextBaggageImage(i, stage))
    add(v.str(), kStages[(stage & 0xFF) < 4 ? (stage & 0xFF) : 3]);
  for (CString v = doc.GetFirstMultimediaFile(i); !v.IsEmpty(); v = doc.GetNextMultimediaFile(i))
    add(v.str(), "multimedia file");
  for (const char* v = doc.GetFirstRelatedTopic(i); v; v = doc.GetNextRelatedTopic(i))
    add(Decoded(v), "related topic", true);
  for (const char* v = doc.GetFirstContentOrIndex(i); v; v = doc.GetNextContentOrIndex(i))
    add(Decoded(v), "contents or index file");
  for (const char* v = doc.GetFirstAnchorHref(i); v; v = doc.GetNextAnchorHref(i)) add(Decoded(v), "link", true);
  for (const char* v = doc.GetFirstFrameSource(i); v; v = doc.GetNextFrameSource(i)) add(Decoded(v), "frame", true);
  s.bookmarks = PageBookmarks(doc);

  CString tags;
  if (doc.GetTopicBuildTags(tags)) AddTags(doc, tags, s.topicTags);
  for (CString t = doc.GetFirstInlineBuildTags(i, nullptr); !t.IsEmpty(); t = doc.GetNextInlineBuildTags(i, nullptr))
    AddTags(doc, t, s.elementTags);
  return s;
}

FileScan ScanStylesheet(const std::string& root, const std::string& rel) {
  FileScan s;
  CByteString bytes;
  std::string full = JoinRoot(root, rel);
  if (!LoadPage(full, bytes, s.error)) return s;
  CCssPackEx pack(full.c_str(), &bytes);
  if (!pack.Parse()) return s;
  POSITION pos = nullptr;
  for (CString v = pack.GetFirstImportCssUrl(pos); !v.IsEmpty(); v = pack.GetNextImportCssUrl(pos))
    s.refs.push_back({v.str(), "imported stylesheet", false});
  UINT index = 0;
  for (CString v = pack.GetFirstBaggageFile(index); !v.IsEmpty(); v = pack.GetNextBaggageFile(index))
    s.refs.push_back({v.str(), "image in a stylesheet", false});
  return s;
}

FileScan ScanSitemap(const std::string& root, const std::string& rel) {
  FileScan s;
  CByteString bytes;
  if (!LoadPage(JoinRoot(root, rel), bytes, s.error)) return s;
  s.codePage = SitemapCodePage(bytes, rel.c_str());
  CHtmlFileSitemap sitemap;
  if (!sitemap.Read(bytes))
    s.structure.push_back(bytes.GetLength() == 0 ? "empty file" : "no contents or index entries");
  if (int open = sitemap.GetUnclosedListCount())
    s.structure.push_back(std::to_string(open) + " list(s) not closed");
  if (int stray = sitemap.GetStrayListEndCount())
    s.structure.push_back(std::to_string(stray) + " list end tag(s) with no list open");
  // Values are written HTML-encoded ("a&amp;b.htm" names a&b.htm); the
  // model keeps them as written so that the file saves back unchanged.
  auto add = [&](const char* local) {
    if (local && *local) s.refs.push_back({Decoded(local), "entry", true});
  };
  for (int i = 0; i < sitemap.GetSitemapArraySize(); ++i) {
    const CHtmlSitemap* e = sitemap.GetSitemap(i);
    if (!e) continue;
    add(e->GetPrimary());
    for (int k = 0; k < e->GetSectionArraySize(); ++k)
      if (const CHtmlSitemapSection* sec = e->GetSection(k)) add(sec->GetPrimary());
  }
  return s;
}

}  // namespace

const char* FindingKindName(FindingKind kind) {
  switch (kind) {
    case FindingKind::kMissingFile: return "missing-file";
    case FindingKind::kInexactReference: return "inexact-reference";
    case FindingKind::kMissingBookmark: return "missing-bookmark";
    case FindingKind::kOutsideProject: return "outside-project";
    case FindingKind::kSitemapMissing: return "sitemap-missing-topic";
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

// List: every file of the project, classified once, and the counts.
std::vector<ProjectFile> ListFiles(ProjectReport& report) {
  ProjectFiles listed = ListProjectFiles(report.root);
  report.errors = listed.errors;
  std::vector<ProjectFile> files = ClassifyFiles(listed.files);
  for (const ProjectFile& f : files) {
    report.topics += f.kind == FileKind::kTopic;
    report.stylesheets += f.kind == FileKind::kStylesheet;
    report.sitemaps += f.kind == FileKind::kContents || f.kind == FileKind::kIndex;
    report.images += f.kind == FileKind::kImage;
  }
  return files;
}

bool IsSitemap(FileKind kind) { return kind == FileKind::kContents || kind == FileKind::kIndex; }

// Scan: every topic, stylesheet and sitemap read once, in parallel. Other
// files get an empty scan.
std::vector<FileScan> ScanFiles(const std::string& root, const std::vector<ProjectFile>& files) {
  std::vector<size_t> read;
  for (size_t i = 0; i < files.size(); ++i)
    if (files[i].kind != FileKind::kImage && files[i].kind != FileKind::kOther) read.push_back(i);
  std::vector<FileScan> scans(files.size());
  ParallelFor(read.size(), [&](size_t k) {
    const ProjectFile& f = files[read[k]];
    FileScan& s = scans[read[k]];
    if (f.kind == FileKind::kTopic) s = ScanTopic(root, f.path);
    else if (f.kind == FileKind::kStylesheet) s = ScanStylesheet(root, f.path);
    else s = ScanSitemap(root, f.path);
  }, "check");
  return scans;
}

// Resolve: the findings about each scanned file and its references; marks
// the files something refers to.
void ResolveReferences(const ProjectIndex& index, const std::vector<FileScan>& scans, ProjectReport& report,
                       std::vector<bool>& referenced) {
  const BookmarkLookup bookmarks = [&](size_t file) { return scans[file].Checked() ? &scans[file].bookmarks : nullptr; };
  auto& out = report.findings;
  for (size_t i = 0; i < index.files().size(); ++i) {
    const ProjectFile& from = index.files()[i];
    const FileScan& s = scans[i];
    if (from.kind == FileKind::kImage || from.kind == FileKind::kOther) continue;
    if (!s.error.empty()) {
      out.push_back({FindingKind::kUnreadable, from.path, "", s.error, ""});
      report.errors.push_back(s.error);
      continue;
    }
    if (s.binary) {
      out.push_back({FindingKind::kBinaryPage, from.path, "", "not checked", ""});
      continue;
    }
    if (!s.structure.empty()) out.push_back({FindingKind::kSitemapStructure, from.path, "", Joined(s.structure), ""});
    if (!s.repairs.empty()) out.push_back({FindingKind::kRepairedPage, from.path, "", Joined(s.repairs), ""});
    for (const std::string& t : s.topicTags) ++report.topicBuildTags[t];
    for (const std::string& t : s.elementTags) ++report.elementBuildTags[t];

    // One finding of a kind per reference text and file.
    std::set<std::pair<FindingKind, std::string>> seen;
    auto add = [&](FindingKind kind, const RawRef& raw, const std::string& resolved = "") {
      if (seen.emplace(kind, raw.text).second) out.push_back({kind, from.path, raw.text, raw.what, resolved, s.codePage});
    };
    for (const RawRef& raw : s.refs) {
      ++report.references;
      const Resolution r = index.Resolve(from.path, raw.text, bookmarks);
      if (r.Outside()) add(FindingKind::kOutsideProject, raw);
      if (r.Missing()) add(IsSitemap(from.kind) ? FindingKind::kSitemapMissing : FindingKind::kMissingFile, raw);
      // A topic's link to itself keeps it no less an orphan.
      if (r.file != kNoFile && (r.file != i || !raw.topicLink)) referenced[r.file] = true;
      if (r.Inexact()) add(FindingKind::kInexactReference, raw, r.actual);
      if (r.bookmarkMissing) add(FindingKind::kMissingBookmark, raw);
    }
  }
}

// Orphans: topics and images nothing refers to. A file that could not be
// read or holds binary data is reported as such, not once more as an orphan.
void ReportOrphans(const std::vector<ProjectFile>& files, const std::vector<FileScan>& scans,
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
  const ProjectIndex index(ListFiles(report));
  const std::vector<FileScan> scans = ScanFiles(root, index.files());
  std::vector<bool> referenced(index.files().size(), false);
  ResolveReferences(index, scans, report, referenced);
  ReportOrphans(index.files(), scans, referenced, report);
  std::vector<std::string> topics;
  for (const ProjectFile& f : index.files()) if (f.kind == FileKind::kTopic) topics.push_back(f.path);
  const PopupCheck popups = CheckPopups(root, topics);
  for (const PopupProblem& p : popups.problems) report.findings.push_back({p.bookmark ? FindingKind::kMissingBookmark : FindingKind::kMissingFile, p.file, p.target, "popup", ""});
  std::erase_if(report.findings, [&](const Finding& f) { return f.kind == FindingKind::kOrphanTopic && popups.referenced.count(f.file); });
  SortReport(report);
  return report;
}

}  // namespace telvanix::tool
