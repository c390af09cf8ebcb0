#include "telvanix/project_check.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/page_files.h"
#include "telvanix/parallel.h"
#include "telvanix/project_files.h"
#include "telvanix/references.h"
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
  std::vector<std::string> topicTags, elementTags;
  bool binary = false;
  std::string error;
};

std::string Decoded(const char* s) { return s && *s ? CHtmlPack::HtmlToText(s).str() : std::string(); }

std::string JoinRoot(const std::string& root, const std::string& rel) {
  return root.empty() || root.back() == '/' ? root + rel : root + "/" + rel;
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

void AddTags(CHtmlFileEx& doc, const CString& text, std::vector<std::string>& out) {
  CStringList tags;
  doc.ParseBuildTags(text, tags);
  for (POSITION p = tags.GetHeadPosition(); p;) out.push_back(tags.GetNext(p).str());
}

// What the tree's repair changed: tags it inserted and tokens it dropped.
void CollectRepairs(CHtmlFileEx& doc, std::vector<std::string>& repairs) {
  CHtmlTokenList* list = doc.GetTokenList();
  int dropped = 0;
  for (POSITION p = list->GetHeadPosition(); p;) {
    CHtmlTokenItem* token = list->GetNext(p);
    if (token->IsDiscardedToken() && !token->IsInsertedToken()) {
      ++dropped;
    } else if (token->IsInsertedToken() && !token->IsDiscardedToken() && token->IsTagToken()) {
      auto* tag = static_cast<CHtmlTagItem*>(token);
      std::string name = tag->GetTagName().str();
      if (tag->IsEndTag() && (name.empty() || name[0] != '/')) name.insert(0, "/");
      repairs.push_back("inserted <" + name + ">");
    }
  }
  if (dropped) repairs.push_back("dropped " + std::to_string(dropped) + " token(s) outside the outline");
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
  }
  doc.Analyse();

  auto add = [&](std::string text, const char* what, bool topicLink = false) {
    if (!text.empty()) s.refs.push_back({std::move(text), what, topicLink});
  };
  unsigned int i = 0, stage = 0;
  for (CString v = doc.GetFirstImage(i); !v.IsEmpty(); v = doc.GetNextImage(i)) add(v.str(), "image");
  CHtmlFileEx::CStringArrayEx sheets;
  doc.GetExternalStyleSheetFileNameEx(sheets);
  for (int k = 0; k < sheets.GetSize(); ++k) add(sheets.GetAt(k).str(), "stylesheet");
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
  for (const char* v = doc.GetFirstBookmark(i); v; v = doc.GetNextBookmark(i)) s.bookmarks.insert(Decoded(v));

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
  CHtmlFileSitemap sitemap;
  sitemap.Read(bytes);
  for (int i = 0; i < sitemap.GetSitemapArraySize(); ++i) {
    const CHtmlSitemap* e = sitemap.GetSitemap(i);
    if (!e) continue;
    if (e->GetPrimary() && *e->GetPrimary()) s.refs.push_back({e->GetPrimary(), "entry", true});
    for (int k = 0; k < e->GetSectionArraySize(); ++k)
      if (const CHtmlSitemapSection* sec = e->GetSection(k); sec && sec->GetPrimary() && *sec->GetPrimary())
        s.refs.push_back({sec->GetPrimary(), "entry", true});
  }
  return s;
}

// The project's files by exact and by case-blind name.
class FileIndex {
 public:
  explicit FileIndex(const std::vector<std::string>& files) {
    for (const std::string& f : files) {
      m_exact.insert(f);
      m_folded.emplace(Lower(f), f);  // sorted input: the first spelling wins
    }
  }
  Presence Find(const Reference& ref, std::string& actual) const {
    if (m_exact.count(ref.path)) {
      actual = ref.path;
      return ref.backslashes ? Presence::kSlashed : Presence::kExact;
    }
    auto it = m_folded.find(Lower(ref.path));
    if (it == m_folded.end()) return Presence::kMissing;
    actual = it->second;
    return Presence::kCaseBlind;
  }

 private:
  std::unordered_set<std::string> m_exact;
  std::unordered_map<std::string, std::string> m_folded;
};

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
    case FindingKind::kBinaryPage: return "Pages holding binary data";
    case FindingKind::kUnreadable: return "Files that could not be read";
  }
  return "";
}

ProjectReport CheckProject(const std::string& root) {
  ProjectReport report;
  report.root = root;
  ProjectFiles project = ListProjectFiles(root);
  report.errors = project.errors;
  const std::vector<std::string>& files = project.files;
  std::vector<size_t> scanned;  // indexes of files read
  for (size_t i = 0; i < files.size(); ++i) {
    FileKind kind = ClassifyFile(files[i]);
    if (kind == FileKind::kTopic) ++report.topics;
    if (kind == FileKind::kStylesheet) ++report.stylesheets;
    if (kind == FileKind::kContents || kind == FileKind::kIndex) ++report.sitemaps;
    if (kind == FileKind::kImage) ++report.images;
    if (kind == FileKind::kTopic || kind == FileKind::kStylesheet || kind == FileKind::kContents ||
        kind == FileKind::kIndex)
      scanned.push_back(i);
  }

  std::vector<FileScan> scans(files.size());
  ParallelFor(scanned.size(), [&](size_t k) {
    size_t i = scanned[k];
    switch (ClassifyFile(files[i])) {
      case FileKind::kTopic: scans[i] = ScanTopic(root, files[i]); break;
      case FileKind::kStylesheet: scans[i] = ScanStylesheet(root, files[i]); break;
      default: scans[i] = ScanSitemap(root, files[i]); break;
    }
  }, "check");

  FileIndex index(files);
  std::unordered_map<std::string, size_t> position;
  for (size_t i = 0; i < files.size(); ++i) position.emplace(files[i], i);
  std::unordered_set<std::string> referenced;
  auto& out = report.findings;

  for (size_t i : scanned) {
    const std::string& from = files[i];
    const FileScan& s = scans[i];
    const FileKind fromKind = ClassifyFile(from);
    const bool fromSitemap = fromKind == FileKind::kContents || fromKind == FileKind::kIndex;
    if (!s.error.empty()) {
      out.push_back({FindingKind::kUnreadable, from, "", s.error, ""});
      report.errors.push_back(s.error);
      continue;
    }
    if (s.binary) {
      out.push_back({FindingKind::kBinaryPage, from, "", "not checked", ""});
      continue;
    }
    if (!s.repairs.empty()) {
      std::string what;
      for (const std::string& r : s.repairs) what += (what.empty() ? "" : ", ") + r;
      out.push_back({FindingKind::kRepairedPage, from, "", what, ""});
    }
    for (const std::string& t : s.topicTags) ++report.topicBuildTags[t];
    for (const std::string& t : s.elementTags) ++report.elementBuildTags[t];

    std::set<std::string> seen;  // one finding per reference text and file
    for (const RawRef& raw : s.refs) {
      ++report.references;
      Reference ref = ParseReference(DirectoryOf(from), raw.text);
      if (ref.kind == RefKind::kSamePage) {
        if (fromKind == FileKind::kTopic && !s.bookmarks.count(ref.bookmark) && seen.insert(raw.text).second)
          out.push_back({FindingKind::kMissingBookmark, from, raw.text, raw.what, ""});
        continue;
      }
      if (ref.kind == RefKind::kOutside) {
        if (seen.insert(raw.text).second) out.push_back({FindingKind::kOutsideProject, from, raw.text, raw.what, ""});
        continue;
      }
      if (ref.kind != RefKind::kLocal) continue;
      std::string actual;
      Presence p = index.Find(ref, actual);
      if (p == Presence::kMissing) {
        if (seen.insert(raw.text).second)
          out.push_back({fromSitemap ? FindingKind::kSitemapMissing : FindingKind::kMissingFile, from, raw.text,
                         raw.what, ""});
        continue;
      }
      if (actual != from || !raw.topicLink) referenced.insert(actual);
      if (p != Presence::kExact && seen.insert(raw.text).second)
        out.push_back({FindingKind::kInexactReference, from, raw.text, raw.what, actual});
      if (!ref.bookmark.empty() && ClassifyFile(actual) == FileKind::kTopic) {
        const FileScan& target = scans[position[actual]];
        if (target.error.empty() && !target.binary && !target.bookmarks.count(ref.bookmark) &&
            seen.insert(raw.text).second)
          out.push_back({FindingKind::kMissingBookmark, from, raw.text, raw.what, ""});
      }
    }
  }

  for (const std::string& f : files) {
    FileKind kind = ClassifyFile(f);
    if (referenced.count(f)) continue;
    // A file that could not be read or holds binary data is reported as such,
    // not once more as an orphan.
    if (kind == FileKind::kTopic && scans[position[f]].error.empty() && !scans[position[f]].binary)
      out.push_back({FindingKind::kOrphanTopic, f, "", "", ""});
    else if (kind == FileKind::kImage)
      out.push_back({FindingKind::kOrphanImage, f, "", "", ""});
  }

  std::stable_sort(out.begin(), out.end(), [](const Finding& a, const Finding& b) {
    if (a.kind != b.kind) return a.kind < b.kind;
    if (a.file != b.file) return a.file < b.file;
    return a.reference < b.reference;
  });
  std::sort(report.errors.begin(), report.errors.end());
  report.errors.erase(std::unique(report.errors.begin(), report.errors.end()), report.errors.end());
  return report;
}

}  // namespace telvanix::tool
