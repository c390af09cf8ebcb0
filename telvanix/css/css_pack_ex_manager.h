// The stylesheets of one project, loaded once and shared by every view of
// it: each file is read and compiled for matching on first use and again
// only when its modification time or size changed. A file is looked at on
// disk (one stat) at most once per recheck interval (100 ms unless set), so
// a view built that long after an edit of a sheet sees it; RecheckSheets
// makes the next use of every sheet look again at once. A page's sheets are
// added to a collector in cascade order: the sheets a sheet imports come
// before it, depth first, and a sheet already being expanded is not
// entered again, so an @import cycle ends. A sheet that cannot be read is
// reported and left out; it stops nothing.
//
// The manager is safe to share between threads: its cache is locked.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "telvanix/css/style_collector.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"

namespace telvanix {

class CCssPack;

class TELVANIX_API CCssPackExManager {
 public:
  using CRuleSetPtr = std::shared_ptr<const CCssStyleCollector::CRuleSet>;

  CCssPackExManager();
  ~CCssPackExManager();
  CCssPackExManager(const CCssPackExManager&) = delete;
  CCssPackExManager& operator=(const CCssPackExManager&) = delete;

  // The compiled sheet at `path` (resolved without regard to letter case),
  // from the cache while the file is unchanged; null when it cannot be read,
  // with a one-line reason in `error`.
  CRuleSetPtr GetRuleSet(const char* path, CString& error);
  // The same, also giving the paths the sheet imports.
  CRuleSetPtr GetRuleSet(const char* path, CString& error, std::vector<std::string>& imports);
  // The paths the sheet at `path` imports, resolved against it (after
  // GetRuleSet has loaded it; empty otherwise).
  std::vector<std::string> GetImports(const char* path);

  // Adds the sheet at `path`, after what it imports, to the collector.
  // Each sheet that cannot be read adds one line to `errors`.
  void AddSheet(const char* path, CCssStyleCollector& collector, CStringArray& errors);
  // Adds a page's STYLE block: its imports (resolved against the page),
  // then its rules, which count at `firstLine` of the page and are not
  // cached (they belong to the page).
  void AddStyleBlock(const char* pagePath, const char* text, int firstLine, CCssStyleCollector& collector,
                     CStringArray& errors);

  // How many times a sheet file was read: a cached sheet is read once.
  int GetLoadCount() const;
  // Forgets every sheet.
  void Clear();
  // How long what a file's stat said is taken as current (milliseconds;
  // 0: every use of a sheet looks at its file). Negative values count as 0.
  void SetRecheckInterval(int milliseconds);
  int GetRecheckInterval() const;
  // The next use of each sheet looks at its file again; an unchanged file
  // is not read again.
  void RecheckSheets();

 private:
  using CClock = std::chrono::steady_clock;
  struct CEntry {
    std::int64_t mtime = 0;
    std::int64_t size = -1;
    CRuleSetPtr rules;  // null: the file could not be read
    std::vector<std::string> imports;
  };
  // A path as asked for: where it was found and when that was looked at.
  struct CAsked {
    std::string resolved;
    CEntry* entry = nullptr;  // null: not found at the last look
    CClock::time_point checked;
    bool known = false;  // false: look at the file at the next use
  };
  CRuleSetPtr Find(std::string_view path, CString& error, std::vector<std::string>& imports);
  void AddWithImports(const std::string& path, CCssStyleCollector& collector, CStringArray& errors,
                      std::vector<std::string>& open);
  // The import paths of a parsed pack, resolved against `base`.
  static std::vector<std::string> ImportsOf(CCssPack& pack, const char* base);

  mutable std::mutex m_mutex;
  // By resolved path: names that differ only in letter case are one sheet.
  std::map<std::string, CEntry, std::less<>> m_entries;
  std::map<std::string, CAsked, std::less<>> m_asked;
  CClock::duration m_recheck = std::chrono::milliseconds(100);
  int m_nLoads = 0;
};

}  // namespace telvanix
