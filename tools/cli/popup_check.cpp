#include "cli/popup_check.h"

#include <strings.h>

#include <cstring>
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

// Whether the page may hold a popup whose target no ordinary link shows: a
// script call, "data-popup-topic" or the popup object's class id (in any
// letter case, found by its part without letters).
bool MayHoldHiddenTargets(const CByteString& bytes) {
  const char* data = static_cast<const char*>(bytes);
  const size_t n = static_cast<size_t>(bytes.GetLength());
  if (!data || n == 0) return false;
  if (memmem(data, n, "telvanixPopup", 13) || memmem(data, n, "data-popup-topic", 16)) return true;
  static const char kClassId[] = "3B6A91E4-5C2D-11D0-9E37-0000A4C81D55";
  constexpr size_t kBefore = 23;  // where "-0000" stands in it
  for (const char* p = data; (p = static_cast<const char*>(memmem(p, n - static_cast<size_t>(p - data), "-0000", 5)));
       ++p)
    if (static_cast<size_t>(p - data) >= kBefore && strncasecmp(p - kBefore, kClassId, sizeof(kClassId) - 1) == 0)
      return true;
  return false;
}

PopupCheck CheckPage(const std::string& root, const std::string& relative) {
  PopupCheck out;
  const std::string path = root + "/" + relative;
  std::string error;
  // Only these popups name a target that is not an ordinary link's; a page
  // without their marks is not parsed a second time.
  CByteString bytes;
  if (!LoadTopicBytes(path, bytes, error) || !MayHoldHiddenTargets(bytes)) return out;
  OpenTopic topic;
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
