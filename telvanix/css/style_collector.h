// Style collection: the rules of a stylesheet compiled for matching
// (CCssStyleCollector::CRuleSet), and the collector that finds, for one
// element of a page, every rule of the page's sheets that applies to it,
// with its cascade level, specificity and source order.
//
// Choices made here:
// - A rule's selector is read from its style name: type, "*", ".class",
//   "#id", "[attr]", "[attr=v]" (also ~=, |=, ^=, $=, *=), the pseudo-classes
//   ":link" (an A with href) and ":first-child", and the descendant, child
//   (">"), adjacent ("+") and sibling ("~") combinators. A rule with any
//   other pseudo-class or a pseudo-element (":visited", ":hover",
//   ":first-line", "::before"...) never applies to an element itself.
// - "!important" ends a value: a rule keeps two formats, the normal and the
//   important declarations.
// - In quirks mode class and id names match without regard to case.
// - Rules of the same selector that the stylesheet parser merged count at
//   the place of the first one.
#pragma once

#include <bitset>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "telvanix/css/style_format.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CCssPack;
class CHtmlTagItem;

class TELVANIX_API CCssStyleCollector {
 public:
  // Cascade levels, lowest first. Presentational attributes are author
  // declarations placed before every author rule.
  enum EmLevel : int {
    emLevelDefault = 0,
    emLevelDefaultLink = 1,  // BODY link colour over the tag defaults
    emLevelAttribute = 2,
    emLevelAuthor = 3,
    emLevelInline = 4,
    emLevelAuthorImportant = 5,
    emLevelInlineImportant = 6,
    emLevelDefaultImportant = 7,
  };

  // One element as the selectors see it. The view fills these in document
  // order; parent and previous sibling are elements of the same walk.
  struct CElement {
    int tagId = 0;             // CHtmlTagItem::GetTagId
    CHtmlTagItem* tag = nullptr;  // for attribute selectors
    const CElement* parent = nullptr;
    const CElement* previous = nullptr;  // previous sibling element
    std::string id;
    std::vector<std::string> classes;
    bool link = false;  // an A with href
  };

  // A compiled stylesheet: shared by every page that uses it.
  class TELVANIX_API CRuleSet {
   public:
    // Compiles every style rule of the pack. `file` names the origin of
    // its rules ("" for the tag defaults); `lineBase` is the line of the
    // pack's first byte in that file; `text` is the text the pack was
    // parsed from (for rule lines). The pack is kept.
    CRuleSet(std::unique_ptr<CCssPack> pack, const char* file, const char* text, int lineBase, EmLevel level);
    ~CRuleSet();
    CRuleSet(const CRuleSet&) = delete;
    CRuleSet& operator=(const CRuleSet&) = delete;

    int GetRuleCount() const;
    const CString& GetFile() const { return m_strFile; }
    CCssPack* GetPack() const { return m_pack.get(); }

   private:
    friend class CCssStyleCollector;
    struct CRule;
    // What matching reads of every candidate rule, apart from the bulky
    // formats, so that a look at a rule touches one small record.
    struct CHead;
    std::unique_ptr<CCssPack> m_pack;
    CString m_strFile;
    EmLevel m_level;
    std::vector<CRule> m_rules;
    std::vector<CHead> m_heads;  // one a rule
    // Rules by the key of their last compound: id, class, tag, or none.
    std::unordered_map<std::string, std::vector<int>> m_byId;
    std::unordered_map<std::string, std::vector<int>> m_byClass;
    // The same by lower-case name, for quirks mode.
    std::unordered_map<std::string, std::vector<int>> m_byIdLower;
    std::unordered_map<std::string, std::vector<int>> m_byClassLower;
    // By tag id; every element looks here, through m_tagSlots.
    std::vector<std::pair<int, std::vector<int>>> m_byTag;
    // (tag id, index into m_byTag) by TagSlot of the id; -1: an empty slot.
    std::vector<std::pair<int, int>> m_tagSlots;
    static size_t TagSlot(int tagId, size_t slots);
    // The rules whose last compound names the tag; null when none.
    const std::vector<int>* FindTagRules(int tagId) const;
    std::vector<int> m_universal;
  };

  // Properties (by CCssPropertyNames identifier) a block says "inherit" for.
  using CInheritMask = std::bitset<128>;

  // One declaration block that applies to an element.
  struct CMatch {
    const CCssStyleFormat* format = nullptr;
    CInheritMask inherit;
    EmLevel level = emLevelDefault;
    DWORD specificity = 0;
    DWORD order = 0;  // sheet sequence and rule index
    const char* file = nullptr;  // "" for the tag defaults; the rule set keeps it
    int line = 0;
  };

  CCssStyleCollector();
  ~CCssStyleCollector();

  // Sheets in cascade order (imports before the sheet that imports them).
  void AddRuleSet(std::shared_ptr<const CRuleSet> rules);
  void Clear();
  void SetQuirksMode(bool quirks) { m_bQuirks = quirks; }
  bool IsQuirksMode() const { return m_bQuirks; }
  const std::vector<std::shared_ptr<const CRuleSet>>& GetRuleSets() const { return m_sets; }

  // When the value is "inherit", marks the property (a shorthand: its
  // parts) in `mask` and gives 1; the format cannot hold that keyword.
  static int ReadInheritDeclaration(const char* name, const char* value, CInheritMask& mask);

  // 1 when the selector (or one of a comma-separated list) applies to the
  // element; 0 for a selector that cannot be read.
  static int MatchesSelector(const char* selector, const CElement& element, bool quirks);

  // Appends the declarations of every rule that applies to `element`,
  // normal and important, in no particular order.
  void Collect(const CElement& element, std::vector<CMatch>& out) const;

 private:
  std::vector<std::shared_ptr<const CRuleSet>> m_sets;
  bool m_bQuirks = false;
};

}  // namespace telvanix
