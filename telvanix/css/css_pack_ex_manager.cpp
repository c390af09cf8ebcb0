#include "telvanix/css/css_pack_ex_manager.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/foundation/byte_string.h"
#include "telvanix/foundation/path_utils.h"
#include "telvanix/platform/path_lookup.h"

namespace telvanix {

CCssPackExManager::CCssPackExManager() = default;
CCssPackExManager::~CCssPackExManager() = default;

std::vector<std::string> CCssPackExManager::ImportsOf(CCssPack& pack, const char* base) {
  std::vector<std::string> imports;
  auto* packEx = static_cast<CCssPackEx*>(&pack);
  POSITION pos = nullptr;
  for (CString url = packEx->GetFirstImportCssUrl(pos); !url.IsEmpty(); url = packEx->GetNextImportCssUrl(pos))
    imports.emplace_back(GetNormalizedFullPathName(url, base).GetString());
  return imports;
}

CCssPackExManager::CRuleSetPtr CCssPackExManager::GetRuleSet(const char* path, CString& error) {
  std::vector<std::string> imports;
  return GetRuleSet(path, error, imports);
}

CCssPackExManager::CRuleSetPtr CCssPackExManager::GetRuleSet(const char* path, CString& error,
                                                             std::vector<std::string>& imports) {
  return Find(path ? std::string_view(path) : std::string_view(), error, imports);
}

CCssPackExManager::CRuleSetPtr CCssPackExManager::Find(std::string_view path, CString& error,
                                                       std::vector<std::string>& imports) {
  error.Empty();
  imports.clear();
  if (path.empty()) {
    error = "no stylesheet path";
    return nullptr;
  }
  // What the last look at the file found holds for the recheck interval.
  const CClock::time_point now = CClock::now();
  CString resolved;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto asked = m_asked.find(path);
    if (asked != m_asked.end()) {
      const CAsked& a = asked->second;
      if (a.known && now - a.checked < m_recheck) {
        if (!a.entry)
          error = CString(std::string(path)) + ": stylesheet not found";
        else if (!a.entry->rules)
          error = CString(std::string(path)) + ": stylesheet cannot be read";
        else
          imports = a.entry->imports;
        return a.entry ? a.entry->rules : nullptr;
      }
      resolved = a.resolved.c_str();
    }
  }
  // A path resolved before is only checked for its time and size (one
  // stat); a path that is gone is looked up again.
  const std::string asked(path);
  struct stat st {};
  bool found = !resolved.IsEmpty() && stat(resolved, &st) == 0 && S_ISREG(st.st_mode);
  if (!found)
    found = LookupPath(asked.c_str(), resolved) && stat(resolved, &st) == 0 && S_ISREG(st.st_mode);
  std::lock_guard<std::mutex> lock(m_mutex);
  CAsked& record = m_asked[asked];
  record.known = true;
  record.checked = now;
  if (!found) {
    record.resolved.clear();
    record.entry = nullptr;
    error = CString(asked) + ": stylesheet not found";
    return nullptr;
  }
  record.resolved = resolved.GetString();
  CEntry& entry = m_entries[record.resolved];
  record.entry = &entry;
  const std::int64_t mtime = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  if (entry.mtime == mtime && entry.size == st.st_size && entry.rules) {
    imports = entry.imports;
    return entry.rules;
  }
  CByteString bytes;
  ++m_nLoads;
  if (!bytes.LoadFromFile(resolved)) {
    entry = CEntry();
    entry.mtime = mtime;
    entry.size = st.st_size;
    error = CString(asked) + ": stylesheet cannot be read";
    return nullptr;
  }
  // Built from the bytes read here (a ".css" path would make the pack read
  // the file again); imports are resolved against the sheet's own path.
  auto pack = std::make_unique<CCssPackEx>(&bytes);
  pack->Parse();
  entry.mtime = mtime;
  entry.size = st.st_size;
  entry.imports = ImportsOf(*pack, resolved);
  const char* text = bytes.GetContent() ? static_cast<const char*>(bytes) : "";
  entry.rules = std::make_shared<CCssStyleCollector::CRuleSet>(std::move(pack), resolved, text, 1,
                                                              CCssStyleCollector::emLevelAuthor);
  imports = entry.imports;
  return entry.rules;
}

std::vector<std::string> CCssPackExManager::GetImports(const char* path) {
  CString resolved;
  if (!path || !LookupPath(path, resolved))
    return {};
  std::lock_guard<std::mutex> lock(m_mutex);
  auto it = m_entries.find(resolved.GetString());
  return it == m_entries.end() ? std::vector<std::string>() : it->second.imports;
}

void CCssPackExManager::AddWithImports(const std::string& path, CCssStyleCollector& collector, CStringArray& errors,
                                       std::vector<std::string>& open) {
  // A sheet that is being expanded already: the import closes a cycle.
  if (std::find(open.begin(), open.end(), path) != open.end() || open.size() > 64)
    return;
  CString error;
  std::vector<std::string> imports;
  CRuleSetPtr rules = Find(path, error, imports);
  if (!rules) {
    errors.Add(error);
    return;
  }
  open.push_back(path);
  for (const std::string& imported : imports)
    AddWithImports(imported, collector, errors, open);
  open.pop_back();
  collector.AddRuleSet(rules);
}

void CCssPackExManager::AddSheet(const char* path, CCssStyleCollector& collector, CStringArray& errors) {
  std::vector<std::string> open;
  AddWithImports(path ? path : "", collector, errors, open);
}

void CCssPackExManager::AddStyleBlock(const char* pagePath, const char* text, int firstLine,
                                      CCssStyleCollector& collector, CStringArray& errors) {
  if (!text || !*text)
    return;
  CByteString bytes;
  bytes.Append(reinterpret_cast<const unsigned char*>(text), static_cast<int>(std::strlen(text)));
  auto pack = std::make_unique<CCssPackEx>(&bytes);
  pack->Parse();
  const char* page = pagePath ? pagePath : "";
  for (const std::string& imported : ImportsOf(*pack, page)) {
    std::vector<std::string> open;
    AddWithImports(imported, collector, errors, open);
  }
  collector.AddRuleSet(std::make_shared<CCssStyleCollector::CRuleSet>(std::move(pack), page, text, firstLine,
                                                                     CCssStyleCollector::emLevelAuthor));
}

int CCssPackExManager::GetLoadCount() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_nLoads;
}

void CCssPackExManager::Clear() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_asked.clear();
  m_entries.clear();
}

void CCssPackExManager::SetRecheckInterval(int milliseconds) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_recheck = std::chrono::milliseconds(milliseconds > 0 ? milliseconds : 0);
}

int CCssPackExManager::GetRecheckInterval() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(m_recheck).count());
}

void CCssPackExManager::RecheckSheets() {
  std::lock_guard<std::mutex> lock(m_mutex);
  for (auto& asked : m_asked)
    asked.second.known = false;
}

}  // namespace telvanix
