#include "telvanix/project/project_index.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <string_view>
#include <atomic>
#include <thread>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/style_values.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/project/help_project.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "telvanix/sitemap/sitemap_entry.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix {

using namespace project;

namespace {

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

// A whole file, its stamp taken first so that a change while it is read is
// seen by a later commit.
bool LoadPage(const std::string& path, CByteString& bytes, std::string& error,
              CHtmlProjectTransaction::CFileStamp* stamp = nullptr) {
  if (stamp) CHtmlProjectTransaction::GetFileStamp(path.c_str(), *stamp);
  return LoadWholeFile(path, bytes, error);
}

// One place, in file order.
void AddPosition(CFileReference& f, CHtmlProjectIndex::CFileEntry& s) {
  s.m_positions.push_back(
      {f.m_nLine, std::move(f.m_strElement), std::move(f.m_strAttribute), std::move(f.m_strWritten)});
}

// Each reference's position: the first unclaimed place written the same
// (decoded where the file's syntax encodes characters), places in file order.
// Matched through a sorted list of views: no allocation a reference, and a
// cursor a run of equal texts, so that a page linking one target ten
// thousand times is not searched ten thousand times over.
void PlaceReferences(bool html, CHtmlProjectIndex::CFileEntry& s) {
  auto trim = [](std::string_view t) {
    const size_t b = t.find_first_not_of(" \t\r\n"), e = t.find_last_not_of(" \t\r\n");
    return b == std::string_view::npos ? std::string_view() : t.substr(b, e + 1 - b);
  };
  std::vector<std::string> decoded;  // the few values written with character references
  for (const auto& p : s.m_positions)
    if (html && p.m_strWritten.str().find('&') != std::string::npos) decoded.push_back(Decoded(p.m_strWritten));
  std::vector<std::pair<std::string_view, size_t>> keys;
  keys.reserve(s.m_positions.size());
  for (size_t k = 0, d = 0; k < s.m_positions.size(); ++k) {
    const std::string& w = s.m_positions[k].m_strWritten.str();
    keys.emplace_back(trim(html && w.find('&') != std::string::npos ? std::string_view(decoded[d++]) : w), k);
  }
  std::sort(keys.begin(), keys.end());
  // next[i]: for the run of equal texts starting at i, its first unclaimed key.
  std::vector<size_t> next(keys.size());
  for (size_t i = 0; i < keys.size(); ++i) next[i] = i;
  for (CHtmlProjectIndex::CReference& r : s.m_refs) {
    const std::string_view text = trim(r.m_strText);
    const size_t run = std::lower_bound(keys.begin(), keys.end(), std::make_pair(text, size_t{0})) - keys.begin();
    if (run == keys.size() || keys[run].first != text) continue;
    const size_t k = next[run];
    if (k == keys.size() || keys[k].first != text) continue;
    next[run] = k + 1;
    r.m_nPosition = keys[k].second;
    r.m_nLine = s.m_positions[keys[k].second].m_nLine;
  }
}

// The places of a page's or sitemap's references as the rewrite walk finds
// them; false (and none) when the walk fails.
bool CollectPositions(CHtmlFileEx& doc, CHtmlProjectIndex::CFileEntry& s) {
  if (doc.ForEachFileReference([&](CFileReference& f) { AddPosition(f, s); }) >= 0) return true;
  s.m_positions.clear();
  return false;
}

// The references of a page or sitemap as the rewrite walk finds them.
void PlacePageReferences(CHtmlFileEx& doc, CHtmlProjectIndex::CFileEntry& s) {
  // About one place a reference already listed: room made once, not by
  // doubling, which on a page of 100,000 links holds three copies at a time.
  s.m_positions.reserve(s.m_refs.size() + s.m_refs.size() / 8);
  if (CollectPositions(doc, s)) PlaceReferences(true, s);
}

// From this size on, a page's reference walk runs on a second thread beside
// the enumerators: a large page then waits for one of them, not both.
constexpr int kWalkAsideBytes = 4 << 20;

// The reference walk of an analysed page on a thread of its own. The walk
// and the enumerators only read the tokens (every tag analysed as it was
// read) and the page's own lists fill none that the walk reads. Without a
// thread the walk is left to the caller.
std::jthread WalkAside(CHtmlFileEx& doc, CHtmlProjectIndex::CFileEntry& s, int& walked) {
  walked = -1;
  try {
    // At most a place a tag, but for url() lists: room that stays untouched
    // costs address space, not memory, and the walk never copies its places.
    s.m_positions.reserve(static_cast<size_t>(doc.GetTokenList()->GetCount()) / 2 + 16);
    return std::jthread([&doc, &s, &walked] {
      try {
        walked = CollectPositions(doc, s) ? 1 : 0;
      } catch (...) {
        s.m_positions.clear();
        walked = -1;
      }
    });
  } catch (...) {
    return std::jthread();
  }
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

CHtmlProjectIndex::CFileEntry ScanTopic(const std::string& root, const std::string& rel) {
  CHtmlProjectIndex::CFileEntry s;
  CByteString bytes;
  if (!LoadPage(JoinRoot(root, rel), bytes, s.m_strError, &s.m_stamp)) return s;
  if (LooksBinary(bytes)) {
    s.m_bBinary = true;
    return s;
  }
  std::string full = JoinRoot(root, rel);
  CHtmlFileEx doc(bytes, full.c_str());
  const int pageBytes = bytes.GetLength();
  if (pageBytes > 0) {
    // The repairs a tree build makes, without the tree: its nodes would
    // take twice the memory of the tokens, and the topic walk does not
    // use them. The tokens hold their own copy of the page from here on.
    doc.Parse(CHtmlPack::emParseAttributes);
    bytes.Empty();
    doc.GetTokenList()->BuildEntityTree(CHtmlEntityTree::emBuildHtml | CHtmlEntityTree::emBuildNoNodes);
    CollectRepairs(doc, s.m_repairs);
    s.m_nCodePage = doc.GetPageCodePage();
  }
  doc.Analyse();
  int walked = -1;
  std::jthread walk = pageBytes >= kWalkAsideBytes ? WalkAside(doc, s, walked) : std::jthread();

  auto add = [&](std::string text, const char* what, bool topicLink = false) {
    if (!text.empty()) s.m_refs.push_back({std::move(text), what, 0, topicLink ? unsigned{CHtmlProjectIndex::emRefTopicLink} : 0u});
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
  if (walk.joinable()) walk.join();
  if (walked < 0)
    PlacePageReferences(doc, s);
  else if (walked)
    PlaceReferences(true, s);
  s.m_bookmarks = PageBookmarks(doc);

  CString tags;
  if (doc.GetTopicBuildTags(tags)) AddTags(doc, tags, s.m_topicTags);
  for (CString t = doc.GetFirstInlineBuildTags(i, nullptr); !t.IsEmpty(); t = doc.GetNextInlineBuildTags(i, nullptr))
    AddTags(doc, t, s.m_elementTags);
  return s;
}

CHtmlProjectIndex::CFileEntry ScanStylesheet(const std::string& root, const std::string& rel) {
  CHtmlProjectIndex::CFileEntry s;
  CByteString bytes;
  std::string full = JoinRoot(root, rel);
  if (!LoadPage(full, bytes, s.m_strError, &s.m_stamp)) return s;
  CCssPackEx pack(full.c_str(), &bytes);
  if (!pack.Parse()) return s;
  POSITION pos = nullptr;
  for (CString v = pack.GetFirstImportCssUrl(pos); !v.IsEmpty(); v = pack.GetNextImportCssUrl(pos))
    s.m_refs.push_back({v.str(), "imported stylesheet", 0, 0});
  UINT index = 0;
  for (CString v = pack.GetFirstBaggageFile(index); !v.IsEmpty(); v = pack.GetNextBaggageFile(index))
    s.m_refs.push_back({v.str(), "image in a stylesheet", 0, 0});
  CHtmlFileEx::CReplaceContext listing;
  listing.SetDocument(rel.c_str(), nullptr);
  std::vector<CFileReference> found;
  if (pack.GetFileReferences(listing, found) >= 0) {
    s.m_positions.reserve(found.size());
    for (CFileReference& f : found) AddPosition(f, s);
    PlaceReferences(false, s);
  }
  return s;
}

CHtmlProjectIndex::CFileEntry ScanSitemap(const std::string& root, const std::string& rel) {
  CHtmlProjectIndex::CFileEntry s;
  CByteString bytes;
  if (!LoadPage(JoinRoot(root, rel), bytes, s.m_strError, &s.m_stamp)) return s;
  // Read as a page too: its charset, as a page declares it, and where its values stand.
  CHtmlFileEx page(bytes, rel.c_str());
  s.m_nCodePage = page.Parse(CHtmlPack::emParseAttributes) ? page.GetPageCodePage() : GetActiveCodePage();
  CHtmlFileSitemap sitemap;
  if (!sitemap.Read(bytes))
    s.m_structure.push_back(bytes.GetLength() == 0 ? "empty file" : "no contents or index entries");
  if (int open = sitemap.GetUnclosedListCount())
    s.m_structure.push_back(std::to_string(open) + " list(s) not closed");
  if (int stray = sitemap.GetStrayListEndCount())
    s.m_structure.push_back(std::to_string(stray) + " list end tag(s) with no list open");
  // Values are written HTML-encoded ("a&amp;b.htm" names a&b.htm); the
  // model keeps them as written so that the file saves back unchanged.
  auto add = [&](const char* local) {
    if (local && *local) s.m_refs.push_back({Decoded(local), "entry", 0, CHtmlProjectIndex::emRefTopicLink});
  };
  for (int i = 0; i < sitemap.GetSitemapArraySize(); ++i) {
    const CHtmlSitemap* e = sitemap.GetSitemap(i);
    if (!e) continue;
    add(e->GetPrimary());
    for (int k = 0; k < e->GetSectionArraySize(); ++k)
      if (const CHtmlSitemapSection* sec = e->GetSection(k)) add(sec->GetPrimary());
  }
  PlacePageReferences(page, s);
  return s;
}

const char* RoleName(CHtmlHelpProject::EmFileRole role) {
  switch (role) {
    case CHtmlHelpProject::emRoleCompiledFile: return "compiled file";
    case CHtmlHelpProject::emRoleContentsFile: return "contents file";
    case CHtmlHelpProject::emRoleIndexFile: return "index file";
    case CHtmlHelpProject::emRoleDefaultTopic: return "default topic";
    case CHtmlHelpProject::emRoleOptionFile: return "option file";
    case CHtmlHelpProject::emRoleWindowFile: return "window file";
    case CHtmlHelpProject::emRoleListedFile: return "listed file";
    case CHtmlHelpProject::emRoleAliasTopic: return "alias topic";
    case CHtmlHelpProject::emRoleIncludeFile: return "included file";
    case CHtmlHelpProject::emRolePopupFile: return "text popup file";
  }
  return "file";
}

CHtmlProjectIndex::CFileEntry ScanProjectFile(const std::string& root, const std::string& rel) {
  CHtmlProjectIndex::CFileEntry s;
  CByteString bytes;
  if (!LoadPage(JoinRoot(root, rel), bytes, s.m_strError, &s.m_stamp)) return s;
  CHtmlHelpProject hhp;
  hhp.Analyse(bytes.GetContent(), bytes.GetLength());
  for (const CHtmlHelpProject::CFileValue& v : hhp.GetFileValues()) {
    unsigned flags = 0;
    if (!CHtmlHelpProject::IsInputRole(v.m_emRole, v.m_strKey)) flags |= CHtmlProjectIndex::emRefOutput;
    if (v.m_emRole == CHtmlHelpProject::emRoleListedFile || v.m_emRole == CHtmlHelpProject::emRolePopupFile)
      flags |= CHtmlProjectIndex::emRefListing;
    s.m_refs.push_back({v.m_strValue, RoleName(v.m_emRole), v.m_nLine, flags, s.m_positions.size()});
    s.m_positions.push_back({v.m_nLine, v.m_strKey.empty() ? "project" : v.m_strKey.c_str(), "", v.m_strValue});
  }
  return s;
}

// The index's own pool when the host gives none.
void RunOnThreads(size_t count, const std::function<void(size_t)>& job) {
  std::atomic<size_t> next{0};
  unsigned workers = std::thread::hardware_concurrency();
  if (workers == 0) workers = 1;
  if (workers > count) workers = static_cast<unsigned>(count ? count : 1);
  auto work = [&] {
    for (size_t i; (i = next.fetch_add(1)) < count;) job(i);
  };
  std::vector<std::thread> pool;
  for (unsigned t = 1; t < workers; ++t) pool.emplace_back(work);
  work();
  for (std::thread& t : pool) t.join();
}

}  // namespace

int CHtmlProjectIndex::Build(const char* root, const CRunner& runner, bool listOnly) {
  m_strRoot = root ? root : "";
  m_entries.clear();
  m_errors.clear();
  struct stat st {};
  if (m_strRoot.empty() || ::stat(m_strRoot.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return 0;
  ProjectFiles listed = ListProjectFiles(m_strRoot);
  m_errors = listed.errors;
  m_resolver = ProjectIndex(ClassifyFiles(listed.files));
  const std::vector<ProjectFile>& files = m_resolver.files();
  std::vector<size_t> read;
  for (size_t i = 0; i < files.size() && !listOnly; ++i)
    if (files[i].kind != FileKind::kImage && files[i].kind != FileKind::kOther) read.push_back(i);
  m_entries.assign(files.size(), CFileEntry());
  auto job = [&](size_t k) {
    const ProjectFile& f = files[read[k]];
    CFileEntry& s = m_entries[read[k]];
    switch (f.kind) {
      case FileKind::kTopic: s = ScanTopic(m_strRoot, f.path); break;
      case FileKind::kStylesheet: s = ScanStylesheet(m_strRoot, f.path); break;
      case FileKind::kProject: s = ScanProjectFile(m_strRoot, f.path); break;
      default: s = ScanSitemap(m_strRoot, f.path); break;
    }
  };
  if (runner) runner(read.size(), job);
  else RunOnThreads(read.size(), job);
  for (const CFileEntry& e : m_entries)
    if (!e.m_strError.empty()) m_errors.push_back(e.m_strError);
  return 1;
}

long CHtmlProjectIndex::FindFile(const std::string& path) const {
  const auto& files = m_resolver.files();
  auto it = std::lower_bound(files.begin(), files.end(), path,
                             [](const ProjectFile& f, const std::string& p) { return f.path < p; });
  return it != files.end() && it->path == path ? static_cast<long>(it - files.begin()) : -1;
}

Resolution CHtmlProjectIndex::Resolve(size_t file, const CReference& ref) const {
  const BookmarkLookup bookmarks = [&](size_t f) {
    return m_entries[f].Checked() ? &m_entries[f].m_bookmarks : nullptr;
  };
  return m_resolver.Resolve(m_resolver.files()[file].path, ref.m_strText, bookmarks);
}

std::vector<CHtmlProjectIndex::CReferrer> CHtmlProjectIndex::GetReferrers(const std::string& path) const {
  std::vector<CReferrer> out;
  const std::string folder = path + "/";
  const auto& files = m_resolver.files();
  const BookmarkLookup none = [](size_t) -> const std::set<std::string>* { return nullptr; };
  for (size_t i = 0; i < m_entries.size(); ++i)
    for (size_t k = 0; k < m_entries[i].m_refs.size(); ++k) {
      Resolution r = m_resolver.Resolve(files[i].path, m_entries[i].m_refs[k].m_strText, none);
      if (r.file == kNoFile) continue;
      const std::string& t = files[r.file].path;
      if (t == path || t.compare(0, folder.size(), folder) == 0) out.push_back({i, k, r.file});
    }
  return out;
}

std::vector<CHtmlProjectIndex::CPlace> CHtmlProjectIndex::GetReferencePlaces(const std::string& path) const {
  std::vector<CPlace> out;
  const auto& files = m_resolver.files();
  const std::string folder = path + "/", lower = Lower(path), lowerFolder = lower + "/";
  auto under = [](const std::string& t, const std::string& p, const std::string& f) {
    return t == p || t.compare(0, f.size(), f) == 0;
  };
  const BookmarkLookup none = [](size_t) -> const std::set<std::string>* { return nullptr; };
  for (size_t i = 0; i < m_entries.size(); ++i) {
    const FileKind kind = files[i].kind;
    const bool html = kind == FileKind::kTopic || kind == FileKind::kContents || kind == FileKind::kIndex;
    for (size_t k = 0; k < m_entries[i].m_positions.size(); ++k) {
      const std::string& w = m_entries[i].m_positions[k].m_strWritten.str();
      const Resolution r = m_resolver.Resolve(files[i].path, html ? Decoded(w.c_str()) : w, none);
      if (r.ref.kind != RefKind::kLocal) continue;
      if (r.file != kNoFile ? under(files[r.file].path, path, folder) : under(Lower(r.ref.path), lower, lowerFolder))
        out.push_back({i, k});
    }
  }
  return out;
}

int CHtmlProjectIndex::PlanMove(const std::vector<std::pair<std::string, std::string>>& moves, CMovePlan& plan,
                                std::string& error) const {
  plan = CMovePlan();
  const auto& files = m_resolver.files();
  std::map<size_t, std::string> moved;  // file -> new path
  std::set<std::string> targets;
  for (const auto& [from, to] : moves) {
    Reference check = ParseReference("", to);
    if (check.kind != RefKind::kLocal || check.path != to || to.empty()) {
      error = to + ": outside the project root";
      return 0;
    }
    if (to == from || to.compare(0, from.size() + 1, from + "/") == 0) {
      error = from + ": cannot move into itself";
      return 0;
    }
    auto add = [&](size_t file, const std::string& target) {
      struct stat st {};
      if (moved.count(file)) {
        error = files[file].path + ": named twice";
        return false;
      }
      if (!targets.insert(target).second || ::lstat(JoinRoot(m_strRoot, target).c_str(), &st) == 0) {
        error = target + ": already exists";
        return false;
      }
      moved[file] = target;
      plan.m_files.emplace_back(files[file].path, target);
      return true;
    };
    if (long f = FindFile(from); f >= 0) {
      if (!add(static_cast<size_t>(f), to)) return 0;
      // Its folders go too when the move leaves them empty.
      for (std::string d = DirectoryOf(from); !d.empty(); d = DirectoryOf(d)) plan.m_folders.push_back(d);
      continue;
    }
    const std::string prefix = from + "/";
    auto it = std::lower_bound(files.begin(), files.end(), prefix,
                               [](const ProjectFile& f, const std::string& p) { return f.path < p; });
    if (it == files.end() || it->path.compare(0, prefix.size(), prefix) != 0) {
      error = from + ": no such file or folder in the project";
      return 0;
    }
    std::set<std::string> folders{from};
    for (; it != files.end() && it->path.compare(0, prefix.size(), prefix) == 0; ++it) {
      if (!add(static_cast<size_t>(it - files.begin()), to + it->path.substr(from.size()))) return 0;
      for (std::string d = DirectoryOf(it->path); d.size() > from.size(); d = DirectoryOf(d)) folders.insert(d);
    }
    for (std::string d = DirectoryOf(from); !d.empty(); d = DirectoryOf(d)) folders.insert(d);
    plan.m_folders.insert(plan.m_folders.end(), folders.begin(), folders.end());
  }
  // A reference changes when its target moves or its file moves, unless
  // the relative path stays the same.
  const BookmarkLookup none = [](size_t) -> const std::set<std::string>* { return nullptr; };
  std::set<size_t> rewritten;
  for (size_t i = 0; i < m_entries.size(); ++i) {
    auto self = moved.find(i);
    const std::string dir = DirectoryOf(files[i].path);
    const std::string newDir = self == moved.end() ? dir : DirectoryOf(self->second);
    for (size_t k = 0; k < m_entries[i].m_refs.size(); ++k) {
      Resolution r = m_resolver.Resolve(files[i].path, m_entries[i].m_refs[k].m_strText, none);
      if (r.ref.kind != RefKind::kLocal) continue;
      const std::string oldTarget = r.file == kNoFile ? r.ref.path : files[r.file].path;
      auto t = r.file == kNoFile ? moved.end() : moved.find(r.file);
      if (t == moved.end() && self == moved.end()) continue;
      const std::string newTarget = t == moved.end() ? oldTarget : t->second;
      if (RelativePath(dir, oldTarget) == RelativePath(newDir, newTarget)) continue;
      plan.m_references.push_back({i, k, r.file});
      rewritten.insert(i);
    }
  }
  plan.m_rewritten.assign(rewritten.begin(), rewritten.end());
  return 1;
}

}  // namespace telvanix
