// The element tree of a page, built over its token list and owned by it.
// Its nodes live in the tree's own storage and go with the tree (or with the
// next build); a host must not keep a node beyond that.
// Building pairs start and end tags, repairs the HTML/HEAD/BODY outline,
// closes elements that cannot hold what follows and reopens misnested inline
// formatting in the next container. The repairs are made in the token list
// itself (inserted tokens, token flags), so saving the list writes the
// repaired page.
#pragma once

#include "telvanix/foundation/rgl_list.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/html/entity_stack.h"
#include "telvanix/html/token_item.h"
#include "telvanix/html/tree_node.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CHtmlTokenList;
class CHtmlTokenItem;
class CHtmlTagItem;

class TELVANIX_API CHtmlEntityTree {
 public:
  enum EmEntityNodeType : int32_t {
    emRootEntity = 0,
    emHtmlEntity = 1,
    emHeadEntity = 2,
    emBodyEntity = 3,
    emFramesetEntity = 4
  };

  // Build flags: HTML treatment (outline records and repair) or the XML
  // flavour (matching and building only). With emBuildNoNodes the list is
  // matched and repaired exactly as by a full build, but no node is made
  // (the root stays null): for a caller that wants the repaired page and not
  // the tree, which would take several times the page's size.
  enum EmBuildFlag : int32_t { emBuildHtml = 0x10000, emBuildXml = 0x20000, emBuildNoNodes = 0x40000 };

  // Token flags that building sets or reads: the tree's names for bits of
  // CHtmlTokenItem::EmTokenFlag.
  enum EmTreeTokenFlag : uint32_t {
    emTokenDiscardedFlag = CHtmlTokenItem::emTokenDiscarded,
    emTokenPairedUnknownFlag = CHtmlTokenItem::emTokenPairedUnknown,
    emTokenStrayEndFlag = CHtmlTokenItem::emTokenStrayEndTag,
    emTokenUnclosedFlag = CHtmlTokenItem::emTokenUnclosed,
    emTokenPairedFlag = CHtmlTokenItem::emTokenPaired,
    emTokenRecoveredFlag = CHtmlTokenItem::emTokenRecoveryInserted,
    emTokenOutsideHtmlFlag = CHtmlTokenItem::emTokenOutsideHtml,
    emTokenMisplacedFlag = CHtmlTokenItem::emTokenMisplaced,
    emTokenReopenedFlag = CHtmlTokenItem::emTokenReopened
  };

  // Which outline record: the four elements, then the three content groups.
  enum EmOutlineRecord : int32_t {
    emOutlineHtml = 0,
    emOutlineHead = 1,
    emOutlineBody = 2,
    emOutlineFrameset = 3,
    emOutlineHeadContent = 4,
    emOutlineBodyContent = 5,
    emOutlineFrameContent = 6,
    emOutlineRecordCount = 7
  };

  // For the elements: first start tag, last end tag and their counts. For the
  // content groups: first and last tag of the group; the counts stay 0.
  struct OutlineRecord {
    POSITION m_posFirst;
    POSITION m_posLast;
    int m_nStartCount;
    int m_nEndCount;
  };

  // An inline tag left open when a container closed it; reopened (copied) at
  // the start of each following container until its end tag is met.
  class TELVANIX_API CSuspendItem : public CRglObject {
   public:
    explicit CSuspendItem(CHtmlTagItem* pTag) : m_pTag(pTag), m_bReopened(0) {}
    CHtmlTagItem* m_pTag;  // the tag in the token list, not owned
    int m_bReopened;
  };
  // Owns its items: RemoveAllSuspendTag deletes them.
  using CSuspendList = CRglList<CSuspendItem*>;

  CHtmlEntityTree();
  CHtmlEntityTree(const CHtmlEntityTree&) = delete;
  CHtmlEntityTree& operator=(const CHtmlEntityTree&) = delete;
  virtual ~CHtmlEntityTree();

  // Deletes the tree and clears what building found; keeps the list pointer.
  void Resume();

  // Matches, repairs and builds over pList. 0 only for a null list.
  int Build(CHtmlTokenList* pList, int nFlags);

  // The root or a registered element (last of its kind); null when none.
  CHtmlEntityNode* GetEntityNode(EmEntityNodeType nType) const;
  CHtmlEntityNode* GetRootNode() const { return m_pRoot; }
  CHtmlTokenList* GetBasedTokenList() const { return m_pTokenList; }

  // From pStart (the root when null): the node one of whose leaf children
  // stands for pos, descending only through each node's first element child.
  CHtmlEntityNode* SearchParentEntityNode(POSITION pos, CHtmlEntityNode* pStart);

  // What the matching pass found: faults counted, and whether any text exists.
  int GetMismatchCount() const { return m_nMismatchCount; }
  int HasText() const { return m_bHasText; }
  // The record, or null for an index outside 0..6.
  const OutlineRecord* GetOutlineRecord(int nRecord) const;

  // ---- The steps of Build, in the order it runs them. ----

  // Pairs tags and sets the pairing flags. 1 when a mismatch was counted.
  int CheckMatchTags(int nFlags);
  int CollectHtmlMatchInfo(CHtmlTagItem* pTag, POSITION pos);
  int CollectXmlMatchInfo(CHtmlTagItem* pTag, POSITION pos);

  int Recover(int nFlags);
  int RecoverHtmlOutline();
  int RecoverXmlOutline();
  int RecoverHtmlTokenList(int nFlags);
  int RecoverXmlTokenList(int nFlags);

  int BuildTree(int nFlags);
  // Whether the token may stand inside the element of pTop.
  int IsValidInnerToken(EntityStackItem* pTop, CHtmlTokenItem* pToken);
  // The containment rules; may mark the child 0x40000 (see the table).
  int TagContain(CHtmlTagItem* pContainer, CHtmlTagItem* pChild);
  int RegisterEntity(CHtmlEntityNode* pNode, CHtmlTagItem* pTag);

  int GetNewSuspendTag(CSuspendList& list, EntityStackItem* pItem);
  int RecoverSuspendTags(CSuspendList& list, CHtmlTagItem* pTag, POSITION pos);
  int SolveSuspendTag(CSuspendList& list, CHtmlTagItem* pTag, int bByEndTag);
  int RemoveAllSuspendTag(CSuspendList& list);
  int BackToContainerByEndTag(CHtmlEntityNode*& pCurrent, CHtmlEntityStack& stack, CHtmlTagItem* pEndTag,
                              POSITION pos, CSuspendList& list);

  // One row of the containment table (tag_contain_table.cpp), chosen by the
  // container's content type.
  struct TagContainRule {
    int m_nCntType;
    int m_nMode;              // EmContainMode
    DWORD m_dwMjrAnyBits;     // accept a child whose major type has any of these
    int m_nAcceptClasses;     // EmChildClass bits accepted
    int m_nRefuseClasses;     // EmChildClass bits refused in any case
    int m_nAcceptIds[8];      // accepted whatever their class (0 ends the list)
    int m_nRefuseIds[16];     // refused although their class is accepted
    int m_bInsDel;            // fall back to accepting INS and DEL
    int m_nMarkIds[8];        // see emContainTable / emContainPre
  };
  enum EmContainMode : int32_t {
    emContainNever = 0,
    emContainRule = 1,
    emContainAlways = 2,
    emContainTable = 3,  // always; marks every child not listed in m_nMarkIds
    emContainPre = 4     // by rule; marks an accepted inline child listed in m_nMarkIds
  };
  enum EmChildClass : int32_t {
    emChildInline = 0x1,
    emChildBlock = 0x2,
    emChildListTablePart = 0x4,
    emChildParamLike = 0x8,
    emChildFormControl = 0x10
  };
  static const TagContainRule ms_tTagContainTable[];
  static const int ms_nTagContainTableSize;
  // The row for a content type; content types without a row accept anything.
  static const TagContainRule* GetTagContainRule(int nCntType);

 private:
  // New nodes in the tree's storage, appended to pParent's children; null
  // without making anything when the build makes no nodes.
  CHtmlTokenNode* AppendLeaf(CHtmlEntityNode* pParent, POSITION pos, int nTagId);
  CHtmlEntityNode* AppendElement(CHtmlEntityNode* pParent, POSITION pos, int nTagId);
  // Drops the tree: deletes the nodes that own something, frees the store.
  void ReleaseNodes();

  CHtmlEntityNode* m_pRoot;
  CHtmlTokenList* m_pTokenList;
  CHtmlEntityNode* m_pRegisteredEntities[4];
  OutlineRecord m_OutlineRecords[emOutlineRecordCount];
  int m_nMismatchCount;
  int m_bHasText;
  bool m_bNoNodes = false;  // the present build makes no nodes (emBuildNoNodes)
  // Where the nodes of the present tree live; emptied with the tree.
  CHtmlTreeNode::CNodeStore m_NodeStore;
};

}  // namespace telvanix
