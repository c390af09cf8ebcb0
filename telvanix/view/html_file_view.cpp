#include "telvanix/view/html_file_view.h"

#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <unordered_map>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/css_pack_ex_manager.h"
#include "telvanix/css/style_collector.h"
#include "telvanix/css/style_combine.h"
#include "telvanix/css/style_format.h"
#include "telvanix/css/style_property.h"
#include "telvanix/foundation/path_utils.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/internal/markup_scan.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/html/tree_node.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/view/internal/browser_default_sheet.h"
#include "telvanix/view/tag_format.h"

namespace telvanix {

namespace {

using T = CHtmlTagItem;
using Collector = CCssStyleCollector;

std::shared_ptr<const Collector::CRuleSet> CompileDefaults(const char* text) {
  CByteString bytes;
  bytes.Append(reinterpret_cast<const unsigned char*>(text), static_cast<int>(std::strlen(text)));
  auto pack = std::make_unique<CCssPack>(&bytes);
  pack->Parse();
  return std::make_shared<Collector::CRuleSet>(std::move(pack), "", text, 1, Collector::emLevelDefault);
}

// The tag defaults, compiled once for the process.
const std::shared_ptr<const Collector::CRuleSet>& DefaultRules() {
  static const auto rules = CompileDefaults(kBrowserDefaultSheet);
  return rules;
}
const std::shared_ptr<const Collector::CRuleSet>& QuirksRules() {
  static const auto rules = CompileDefaults(kBrowserQuirksSheet);
  return rules;
}

bool ContainsWordNoCase(const char* text, const char* word) {
  if (!text)
    return false;
  const size_t n = std::strlen(word);
  for (const char* p = text; *p; ++p)
    if (strncasecmp(p, word, n) == 0)
      return true;
  return false;
}

// Tags that stand for no element: comments, declarations, processing
// instructions.
bool IsElementTag(CHtmlTagItem* tag) {
  if (!tag || tag->IsEndTag())
    return false;
  const int id = tag->GetTagId();
  if (id == T::emTagIdDoctype || id == T::emTagIdComment || id == T::emTagIdXmlDoctype || id == 0)
    return false;
  if (tag->IsUnknownTag()) {
    const CString name = tag->GetTagName();
    return !name.IsEmpty() && name[0] != '!' && name[0] != '?' && name[0] != '/';
  }
  return true;
}

void SplitClasses(const char* text, std::vector<std::string>& out) {
  if (!text)
    return;
  const char* p = text;
  while (*p) {
    while (*p == ' ' || *p == '\t' || *p == '\r' || *p == '\n' || *p == '\f')
      ++p;
    const char* q = p;
    while (*q && *q != ' ' && *q != '\t' && *q != '\r' && *q != '\n' && *q != '\f')
      ++q;
    if (q > p)
      out.emplace_back(p, q);
    p = q;
  }
}

// A name against a lower-case word of letters, without regard to case.
bool IsNamed(const char* name, const char* word) {
  for (; *word; ++name, ++word)
    if ((*name | 0x20) != *word)
      return false;
  return *name == 0;
}

// Attribute names AnalyseHtmlAttribute reads (and a few it refuses), so
// that the many others (href, name, onclick...) cost one look at a byte.
bool IsPresentationalName(const char* name) {
  switch (name[0] | 0x20) {
    case 'a': return IsNamed(name, "align");
    case 'b': return IsNamed(name, "background") || IsNamed(name, "bgcolor") || IsNamed(name, "border");
    case 'c': return IsNamed(name, "color");
    case 'f': return IsNamed(name, "face");
    case 'h': return IsNamed(name, "hspace");
    case 'n': return IsNamed(name, "nowrap") || IsNamed(name, "noshade");
    case 's': return IsNamed(name, "size");
    case 't': return IsNamed(name, "text") || IsNamed(name, "type");
    case 'v': return IsNamed(name, "valign") || IsNamed(name, "vspace");
    default: return false;
  }
}

// Lines of tokens asked for in document order: a cursor walks the list
// once, counting line ends of the bytes read from the source (tokens a
// repair inserted have none). A token met out of order starts the walk over.
class CLineCursor {
 public:
  explicit CLineCursor(CHtmlTokenList* list) : m_list(list), m_pos(list->GetHeadPosition()) {}
  int LineOf(POSITION target) {
    for (int pass = 0; pass < 2; ++pass) {
      while (m_pos) {
        const POSITION here = m_pos;
        CHtmlTokenItem* token = m_list->GetNext(m_pos);
        const int line = m_line;
        if (token && !(token->GetTokenFlag() &
                       (CHtmlTokenItem::emTokenInserted | CHtmlTokenItem::emTokenRecoveryInserted))) {
          m_line += markup::CountLines(token->GetOriginalData(),
                                       token->GetOriginalLength() + token->GetIndentAfterLength());
        }
        if (here == target)
          return line;
      }
      m_pos = m_list->GetHeadPosition();
      m_line = 1;
    }
    return 0;
  }

 private:
  CHtmlTokenList* m_list;
  POSITION m_pos;
  int m_line = 1;
};

// A linked sheet's path, resolved against the page's. Pages of one folder
// link the same sheets, so the last answer is kept per thread, by the
// page's folder text, the link and the code page (which decides where the
// folder ends); a page path that is not rooted depends on the working
// folder and is resolved every time.
CString LinkedSheetPath(const CString& page, const CString& href) {
  const char* text = page;
  int folder = -1;
  for (int i = 0; text[i]; ++i)
    if (text[i] == '/' || text[i] == '\\')
      folder = i + 1;
  const bool drive = ((text[0] | 0x20) >= 'a' && (text[0] | 0x20) <= 'z') && text[1] == ':';
  const bool rooted = text[0] == '/' || text[0] == '\\' || drive;
  if (!rooted || folder < 0)
    return GetNormalizedFullPathName(href, page);
  struct CLast {
    std::string folder;
    std::string href;
    UINT codePage = 0;
    CString path;
  };
  thread_local CLast last;
  const UINT codePage = GetActiveCodePage();
  if (last.codePage != codePage || last.href != href.str() ||
      last.folder.compare(0, std::string::npos, text, static_cast<size_t>(folder)) != 0) {
    last.path = GetNormalizedFullPathName(href, page);
    last.folder.assign(text, static_cast<size_t>(folder));
    last.href = href.str();
    last.codePage = codePage;
  }
  return last.path;
}

// Names a format after its start tag (as GetTagName writes it). A format
// copied from the cache mostly has the name already: then no text is made.
void NameFormat(CHtmlTagFormat& format, CHtmlTagItem* tag) {
  const unsigned char* data = tag->GetOriginalData();
  const int length = tag->GetOriginalLength();
  if (data && length >= 2) {
    CHtmlTagItem::TagNameInfo info;
    CHtmlTagItem::ScanTagName(data + 1, data + length - 1, info);
    if (info.m_pName && !info.m_bEndTag) {
      const int n = std::min(info.m_nLength, 62);
      const CString& have = format.GetTagName();
      if (have.GetLength() != n || std::memcmp(have.GetString(), info.m_pName, static_cast<size_t>(n)) != 0)
        format.SetTagName(CString(reinterpret_cast<const char*>(info.m_pName), n));
      return;
    }
  }
  format.SetTagName(tag->GetTagName());
}

// The nearest TABLE around an element; null when none.
const Collector::CElement* EnclosingTable(const Collector::CElement& element) {
  for (const Collector::CElement* e = element.parent; e; e = e->parent)
    if (e->tagId == T::emTagIdTable)
      return e;
  return nullptr;
}

// Keys are whole words; a word-wise mix hashes them faster than bytes.
void AppendWord(std::string& key, std::uint64_t value) { key.append(reinterpret_cast<const char*>(&value), 8); }

// Computed formats of elements without a style attribute, kept per thread
// from page to page: pages of a project share their sheets, so the same
// parent, tag and matched declarations recur. The key holds the addresses
// of what went in; the cache keeps every one of them alive (the sheets, the
// parent's values, the attribute formats), so no address is reused for
// other content while a key names it.
struct CComputedCache {
  struct CEntry {
    std::string key;
    std::unique_ptr<CHtmlTagFormat> format;
    std::unique_ptr<CHtmlTagFormat> parent;  // holds the parent's values
  };
  // At most this many formats; the table of slots is twice as large, so a
  // look-up mostly ends at its first slot.
  static constexpr size_t kMaxEntries = 4096;
  static constexpr size_t kSlots = 2 * kMaxEntries;
  std::vector<std::shared_ptr<const Collector::CRuleSet>> sets;
  std::unordered_map<std::string, std::unique_ptr<CCssStyleFormat>> attributeFormats;
  std::vector<std::unique_ptr<CEntry>> entries;
  std::vector<std::pair<std::uint64_t, CEntry*>> slots;  // (hash, entry) by hash; null: empty

  // Starts over when the sheets differ from the last build's or the cache
  // is full.
  void Begin(const std::vector<std::shared_ptr<const Collector::CRuleSet>>& now) {
    if (slots.empty() || now != sets || entries.size() >= kMaxEntries || attributeFormats.size() > kMaxEntries) {
      entries.clear();
      slots.assign(kSlots, {0, nullptr});
      attributeFormats.clear();
      sets = now;
    }
  }
  const CEntry* Find(const std::string& key, std::uint64_t hash) const {
    for (size_t at = hash & (kSlots - 1);; at = (at + 1) & (kSlots - 1)) {
      const std::pair<std::uint64_t, CEntry*>& slot = slots[at];
      if (!slot.second)
        return nullptr;
      if (slot.first == hash && slot.second->key == key)
        return slot.second;
    }
  }
  // A full cache takes no more until the next build starts it over.
  void Add(const std::string& key, std::uint64_t hash, const CHtmlTagFormat& format, const CHtmlTagFormat* parent) {
    if (entries.size() >= kMaxEntries)
      return;
    entries.push_back(std::make_unique<CEntry>(CEntry{key, std::make_unique<CHtmlTagFormat>(format),
                                                      parent ? std::make_unique<CHtmlTagFormat>(*parent) : nullptr}));
    size_t at = hash & (kSlots - 1);
    while (slots[at].second)
      at = (at + 1) & (kSlots - 1);
    slots[at] = {hash, entries.back().get()};
  }
};

CComputedCache& ComputedCache() {
  thread_local CComputedCache cache;
  return cache;
}


}  // namespace

// The work of one build, kept apart from the view's state.
struct CHtmlFileView::CBuild {
  std::vector<Collector::CElement> elements;
  std::vector<CHtmlTokenNode*> leaves;
  std::vector<POSITION> positions;  // the leaves' tokens
  std::vector<const CHtmlTagFormat*> formats;  // as they are made
  std::vector<int> parents;
  // Per element: its style attribute (null: none), and whether it has a
  // presentational attribute.
  std::vector<const char*> styles;
  std::vector<bool> presentational;
};

CHtmlFileView::CHtmlFileView(CCssPackExManager* manager) : CHtmlPack(), m_pManager(manager) {
  if (!m_pManager) {
    m_pOwnManager = std::make_unique<CCssPackExManager>();
    m_pManager = m_pOwnManager.get();
  }
}

CHtmlFileView::CHtmlFileView(const char* path, CCssPackExManager* manager) : CHtmlPack(path), m_pManager(manager) {
  if (!m_pManager) {
    m_pOwnManager = std::make_unique<CCssPackExManager>();
    m_pManager = m_pOwnManager.get();
  }
}

CHtmlFileView::CHtmlFileView(CByteString& source, const char* path, CCssPackExManager* manager)
    : CHtmlPack(source, path), m_pManager(manager) {
  if (!m_pManager) {
    m_pOwnManager = std::make_unique<CCssPackExManager>();
    m_pManager = m_pOwnManager.get();
  }
}

CHtmlFileView::~CHtmlFileView() {
  // The formats go before the pack, while the tree built on still stands,
  // so that its nodes, owning nothing then, go without a walk.
  CHtmlTokenList* list = GetTokenList();
  if (list && list->GetTreeReleaseCount() == m_nBuiltReleases)
    for (CHtmlTokenNode* node : m_arrElements)
      node->ReleaseTagFormat();
}

bool CHtmlFileView::IsCurrent() {
  if (m_bStale)
    return false;
  CHtmlEntityTree* tree = GetEntityTree();
  return tree && tree->GetRootNode() == m_pBuiltRoot && GetTokenList()->GetCount() == m_nBuiltTokens &&
         GetTokenList()->GetTreeReleaseCount() == m_nBuiltReleases;
}

int CHtmlFileView::BuildView() {
  try {
    if (!IsParsed() && !Parse(emParseHtmlTree))
      return 0;
    // Tokens inserted or removed since the last build leave the tree stale.
    const bool listChanged = m_nBuiltTokens >= 0 && GetTokenList()->GetCount() != m_nBuiltTokens;
    if (!GetEntityTree() || !GetEntityTree()->GetRootNode() || listChanged)
      if (!RebuildEntityTree())
        return 0;
    if (IsCurrent())
      return 1;
    return Build();
  } catch (const std::exception&) {
    m_arrElements.clear();
    return 0;
  }
}

int CHtmlFileView::Build() {
  m_arrElements.clear();
  m_arrRecords.clear();
  m_arrSheetErrors.RemoveAll();
  CHtmlTokenList* list = GetTokenList();
  CHtmlEntityTree* tree = GetEntityTree();
  if (!list || !tree || !tree->GetRootNode())
    return 0;
  CBuild build;
  // About half the tokens are start tags: room for the elements up front
  // spares moving their records while the vectors grow.
  const size_t expected = static_cast<size_t>(list->GetCount()) / 2 + 16;
  build.elements.reserve(expected);
  build.leaves.reserve(expected);
  build.positions.reserve(expected);
  build.parents.reserve(2 * expected);
  build.styles.reserve(expected);
  build.presentational.reserve(expected);

  // Lines of the tokens, and what the head says: DOCTYPE, sheets, BODY link.
  m_pCollector = std::make_unique<Collector>();
  Collector& collector = *m_pCollector;
  collector.AddRuleSet(DefaultRules());
  const char* doctype = nullptr;
  CString doctypeText;
  bool sawDoctype = false;
  CLineCursor styleLines(list);
  struct CSheetRef {
    bool block;
    CString text;
    int line;
  };
  std::vector<CSheetRef> sheets;
  bool inStyle = false;
  CString styleText;
  int styleLine = 0;
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    const POSITION here = pos;
    CHtmlTokenItem* token = list->GetNext(pos);
    if (!token)
      continue;
    if (token->IsDiscardedToken())
      continue;
    if (inStyle) {
      if (token->IsTagToken()) {
        inStyle = false;
        sheets.push_back({true, styleText, styleLine});
      } else {
        // Rule lines count from the line the block's text begins on.
        if (styleLine == 0)
          styleLine = styleLines.LineOf(here);
        styleText += token->GetOriginalString();
        continue;
      }
    }
    if (!token->IsTagToken())
      continue;
    CHtmlTagItem* tag = static_cast<CHtmlTagItem*>(token);
    const int id = tag->GetTagId();
    if (id == T::emTagIdDoctype && !sawDoctype) {
      sawDoctype = true;
      doctypeText = token->GetOriginalString();
      doctype = doctypeText;
    } else if (id == T::emTagIdStyle) {
      const char* type = tag->GetAttributeValue("type");
      const char* media = tag->GetAttributeValue("media");
      if ((!type || !*type || ContainsWordNoCase(type, "css")) &&
          (!media || !*media || ContainsWordNoCase(media, "screen") || ContainsWordNoCase(media, "all"))) {
        inStyle = true;
        styleText.Empty();
        styleLine = 0;
      }
    } else if (id == T::emTagIdLink) {
      const char* rel = tag->GetAttributeValue("rel");
      const char* href = tag->GetAttributeValue("href");
      const char* media = tag->GetAttributeValue("media");
      if (rel && href && *href && ContainsWordNoCase(rel, "stylesheet") && !ContainsWordNoCase(rel, "alternate") &&
          (!media || !*media || ContainsWordNoCase(media, "screen") || ContainsWordNoCase(media, "all"))) {
        CString name(href, static_cast<int>(std::strcspn(href, "?#")));
        // Resolved against the page's path, also for a page given as bytes.
        sheets.push_back({false, GetPathName().IsEmpty() ? CString() : LinkedSheetPath(GetPathName(), name), 0});
      }
    }
  }
  if (inStyle)
    sheets.push_back({true, styleText, styleLine});
  m_bQuirks = IsQuirksModeDoctype(doctype) != 0;
  if (m_bQuirks)
    collector.AddRuleSet(QuirksRules());
  collector.SetQuirksMode(m_bQuirks);
  for (const CSheetRef& sheet : sheets) {
    if (sheet.block)
      m_pManager->AddStyleBlock(GetPathName(), sheet.text, sheet.line, collector, m_arrSheetErrors);
    else if (sheet.text.IsEmpty())
      m_arrSheetErrors.Add("a linked stylesheet of a page without a path");
    else
      m_pManager->AddSheet(sheet.text, collector, m_arrSheetErrors);
  }

  // The elements in document order, walked without recursion.
  struct CStep {
    CStep(CHtmlEntityNode* n, CHtmlTokenNode* s, POSITION c, int e, int last)
        : node(n), start(s), child(c), element(e), lastChild(last) {}
    CHtmlEntityNode* node;
    CHtmlTokenNode* start;  // the node's start leaf
    POSITION child;
    int element;  // its index, -1 for the root
    int lastChild;
  };
  std::vector<CStep> stack;
  stack.emplace_back(tree->GetRootNode(), tree->GetRootNode()->GetStartTagNode(),
                     tree->GetRootNode()->GetFirstChildPosition(), -1, -1);
  auto addElement = [&](CHtmlTokenNode* leaf, int parent, int& previous) -> int {
    CHtmlTagItem* tag = leaf->GetTagItem(list);
    if (!IsElementTag(tag))
      return -1;
    // One walk over the attributes; the first of a name counts.
    const char *id = nullptr, *classes = nullptr, *href = nullptr, *style = nullptr;
    bool seenId = false, seenClass = false, seenHref = false, seenStyle = false, presentational = false;
    unsigned int cursor = 0;
    const char* value = nullptr;
    for (const char* name = tag->GetFirstAttribute(cursor, value); name; name = tag->GetNextAttribute(cursor, value)) {
      if (!seenId && IsNamed(name, "id")) {
        seenId = true;
        id = value;
      } else if (!seenClass && IsNamed(name, "class")) {
        seenClass = true;
        classes = value;
      } else if (!seenHref && IsNamed(name, "href")) {
        seenHref = true;
        href = value;
      } else if (!seenStyle && IsNamed(name, "style")) {
        seenStyle = true;
        style = value;
      }
      presentational = presentational || (value && IsPresentationalName(name));
    }
    const int index = static_cast<int>(build.elements.size());
    Collector::CElement& e = build.elements.emplace_back();
    e.tagId = tag->GetTagId();
    e.tag = tag;
    if (id)
      e.id = id;
    SplitClasses(classes, e.classes);
    e.link = e.tagId == T::emTagIdA && href != nullptr;
    build.leaves.push_back(leaf);
    build.positions.push_back(leaf->GetTokenPosition());
    build.parents.push_back(parent);
    build.parents.push_back(previous);  // parents[2i], previous[2i+1]
    build.styles.push_back(style);
    build.presentational.push_back(presentational);
    previous = index;
    return index;
  };
  while (!stack.empty()) {
    CStep& step = stack.back();
    if (!step.child) {
      stack.pop_back();
      continue;
    }
    CHtmlTreeNode* child = step.node->GetNextChild(step.child);
    if (!child)
      continue;
    if (child->IsEntityNode()) {
      auto* element = static_cast<CHtmlEntityNode*>(child);
      CHtmlTokenNode* start = element->GetStartTagNode();
      int index = -1;
      if (start)
        index = addElement(start, step.element, step.lastChild);
      POSITION first = element->GetFirstChildPosition();
      if (start)
        element->GetNextChild(first);  // the start leaf is the element itself
      // An element of no tag: its children stand for it. The step is made
      // in place, from values at hand (a copy of a step just written
      // would wait for its stores).
      const int parent = index >= 0 ? index : step.element;
      const int lastChild = index >= 0 ? -1 : step.lastChild;
      stack.emplace_back(element, start, first, parent, lastChild);
    } else {
      auto* leaf = static_cast<CHtmlTokenNode*>(child);
      if (leaf->IsTagNode() && leaf != step.start)
        addElement(leaf, step.element, step.lastChild);
    }
  }
  // Links between the element records, now that the vector stays put.
  const int count = static_cast<int>(build.elements.size());
  for (int i = 0; i < count; ++i) {
    const int parent = build.parents[2 * i];
    const int previous = build.parents[2 * i + 1];
    build.elements[i].parent = parent >= 0 ? &build.elements[parent] : nullptr;
    build.elements[i].previous = previous >= 0 ? &build.elements[previous] : nullptr;
  }

  CComputedCache& cache = ComputedCache();
  cache.Begin(collector.GetRuleSets());
  // Attribute formats, by tag and attribute text, kept with the computed
  // formats whose keys hold their addresses.
  auto& attributeFormats = cache.attributeFormats;
  // BODY link colours links over the tag defaults; one format per colour
  // text, kept with the attribute formats.
  const CCssStyleFormat* linkFormat = nullptr;
  for (const Collector::CElement& e : build.elements)
    if (e.tagId == T::emTagIdBody) {
      if (const char* link = e.tag->GetAttributeValue("link")) {
        std::unique_ptr<CCssStyleFormat>& made = attributeFormats[std::string("\3link=") + link];
        if (!made) {
          made = std::make_unique<CCssStyleFormat>();
          made->AnalyseCssProperty("color", link);
        }
        if (!made->IsDefault())
          linkFormat = made.get();
      }
      break;
    }
  // Scratch formats, kept per thread: a format is costly to make.
  thread_local CCssStyleFormat inlineNormal, inlineImportant;

  // Each element after its parent: collect, combine, compute. An element
  // whose parent format, tag and matched rules equal an earlier one's (and
  // that has no attributes or inline style of its own) takes a copy of that
  // earlier result, as siblings and rows of a table mostly do.
  CLineCursor lines(list);
  std::string key;
  std::uint64_t hash = 0;
  std::vector<Collector::CMatch> matches;
  CCssStyleCombine combine;
  std::string signature;
  const Collector::CElement* lastTable = nullptr;
  const char* lastBorder = nullptr;
  const char* lastPadding = nullptr;
  bool cellKnown[2] = {false, false};
  const CCssStyleFormat* cellAttributes[2] = {nullptr, nullptr};
  m_arrElements.reserve(static_cast<size_t>(count));
  build.formats.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    const Collector::CElement& e = build.elements[i];
    matches.clear();
    collector.Collect(e, matches);
    if (e.link && linkFormat) {
      Collector::CMatch& m = matches.emplace_back();
      m.format = linkFormat;
      m.level = Collector::emLevelDefaultLink;
    }
    // Presentational attributes, and what a table's attributes give its
    // cells: one format per distinct set of them, kept for the build.
    signature.clear();
    unsigned int cursor = 0;
    const char* value = nullptr;
    const char* style = build.styles[i];
    if (build.presentational[i])
      for (const char* name = e.tag->GetFirstAttribute(cursor, value); name;
           name = e.tag->GetNextAttribute(cursor, value))
        if (value && IsPresentationalName(name)) {
          signature += name;
          signature += '=';
          signature += value;
          signature += '\0';
        }
    const char* cellBorder = nullptr;
    const char* cellPadding = nullptr;
    const CCssStyleFormat* attributes = nullptr;
    // A cell without presentational attributes of its own: the table's
    // attributes alone decide, so it takes what the last such cell of the
    // same table and tag took.
    int plainCell = -1;  // 0 TD, 1 TH
    if (e.tagId == T::emTagIdTd || e.tagId == T::emTagIdTh) {
      if (const Collector::CElement* table = EnclosingTable(e)) {
        // The cells of a table come together: its attributes are read once.
        if (table != lastTable) {
          lastTable = table;
          lastBorder = table->tag->GetAttributeValue("border");
          lastPadding = table->tag->GetAttributeValue("cellpadding");
          cellKnown[0] = cellKnown[1] = false;
        }
        if (!build.presentational[i])
          plainCell = e.tagId == T::emTagIdTh ? 1 : 0;
        cellBorder = lastBorder;
        cellPadding = lastPadding;
        if (plainCell < 0 || !cellKnown[plainCell]) {
          signature += cellBorder ? '\1' : '\2';
          if (cellBorder)
            signature += cellBorder;
          signature += cellPadding ? '\1' : '\2';
          if (cellPadding)
            signature += cellPadding;
        }
      }
    }
    if (plainCell >= 0 && cellKnown[plainCell]) {
      attributes = cellAttributes[plainCell];
    } else if (!signature.empty()) {
      signature += std::to_string(e.tagId);
      std::unique_ptr<CCssStyleFormat>& made = attributeFormats[signature];
      if (!made) {
        made = std::make_unique<CCssStyleFormat>();
        cursor = 0;
        for (const char* name = e.tag->GetFirstAttribute(cursor, value); name;
             name = e.tag->GetNextAttribute(cursor, value))
          if (value && IsPresentationalName(name))
            made->AnalyseHtmlAttribute(e.tagId, name, value);
        if (cellBorder && (!*cellBorder || std::atoi(cellBorder) > 0))
          made->AnalyseCssProperty("border", "1px inset");
        if (cellPadding) {
          CString px;
          px.Format("%dpx", std::atoi(cellPadding) < 0 ? 0 : std::atoi(cellPadding));
          made->AnalyseCssProperty("padding", px);
        }
      }
      if (!made->IsDefault())
        attributes = made.get();
      if (plainCell >= 0) {
        cellKnown[plainCell] = true;
        cellAttributes[plainCell] = attributes;
      }
    }
    if (attributes) {
      Collector::CMatch& m = matches.emplace_back();
      m.format = attributes;
      m.level = Collector::emLevelAttribute;
    }
    const bool plain = !style;
    const int parentIndex = build.parents[2 * i];
    const CHtmlTagFormat* parentFormat =
        parentIndex >= 0 ? build.formats[static_cast<size_t>(parentIndex)] : nullptr;
    if (plain) {
      key.clear();
      AppendWord(key, static_cast<std::uint64_t>(e.tagId) << 1 | (m_bQuirks ? 1 : 0));
      AppendWord(key, reinterpret_cast<std::uintptr_t>(parentFormat ? parentFormat->GetSharedSource() : nullptr));
      for (const Collector::CMatch& m : matches)
        AppendWord(key, reinterpret_cast<std::uintptr_t>(m.format) ^ static_cast<std::uint64_t>(m.level) << 56);
      hash = std::hash<std::string>{}(key);
      if (const CComputedCache::CEntry* found = cache.Find(key, hash)) {
        auto* format = new CHtmlTagFormat(*found->format);
        NameFormat(*format, e.tag);
        format->SetLine(lines.LineOf(build.positions[i]));
        build.leaves[i]->SetTagFormat(format);
        build.formats.push_back(format);
        m_arrElements.push_back(build.leaves[i]);
        continue;
      }
    }
    // The style attribute: normal and !important declarations apart.
    if (style) {
      if (!inlineNormal.IsDefault())
        inlineNormal.Default();
      if (!inlineImportant.IsDefault())
        inlineImportant.Default();
      Collector::CInheritMask inheritNormal, inheritImportant;
      CCssStyleProperty properties;
      properties.Analyse(reinterpret_cast<unsigned char*>(const_cast<char*>(style)));
      int index = 0;
      properties.GetFirstPropertyPair(index);
      while (const CCssStyleProperty::CPropertyPair* pair = properties.GetNextPropertyPair(index)) {
        CString v = pair->GetValue();
        const int bang = v.ReverseFind('!');
        if (bang >= 0) {
          CString rest = v.Mid(bang + 1);
          rest.Trim();
          if (rest.CompareNoCase("important") == 0) {
            if (!Collector::ReadInheritDeclaration(pair->GetName(), v.Left(bang), inheritImportant))
              inlineImportant.AnalyseCssProperty(pair->GetName(), v.Left(bang));
            continue;
          }
        }
        if (!Collector::ReadInheritDeclaration(pair->GetName(), v, inheritNormal))
          inlineNormal.AnalyseCssProperty(pair->GetName(), v);
      }
      Collector::CMatch m;
      m.format = &inlineNormal;
      m.inherit = inheritNormal;
      m.level = Collector::emLevelInline;
      matches.push_back(m);
      m.format = &inlineImportant;
      m.inherit = inheritImportant;
      m.level = Collector::emLevelInlineImportant;
      matches.push_back(m);
    }
    combine.Combine(matches, m_bQuirks);
    auto* format = new CHtmlTagFormat();
    NameFormat(*format, e.tag);
    format->SetLine(lines.LineOf(build.positions[i]));
    format->Compute(combine, parentFormat, m_bQuirks);
    if (plain)
      cache.Add(key, hash, *format, parentFormat);
    build.leaves[i]->SetTagFormat(format);
    build.formats.push_back(format);
    m_arrElements.push_back(build.leaves[i]);
  }
  m_arrRecords = std::move(build.elements);
  m_bStale = false;
  m_pBuiltRoot = tree->GetRootNode();
  m_nBuiltTokens = list->GetCount();
  m_nBuiltReleases = list->GetTreeReleaseCount();
  return 1;
}

int CHtmlFileView::GetElementCount() {
  BuildView();
  return static_cast<int>(m_arrElements.size());
}

CHtmlTokenNode* CHtmlFileView::GetElementNode(int index) {
  BuildView();
  return index >= 0 && index < static_cast<int>(m_arrElements.size()) ? m_arrElements[index] : nullptr;
}

CHtmlTagFormat* CHtmlFileView::GetTagFormat(int index) {
  CHtmlTokenNode* node = GetElementNode(index);
  return node ? static_cast<CHtmlTagFormat*>(node->GetTagFormat()) : nullptr;
}

CHtmlTagFormat* CHtmlFileView::GetTagFormat(POSITION pos) {
  BuildView();
  for (CHtmlTokenNode* node : m_arrElements)
    if (node->GetTokenPosition() == pos)
      return static_cast<CHtmlTagFormat*>(node->GetTagFormat());
  return nullptr;
}

int CHtmlFileView::SetElementAttribute(int index, const char* name, const char* value) {
  CHtmlTokenNode* node = GetElementNode(index);
  CHtmlTagItem* tag = node ? node->GetTagItem(GetTokenList()) : nullptr;
  if (!tag || !name)
    return 0;
  const int done = value ? tag->SetAttribute(name, value) : tag->DeleteAttribute(name);
  m_bStale = true;
  return done;
}

int CHtmlFileView::IsElementSelected(int index, const char* selector) {
  BuildView();
  if (index < 0 || index >= static_cast<int>(m_arrRecords.size()))
    return 0;
  return CCssStyleCollector::MatchesSelector(selector, m_arrRecords[index], m_bQuirks);
}

int CHtmlFileView::IsQuirksMode() {
  BuildView();
  return m_bQuirks ? 1 : 0;
}

}  // namespace telvanix
