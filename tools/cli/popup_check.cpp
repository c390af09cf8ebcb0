#include "cli/popup_check.h"

#include <filesystem>
#include <memory>

#include "cli/page_files.h"
#include "cli/parallel.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/platform/path_lookup.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/popups_support.h"

namespace telvanix::tool {

namespace {

bool DefinesBookmark(const std::string& page, const std::string& name) {
  OpenTopic topic;
  std::string error;
  if (!OpenTopicPage(page, topic, error)) return true;  // unreadable: `check` reports it on its own
  unsigned int index = 0;
  for (const char* b = topic.doc->GetFirstBookmark(index); b && *b; b = topic.doc->GetNextBookmark(index))
    if (CHtmlPack::HtmlToText(b).str() == name) return true;
  return false;
}

PopupCheck CheckPage(const std::string& root, const std::string& relative) {
  PopupCheck out;
  const std::string path = root + "/" + relative;
  OpenTopic topic;
  std::string error;
  if (!OpenTopicPage(path, topic, error)) return out;
  CHtmlFileEx& doc = *topic.doc;
  CPopupsSupport popups(doc, path.c_str(), nullptr);
  unsigned int cursor = 0;
  CHtmlPopupAnchor p;
  for (int ok = popups.GetFirstPopup(cursor, p); ok; ok = popups.GetNextPopup(cursor, p)) {
    if (CHtmlPopupAnchor::IsTextKind(p.GetKind())) continue;
    CHtmlTagItem* tag = doc.GetTokenList()->GetTagItem(p.GetStartPosition());
    const char* href = tag ? tag->GetAttributeValue("href") : nullptr;
    // A class-marked link's href is checked as a link.
    if (p.GetKind() == CHtmlPopupAnchor::emPopupClassTopic && href && CHtmlPack::HtmlToText(href) == p.GetTarget())
      continue;
    const std::string target = p.GetTarget().str();
    if (doc.GetAnchorHrefType(target.c_str()) != CHtmlFileEx::emHrefNone) continue;  // another scheme
    std::string file = p.GetTopic().str();
    if (file.find(':') != std::string::npos) continue;  // a drive or a compiled help file
    for (char& c : file)
      if (c == '\\') c = '/';
    const size_t slash = path.find_last_of('/');
    const std::string resolved = file.empty() ? path : path.substr(0, slash + 1) + file;
    CString found;
    if (LookupPath(resolved.c_str(), found) == pathNotFound || !IsRegularFile(found)) {
      out.problems.push_back({relative, target, false});
      continue;
    }
    std::filesystem::path base = std::filesystem::path(root).lexically_normal();
    if (!base.has_filename()) base = base.parent_path();  // "project/" names "project"
    const std::string inside = std::filesystem::path(found.str()).lexically_normal().lexically_relative(base).generic_string();
    if (inside != relative) out.referenced.insert(inside);
    const std::string bookmark = p.GetBookmark().str();
    if (!bookmark.empty() && !DefinesBookmark(resolved, bookmark)) out.problems.push_back({relative, target, true});
  }
  return out;
}

}  // namespace

PopupCheck CheckPopups(const std::string& root, const std::vector<std::string>& topics) {
  std::vector<PopupCheck> perPage(topics.size());
  ParallelFor(topics.size(), [&](size_t i) { perPage[i] = CheckPage(root, topics[i]); }, "popups");
  PopupCheck out;
  for (const PopupCheck& page : perPage) {
    out.problems.insert(out.problems.end(), page.problems.begin(), page.problems.end());
    out.referenced.insert(page.referenced.begin(), page.referenced.end());
  }
  return out;
}

}  // namespace telvanix::tool
