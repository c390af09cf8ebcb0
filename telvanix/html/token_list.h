// CHtmlTokenList cuts the bytes of a page into an ordered list of text and
// tag tokens such that every source byte lands in a token's original data or
// in the indent after of the tag before it (apart from the few malformed
// cases the tokenizer drops on purpose), and offers the searches, insertions
// and tag pairing the rest of the library works with. It owns its tokens and
// the element tree built over them.
//
// Reading is a single pass that never backtracks. Tokens read from a page,
// their attributes and decoded texts come from the list's arena, which is
// emptied by ClearAll and reused by the next BuildTokenList.
#pragma once

#include <cstdint>

#include "telvanix/foundation/rgl_list.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_arena.h"
#include "telvanix/html/token_item.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CHtmlEntityTree;

class TELVANIX_API CHtmlTokenList : public CRglObject {
 public:
  using CTokenItemList = CRglList<CHtmlTokenItem*, CHtmlTokenItem*>;

  CHtmlTokenList();
  CHtmlTokenList(const CHtmlTokenList&) = delete;
  CHtmlTokenList& operator=(const CHtmlTokenList&) = delete;
  ~CHtmlTokenList() override;

  // Offered every token the tokenizer makes, before it is appended. 0 refuses
  // it: the token is deleted and its bytes are passed over.
  virtual int CommitNewToken(CHtmlTokenItem* pToken);

  // Deletes the tree, every token and every node. Returns 1.
  int ClearAll();
  // Tokenizes [first, end) after ClearAll; nFlags go to every token's
  // Analyse (1 identify, 2 also attributes and text, 0x100 original mark).
  // The bytes are copied: the source need not outlive the call. Returns 1.
  int BuildTokenList(const unsigned char* first, const unsigned char* end, int nFlags);

  // The token at pos; the typed forms give null for the other type.
  CHtmlTokenItem* GetTokenItem(POSITION pos) const;
  CHtmlTagItem* GetTagItem(POSITION pos) const;
  CHtmlTextItem* GetTextItem(POSITION pos) const;

  CHtmlEntityTree* GetEntityTree() const { return m_pEntityTree; }
  // How many times the nodes of this list's tree went (the tree rebuilt,
  // replaced or deleted): a holder of node pointers that saw the same count
  // knows they still stand.
  unsigned int GetTreeReleaseCount() const { return m_nTreeReleases; }
  // Analyse(nFlags) on every token when nFlags holds 2. Returns 1.
  int AnalyseList(int nFlags);
  // Replaces the tree by one built over this list; the build's result.
  int BuildEntityTree(int nFlags);

  // Tokenizes the terminated text and inserts copies of its tokens after pos
  // (before it when bBefore). 0 for a null pos or text.
  int InsertHtmlStream(POSITION pos, const unsigned char* text, int bBefore);
  // Inserts deep copies of other's non-discarded tokens, in order, after pos
  // (before it when bBefore). 0 when pos or other is null or pos holds none.
  int InsertTokenList(POSITION pos, CHtmlTokenList* pOther, int bBefore);

  // Pairs start and end tags and sets the pairing flags. Returns 1.
  int MarkTags();

  // Searches; all of them pass over discarded tokens.
  POSITION GetTagHeadPosition(const char* name);
  int GetNextTag(const char* name, POSITION& pos);
  POSITION FindFirstTagPosition(POSITION& pos, CHtmlTagItem& tag);
  // From pos inclusive: the first tag with tag's id; pos moves past it.
  POSITION FindNextTagPosition(POSITION& pos, CHtmlTagItem& tag);
  // The end tag closing the start tag at pos, nesting counted; null if none.
  POSITION FindEndTagPosition(POSITION pos);
  // From from (the head when null) up to but not including to.
  POSITION FindTagWithinPositions(POSITION from, POSITION to, CHtmlTagItem& tag);
  int GetTextDefinedAfter(POSITION pos, CHtmlTextItem*& pText);

  // Walking, in source order.
  int GetCount() const { return m_TokenList.GetCount(); }
  int IsEmpty() const { return m_TokenList.IsEmpty(); }
  POSITION GetHeadPosition() const { return m_TokenList.GetHeadPosition(); }
  POSITION GetTailPosition() const { return m_TokenList.GetTailPosition(); }
  // The token at pos; pos moves to the next (previous) node, null at the end.
  CHtmlTokenItem* GetNext(POSITION& pos) const;
  CHtmlTokenItem* GetPrev(POSITION& pos) const;
  CHtmlTokenItem* GetAt(POSITION pos) const { return GetTokenItem(pos); }
  CHtmlTokenItem* GetHead() const;
  CHtmlTokenItem* GetTail() const;

  // Editing; the list takes ownership of the token. A null pos inserts at
  // the head (InsertBefore) or the tail (InsertAfter).
  POSITION AddHead(CHtmlTokenItem* pToken);
  POSITION AddTail(CHtmlTokenItem* pToken);
  POSITION InsertBefore(POSITION pos, CHtmlTokenItem* pToken);
  POSITION InsertAfter(POSITION pos, CHtmlTokenItem* pToken);
  // Unlinks the node and deletes its token. Positions elsewhere stay valid.
  int RemoveAt(POSITION pos);

  // The underlying list of token pointers.
  CTokenItemList& GetTokenItemList();

  // Bytes the list's arena holds (for measurements).
  std::size_t GetArenaBytes() const { return m_Arena.GetReservedBytes(); }
  std::size_t GetArenaUsedBytes() const { return m_Arena.GetUsedBytes(); }

 protected:
  friend class CHtmlEntityTree;  // counts the releases of its nodes
  // One commit step of the tokenizer each; they return the position just
  // after what they consumed.
  const unsigned char* CommitNormalTag(const unsigned char* p, const CHtmlTagItem::TagNameInfo* pInfo,
                                       int nFlags, bool* pAppended);
  const unsigned char* CommitComment(const unsigned char* p, const CHtmlTagItem::TagNameInfo& info, int nFlags);
  const unsigned char* CommitDeclaration(const unsigned char* p, const CHtmlTagItem::TagNameInfo& info, int nFlags);
  const unsigned char* CommitRawTag(const unsigned char* p, const CHtmlTagItem::TagNameInfo& info, int nFlags);
  void CommitText(const unsigned char* first, const unsigned char* last, int bRaw, int nFlags);
  bool AppendTag(const unsigned char* first, const unsigned char* last, const CHtmlTagItem::TagNameInfo* pInfo,
                 int nFlags);
  void DeleteToken(CHtmlTokenItem* pToken);

  CTokenItemList m_TokenList;
  CHtmlEntityTree* m_pEntityTree;
  int m_bPendingWhitespace;
  unsigned int m_nTreeReleases = 0;  // counted where nodes go: here and in the tree's Resume and BuildTree

 private:
  CHtmlTokenArena m_Arena;
  const unsigned char* m_pScanEnd;  // end of the bytes being tokenized
};

}  // namespace telvanix
