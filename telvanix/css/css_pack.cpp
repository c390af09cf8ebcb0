#include "telvanix/css/css_pack.h"

#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "telvanix/css/internal/css_scan_core.h"
#include "telvanix/css/css_style.h"
#include "telvanix/foundation/hash_fold.h"
#include "telvanix/foundation/path_utils.h"
#include "telvanix/foundation/text_utils.h"

namespace telvanix {

// The selectors of one rule: their texts one after another in one buffer,
// reused from rule to rule.
struct CCssPack::CRuleSelectors {
  void Clear() {
    text.clear();
    ranges.clear();
    current = 0;
  }
  bool CurrentEmpty() const { return text.size() == current; }
  // A piece of the current selector; pieces are joined with one space.
  void AddPiece(const unsigned char* p, const unsigned char* e) {
    if (!CurrentEmpty())
      text += ' ';
    text.append(reinterpret_cast<const char*>(p), static_cast<size_t>(e - p));
  }
  // Ends the current selector, kept when it holds text.
  void EndSelector() {
    if (!CurrentEmpty())
      ranges.emplace_back(current, text.size() - current);
    current = text.size();
  }

  std::string text;
  std::vector<std::pair<size_t, size_t>> ranges;  // offset, length
  size_t current = 0;                             // where the current selector starts
};

// First style line of each name hash: open addressing over a power-of-two
// table, a hash of 0 (a name of no letters) included.
class CCssPack::CStyleIndex {
 public:
  CCssStyle* Find(DWORD hash) const {
    if (m_slots.empty())
      return nullptr;
    for (size_t i = Mix(hash) & m_mask;; i = (i + 1) & m_mask) {
      const Slot& slot = m_slots[i];
      if (!slot.style)
        return nullptr;
      if (slot.hash == hash)
        return slot.style;
    }
  }
  // Keeps the first style of a hash.
  void Add(DWORD hash, CCssStyle* style) {
    if ((m_count + 1) * 2 > m_slots.size())
      Grow();
    for (size_t i = Mix(hash) & m_mask;; i = (i + 1) & m_mask) {
      Slot& slot = m_slots[i];
      if (!slot.style) {
        slot.hash = hash;
        slot.style = style;
        ++m_count;
        return;
      }
      if (slot.hash == hash)
        return;
    }
  }

 private:
  struct Slot {
    DWORD hash = 0;
    CCssStyle* style = nullptr;
  };
  static size_t Mix(DWORD hash) { return static_cast<size_t>(hash * 0x9E3779B1u) >> 7; }
  void Grow() {
    std::vector<Slot> old;
    old.swap(m_slots);
    m_slots.assign(old.empty() ? 256 : old.size() * 2, Slot());
    m_mask = m_slots.size() - 1;
    m_count = 0;
    for (const Slot& slot : old)
      if (slot.style)
        Add(slot.hash, slot.style);
  }

  std::vector<Slot> m_slots;
  size_t m_mask = 0;
  size_t m_count = 0;
};

// What BuildList knows while it runs. The parser retries unreadable text one
// byte at a time; a rule's outcome depends only on where its scan stands, so
// positions a failed scan passed through are remembered and a later attempt
// that reaches one gives up at once instead of scanning the rest again.
struct CCssPack::CBuildState {
  enum : unsigned char {
    kDeadSelector = 0x1,  // a selector run starting here leads to no rule
    kDeadContext = 0x2,   // a contextual selector run starting here does
    kDeadBlock = 0x4,     // the block opened here is not closed
    kDeadBody = 0x8,      // a declaration block read on from here is not closed
    kDeadAtBlock = 0x10,  // an at-rule block opened here is not closed
  };

  CBuildState(const unsigned char* b, const unsigned char* e) : begin(b), end(e) {}

  bool IsDead(const unsigned char* p, unsigned char bit) const {
    return !dead.empty() && p >= begin && p < end && (dead[static_cast<size_t>(p - begin)] & bit);
  }
  void Mark(const unsigned char* p, unsigned char bit) {
    if (p < begin || p >= end)
      return;
    if (dead.empty())
      dead.assign(static_cast<size_t>(end - begin), 0);
    dead[static_cast<size_t>(p - begin)] |= bit;
  }

  const unsigned char* begin;
  const unsigned char* end;
  std::vector<unsigned char> dead;
  // Positions the current attempt passed through, and its selector runs.
  std::vector<std::pair<const unsigned char*, unsigned char>> visited;
  std::vector<std::pair<const unsigned char*, const unsigned char*>> runs;
  // First style line of each name hash, so merging needs no list walk.
  bool useIndex = false;
  CStyleIndex firstByHash;
  // The selectors of the rule being read, one after another.
  CRuleSelectors selectors;
};

CCssPack::CCssPack(const char* path, const CByteString* content)
    : m_listLines(10), m_nPackKind(3), m_bParsed(0), m_pBuildState(nullptr) {
  if (content && content->GetLength() > 0)
    m_content.Assign(content->GetContent(), content->GetLength());
  if (path)
    m_strPackPathName = GetNormalizedFullPathName(path, nullptr);
  if (path && *path) {
    char ext[kMaxExt];
    SplitPath(path, nullptr, nullptr, nullptr, ext);
    if (strcasecmp(ext, ".css") == 0) {
      m_nPackKind = 1;
      m_content.LoadFromFile(m_strPackPathName.GetString());
    } else {
      m_nPackKind = 2;
    }
  }
}

CCssPack::CCssPack(const CByteString* content) : CCssPack(nullptr, content) {}

CCssPack::~CCssPack() { ClearAll(); }

int CCssPack::ClearAll() {
  POSITION pos = m_listLines.GetHeadPosition();
  while (pos)
    delete m_listLines.GetNext(pos);
  m_listLines.RemoveAll();
  m_bParsed = 0;
  return 1;
}

int CCssPack::Parse() {
  if (m_content.GetLength() <= 0 || !m_content.GetContent())
    return 0;
  ClearAll();
  const unsigned char* begin = m_content.GetContent();
  m_bParsed = BuildList(begin, begin + m_content.GetLength());
  return m_bParsed;
}

int CCssPack::AppendIndentStringToLastToken(const unsigned char*, int) { return 1; }

void CCssPack::AppendLine(CCssLogicalLine* line) { m_listLines.AddTail(line); }

int CCssPack::BuildList(const unsigned char* begin, const unsigned char* end) {
  if (!begin || !end || end < begin)
    return 0;
  CBuildState state(begin, end);
  state.useIndex = IsDBCS() == 0;
  try {
    if (state.useIndex) {
      POSITION pos = m_listLines.GetHeadPosition();
      while (pos) {
        CCssLogicalLine* line = m_listLines.GetNext(pos);
        if (line && line->IsStyle()) {
          CCssStyle* style = static_cast<CCssStyle*>(line);
          state.firstByHash.Add(style->GetStyleNameHash(), style);
        }
      }
    }
    m_pBuildState = &state;
    const unsigned char* p = begin;
    while (p < end) {
      const unsigned char* q = css_scan::SkipSpaces(p, end, false);
      if (q > p) {
        AppendIndentStringToLastToken(p, static_cast<int>(q - p));
        p = q;
      }
      if (p >= end || *p == 0)
        break;
      const unsigned char* r;
      if (*p == '@')
        r = CommitLglAtStatement(p, end);
      else if (*p == '/' || *p == '<')
        r = css_scan::SkipSpaces(p, end, true);  // a comment, or "<!--" hiding the sheet
      else
        r = CommitLglCssDefination(p, end);
      p = r > p ? r : p + 1;
    }
  } catch (...) {
    // Out of memory: what was read so far stays.
  }
  m_pBuildState = nullptr;
  return 1;
}

const unsigned char* CCssPack::CommitLglAtStatement(const unsigned char* begin, const unsigned char* end) {
  if (!begin || !end || begin >= end || *begin != '@')
    return begin;
  const unsigned char* q = CssSkipAtKeyword(begin, end);
  q = CssSkipSpaces(q, end, 1);
  q = CssSkipAny(q, end, kCssFlagsAtPrelude);
  q = CssSkipSpaces(q, end, 1);
  if (q < end && *q == '{')
    q = SkipAtRuleBlock(q, end);
  else if (q < end && *q == ';')
    ++q;
  q = CssSkipSpaces(q, end, 1);

  const char* text = reinterpret_cast<const char*>(begin);
  const int length = static_cast<int>(q - begin);
  CCssLogicalLine* line;
  if (length >= 7 && strncasecmp(text, "@import", 7) == 0)
    line = new CCssLglAtImport(text, length);
  else
    line = new CCssLglAtUnknown(text, length);
  line->Analyse();
  AppendLine(line);
  return q;
}

const unsigned char* CCssPack::SkipAtRuleBlock(const unsigned char* p, const unsigned char* end) {
  CBuildState* state = m_pBuildState;
  if (!state || end != state->end || IsDBCS())
    return CssSkipBlock(p, end);
  if (state->IsDead(p, CBuildState::kDeadAtBlock))
    return p;
  const unsigned char* r = CssSkipBlock(p, end);
  if (r != p)
    return r;
  state->Mark(p, CBuildState::kDeadAtBlock);
  // Not closed. Walk it again as CssSkipBlock did: the block of an inner "{"
  // that leaves the depth at d closes only if a later "}" brings the depth
  // below d, so the inner blocks that cannot close are remembered and nested
  // unclosed at-rules are not each scanned to the end again.
  std::vector<std::pair<const unsigned char*, int>> opens;  // position, depth inside
  std::vector<int> lowest(1, INT32_MAX);                      // lowest depth after each open
  int depth = 1;
  for (const unsigned char* x = p + 1; x < end && *x != 0;) {
    if (*x == '/') {
      const unsigned char* c = CssSkipComment(x, end);
      if (c > x) {
        x = c;
        continue;
      }
    } else if (*x == '{') {
      opens.emplace_back(x, ++depth);
      lowest.push_back(INT32_MAX);
    } else if (*x == '}') {
      --depth;
      lowest.back() = std::min(lowest.back(), depth);
    }
    ++x;
  }
  int running = INT32_MAX;
  for (size_t i = opens.size(); i-- > 0;) {
    running = std::min(running, lowest[i + 1]);
    if (running >= opens[i].second)
      state->Mark(opens[i].first, CBuildState::kDeadAtBlock);
  }
  return p;
}

const unsigned char* CCssPack::CommitLglCssDefination(const unsigned char* begin, const unsigned char* end) {
  using namespace css_scan;
  if (!begin || !end || begin >= end)
    return begin;
  CBuildState* state = m_pBuildState;
  if (state && (begin < state->begin || end != state->end))
    state = nullptr;  // a call on other text than the one being built
  if (state) {
    state->visited.clear();
    state->runs.clear();
  }
  const UINT cp = LeadCodePage();
  auto fail = [&]() -> const unsigned char* {
    if (state) {
      for (const auto& v : state->visited)
        state->Mark(v.first, v.second);
      // Every byte of a selector run before its first quoted stretch ends
      // the run at the same place, so it fails alike; not so under a
      // double-byte code page, where a start may fall on a trail byte.
      if (!cp) {
        for (const auto& run : state->runs) {
          for (const unsigned char* x = run.first; x < run.second; ++x) {
            state->Mark(x, CBuildState::kDeadSelector);
            if (ClassAt(x) & kQuoteByte)
              break;
          }
        }
      }
    }
    return begin;
  };

  // 1. The selector list.
  CRuleSelectors localSelectors;
  CRuleSelectors& selectors = state ? state->selectors : localSelectors;
  selectors.Clear();
  const unsigned char* s = begin;
  const unsigned char* brace = nullptr;
  for (;;) {
    if (state) {
      if (state->IsDead(s, CBuildState::kDeadSelector))
        return fail();
      state->visited.emplace_back(s, CBuildState::kDeadSelector);
    }
    const unsigned char* q = SkipAny(s, end, kCssFlagsSelector, cp);
    if (state)
      state->runs.emplace_back(s, q);
    if (q < end && *q == ' ') {
      // A contextual selector ("div p"): taken whole, as written.
      const unsigned char* cur = q;
      for (;;) {
        const unsigned char* t = SkipSpaces(cur, end, true);
        if (t < end && (*t == '{' || *t == ','))  {
          cur = t;
          break;
        }
        if (state) {
          if (state->IsDead(t, CBuildState::kDeadContext))
            return fail();
          state->visited.emplace_back(t, CBuildState::kDeadContext);
        }
        const unsigned char* u = SkipSpaces(SkipAny(t, end, kCssFlagsSelector, cp), end, true);
        if (u <= cur)
          break;
        cur = u;
      }
      if (!(cur < end && (*cur == '{' || *cur == ',')))
        return fail();
      q = cur;
    }
    const unsigned char* t = SkipSpaces(q, end, true);
    if (q > s)
      selectors.AddPiece(s, q);
    if (t < end && (*t == ',' || *t == '{')) {
      selectors.EndSelector();
      if (*t == '{') {
        brace = t;
        break;
      }
      t = SkipSpaces(t + 1, end, true);
    }
    if (t < end && *t == 0)
      return fail();  // nothing after a zero byte is stylesheet text
    if (t <= s)
      t = s + 1;
    if (t >= end)
      return fail();
    s = t;
  }

  // 2. The declaration block.
  if (state) {
    if (state->IsDead(brace, CBuildState::kDeadBlock))
      return fail();
    state->visited.emplace_back(brace, CBuildState::kDeadBlock);
  }
  const unsigned char* b = brace + 1;
  const bool jump = state && !cp;
  for (;;) {
    if (state) {
      if (state->IsDead(b, CBuildState::kDeadBody))
        return fail();
      state->visited.emplace_back(b, CBuildState::kDeadBody);
    }
    b = SkipSpaces(b, end, true);
    if (b >= end || *b == 0)
      return fail();
    if (*b == '}')
      break;
    const unsigned char* d = SkipDeclaration(b, end, cp);
    if (d > b) {
      b = d;
      if (b < end && *b == ';')
        ++b;
    } else if (jump) {
      // Every later start inside the same name run, before any quoted
      // stretch, ends that run at the same place and fails alike: stepping
      // byte by byte would only repeat this failure, so go to its end.
      const unsigned char* q = SkipAny(b, end, kCssFlagsPropertyName | emCssStopSemicolon | emCssStopCloseBrace, cp);
      const unsigned char* x = b + 1;
      while (x < q && *x != '\'' && *x != '"' && *x != '(' && *x != '[' && *x != '/' && *x != '<' && *x != '-')
        ++x;
      b = (ClassAt(b) & kQuoteByte) ? b + 1 : x;
    } else {
      ++b;
    }
  }
  const unsigned char* closing = b;

  // 3. One style line per selector, sharing the body read once: the first
  // style reads it, the others copy its list. All are made before any is
  // added, since adding may merge one into an earlier rule and delete it.
  const size_t count = selectors.ranges.size();
  if (count) {
    const char* body = reinterpret_cast<const char*>(brace + 1);
    const int bodyLength = static_cast<int>(closing - brace - 1);
    std::vector<std::unique_ptr<CCssStyle>> made;
    made.reserve(count);
    for (size_t i = 0; i < count; ++i) {
      made.emplace_back(new CCssStyle());
      const auto& range = selectors.ranges[i];
      made.back()->SetParsedRule(selectors.text.data() + range.first, static_cast<int>(range.second), body,
                                 bodyLength, i ? &made.front()->m_properties : nullptr);
    }
    for (auto& style : made)
      AddStyleItemOwned(style.release());
  }
  return SkipSpaces(closing + 1, end, true);
}

CCssStyle* CCssPack::FindSameStyle(CCssStyle* style) {
  CBuildState* state = m_pBuildState;
  if (state && state->useIndex) {
    return state->firstByHash.Find(style->GetStyleNameHash());
  }
  POSITION pos = m_listLines.GetHeadPosition();
  while (pos) {
    CCssLogicalLine* line = m_listLines.GetNext(pos);
    if (line && line->IsStyle() && static_cast<CCssStyle*>(line)->IsSameStyleName(style))
      return static_cast<CCssStyle*>(line);
  }
  return nullptr;
}

void CCssPack::AddStyleItemOwned(CCssStyle* style) {
  CCssStyle* same = FindSameStyle(style);
  if (same) {
    same->InheritNew(style);
    delete style;
    return;
  }
  AppendLine(style);
  if (m_pBuildState && m_pBuildState->useIndex)
    m_pBuildState->firstByHash.Add(style->GetStyleNameHash(), style);
}

int CCssPack::AddStyleItem(CCssStyle* style) {
  if (!style)
    return 0;
  CCssStyle* copy = new CCssStyle();
  copy->Copy(style);
  AddStyleItemOwned(copy);
  return 1;
}

int CCssPack::Save(CByteString& out) {
  std::string text;
  POSITION pos = m_listLines.GetHeadPosition();
  while (pos) {
    CCssLogicalLine* line = m_listLines.GetNext(pos);
    if (!line || line->IsRemovedLine())
      continue;
    const CString printable = line->GetPrintableString(this);
    text.append(printable.GetString(), static_cast<size_t>(printable.GetLength()));
    text.append("\r\n", 2);
  }
  out.Empty();
  if (!text.empty())
    out.Assign(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  return 1;
}

int CCssPack::Save(const char* path) {
  CString target;
  if (path)
    target = path;
  else if (m_nPackKind == 1)
    target = m_strPackPathName;
  if (target.IsEmpty())
    return 0;
  try {
    CByteString bytes;
    Save(bytes);
    return bytes.SaveToFile(target.GetString()) ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

CCssStyle* CCssPack::GetNextStyle(POSITION& pos) {
  while (pos) {
    CCssLogicalLine* line = m_listLines.GetNext(pos);
    if (line && line->IsStyle() && !line->IsRemovedLine())
      return static_cast<CCssStyle*>(line);
  }
  return nullptr;
}

CCssStyle* CCssPack::GetFirstStyle(POSITION& pos) {
  pos = m_listLines.GetHeadPosition();
  return GetNextStyle(pos);
}

CCssStyle* CCssPack::GetStyle(const char* name) {
  if (!name)
    return nullptr;
  POSITION pos = m_listLines.GetHeadPosition();
  while (pos) {
    CCssLogicalLine* line = m_listLines.GetNext(pos);
    if (line && line->IsStyle() && static_cast<CCssStyle*>(line)->IsSameStyleName(name))
      return static_cast<CCssStyle*>(line);
  }
  return nullptr;
}

CString CCssPack::GetFilePathName(const char* name) const {
  if (m_strPackPathName.IsEmpty())
    return CString();
  if (!name)
    return m_strPackPathName;
  return GetNormalizedFullPathName(name, m_strPackPathName.GetString());
}

}  // namespace telvanix
