#include "telvanix/html/entity_tree.h"

#include <algorithm>
#include <new>
#include <vector>

#include "telvanix/html/tag_item.h"
#include "telvanix/html/internal/tag_pairing.h"
#include "telvanix/html/token_item.h"
#include "telvanix/html/token_list.h"

namespace telvanix {

namespace {

using T = CHtmlTagItem;
constexpr int kEndBit = T::emTagIdEndBit;
constexpr int kTextId = CHtmlEntityNode::emTextNodeId;

constexpr int kDoctype = T::emTagIdDoctype, kHtml = T::emTagIdHtml, kHead = T::emTagIdHead, kBody = T::emTagIdBody,
              kFrameset = T::emTagIdFrameset;
constexpr int kIns = T::emTagIdIns, kDel = T::emTagIdDel;

using Flag = CHtmlTokenItem::EmTokenFlag;
constexpr Flag kDiscarded = CHtmlTokenItem::emTokenDiscarded;
constexpr Flag kPairedUnknown = CHtmlTokenItem::emTokenPairedUnknown;
constexpr Flag kRecovered = CHtmlTokenItem::emTokenRecoveryInserted;
constexpr Flag kOutside = CHtmlTokenItem::emTokenOutsideHtml;
constexpr Flag kMisplaced = CHtmlTokenItem::emTokenMisplaced;
constexpr Flag kReopened = CHtmlTokenItem::emTokenReopened;

// The syntax-table row of a tag, read in place: the passes ask several
// columns of every tag, and the accessors are calls into another unit. An
// invalid index reads as row 0 does through the accessors (content 0,
// occurrence 0, the invalid row's major type).
const TagSyntaxItem kInvalidRow = {0, 0, "", 0, 0, 0, 0, T::emMjrInvalidRow, 0};
inline const TagSyntaxItem& Row(const CHtmlTagItem* pTag) {
  const int n = pTag->GetTagIndex();
  return (n > 0 && n < CHtmlTagItem::ms_nTagSyntaxTableSize) ? CHtmlTagItem::ms_tTagSyntaxTable[n] : kInvalidRow;
}
inline bool HasAllBits(DWORD dwValue, DWORD dwMask) { return (dwValue & dwMask) == dwMask; }

inline bool HasFlag(const CHtmlTokenItem* pToken, DWORD dwFlag) {
  return pToken != nullptr && (pToken->GetTokenFlag() & dwFlag) != 0;
}

// The inline formatting that is carried into following containers when a
// container closes it (A, SPAN and BDO are not).
bool IsSuspendableTagId(int nBaseId) {
  switch (nBaseId) {
#define TELVANIX_TAG_CASE(name) case T::emTagId##name:
    TELVANIX_TAGSET_REOPENED_FORMATTING(TELVANIX_TAG_CASE)
#undef TELVANIX_TAG_CASE
      return true;
    default:
      return false;
  }
}

bool InIdList(const int* pIds, int nCount, int nId) {
  for (int i = 0; i < nCount && pIds[i] != 0; ++i)
    if (pIds[i] == nId) return true;
  return false;
}

template <std::size_t N>
bool InIdList(const int (&ids)[N], int nId) {
  return InIdList(ids, static_cast<int>(N), nId);
}

// A new outline tag made from its literal text, marked as a repair.
CHtmlTagItem* NewOutlineTag(const char* pszText) {
  CHtmlTagItem* pTag = new CHtmlTagItem(pszText);
  pTag->SetTokenFlag(kRecovered);
  return pTag;
}

// A SCRIPT, STYLE or COMMENT start tag: the tokenizer reads what follows it
// as raw text up to an end tag.
bool IsRawContentStart(const CHtmlTagItem* pTag) {
  return pTag != nullptr && !pTag->IsEndTag() && (pTag->GetSptType() & T::emSptRawContent) != 0;
}

// The last token of what the tokenizer read as one script or style element
// when pos holds its start tag (its text, then whatever tag it took as the
// end, which need not carry the element's own name: "</scriptx>"); pos
// otherwise. A tag inserted in between would be read as script text.
POSITION PastRawContent(CHtmlTokenList& list, POSITION pos) {
  if (pos == nullptr) return pos;
  POSITION next = pos;
  list.GetNext(next);
  if (list.GetTextItem(pos) != nullptr) {
    // The element's text: the start tag comes right before it.
    POSITION prev = pos;
    list.GetPrev(prev);
    if (prev == nullptr || !IsRawContentStart(list.GetTagItem(prev))) return pos;
  } else if (!IsRawContentStart(list.GetTagItem(pos))) {
    return pos;
  } else if (next != nullptr && list.GetTextItem(next) != nullptr) {
    pos = next;
    list.GetNext(next);
  }
  if (next != nullptr && list.GetTagItem(next) != nullptr && !(list.GetTokenItem(next)->GetTokenFlag() & kRecovered))
    pos = next;
  return pos;
}

// From pos over the text tokens right after it (forward) or right before it,
// to the last of them; pos when there are none.
POSITION OverAdjacentText(CHtmlTokenList& list, POSITION pos, bool forward) {
  for (;;) {
    POSITION step = pos;
    if (forward)
      list.GetNext(step);
    else
      list.GetPrev(step);
    CHtmlTokenItem* pToken = step != nullptr ? list.GetTokenItem(step) : nullptr;
    if (pToken == nullptr || !pToken->IsTextToken()) return pos;
    pos = step;
  }
}

// What the page ends with must still read the same once closing tags follow
// it in the saved page. A tag start left open at the very end ("<script w"
// with no ">" after it) would be completed by them: as with any unfinished
// tag at the end of a page, it is dropped. A script or style element left
// open would take them in as its content: it gets its end tag, whose
// position is returned (null when none was added).
POSITION SettlePageEnd(CHtmlTokenList& list) {
  POSITION posAdded = nullptr;
  bool insertedAfter = false;
  POSITION posRejected = nullptr;  // earliest rejected start in the final text run
  for (POSITION pos = list.GetTailPosition(); pos != nullptr;) {
    const POSITION posToken = pos;
    CHtmlTokenItem* pToken = list.GetPrev(pos);
    if (pToken == nullptr || pToken->IsDiscardedToken()) continue;
    if (pToken->GetTokenFlag() & kRecovered) {
      insertedAfter = insertedAfter || pToken->IsTagToken();
      continue;
    }
    if (!insertedAfter) return nullptr;
    if (pToken->IsTextToken()) {
      // No ">" follows a rejected start, so the page ends in text from there.
      if (pToken->GetTokenFlag() & CHtmlTokenItem::emTokenRejectedTagText) posRejected = posToken;
      continue;
    }
    CHtmlTagItem* pTag = pToken->GetSafeTagItemPtr();
    if (posRejected == nullptr && IsRawContentStart(pTag)) {
      CString end("</");
      end += CHtmlTagItem::GetTagSyntaxItem(pTag->GetTagIndex())->m_pszTagName;
      end += ">";
      posAdded = list.InsertAfter(posToken, NewOutlineTag(end));
    }
    break;
  }
  for (POSITION pos = posRejected; pos != nullptr;) {
    CHtmlTokenItem* pToken = list.GetNext(pos);
    if (pToken != nullptr && pToken->IsTextToken() && !(pToken->GetTokenFlag() & kRecovered))
      pToken->SetTokenFlag(kDiscarded);
  }
  return posAdded;
}

}  // namespace

// ---- construction ----

CHtmlEntityTree::CHtmlEntityTree() : m_pRoot(nullptr), m_pTokenList(nullptr) { Resume(); }

CHtmlEntityTree::~CHtmlEntityTree() { ReleaseNodes(); }

void CHtmlEntityTree::ReleaseNodes() {
  // Nodes of the store that own nothing need no destructor; only when some
  // node was given something to own is the tree walked and deleted.
  if (m_pRoot != nullptr && m_NodeStore.m_nOwningNodes != 0) delete m_pRoot;
  m_pRoot = nullptr;
  m_NodeStore.m_Arena.Reset();
  m_NodeStore.m_nOwningNodes = 0;
}

void CHtmlEntityTree::Resume() {
  if (m_pTokenList != nullptr) ++m_pTokenList->m_nTreeReleases;
  ReleaseNodes();
  for (CHtmlEntityNode*& pNode : m_pRegisteredEntities) pNode = nullptr;
  for (OutlineRecord& rec : m_OutlineRecords) rec = OutlineRecord{nullptr, nullptr, 0, 0};
  m_nMismatchCount = 0;
  m_bHasText = 0;
}

int CHtmlEntityTree::Build(CHtmlTokenList* pList, int nFlags) {
  if (pList == nullptr) return 0;
  m_pTokenList = pList;
  Resume();
  try {
    CheckMatchTags(nFlags);
    Recover(nFlags);
    BuildTree(nFlags);
  } catch (...) {
    // Out of memory part way: what was built stays consistent (every node
    // is linked to its parent as soon as it is made).
    return 0;
  }
  return 1;
}

CHtmlEntityNode* CHtmlEntityTree::GetEntityNode(EmEntityNodeType nType) const {
  if (nType == emRootEntity) return m_pRoot;
  if (nType >= emHtmlEntity && nType <= emFramesetEntity) return m_pRegisteredEntities[nType - 1];
  return nullptr;
}

const CHtmlEntityTree::OutlineRecord* CHtmlEntityTree::GetOutlineRecord(int nRecord) const {
  if (nRecord < 0 || nRecord >= emOutlineRecordCount) return nullptr;
  return &m_OutlineRecords[nRecord];
}

// ---- tag matching ----

namespace {

// What lies before the first HTML start tag or after the last HTML end tag is
// discarded by the outline repair, so it must leave no trace in the matching:
// else the repair leans on tokens it then drops (a BODY after "</HTML>" kept
// BODY from being inserted; an unknown tag inside was made a container by its
// end tag outside), and the saved page needs repairing again. The journal
// keeps how the pass stood at the last HTML end tag and every tag change
// since, so that the end of the pass can take back what came after it.
class CMatchJournal {
 public:
  using OutlineRecord = CHtmlEntityTree::OutlineRecord;
  static constexpr int kRecords = CHtmlEntityTree::emOutlineRecordCount;

  explicit CMatchJournal(int& nMismatchCount) : m_nMismatchCount(nMismatchCount) {}

  // Pairing events: a change is recorded only once there is something to
  // take it back to.
  void WillChange(CHtmlTagItem* pTag) {
    if (m_bSnapshot) m_Changes.push_back({pTag, pTag->GetTokenFlag(), pTag->GetTagIndex()});
  }
  void Mismatch() { ++m_nMismatchCount; }

  // A token that the pass does not pass over.
  void NoteToken() { m_bTokenAfter = m_bSnapshot; }

  // The first HTML start tag: what came before is forgotten.
  void Restart() {
    m_bSnapshot = m_bTokenAfter = false;
    m_Changes.clear();
  }

  // At an HTML end tag, once it is paired.
  void Snapshot(const OutlineRecord* pRecords, CHtmlEntityStack& stack, int bHasText) {
    std::copy(pRecords, pRecords + kRecords, m_Records);
    m_Open.clear();
    for (int nLevel = 1; nLevel <= stack.GetStackLevel(); ++nLevel) m_Open.push_back(*stack.GetEntityStackItem(nLevel));
    m_nMismatchAtSnapshot = m_nMismatchCount;
    m_bHasText = bHasText;
    m_Changes.clear();
    m_bSnapshot = true;
    m_bTokenAfter = false;
  }

  // At the end of the pass: the records of HEAD onwards as they stood at the
  // last HTML end tag (the HTML record keeps its last end tag), and, when
  // tokens followed that end tag, the tags, the open elements, the count and
  // the text mark as well.
  void RollBack(OutlineRecord* pRecords, CHtmlEntityStack& stack, int& bHasText) {
    if (!m_bSnapshot) return;
    std::copy(m_Records + CHtmlEntityTree::emOutlineHead, m_Records + kRecords,
              pRecords + CHtmlEntityTree::emOutlineHead);
    if (!m_bTokenAfter) return;
    // Latest first, so that a tag changed twice ends as it was first found.
    for (auto it = m_Changes.rbegin(); it != m_Changes.rend(); ++it) {
      it->pTag->ResetTokenFlag(static_cast<CHtmlTokenItem::EmTokenFlag>(it->pTag->GetTokenFlag() & ~it->dwFlags));
      it->pTag->ChangeUnknownTagIndex(it->nIndex);
    }
    stack.BackStackLevel(0);
    for (const EntityStackItem& item : m_Open) stack.Push(item.m_pTag, item.m_Position);
    m_nMismatchCount = m_nMismatchAtSnapshot;
    bHasText = m_bHasText;
  }

 private:
  struct TagState {
    CHtmlTagItem* pTag;
    DWORD dwFlags;
    int nIndex;
  };
  int& m_nMismatchCount;
  bool m_bSnapshot = false;    // an HTML end tag was met
  bool m_bTokenAfter = false;  // a token came after the last one
  OutlineRecord m_Records[kRecords];
  std::vector<EntityStackItem> m_Open;
  int m_nMismatchAtSnapshot = 0;
  int m_bHasText = 0;
  std::vector<TagState> m_Changes;
};

// With an HTML element present, text at the very start or end of the list
// lies outside it.
void DiscardTextOutsideHtml(CHtmlTokenList& list) {
  for (CHtmlTokenItem* pToken : {list.GetTokenItem(list.GetHeadPosition()), list.GetTokenItem(list.GetTailPosition())}) {
    if (pToken != nullptr && pToken->IsTextToken()) {
      pToken->SetTokenFlag(kDiscarded);
      pToken->SetTokenFlag(kOutside);
    }
  }
}

}  // namespace

int CHtmlEntityTree::CheckMatchTags(int nFlags) {
  if (m_pTokenList == nullptr) return 1;
  CHtmlTokenList& list = *m_pTokenList;
  CHtmlTokenList::CTokenItemList& items = list.GetTokenItemList();
  m_nMismatchCount = 0;
  CMatchJournal journal(m_nMismatchCount);
  using CPairing = CTagPairing<CMatchJournal>;
  CPairing pairing(journal, CPairing::emPassedUnknownStops, CPairing::emOpenUnknownEmpty);
  const bool bHtml = (nFlags & emBuildHtml) != 0;

  for (POSITION pos = items.GetHeadPosition(); pos != nullptr;) {
    POSITION posToken = pos;
    CHtmlTokenItem* pToken = items.GetNext(pos);
    if (pToken == nullptr || pToken->IsDiscardedToken()) continue;
    journal.NoteToken();
    if (pToken->IsTextToken()) {
      m_bHasText = 1;
      continue;
    }
    CHtmlTagItem* pTag = pToken->GetSafeTagItemPtr();
    if (pTag == nullptr) continue;

    if (bHtml) {
      if (pTag->GetTagId() == kHtml && m_OutlineRecords[emOutlineHtml].m_posFirst == nullptr) {
        // An HTML end tag before it is as much outside as the rest.
        for (OutlineRecord& rec : m_OutlineRecords) rec = OutlineRecord{nullptr, nullptr, 0, 0};
        pairing.Forget();
        journal.Restart();
      }
      CollectHtmlMatchInfo(pTag, posToken);
    } else if (nFlags & emBuildXml) {
      CollectXmlMatchInfo(pTag, posToken);
    }

    pairing.Take(pTag, posToken);
    if (bHtml && pTag->GetTagId() == (kHtml | kEndBit)) journal.Snapshot(m_OutlineRecords, pairing.Stack(), m_bHasText);
  }

  journal.RollBack(m_OutlineRecords, pairing.Stack(), m_bHasText);
  pairing.CloseRest();
  const OutlineRecord& html = m_OutlineRecords[emOutlineHtml];
  if (html.m_posFirst != nullptr && html.m_posLast != nullptr) DiscardTextOutsideHtml(list);
  return m_nMismatchCount != 0 ? 1 : 0;
}

int CHtmlEntityTree::CollectHtmlMatchInfo(CHtmlTagItem* pTag, POSITION pos) {
  if (pTag == nullptr || pTag->IsUnknownTag()) return 0;
  const int nId = pTag->GetTagId();
  const int nBaseId = nId & ~kEndBit;
  OutlineRecord* pRec = nullptr;
  switch (nId & T::emTagIdGroupMask) {
    case T::emTagIdGroupDocument:
      switch (nBaseId) {
        case kHtml: pRec = &m_OutlineRecords[emOutlineHtml]; break;
        case kHead: pRec = &m_OutlineRecords[emOutlineHead]; break;
        case kBody: pRec = &m_OutlineRecords[emOutlineBody]; break;
        case kFrameset: pRec = &m_OutlineRecords[emOutlineFrameset]; break;
        default: return 1;
      }
      if (pTag->IsEndTag()) {
        pRec->m_posLast = pos;
        ++pRec->m_nEndCount;
      } else {
        if (pRec->m_posFirst == nullptr) pRec->m_posFirst = pos;
        ++pRec->m_nStartCount;
      }
      return 1;
    case T::emTagIdGroupHead:
      // Head tags after the body has begun belong to the body, not the head.
      if (m_OutlineRecords[emOutlineBodyContent].m_posFirst != nullptr ||
          m_OutlineRecords[emOutlineFrameContent].m_posFirst != nullptr)
        return 1;
      pRec = &m_OutlineRecords[emOutlineHeadContent];
      break;
    case T::emTagIdGroupBody:
      pRec = &m_OutlineRecords[emOutlineBodyContent];
      break;
    case T::emTagIdGroupFrameset:
      pRec = &m_OutlineRecords[emOutlineFrameContent];
      break;
    default:
      return 1;
  }
  if (pRec->m_posFirst == nullptr)
    pRec->m_posFirst = pos;
  else
    pRec->m_posLast = pos;
  return 1;
}

int CHtmlEntityTree::CollectXmlMatchInfo(CHtmlTagItem*, POSITION) { return 1; }

// ---- recovery ----

int CHtmlEntityTree::Recover(int nFlags) {
  if (nFlags & emBuildHtml) {
    RecoverHtmlOutline();
    RecoverHtmlTokenList(nFlags);
  } else if (nFlags & emBuildXml) {
    RecoverXmlOutline();
    RecoverXmlTokenList(nFlags);
  }
  return 1;
}

int CHtmlEntityTree::RecoverHtmlOutline() {
  if (m_pTokenList == nullptr) return 0;
  CHtmlTokenList& list = *m_pTokenList;
  OutlineRecord& html = m_OutlineRecords[emOutlineHtml];
  OutlineRecord& head = m_OutlineRecords[emOutlineHead];
  OutlineRecord& body = m_OutlineRecords[emOutlineBody];
  const OutlineRecord& headContent = m_OutlineRecords[emOutlineHeadContent];
  const OutlineRecord& bodyContent = m_OutlineRecords[emOutlineBodyContent];

  if (html.m_posFirst == nullptr) {
    html.m_posFirst = list.InsertBefore(list.GetHeadPosition(), NewOutlineTag("<HTML>"));
    ++html.m_nStartCount;
  }
  if (html.m_posLast == nullptr) {
    html.m_posLast = list.InsertAfter(list.GetTailPosition(), NewOutlineTag("</HTML>"));
    ++html.m_nEndCount;
  }
  if (headContent.m_posFirst != nullptr && head.m_posFirst == nullptr) {
    head.m_posFirst = list.InsertBefore(headContent.m_posFirst, NewOutlineTag("<HEAD>"));
    ++head.m_nStartCount;
  }
  // Step 4; again below when the page end adds a head tag.
  auto closeHead = [&] {
    if (headContent.m_posLast != nullptr && head.m_posLast == nullptr) {
      head.m_posLast = list.InsertAfter(PastRawContent(list, headContent.m_posLast), NewOutlineTag("</HEAD>"));
      ++head.m_nEndCount;
    }
  };
  closeHead();

  if (body.m_posFirst == nullptr) {
    CHtmlTagItem* pTag = NewOutlineTag("<BODY>");
    POSITION posNew = nullptr;
    if (bodyContent.m_posFirst != nullptr) {
      // Text right before the first body tag joins the body.
      posNew = list.InsertBefore(OverAdjacentText(list, bodyContent.m_posFirst, false), pTag);
    } else if (head.m_posLast != nullptr) {
      posNew = list.InsertAfter(head.m_posLast, pTag);
    } else if (html.m_posFirst != nullptr) {
      posNew = list.InsertAfter(html.m_posFirst, pTag);
    } else {
      delete pTag;
    }
    if (posNew != nullptr) {
      body.m_posFirst = posNew;
      ++body.m_nStartCount;
    }
  }
  if (body.m_posLast == nullptr) {
    CHtmlTagItem* pTag = NewOutlineTag("</BODY>");
    POSITION posNew = nullptr;
    if (bodyContent.m_posLast != nullptr) {
      posNew = list.InsertAfter(PastRawContent(list, OverAdjacentText(list, bodyContent.m_posLast, true)), pTag);
    } else if (html.m_posLast != nullptr) {
      posNew = list.InsertBefore(html.m_posLast, pTag);
    } else {
      delete pTag;
    }
    if (posNew != nullptr) {
      body.m_posLast = posNew;
      ++body.m_nEndCount;
    }
  }

  // An end tag added at the page end is read as one more tag of the outline
  // when the saved page is read again (a STYLE end is a head tag); it is
  // recorded now, so the head is settled as that reading would settle it.
  const POSITION posRawEnd = SettlePageEnd(list);
  if (posRawEnd != nullptr) {
    CollectHtmlMatchInfo(list.GetTagItem(posRawEnd), posRawEnd);
    closeHead();
  }

  // Whatever lies outside HTML is dropped, except a leading declaration.
  for (POSITION pos = list.GetHeadPosition(); pos != nullptr && pos != html.m_posFirst;) {
    CHtmlTokenItem* pToken = list.GetNext(pos);
    if (pToken == nullptr || pToken->IsDiscardedToken()) continue;
    if (pToken->IsTagToken()) {
      CHtmlTagItem* pTag = pToken->GetSafeTagItemPtr();
      if (pTag != nullptr && pTag->GetTagId() == kDoctype) continue;
    }
    pToken->SetTokenFlag(kDiscarded);
    pToken->SetTokenFlag(kOutside);
  }
  for (POSITION pos = list.GetTailPosition(); pos != nullptr && pos != html.m_posLast;) {
    CHtmlTokenItem* pToken = list.GetPrev(pos);
    if (pToken == nullptr || pToken->IsDiscardedToken()) continue;
    pToken->SetTokenFlag(kDiscarded);
    pToken->SetTokenFlag(kOutside);
  }

  // Only the outermost BODY tags stay.
  if ((body.m_nStartCount >= 2 || body.m_nEndCount >= 2) && body.m_posFirst != nullptr) {
    POSITION pos = body.m_posFirst;
    list.GetNext(pos);
    while (pos != nullptr && pos != body.m_posLast) {
      CHtmlTokenItem* pToken = list.GetNext(pos);
      if (pToken == nullptr || !pToken->IsTagToken()) continue;
      CHtmlTagItem* pTag = pToken->GetSafeTagItemPtr();
      if (pTag != nullptr && (pTag->GetTagId() & ~kEndBit) == kBody) pTag->DiscardToken();
    }
  }
  return 1;
}

int CHtmlEntityTree::RecoverXmlOutline() { return 1; }
int CHtmlEntityTree::RecoverHtmlTokenList(int) { return 1; }
int CHtmlEntityTree::RecoverXmlTokenList(int) { return 1; }

// ---- tree building ----

namespace {

// Empties the suspend list however BuildTree is left.
struct SuspendListGuard {
  CHtmlEntityTree& tree;
  CHtmlEntityTree::CSuspendList& list;
  ~SuspendListGuard() { tree.RemoveAllSuspendTag(list); }
};

inline CHtmlEntityNode* ParentOrSelf(CHtmlEntityNode* pNode) {
  if (pNode == nullptr) return nullptr;  // a build without nodes
  CHtmlEntityNode* pParent = pNode->GetParentNode();
  return pParent != nullptr ? pParent : pNode;
}

}  // namespace

int CHtmlEntityTree::BuildTree(int nFlags) {
  if (m_pTokenList == nullptr) return 0;
  CHtmlTokenList& list = *m_pTokenList;
  CHtmlTokenList::CTokenItemList& items = list.GetTokenItemList();
  CHtmlEntityStack stack(0);
  stack.Resume();
  CSuspendList suspend(10);
  SuspendListGuard guard{*this, suspend};

  ++list.m_nTreeReleases;
  ReleaseNodes();
  m_bNoNodes = (nFlags & emBuildNoNodes) != 0;
  if (!m_bNoNodes) {
    // About one leaf a token and an element for every third: room for all
    // of them in one block.
    m_NodeStore.m_Arena.Reserve(static_cast<std::size_t>(list.GetCount()) * 144 + 1024);
    m_pRoot = new (m_NodeStore) CHtmlEntityNode(nullptr, nullptr, 0);
    m_pRoot->SetNodeStore(&m_NodeStore);
    m_pRoot->m_ChildList.SetNodeStore(&m_NodeStore);
  }
  // Without nodes the walk is the same: what it does to the list depends
  // on the stack and the suspended tags, never on the nodes.
  CHtmlEntityNode* pCurrent = m_pRoot;

  for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
    // The next position is taken only after this token is handled: tokens
    // inserted right after it (reopened inline tags) are visited in turn.
    POSITION posToken = pos;
    CHtmlTokenItem* pToken = items.GetAt(posToken);
    if (pToken == nullptr || pToken->IsDiscardedToken()) {
      items.GetNext(pos);
      continue;
    }

    EntityStackItem* pTop = stack.GetTop();
    if (!IsValidInnerToken(pTop, pToken)) {
      GetNewSuspendTag(suspend, pTop);
      // Close elements until one may hold the token. Popping at level 0
      // clears the sentinel, after which everything is valid.
      for (;;) {
        pCurrent = ParentOrSelf(pCurrent);
        stack.Pop();
        pTop = stack.GetTop();
        if (IsValidInnerToken(pTop, pToken)) break;
        GetNewSuspendTag(suspend, pTop);
      }
      if (stack.GetStackLevel() == 0) pCurrent = m_pRoot;
    }

    if (pToken->IsTextToken()) {
      AppendLeaf(pCurrent, posToken, kTextId);
    } else if (CHtmlTagItem* pTag = pToken->GetSafeTagItemPtr()) {
      const int nId = pTag->GetTagId();
      if (Row(pTag).m_nCntType == 0) {
        AppendLeaf(pCurrent, posToken, nId);
      } else if (pTag->IsEndTag()) {
        EntityStackItem* pOpen = stack.GetTop();
        if (pOpen->m_pTag != nullptr && nId == (pOpen->m_nTagId | kEndBit)) {
          AppendLeaf(pCurrent, posToken, nId);
          stack.Pop();
          pCurrent = ParentOrSelf(pCurrent);
          if (stack.GetStackLevel() == 0) pCurrent = m_pRoot;
          if (HasFlag(stack.GetTop()->m_pTag, kReopened)) SolveSuspendTag(suspend, pTag, 1);
          if (HasAllBits(Row(pTag).m_nMjrType, T::emMjrBlockLevel)) {
            RecoverSuspendTags(suspend, pTag, posToken);
            RemoveAllSuspendTag(suspend);
          }
        } else if (!BackToContainerByEndTag(pCurrent, stack, pTag, posToken, suspend)) {
          AppendLeaf(pCurrent, posToken, nId);
          SolveSuspendTag(suspend, pTag, 1);
        }
      } else {
        CHtmlEntityNode* pNode = AppendElement(pCurrent, posToken, nId);
        stack.Push(pTag, posToken);
        pCurrent = pNode;
        AppendLeaf(pNode, posToken, nId);
        RegisterEntity(pNode, pTag);
        RecoverSuspendTags(suspend, pTag, posToken);
      }
    }
    items.GetNext(pos);
  }
  return 0;
}

CHtmlTokenNode* CHtmlEntityTree::AppendLeaf(CHtmlEntityNode* pParent, POSITION pos, int nTagId) {
  if (m_bNoNodes) return nullptr;
  CHtmlTokenNode* pLeaf = new (m_NodeStore) CHtmlTokenNode(pParent, pos, nTagId);
  pLeaf->SetNodeStore(&m_NodeStore);
  pParent->m_ChildList.AddTail(pLeaf);
  return pLeaf;
}

CHtmlEntityNode* CHtmlEntityTree::AppendElement(CHtmlEntityNode* pParent, POSITION pos, int nTagId) {
  if (m_bNoNodes) return nullptr;
  CHtmlEntityNode* pNode = new (m_NodeStore) CHtmlEntityNode(pParent, pos, nTagId);
  pNode->SetNodeStore(&m_NodeStore);
  pNode->m_ChildList.SetNodeStore(&m_NodeStore);
  pParent->m_ChildList.AddTail(pNode);
  return pNode;
}

int CHtmlEntityTree::IsValidInnerToken(EntityStackItem* pTop, CHtmlTokenItem* pToken) {
  if (pTop == nullptr || pTop->m_pTag == nullptr) return 1;
  if (pToken == nullptr) return 0;
  if (pToken->IsTextToken()) return 1;
  CHtmlTagItem* pTag = pToken->GetSafeTagItemPtr();
  if (pTag == nullptr) return 0;
  if (pTag->IsEndTag() && pTag->GetTagId() == (pTop->m_nTagId | kEndBit)) return 1;
  return TagContain(pTop->m_pTag, pTag);
}

int CHtmlEntityTree::TagContain(CHtmlTagItem* pContainer, CHtmlTagItem* pChild) {
  if (pContainer == nullptr || pChild == nullptr) return 0;
  const DWORD dwMjr = Row(pChild).m_nMjrType;
  if (HasAllBits(dwMjr, T::emMjrNotElement)) return 1;

  int nCntType;
  if (pContainer->IsUnknownTag())
    nCntType = HasFlag(pContainer, kPairedUnknown) ? 255 : 0;
  else
    nCntType = Row(pContainer).m_nCntType;
  const TagContainRule* pRule = GetTagContainRule(nCntType);
  if (pRule == nullptr) return 1;

  const int nBaseId = pChild->GetTagId() & ~kEndBit;
  switch (pRule->m_nMode) {
    case emContainNever:
      return 0;
    case emContainAlways:
      return 1;
    case emContainTable:
      if (!InIdList(pRule->m_nMarkIds, nBaseId)) pChild->SetTokenFlag(kMisplaced);
      return 1;
    default:
      break;
  }

  const bool bInline = HasAllBits(dwMjr, T::emMjrInlineLevel);
  int nClasses = 0;
  if (bInline) nClasses |= emChildInline;
  if (bInline || HasAllBits(dwMjr, T::emMjrBlockLevel)) nClasses |= emChildBlock;
  if (HasAllBits(dwMjr, T::emMjrBlockLevelEmbedded)) nClasses |= emChildListTablePart;
  if (HasAllBits(dwMjr, T::emMjrInlineLevelEmbedded)) nClasses |= emChildParamLike;
  if (HasAllBits(dwMjr, T::emMjrFormControl)) nClasses |= emChildFormControl;

  bool bAccept = (dwMjr & pRule->m_dwMjrAnyBits) != 0 || (nClasses & pRule->m_nAcceptClasses) != 0;
  if (bAccept && ((nClasses & pRule->m_nRefuseClasses) != 0 || InIdList(pRule->m_nRefuseIds, nBaseId))) bAccept = false;
  if (bAccept) {
    if (pRule->m_nMode == emContainPre && bInline && InIdList(pRule->m_nMarkIds, nBaseId))
      pChild->SetTokenFlag(kMisplaced);
    return 1;
  }
  if (InIdList(pRule->m_nAcceptIds, nBaseId)) return 1;
  if (pRule->m_bInsDel && (nBaseId == kIns || nBaseId == kDel)) return 1;
  return 0;
}

int CHtmlEntityTree::RegisterEntity(CHtmlEntityNode* pNode, CHtmlTagItem* pTag) {
  if (pTag == nullptr || pTag->IsEndTag()) return 1;
  switch (pTag->GetTagId()) {
    case kHtml: m_pRegisteredEntities[0] = pNode; break;
    case kHead: m_pRegisteredEntities[1] = pNode; break;
    case kBody: m_pRegisteredEntities[2] = pNode; break;
    case kFrameset: m_pRegisteredEntities[3] = pNode; break;
    default: break;
  }
  return 1;
}

// ---- suspended inline tags ----

int CHtmlEntityTree::GetNewSuspendTag(CSuspendList& list, EntityStackItem* pItem) {
  if (pItem == nullptr || pItem->m_pTag == nullptr) return 0;
  CHtmlTagItem* pTag = pItem->m_pTag;
  if (Row(pTag).m_nOcrType != T::emOcrEndRequired || !HasAllBits(Row(pTag).m_nMjrType, T::emMjrInlineLevel) || HasFlag(pTag, kReopened)) return 0;
  if (!IsSuspendableTagId(pTag->GetTagId() & ~kEndBit)) return 0;
  // Every later container copies each suspended tag, so a hostile page with
  // thousands of unclosed inline tags would grow with the square of its size.
  // Real pages leave a handful open; beyond this many, new ones stay closed.
  constexpr int kMaxSuspendedTags = 32;
  if (list.GetCount() >= kMaxSuspendedTags) return 0;
  list.AddHead(new CSuspendItem(pTag));
  return 1;
}

int CHtmlEntityTree::RecoverSuspendTags(CSuspendList& list, CHtmlTagItem* pTag, POSITION pos) {
  if (list.IsEmpty() || pTag == nullptr || HasFlag(pTag, kReopened)) return 0;
  if (m_pTokenList == nullptr) return 0;
  CHtmlTokenList& tokens = *m_pTokenList;

  // The suspended tags this container takes, innermost first. Their copies go
  // in outermost first, so the page reads as the original nesting.
  int nCount = 0;
  for (POSITION p = list.GetTailPosition(); p != nullptr;) {
    CSuspendItem* pItem = list.GetPrev(p);
    if (pItem != nullptr && TagContain(pTag, pItem->m_pTag)) ++nCount;
  }
  if (nCount == 0) return 1;

  // A page saved after an earlier repair already holds the copies right after
  // pos. Taking those tags as the reopened ones, instead of adding copies in
  // front of them, keeps a second repair from changing the page again.
  bool bAdopt = true;
  {
    POSITION p = pos != nullptr ? pos : nullptr;
    if (p != nullptr) tokens.GetNext(p);
    else bAdopt = false;
    // Expected order after pos: outermost (newest) first.
    for (POSITION q = list.GetHeadPosition(); bAdopt && q != nullptr;) {
      CSuspendItem* pItem = list.GetNext(q);
      if (pItem == nullptr || !TagContain(pTag, pItem->m_pTag)) continue;
      while (p != nullptr && tokens.GetTokenItem(p) != nullptr && tokens.GetTokenItem(p)->IsDiscardedToken())
        tokens.GetNext(p);
      CHtmlTagItem* pNext = p != nullptr ? tokens.GetTagItem(p) : nullptr;
      if (pNext == nullptr || pNext->IsEndTag() || pNext->GetTagId() != pItem->m_pTag->GetTagId() ||
          HasFlag(pNext, kReopened)) {
        bAdopt = false;
        break;
      }
      tokens.GetNext(p);
    }
  }
  if (bAdopt) {
    POSITION p = pos;
    tokens.GetNext(p);
    for (POSITION q = list.GetHeadPosition(); q != nullptr;) {
      CSuspendItem* pItem = list.GetNext(q);
      if (pItem == nullptr || !TagContain(pTag, pItem->m_pTag)) continue;
      while (tokens.GetTokenItem(p)->IsDiscardedToken()) tokens.GetNext(p);
      tokens.GetTagItem(p)->SetTokenFlag(kReopened);
      pItem->m_bReopened = 1;
      tokens.GetNext(p);
    }
    return 1;
  }

  for (POSITION p = list.GetTailPosition(); p != nullptr;) {
    CSuspendItem* pItem = list.GetPrev(p);
    if (pItem == nullptr || !TagContain(pTag, pItem->m_pTag)) continue;
    CHtmlTagItem* pCopy = new CHtmlTagItem();
    pCopy->Copy(pItem->m_pTag);
    pCopy->SetOriginalIndentAfter("");
    pItem->m_bReopened = 1;
    pCopy->SetTokenFlag(kRecovered);
    pCopy->SetTokenFlag(kReopened);
    tokens.InsertAfter(pos, pCopy);
  }
  return 1;
}

int CHtmlEntityTree::SolveSuspendTag(CSuspendList& list, CHtmlTagItem* pTag, int bByEndTag) {
  if (pTag == nullptr) return 0;
  const int nId = pTag->GetTagId();
  for (POSITION p = list.GetTailPosition(); p != nullptr;) {
    POSITION posItem = p;
    CSuspendItem* pItem = list.GetPrev(p);
    if (pItem == nullptr || pItem->m_pTag == nullptr) continue;
    if (bByEndTag) {
      if ((pItem->m_pTag->GetTagId() | kEndBit) == nId) {
        list.RemoveAt(posItem);
        delete pItem;
        return 1;
      }
    } else if (pItem->m_pTag->GetTagId() == nId) {
      pItem->m_bReopened = 0;
      return 1;
    }
  }
  return 0;
}

int CHtmlEntityTree::RemoveAllSuspendTag(CSuspendList& list) {
  while (!list.IsEmpty()) delete list.RemoveHead();
  return 1;
}

int CHtmlEntityTree::BackToContainerByEndTag(CHtmlEntityNode*& pCurrent, CHtmlEntityStack& stack,
                                             CHtmlTagItem* pEndTag, POSITION pos, CSuspendList& list) {
  if (pEndTag == nullptr) return 0;
  const int nTop = stack.GetStackLevel();
  const int nEndId = pEndTag->GetTagId();
  CHtmlEntityNode* pNode = pCurrent;
  int nFound = -1;
  for (int nLevel = nTop - 1; nLevel >= 1; --nLevel) {
    if (pNode != nullptr) pNode = pNode->GetParentNode();
    EntityStackItem* pItem = stack.GetEntityStackItem(nLevel);
    if (pItem->m_pTag != nullptr && (pItem->m_nTagId | kEndBit) == nEndId) {
      nFound = nLevel;
      break;
    }
  }
  if (nFound < 0) return 0;

  for (int nLevel = nTop - 1; nLevel > nFound; --nLevel) {
    CHtmlTagItem* pOpen = stack.GetEntityStackItem(nLevel)->m_pTag;
    if (HasFlag(pOpen, kReopened)) SolveSuspendTag(list, pOpen, 0);
  }
  if (HasFlag(stack.GetTop()->m_pTag, kReopened)) SolveSuspendTag(list, pEndTag, 1);
  stack.BackStackLevel(nFound);
  // The node walk can only run out above a nesting deeper than the stack.
  if (pNode == nullptr) pNode = m_pRoot;
  AppendLeaf(pNode, pos, nEndId);
  stack.Pop();
  pCurrent = pNode != nullptr && pNode->GetParentNode() != nullptr ? pNode->GetParentNode() : m_pRoot;
  return 1;
}

// ---- lookup ----

CHtmlEntityNode* CHtmlEntityTree::SearchParentEntityNode(POSITION pos, CHtmlEntityNode* pStart) {
  if (m_pRoot == nullptr) return nullptr;
  CHtmlEntityNode* pNode = pStart != nullptr ? pStart : m_pRoot;
  while (pNode != nullptr) {
    CHtmlEntityNode* pNext = nullptr;
    for (POSITION p = pNode->GetFirstChildPosition(); p != nullptr;) {
      CHtmlTreeNode* pChild = pNode->GetNextChild(p);
      if (pChild == nullptr) continue;
      if (pChild->IsTokenNode()) {
        if (pChild->GetTokenPosition() == pos) return pNode;
      } else {
        pNext = static_cast<CHtmlEntityNode*>(pChild);
        break;
      }
    }
    pNode = pNext;
  }
  return nullptr;
}

}  // namespace telvanix
