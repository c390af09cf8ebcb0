#include "telvanix/html/token_list.h"

#include <cstring>
#include <exception>
#include <strings.h>

#include "telvanix/html/entity_tree.h"
#include "telvanix/html/internal/markup_scan.h"
#include "telvanix/html/internal/tag_pairing.h"

namespace telvanix {

using markup::IsBlank;

namespace {

// Bytes that matter while scanning a declaration for its end.
struct TagByteTable {
  bool t[256];
  constexpr TagByteTable() : t{} {
    for (int c : {'"', '\'', '>', '[', ']'})
      t[c] = true;
  }
};
constexpr TagByteTable kTagBytes;

// The ">" that ends the tag (or, kDeclaration, the "<!" declaration) at p:
// the first one outside quotes and, in a declaration, outside "[...]". Null
// when there is none; *pFallback then gets the first ">" inside quotes since
// the last quote closed, or null.
template <bool kDeclaration>
const unsigned char* FindTagClose(const unsigned char* p, const unsigned char* stop,
                                  const unsigned char** pFallback) {
  auto next = [stop](const unsigned char* s) {
    if constexpr (kDeclaration) {
      while (s < stop && !kTagBytes.t[*s])
        ++s;
      return s;
    } else {
      return markup::FindQuoteOrClose(s, stop);  // no brackets: depth stays 0
    }
  };
  unsigned char quote = 0;
  const unsigned char* fallback = nullptr;
  int depth = 0;
  for (const unsigned char* s = next(p + 1); s < stop; s = next(s + 1)) {
    const unsigned char c = *s;
    if (quote) {
      if (c == quote) {
        quote = 0;
        fallback = nullptr;
      } else if (c == '>' && !fallback) {
        fallback = s;
      }
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '[') {
      ++depth;
    } else if (c == ']') {
      --depth;
    } else if (depth == 0) {
      return s;
    }
  }
  *pFallback = fallback;
  return nullptr;
}

}  // namespace

namespace {
void* NodeBlockFromArena(void* arena, std::size_t bytes) { return static_cast<CHtmlTokenArena*>(arena)->Allocate(bytes); }
}  // namespace

// The list's nodes come from the arena too: one heap block per ten tokens
// would cost more than the tokens themselves.
CHtmlTokenList::CHtmlTokenList()
    : m_TokenList(10),
      m_pEntityTree(nullptr),
      m_bPendingWhitespace(0),
      m_pScanEnd(nullptr) {
  m_TokenList.SetBlockSource(&NodeBlockFromArena, &m_Arena);
}

CHtmlTokenList::~CHtmlTokenList() { ClearAll(); }

int CHtmlTokenList::CommitNewToken(CHtmlTokenItem* pToken) {
  (void)pToken;
  return 1;
}

void CHtmlTokenList::DeleteToken(CHtmlTokenItem* pToken) { delete pToken; }

int CHtmlTokenList::ClearAll() {
  if (m_pEntityTree != nullptr) ++m_nTreeReleases;
  delete m_pEntityTree;
  m_pEntityTree = nullptr;
  // Any token may have taken heap memory since it was read (a host edits
  // tokens directly), so each is asked; one read from the page that never
  // did goes with the arena as it is.
  for (POSITION pos = m_TokenList.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    if (token && !(CHtmlTokenItem::IsArenaToken(token) && !token->HoldsHeapParts()))
      DeleteToken(token);
  }
  m_TokenList.RemoveAll();
  m_Arena.Reset();
  m_bPendingWhitespace = 0;
  return 1;
}

// ---- Walking and editing ----

CHtmlTokenItem* CHtmlTokenList::GetTokenItem(POSITION pos) const {
  return pos ? const_cast<CTokenItemList&>(m_TokenList).GetAt(pos) : nullptr;
}

CHtmlTagItem* CHtmlTokenList::GetTagItem(POSITION pos) const {
  CHtmlTokenItem* token = GetTokenItem(pos);
  return token ? token->GetSafeTagItemPtr() : nullptr;
}

CHtmlTextItem* CHtmlTokenList::GetTextItem(POSITION pos) const {
  CHtmlTokenItem* token = GetTokenItem(pos);
  return token ? token->GetSafeTextItemPtr() : nullptr;
}

CHtmlTokenItem* CHtmlTokenList::GetNext(POSITION& pos) const {
  if (!pos)
    return nullptr;
  return const_cast<CTokenItemList&>(m_TokenList).GetNext(pos);
}

CHtmlTokenItem* CHtmlTokenList::GetPrev(POSITION& pos) const {
  if (!pos)
    return nullptr;
  return const_cast<CTokenItemList&>(m_TokenList).GetPrev(pos);
}

CHtmlTokenItem* CHtmlTokenList::GetHead() const { return GetTokenItem(m_TokenList.GetHeadPosition()); }
CHtmlTokenItem* CHtmlTokenList::GetTail() const { return GetTokenItem(m_TokenList.GetTailPosition()); }

POSITION CHtmlTokenList::AddHead(CHtmlTokenItem* pToken) {
  return pToken ? m_TokenList.AddHead(pToken) : nullptr;
}

POSITION CHtmlTokenList::AddTail(CHtmlTokenItem* pToken) {
  return pToken ? m_TokenList.AddTail(pToken) : nullptr;
}

POSITION CHtmlTokenList::InsertBefore(POSITION pos, CHtmlTokenItem* pToken) {
  return pToken ? m_TokenList.InsertBefore(pos, pToken) : nullptr;
}

POSITION CHtmlTokenList::InsertAfter(POSITION pos, CHtmlTokenItem* pToken) {
  return pToken ? m_TokenList.InsertAfter(pos, pToken) : nullptr;
}

CHtmlTokenList::CTokenItemList& CHtmlTokenList::GetTokenItemList() {
  return m_TokenList;
}

int CHtmlTokenList::RemoveAt(POSITION pos) {
  if (!pos)
    return 0;
  CHtmlTokenItem* token = m_TokenList.GetAt(pos);
  // The last node going frees the node blocks, not the arena: tokens read
  // from the page may still be referred to until ClearAll.
  m_TokenList.RemoveAt(pos);
  DeleteToken(token);
  return 1;
}

// ---- Tokenizing ----

int CHtmlTokenList::BuildTokenList(const unsigned char* first, const unsigned char* end, int nFlags) {
  ClearAll();
  if (!first || !end || end <= first)
    return 1;
  std::size_t size = static_cast<std::size_t>(end - first);
  // The tokens keep their bytes in one copy of the page; the tokens, their
  // attributes and texts take four to seven times the page again (tags and
  // texts of a dozen bytes each, about 70 bytes a token). Room for less than
  // that comes with the copy, and the arena grows by small steps from
  // there, so that little is reserved and left unused.
  const std::size_t perByte = (nFlags & CHtmlTokenItem::emAnalyseFull) ? 3 : 2;
  m_Arena.Reserve(size + 1 + (size < 1024 ? 1024 : size) * perByte);
  unsigned char* copy = static_cast<unsigned char*>(m_Arena.Allocate(size + 1));
  std::memcpy(copy, first, size);
  copy[size] = 0;
  const unsigned char* p = copy;
  const unsigned char* stop = copy + size;
  const unsigned char* t = p;
  m_pScanEnd = stop;

  while (p < stop) {
    const unsigned char* lt = static_cast<const unsigned char*>(std::memchr(p, '<', static_cast<std::size_t>(stop - p)));
    if (!lt)
      break;
    p = lt;
    CommitText(t, p - 1, 0, nFlags);
    t = p;
    CHtmlTagItem::TagNameInfo info;
    const unsigned char* next;
    switch (CHtmlTagItem::IsValidTagToken(p, stop, info)) {
      case CHtmlTagItem::emSptComment:
        next = CommitComment(p, info, nFlags);
        break;
      case CHtmlTagItem::emSptRawContent:
        next = CommitRawTag(p, info, nFlags);
        break;
      case CHtmlTagItem::emSptDeclaration:
        next = CommitDeclaration(p, info, nFlags);
        break;
      default:
        next = CommitNormalTag(p, &info, nFlags, nullptr);
        break;
    }
    if (next > p) {
      t = p = next;
    } else {
      // A refused raw-content start tag: its "<" stays text, and the byte
      // after it is not looked at as a tag start.
      t = p;
      p += 2;
    }
  }
  // A single trailing byte after the last tag is not kept.
  if (stop - t >= 2)
    CommitText(t, stop - 1, 0, nFlags);
  m_pScanEnd = nullptr;
  return 1;
}

bool CHtmlTokenList::AppendTag(const unsigned char* first, const unsigned char* last,
                               const CHtmlTagItem::TagNameInfo* pInfo, int nFlags) {
  CHtmlTagItem* tag = new (m_Arena) CHtmlTagItem();
  tag->m_bInArena = 1;
  tag->AttachOriginalData(first, static_cast<int>(last - first + 1));
  tag->AnalyseIn(nFlags, &m_Arena, pInfo);
  if (!CommitNewToken(tag)) {
    DeleteToken(tag);
    return false;
  }
  m_TokenList.AddTail(tag);
  return true;
}

const unsigned char* CHtmlTokenList::CommitNormalTag(const unsigned char* p, const CHtmlTagItem::TagNameInfo* pInfo,
                                                     int nFlags, bool* pAppended) {
  const unsigned char* stop = m_pScanEnd;
  const unsigned char* gt = nullptr;
  if (pAppended)
    *pAppended = false;
  if (stop - p > 9 && markup::StartsNoCase(p, stop, "<![CDATA[", 9)) {
    const unsigned char* close = nullptr;
    if (markup::FindCdataClose(p + 9, stop, &close))
      gt = close;
  }
  if (!gt) {
    const unsigned char* fallback;
    gt = FindTagClose<false>(p, stop, &fallback);
    if (!gt) {
      if (!fallback)
        return stop;  // unterminated: the rest of the page is dropped
      gt = fallback;
    }
  }
  bool appended = AppendTag(p, gt, pInfo, nFlags);
  if (pAppended)
    *pAppended = appended;
  return gt + 1;
}

const unsigned char* CHtmlTokenList::CommitComment(const unsigned char* p, const CHtmlTagItem::TagNameInfo& info,
                                                   int nFlags) {
  const unsigned char* stop = m_pScanEnd;
  const unsigned char* gt = nullptr;
  if (stop - p > 4 && markup::FindCommentClose(p + 4, stop, &gt)) {
    AppendTag(p, gt, &info, nFlags);
    return gt + 1;
  }
  return stop;  // an unterminated comment swallows the rest of the page
}

const unsigned char* CHtmlTokenList::CommitDeclaration(const unsigned char* p, const CHtmlTagItem::TagNameInfo& info,
                                                       int nFlags) {
  const unsigned char* fallback;
  if (const unsigned char* gt = FindTagClose<true>(p, m_pScanEnd, &fallback)) {
    AppendTag(p, gt, &info, nFlags);
    return gt + 1;
  }
  // No end: resume after a quoted ">" (the bytes up to it are dropped), or
  // drop the rest of the page.
  return fallback ? fallback + 1 : m_pScanEnd;
}

const unsigned char* CHtmlTokenList::CommitRawTag(const unsigned char* p, const CHtmlTagItem::TagNameInfo& info,
                                                  int nFlags) {
  const unsigned char* stop = m_pScanEnd;
  bool appended = false;
  const unsigned char* body = CommitNormalTag(p, &info, nFlags, &appended);
  if (!appended)
    return p;
  const char* name = CHtmlTagItem::GetTagSyntaxItem(info.m_nIndex)->m_pszTagName;
  std::size_t nameLength = std::strlen(name);
  for (const unsigned char* s = body; s < stop;) {
    const unsigned char* lt = static_cast<const unsigned char*>(std::memchr(s, '<', static_cast<std::size_t>(stop - s)));
    if (!lt)
      break;
    const unsigned char* afterName = lt + 2 + nameLength;
    if (afterName < stop && lt[1] == '/' && markup::StartsNoCase(lt + 2, stop, name, nameLength)) {
      const unsigned char* q = CHtmlTagItem::SkipCommentWithinTag(afterName, stop);
      const unsigned char* gt = static_cast<const unsigned char*>(std::memchr(q, '>', static_cast<std::size_t>(stop - q)));
      if (!gt)
        break;
      CommitText(body, lt - 1, 1, nFlags | CHtmlTokenItem::emAnalyseRaw);
      AppendTag(lt, gt, nullptr, nFlags);
      return gt + 1;
    }
    s = lt + 1;
  }
  return stop;  // no end tag: the rest of the page is dropped
}

void CHtmlTokenList::CommitText(const unsigned char* first, const unsigned char* last, int bRaw, int nFlags) {
  if (last < first)
    return;
  CHtmlTokenItem* tail = m_TokenList.IsEmpty() ? nullptr : m_TokenList.GetTail();
  if (CHtmlTextItem::IsSpaceOnly(first, last)) {
    if (tail && tail->IsTagToken()) {
      tail->AttachIndentAfter(first, static_cast<int>(last - first + 1));
      m_bPendingWhitespace = 1;
      return;
    }
    if (tail)
      return;
  }
  if (!(nFlags & CHtmlTokenItem::emAnalyseRaw)) {
    const unsigned char* s = first;
    if (s <= last && *s == '\r')
      ++s;
    if (s <= last && *s == '\n')
      ++s;
    if (s > first) {
      if (tail && tail->IsTagToken())
        tail->AttachIndentAfter(first, static_cast<int>(s - first));
      if (tail && tail->IsTextToken())
        s = first;
      first = s;
    }
  }
  CHtmlTextItem* text = new (m_Arena) CHtmlTextItem();
  text->m_bInArena = 1;
  text->AttachOriginalData(first, static_cast<int>(last - first + 1));
  text->AnalyseIn(nFlags, &m_Arena);
  // A run that begins with a "<" the tokenizer did not take as a tag (for an
  // emptied run, the "<" that follows it).
  if (!bRaw && first < m_pScanEnd && *first == '<')
    text->SetTokenFlag(CHtmlTokenItem::emTokenRejectedTagText);
  if (CommitNewToken(text)) {
    m_TokenList.AddTail(text);
    text->SetSpacesBefore(m_bPendingWhitespace);
  } else {
    DeleteToken(text);
  }
  m_bPendingWhitespace = 0;
}

// ---- Analysis, tree ----

int CHtmlTokenList::AnalyseList(int nFlags) {
  if (!(nFlags & CHtmlTokenItem::emAnalyseFull))
    return 1;
  for (POSITION pos = m_TokenList.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    if (token)
      token->Analyse(nFlags);
  }
  return 1;
}

int CHtmlTokenList::BuildEntityTree(int nFlags) {
  if (m_pEntityTree != nullptr) ++m_nTreeReleases;
  delete m_pEntityTree;
  m_pEntityTree = nullptr;
  m_pEntityTree = new CHtmlEntityTree;
  return m_pEntityTree->Build(this, nFlags);
}

// ---- Insertion ----

int CHtmlTokenList::InsertHtmlStream(POSITION pos, const unsigned char* text, int bBefore) {
  if (!pos || !text)
    return 0;
  try {
    CHtmlTokenList temp;
    temp.BuildTokenList(text, text + std::strlen(reinterpret_cast<const char*>(text)), 1);
    return InsertTokenList(pos, &temp, bBefore);
  } catch (const std::exception&) {
    return 0;
  }
}

int CHtmlTokenList::InsertTokenList(POSITION pos, CHtmlTokenList* pOther, int bBefore) {
  if (!pos || !pOther || !GetTokenItem(pos))
    return 0;
  POSITION at = pos;
  bool first = true;
  for (POSITION walk = pOther->GetHeadPosition(); walk;) {
    CHtmlTokenItem* token = pOther->GetNext(walk);
    if (!token || token->IsDiscardedToken())
      continue;
    CHtmlTokenItem* copy;
    if (CHtmlTagItem* tag = token->GetSafeTagItemPtr()) {
      CHtmlTagItem* tagCopy = new CHtmlTagItem;
      tagCopy->Copy(tag);
      copy = tagCopy;
    } else {
      CHtmlTextItem* textCopy = new CHtmlTextItem;
      textCopy->Copy(token->GetSafeTextItemPtr());
      copy = textCopy;
    }
    // Before pos: the first copy goes in front of pos, each next one after
    // the previous copy, so the order is kept either way.
      if (bBefore && first)
      at = m_TokenList.InsertBefore(at, copy);
    else
      at = m_TokenList.InsertAfter(at, copy);
    first = false;
  }
  return 1;
}

// ---- Tag pairing ----

int CHtmlTokenList::MarkTags() {
  TagPairingEvents events;
  CTagPairing<> pairing(events, CTagPairing<>::emPassedUnknownWalkOn, CTagPairing<>::emOpenUnknownByXmlType);
  for (POSITION pos = m_TokenList.GetHeadPosition(); pos;) {
    POSITION here = pos;
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    if (token && !token->IsDiscardedToken() && token->IsTagToken())
      pairing.Take(static_cast<CHtmlTagItem*>(token), here);
  }
  pairing.CloseRest();
  return 1;
}

// ---- Searches ----

POSITION CHtmlTokenList::GetTagHeadPosition(const char* name) {
  POSITION pos = m_TokenList.GetHeadPosition();
  if (!name)
    return nullptr;
  while (pos) {
    POSITION here = pos;
    CHtmlTagItem* tag = GetTagItem(here);
    m_TokenList.GetNext(pos);
    if (tag && !tag->IsDiscardedToken() && tag->IsTagNameSameAs(name))
      return here;
  }
  return nullptr;
}

int CHtmlTokenList::GetNextTag(const char* name, POSITION& pos) {
  if (!pos || !name) {
    pos = nullptr;
    return 0;
  }
  m_TokenList.GetNext(pos);
  while (pos) {
    CHtmlTagItem* tag = GetTagItem(pos);
    if (tag && !tag->IsDiscardedToken() && tag->IsTagNameSameAs(name))
      return 1;
    m_TokenList.GetNext(pos);
  }
  return 0;
}

POSITION CHtmlTokenList::FindFirstTagPosition(POSITION& pos, CHtmlTagItem& tag) {
  pos = m_TokenList.GetHeadPosition();
  return FindNextTagPosition(pos, tag);
}

POSITION CHtmlTokenList::FindNextTagPosition(POSITION& pos, CHtmlTagItem& tag) {
  int id = tag.GetTagId();
  while (pos) {
    POSITION here = pos;
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    CHtmlTagItem* item = token ? token->GetSafeTagItemPtr() : nullptr;
    if (item && !item->IsDiscardedToken() && item->GetTagId() == id)
      return here;
  }
  return nullptr;
}

POSITION CHtmlTokenList::FindEndTagPosition(POSITION pos) {
  CHtmlTagItem* start = GetTagItem(pos);
  if (!start || start->IsEndTag())
    return nullptr;
  int id = start->GetTagId();
  int endId = start->GetEndofTagId();
  int depth = -1;
  while (pos) {
    POSITION here = pos;
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    CHtmlTagItem* item = token ? token->GetSafeTagItemPtr() : nullptr;
    if (!item || item->IsDiscardedToken())
      continue;
    if (item->GetTagId() == id) {
      ++depth;
    } else if (item->GetTagId() == endId) {
      if (--depth < 0)
        return here;
    }
  }
  return nullptr;
}

POSITION CHtmlTokenList::FindTagWithinPositions(POSITION from, POSITION to, CHtmlTagItem& tag) {
  int id = tag.GetTagId();
  POSITION pos = from ? from : m_TokenList.GetHeadPosition();
  while (pos && pos != to) {
    POSITION here = pos;
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    CHtmlTagItem* item = token ? token->GetSafeTagItemPtr() : nullptr;
    if (item && !item->IsDiscardedToken() && item->GetTagId() == id)
      return here;
  }
  return nullptr;
}

int CHtmlTokenList::GetTextDefinedAfter(POSITION pos, CHtmlTextItem*& pText) {
  pText = nullptr;
  CHtmlTagItem* tag = GetTagItem(pos);
  if (!tag || tag->IsEndTag())
    return 0;
  m_TokenList.GetNext(pos);
  CHtmlTextItem* text = GetTextItem(pos);
  if (!text || text->IsDiscardedToken())
    return 0;
  pText = text;
  return 1;
}

}  // namespace telvanix
