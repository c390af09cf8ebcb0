#include "telvanix/css/style_collector.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <strings.h>

#include "telvanix/css/css_pack.h"
#include "telvanix/css/css_style.h"
#include "telvanix/css/style_property.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {

namespace {

struct CAttributeTest {
  std::string name;
  std::string value;
  char op = 0;  // 0 present, '=', '~', '|', '^', '$', '*'
};

// One compound selector ("p.note#x[title]:first-child").
struct CCompound {
  int tagId = 0;  // 0: any element
  std::vector<std::string> ids;
  std::vector<std::string> classes;
  std::vector<CAttributeTest> attributes;
  bool link = false;
  bool firstChild = false;
  char combinator = 0;  // how it stands to the compound before it: ' ', '>', '+', '~'
};

bool IsNameByte(unsigned char c) {
  return c == '-' || c == '_' || c == '\\' || c >= 0x80 || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') ||
         (c >= 'A' && c <= 'Z');
}

std::string Lower(std::string s) {
  for (char& c : s)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  return s;
}

// Reads a selector; false when the rule can never apply to an element.
bool CompileSelector(const char* text, std::vector<CCompound>& out, DWORD& specificity) {
  int a = 0, b = 0, c = 0;
  const char* p = text;
  char pending = 0;
  bool any = false;
  while (*p) {
    if (*p == ' ' || *p == '\t' || *p == '\r' || *p == '\n') {
      if (any && !pending)
        pending = ' ';
      ++p;
      continue;
    }
    if (*p == '>' || *p == '+' || *p == '~') {
      if (!any)
        return false;
      pending = *p++;
      continue;
    }
    CCompound compound;
    compound.combinator = out.empty() ? 0 : (pending ? pending : ' ');
    pending = 0;
    const char* start = p;
    if (*p == '*') {
      ++p;
    } else if (IsNameByte(static_cast<unsigned char>(*p))) {
      const char* q = p;
      while (IsNameByte(static_cast<unsigned char>(*q)))
        ++q;
      compound.tagId = CHtmlTagItem::GetTagIdFromTagName(std::string(p, q).c_str(), nullptr);
      ++c;
      p = q;
    }
    for (;;) {
      if (*p == '.' || *p == '#') {
        const char kind = *p++;
        const char* q = p;
        while (IsNameByte(static_cast<unsigned char>(*q)))
          ++q;
        if (q == p)
          return false;
        (kind == '.' ? compound.classes : compound.ids).emplace_back(p, q);
        ++(kind == '.' ? b : a);
        p = q;
      } else if (*p == ':') {
        ++p;
        if (*p == ':')
          return false;  // a pseudo-element
        const char* q = p;
        while (IsNameByte(static_cast<unsigned char>(*q)))
          ++q;
        const std::string name = Lower(std::string(p, q));
        if (name == "link")
          compound.link = true;
        else if (name == "first-child")
          compound.firstChild = true;
        else
          return false;  // a state or pseudo-element no page shows by itself
        ++b;
        p = q;
      } else if (*p == '[') {
        const char* close = std::strchr(p, ']');
        if (!close)
          return false;
        std::string inside(p + 1, close);
        CAttributeTest test;
        const size_t eq = inside.find('=');
        if (eq == std::string::npos) {
          test.name = inside;
        } else {
          size_t nameEnd = eq;
          if (eq > 0 && std::strchr("~|^$*", inside[eq - 1])) {
            test.op = inside[eq - 1];
            nameEnd = eq - 1;
          } else {
            test.op = '=';
          }
          test.name = inside.substr(0, nameEnd);
          test.value = inside.substr(eq + 1);
        }
        auto trim = [](std::string& s) {
          s.erase(0, s.find_first_not_of(" \t"));
          s.erase(s.find_last_not_of(" \t") + 1);
          if (s.size() >= 2 && (s[0] == '"' || s[0] == '\'') && s.back() == s[0])
            s = s.substr(1, s.size() - 2);
        };
        trim(test.name);
        trim(test.value);
        if (test.name.empty())
          return false;
        compound.attributes.push_back(test);
        ++b;
        p = close + 1;
      } else {
        break;
      }
    }
    if (p == start)
      return false;  // a byte no selector holds
    if (*p && *p != ' ' && *p != '\t' && *p != '\r' && *p != '\n' && *p != '>' && *p != '+' && *p != '~')
      return false;
    out.push_back(std::move(compound));
    any = true;
  }
  if (out.empty() || pending)
    return false;
  auto cap = [](int n) { return static_cast<DWORD>(n > 255 ? 255 : n); };
  specificity = cap(a) << 16 | cap(b) << 8 | cap(c);
  return true;
}

bool SameName(const std::string& a, const std::string& b, bool quirks) {
  return quirks ? strcasecmp(a.c_str(), b.c_str()) == 0 : a == b;
}

bool AttributeMatches(const CAttributeTest& test, CHtmlTagItem* tag) {
  if (!tag)
    return false;
  const char* value = tag->GetAttributeValue(test.name.c_str());
  if (!value)
    return false;
  const std::string v(value);
  const std::string& w = test.value;
  switch (test.op) {
    case 0:
      return true;
    case '=':
      return v == w;
    case '~': {
      size_t i = 0;
      while (i < v.size()) {
        const size_t j = v.find_first_of(" \t\r\n\f", i);
        if (v.compare(i, (j == std::string::npos ? v.size() : j) - i, w) == 0 &&
            (j == std::string::npos ? v.size() : j) - i == w.size())
          return !w.empty();
        if (j == std::string::npos)
          break;
        i = j + 1;
      }
      return false;
    }
    case '|':
      return v == w || (v.size() > w.size() && v.compare(0, w.size(), w) == 0 && v[w.size()] == '-');
    case '^':
      return !w.empty() && v.compare(0, w.size(), w) == 0;
    case '$':
      return !w.empty() && v.size() >= w.size() && v.compare(v.size() - w.size(), w.size(), w) == 0;
    case '*':
      return !w.empty() && v.find(w) != std::string::npos;
    default:
      return false;
  }
}

bool CompoundMatches(const CCompound& compound, const CCssStyleCollector::CElement& element, bool quirks) {
  if (compound.tagId && compound.tagId != element.tagId)
    return false;
  for (const std::string& id : compound.ids)
    if (!SameName(id, element.id, quirks))
      return false;
  for (const std::string& name : compound.classes) {
    bool found = false;
    for (const std::string& have : element.classes)
      if (SameName(name, have, quirks)) {
        found = true;
        break;
      }
    if (!found)
      return false;
  }
  if (compound.link && !element.link)
    return false;
  if (compound.firstChild && element.previous)
    return false;
  for (const CAttributeTest& test : compound.attributes)
    if (!AttributeMatches(test, element.tag))
      return false;
  return true;
}

// Compounds [0, index] against the element and what stands before it.
// `budget` bounds the steps, so that long chains of descendant selectors
// over a deep tree cannot take exponential time; a spent budget is a miss.
bool ChainMatchesWithin(const std::vector<CCompound>& chain, int index, const CCssStyleCollector::CElement* element,
                        bool quirks, int& budget) {
  if (!element || --budget < 0 || !CompoundMatches(chain[index], *element, quirks))
    return false;
  if (index == 0)
    return true;
  switch (chain[index].combinator) {
    case '>':
      return ChainMatchesWithin(chain, index - 1, element->parent, quirks, budget);
    case '+':
      return ChainMatchesWithin(chain, index - 1, element->previous, quirks, budget);
    case '~':
      for (const auto* e = element->previous; e && budget > 0; e = e->previous)
        if (ChainMatchesWithin(chain, index - 1, e, quirks, budget))
          return true;
      return false;
    default:
      for (const auto* e = element->parent; e && budget > 0; e = e->parent)
        if (ChainMatchesWithin(chain, index - 1, e, quirks, budget))
          return true;
      return false;
  }
}

bool ChainMatches(const std::vector<CCompound>& chain, int index, const CCssStyleCollector::CElement* element,
                  bool quirks) {
  int budget = 20000;
  return ChainMatchesWithin(chain, index, element, quirks, budget);
}

// The value without a trailing "!important"; `important` tells whether it
// had one.
CString SplitImportant(const CString& value, bool& important) {
  important = false;
  const char* text = value;
  int end = value.GetLength();
  while (end > 0 && (text[end - 1] == ' ' || text[end - 1] == '\t'))
    --end;
  if (end >= 9 && strncasecmp(text + end - 9, "important", 9) == 0) {
    int bang = end - 9;
    while (bang > 0 && (text[bang - 1] == ' ' || text[bang - 1] == '\t'))
      --bang;
    if (bang > 0 && text[bang - 1] == '!') {
      important = true;
      int cut = bang - 1;
      while (cut > 0 && (text[cut - 1] == ' ' || text[cut - 1] == '\t'))
        --cut;
      return CString(text, cut);
    }
  }
  return value;
}

}  // namespace

struct CCssStyleCollector::CRuleSet::CRule {
  std::vector<CCompound> chain;
  DWORD specificity = 0;
  int line = 0;
  CCssStyleFormat normal;
  CCssStyleFormat important;
  CInheritMask inheritNormal;
  CInheritMask inheritImportant;
};

struct CCssStyleCollector::CRuleSet::CHead {
  const std::vector<CCompound>* chain = nullptr;
  DWORD specificity = 0;
  int line = 0;
  bool normal = false;     // normal declarations or inherit marks
  bool important = false;  // the same for !important
  bool inherits = false;   // any inherit mark
  bool always = false;     // one compound of no test but its tag: found is matched
};

int CCssStyleCollector::ReadInheritDeclaration(const char* name, const char* value, CInheritMask& mask) {
  if (!name || !value)
    return 0;
  CString word(value);
  word.Trim();
  if (word.CompareNoCase("inherit") != 0)
    return 0;
  const int id = CCssPropertyNames::GetPropertyNameId(name);
  if (id <= 0 || id >= static_cast<int>(mask.size()))
    return 0;
  // A shorthand inherits through its parts, as the format stores them.
  int parts[16];
  const int count = CCssStyleFormat::GetPropertyParts(id, parts, 16);
  for (int i = 0; i < count && i < 16; ++i)
    mask.set(static_cast<size_t>(parts[i]));
  if (count > 0)
    return 1;
  mask.set(static_cast<size_t>(id));
  return 1;
}

CCssStyleCollector::CRuleSet::CRuleSet(std::unique_ptr<CCssPack> pack, const char* file, const char* text,
                                       int lineBase, EmLevel level)
    : m_pack(std::move(pack)), m_strFile(file), m_level(level) {
  if (!m_pack)
    return;
  const char* source = text ? text : "";
  size_t searchFrom = 0;
  size_t counted = 0;
  int line = lineBase;
  const size_t sourceLength = std::strlen(source);
  std::unordered_map<int, std::vector<int>> byTag;
  POSITION pos = nullptr;
  for (CCssStyle* style = m_pack->GetFirstStyle(pos); style; style = m_pack->GetNextStyle(pos)) {
    // The rule's line: where its body, as written, stands in the text.
    std::string body(style->GetBodyText());
    const size_t marker = body.find("\n/* Css Append */\n");
    if (marker != std::string::npos)
      body.resize(marker);
    const char* found = body.empty() ? nullptr : std::strstr(source + searchFrom, body.c_str());
    if (found) {
      searchFrom = static_cast<size_t>(found - source);
      for (; counted < searchFrom && counted < sourceLength; ++counted)
        if (source[counted] == '\n')
          ++line;
    }
    CRule rule;
    rule.line = line;
    const CString name = style->GetStyleName();
    if (!CompileSelector(name, rule.chain, rule.specificity))
      continue;
    const CCssStyleProperty* properties = style->GetStyleProperty();
    int index = 0;
    properties->GetFirstPropertyPair(index);
    while (const CCssStyleProperty::CPropertyPair* pair = properties->GetNextPropertyPair(index)) {
      bool important = false;
      const CString value = SplitImportant(pair->GetValue(), important);
      if (!ReadInheritDeclaration(pair->GetName(), value, important ? rule.inheritImportant : rule.inheritNormal))
        (important ? rule.important : rule.normal).AnalyseCssProperty(pair->GetName(), value);
    }
    if (rule.normal.IsDefault() && rule.important.IsDefault() && rule.inheritNormal.none() &&
        rule.inheritImportant.none())
      continue;
    const int at = static_cast<int>(m_rules.size());
    const CCompound& last = rule.chain.back();
    if (!last.ids.empty()) {
      m_byId[last.ids.front()].push_back(at);
      m_byIdLower[Lower(last.ids.front())].push_back(at);
    } else if (!last.classes.empty()) {
      m_byClass[last.classes.front()].push_back(at);
      m_byClassLower[Lower(last.classes.front())].push_back(at);
    }
    else if (last.tagId)
      byTag[last.tagId].push_back(at);
    else
      m_universal.push_back(at);
    m_rules.push_back(std::move(rule));
  }
  m_heads.resize(m_rules.size());
  for (size_t i = 0; i < m_rules.size(); ++i) {
    const CRule& rule = m_rules[i];
    CHead& head = m_heads[i];
    head.chain = &rule.chain;
    head.specificity = rule.specificity;
    head.line = rule.line;
    head.normal = !rule.normal.IsDefault() || rule.inheritNormal.any();
    head.important = !rule.important.IsDefault() || rule.inheritImportant.any();
    head.inherits = rule.inheritNormal.any() || rule.inheritImportant.any();
    const CCompound& only = rule.chain.front();
    head.always = rule.chain.size() == 1 && only.ids.empty() && only.classes.empty() && only.attributes.empty() &&
                  !only.link && !only.firstChild;
  }
  m_byTag.assign(std::make_move_iterator(byTag.begin()), std::make_move_iterator(byTag.end()));
  // Open addressing over a table at most a quarter full: most look-ups end
  // at the first slot, without the mispredicted steps of a binary search.
  size_t slots = 16;
  while (slots < 4 * m_byTag.size())
    slots *= 2;
  m_tagSlots.assign(slots, {0, -1});
  for (size_t i = 0; i < m_byTag.size(); ++i) {
    size_t at = TagSlot(m_byTag[i].first, slots);
    while (m_tagSlots[at].second >= 0)
      at = (at + 1) & (slots - 1);
    m_tagSlots[at] = {m_byTag[i].first, static_cast<int>(i)};
  }
}

size_t CCssStyleCollector::CRuleSet::TagSlot(int tagId, size_t slots) {
  return static_cast<size_t>((static_cast<std::uint64_t>(static_cast<DWORD>(tagId)) * 0x9E3779B97F4A7C15ull) >> 40) &
         (slots - 1);
}

const std::vector<int>* CCssStyleCollector::CRuleSet::FindTagRules(int tagId) const {
  const size_t slots = m_tagSlots.size();
  for (size_t at = TagSlot(tagId, slots);; at = (at + 1) & (slots - 1)) {
    const std::pair<int, int>& slot = m_tagSlots[at];
    if (slot.second < 0)
      return nullptr;
    if (slot.first == tagId)
      return &m_byTag[static_cast<size_t>(slot.second)].second;
  }
}

CCssStyleCollector::CRuleSet::~CRuleSet() = default;

int CCssStyleCollector::CRuleSet::GetRuleCount() const { return static_cast<int>(m_rules.size()); }

CCssStyleCollector::CCssStyleCollector() = default;
CCssStyleCollector::~CCssStyleCollector() = default;

void CCssStyleCollector::AddRuleSet(std::shared_ptr<const CRuleSet> rules) {
  if (rules)
    m_sets.push_back(std::move(rules));
}

void CCssStyleCollector::Clear() { m_sets.clear(); }

int CCssStyleCollector::MatchesSelector(const char* selector, const CElement& element, bool quirks) {
  if (!selector)
    return 0;
  const std::string all(selector);
  size_t start = 0;
  while (start <= all.size()) {
    size_t comma = all.find(',', start);
    if (comma == std::string::npos)
      comma = all.size();
    std::vector<CCompound> chain;
    DWORD specificity = 0;
    if (CompileSelector(all.substr(start, comma - start).c_str(), chain, specificity) &&
        ChainMatches(chain, static_cast<int>(chain.size()) - 1, &element, quirks))
      return 1;
    start = comma + 1;
  }
  return 0;
}

void CCssStyleCollector::Collect(const CElement& element, std::vector<CMatch>& out) const {
  thread_local std::vector<int> candidates;
  // The names as the sets' maps hold them, made once for every set.
  thread_local std::string lowerId;
  thread_local std::vector<std::string> lowerClasses;
  if (m_bQuirks) {
    lowerId = Lower(element.id);
    lowerClasses.resize(element.classes.size());
    for (size_t i = 0; i < element.classes.size(); ++i)
      lowerClasses[i] = Lower(element.classes[i]);
  }
  for (size_t s = 0; s < m_sets.size(); ++s) {
    const CRuleSet& set = *m_sets[s];
    // The lists of rules the element's keys name; each is in rule order.
    const std::vector<int>* first = nullptr;
    int count = 0;
    auto take = [&](const std::vector<int>* list) {
      if (!list || list->empty())
        return;
      if (count == 1)
        candidates.assign(first->begin(), first->end());
      if (count >= 1)
        candidates.insert(candidates.end(), list->begin(), list->end());
      else
        first = list;
      ++count;
    };
    auto findIn = [](const auto& map, const auto& key) -> const std::vector<int>* {
      if (map.empty())
        return nullptr;  // spares hashing the name
      auto it = map.find(key);
      return it == map.end() ? nullptr : &it->second;
    };
    if (!element.id.empty())
      take(m_bQuirks ? findIn(set.m_byIdLower, lowerId) : findIn(set.m_byId, element.id));
    for (size_t i = 0; i < element.classes.size(); ++i)
      take(m_bQuirks ? findIn(set.m_byClassLower, lowerClasses[i]) : findIn(set.m_byClass, element.classes[i]));
    take(set.FindTagRules(element.tagId));
    take(&set.m_universal);
    if (count == 0)
      continue;
    // Merged lists are sorted, and a class named twice on the element would
    // find a rule twice; a single list is walked where it is.
    if (count > 1) {
      std::sort(candidates.begin(), candidates.end());
      candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    }
    const std::vector<int>& walk = count > 1 ? candidates : *first;
    for (int index : walk) {
      const CRuleSet::CHead& head = set.m_heads[index];
      if (!head.always &&
          !ChainMatches(*head.chain, static_cast<int>(head.chain->size()) - 1, &element, m_bQuirks))
        continue;
      const CRuleSet::CRule& rule = set.m_rules[index];
      // Filled in place: a match copied in from a local would be read back
      // before its stores have landed.
      auto add = [&](const CCssStyleFormat* format, const CInheritMask* inherit, EmLevel level) {
        CMatch& match = out.emplace_back();
        match.format = format;
        if (inherit)
          match.inherit = *inherit;
        match.level = level;
        match.specificity = head.specificity;
        match.order = static_cast<DWORD>(s) << 20 | static_cast<DWORD>(index);
        match.file = set.m_strFile;
        match.line = head.line;
      };
      if (head.normal)
        add(&rule.normal, head.inherits ? &rule.inheritNormal : nullptr, set.m_level);
      if (head.important)
        add(&rule.important, head.inherits ? &rule.inheritImportant : nullptr,
            set.m_level == emLevelDefault ? emLevelDefaultImportant : emLevelAuthorImportant);
    }
  }
}

}  // namespace telvanix
