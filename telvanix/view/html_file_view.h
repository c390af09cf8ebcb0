// The formatting view of a page: the page read at level 4 (tree with HTML
// repairs) and, for every element of its tree, the effective format
// (CHtmlTagFormat) kept in the format slot of the element's start-tag leaf.
// Formats come from the browser's tag defaults, the presentational HTML
// attributes, the page's stylesheets (linked, imported, STYLE blocks) and
// inline styles, combined as a browser cascades them, then inherited.
//
// Stylesheet files are loaded through a CCssPackExManager, which a host
// shares among the views of one project (each file is read once); a view
// given none makes its own. A sheet that cannot be read is listed in
// GetSheetErrors and left out.
//
// Computed formats are kept per thread from build to build while the pages
// use the same stylesheets (at most 4096 of them, with the sheets they
// come from), so the pages of a project after the first build faster.
//
// The view is built on first use and again after the page changed: after
// SetElementAttribute, when tokens were inserted or removed (the tree is
// then rebuilt too) or the tree was rebuilt, or after InvalidateView (call
// it after editing a token in place by other means).
#pragma once

#include <memory>
#include <vector>

#include "telvanix/css/style_collector.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"

namespace telvanix {

class CCssPackExManager;
class CHtmlTagFormat;
class CHtmlTokenNode;
class CHtmlTagItem;

class TELVANIX_API CHtmlFileView : public CHtmlPack {
 public:
  // The manager is the host's and must outlive the view; null: the view
  // keeps one of its own.
  explicit CHtmlFileView(CCssPackExManager* manager = nullptr);
  CHtmlFileView(const char* path, CCssPackExManager* manager = nullptr);
  CHtmlFileView(CByteString& source, const char* path, CCssPackExManager* manager = nullptr);
  ~CHtmlFileView() override;

  // Reads the page (level 4) when it is not read yet and computes every
  // element's format when the view is stale. 1 on success; 0 when the page
  // cannot be read (nothing is thrown).
  int BuildView();
  // The next query rebuilds the view.
  void InvalidateView() { m_bStale = true; }
  // Sets (or, for a null value, deletes) an attribute of an element's
  // start tag ("style", "class", "color"...); the view is rebuilt on the
  // next query. 0 for an index out of range.
  int SetElementAttribute(int index, const char* name, const char* value);

  // Elements in document order (HTML and HEAD included); built on demand.
  int GetElementCount();
  // Null for an index out of range.
  CHtmlTokenNode* GetElementNode(int index);
  CHtmlTagFormat* GetTagFormat(int index);
  // The format of the element whose start tag is at `pos`; null when none.
  CHtmlTagFormat* GetTagFormat(POSITION pos);

  // 1 when the selector ("p.note", "div > a", a comma-separated list)
  // applies to the element; 0 also for an index out of range.
  int IsElementSelected(int index, const char* selector);

  // 1 when the page is shown in a browser's compatibility mode.
  int IsQuirksMode();
  // One line per stylesheet that could not be read.
  const CStringArray& GetSheetErrors() const { return m_arrSheetErrors; }
  CCssPackExManager* GetManager() const { return m_pManager; }

 private:
  struct CBuild;
  int Build();
  // What the view was built on: a changed list or tree makes it stale.
  bool IsCurrent();

  CCssPackExManager* m_pManager;
  std::unique_ptr<CCssPackExManager> m_pOwnManager;
  std::vector<CHtmlTokenNode*> m_arrElements;
  std::vector<CCssStyleCollector::CElement> m_arrRecords;  // the elements as selectors see them
  // The sheets of the last build: the formats' origins name their files.
  std::unique_ptr<CCssStyleCollector> m_pCollector;
  CStringArray m_arrSheetErrors;
  bool m_bStale = true;
  bool m_bQuirks = false;
  const void* m_pBuiltRoot = nullptr;
  int m_nBuiltTokens = -1;
  unsigned int m_nBuiltReleases = 0;  // the list's tree release count at the build
};

}  // namespace telvanix
