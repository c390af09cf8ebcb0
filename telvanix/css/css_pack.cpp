#include "telvanix/css/css_pack.h"

#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "telvanix/css/css_style.h"
#include "telvanix/foundation/hash_fold.h"
#include "telvanix/foundation/path_utils.h"
#include "telvanix/foundation/text_utils.h"

namespace telvanix {

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
  std::unordered_map<DWORD, CCssStyle*> firstByHash;
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
          state.firstByHash.emplace(style->GetStyleNameHash(), style);
        }
      }
    }
    m_pBuildState = &state;
    const unsigned char* p = begin;
    while (p < end) {
      const unsigned char* q = CssSkipSpaces(p, end, 0);
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
        r = CssSkipSpaces(p, end, 1);  // a comment, or "<!--" hiding the sheet
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
  if (!begin || !end || begin >= end)
    return begin;
  CBuildState* state = m_pBuildState;
  if (state && (begin < state->begin || end != state->end))
    state = nullptr;  // a call on other text than the one being built
  if (state) {
    state->visited.clear();
    state->runs.clear();
  }
  auto fail = [&]() -> const unsigned char* {
    if (state) {
      for (const auto& v : state->visited)
        state->Mark(v.first, v.second);
      // Every byte of a selector run before its first quoted stretch ends
      // the run at the same place, so it fails alike; not so under a
      // double-byte code page, where a start may fall on a trail byte.
      if (!IsDBCS()) {
        for (const auto& run : state->runs) {
          for (const unsigned char* x = run.first; x < run.second; ++x) {
            const unsigned char ch = *x;
            state->Mark(x, CBuildState::kDeadSelector);
            if (ch == '\'' || ch == '"' || ch == '(' || ch == '[')
              break;
          }
        }
      }
    }
    return begin;
  };

  // 1. The selector list.
  std::vector<CString> selectors;
  CString buffer;
  const unsigned char* s = begin;
  const unsigned char* brace = nullptr;
  for (;;) {
    if (state) {
      if (state->IsDead(s, CBuildState::kDeadSelector))
        return fail();
      state->visited.emplace_back(s, CBuildState::kDeadSelector);
    }
    const unsigned char* q = CssSkipAny(s, end, kCssFlagsSelector);
    if (state)
      state->runs.emplace_back(s, q);
    if (q < end && *q == ' ') {
      // A contextual selector ("div p"): taken whole, as written.
      const unsigned char* cur = q;
      for (;;) {
        const unsigned char* t = CssSkipSpaces(cur, end, 1);
        if (t < end && (*t == '{' || *t == ','))  {
          cur = t;
          break;
        }
        if (state) {
          if (state->IsDead(t, CBuildState::kDeadContext))
            return fail();
          state->visited.emplace_back(t, CBuildState::kDeadContext);
        }
        const unsigned char* u = CssSkipSpaces(CssSkipAny(t, end, kCssFlagsSelector), end, 1);
        if (u <= cur)
          break;
        cur = u;
      }
      if (!(cur < end && (*cur == '{' || *cur == ',')))
        return fail();
      q = cur;
    }
    const unsigned char* t = CssSkipSpaces(q, end, 1);
    if (q > s) {
      if (!buffer.IsEmpty())
        buffer += ' ';
      buffer += CString(reinterpret_cast<const char*>(s), static_cast<int>(q - s));
    }
    if (t < end && (*t == ',' || *t == '{')) {
      if (!buffer.IsEmpty()) {
        selectors.push_back(buffer);
        buffer.Empty();
      }
      if (*t == '{') {
        brace = t;
        break;
      }
      t = CssSkipSpaces(t + 1, end, 1);
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
  const bool jump = state && !IsDBCS();
  for (;;) {
    if (state) {
      if (state->IsDead(b, CBuildState::kDeadBody))
        return fail();
      state->visited.emplace_back(b, CBuildState::kDeadBody);
    }
    b = CssSkipSpaces(b, end, 1);
    if (b >= end || *b == 0)
      return fail();
    if (*b == '}')
      break;
    const unsigned char* d = CssSkipDeclaration(b, end);
    if (d > b) {
      b = d;
      if (b < end && *b == ';')
        ++b;
    } else if (jump) {
      // Every later start inside the same name run, before any quoted
      // stretch, ends that run at the same place and fails alike: stepping
      // byte by byte would only repeat this failure, so go to its end.
      const unsigned char* q = CssSkipAny(b, end, kCssFlagsPropertyName | emCssStopSemicolon | emCssStopCloseBrace);
      const unsigned char* x = b + 1;
      while (x < q && *x != '\'' && *x != '"' && *x != '(' && *x != '[' && *x != '/' && *x != '<' && *x != '-')
        ++x;
      b = (*b == '\'' || *b == '"' || *b == '(' || *b == '[') ? b + 1 : x;
    } else {
      ++b;
    }
  }
  const unsigned char* closing = b;

  // 3. One style line per selector, sharing the body read once.
  if (!selectors.empty()) {
    const CString body(reinterpret_cast<const char*>(brace + 1), static_cast<int>(closing - brace - 1));
    CCssStyleProperty properties;
    properties.Analyse(body.GetString());
    for (const CString& selector : selectors) {
      CCssStyle* style = new CCssStyle(selector.GetString(), body.GetString(), &properties);
      AddStyleItemOwned(style);
    }
  }
  return CssSkipSpaces(closing + 1, end, 1);
}

CCssStyle* CCssPack::FindSameStyle(CCssStyle* style) {
  CBuildState* state = m_pBuildState;
  if (state && state->useIndex) {
    auto found = state->firstByHash.find(style->GetStyleNameHash());
    return found == state->firstByHash.end() ? nullptr : found->second;
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
    m_pBuildState->firstByHash.emplace(style->GetStyleNameHash(), style);
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
