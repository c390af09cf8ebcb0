// Tag pairing: the one step that the token list's MarkTags and the tree's
// matching pass share. A start tag that can hold content (or an unknown tag)
// is opened on an entity stack; an end tag closes the innermost open element
// with its id, and both are marked paired; the elements it passes over on the
// way down are marked unclosed, or, for an unknown tag, taken as empty. The
// two callers differ only where the rules below say so. Private to the html
// subsystem.
#pragma once

#include "telvanix/html/entity_stack.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_item.h"

namespace telvanix {

// What a pass learns while tags are paired: every tag just before the pairing
// changes its flags or row (WillChange), and every fault the tree counts as a
// mismatch (Mismatch). These do nothing; a pass that keeps a journal or a
// count passes its own type with the same two calls.
struct TagPairingEvents {
  void WillChange(CHtmlTagItem*) {}
  void Mismatch() {}
};

template <class Events = TagPairingEvents>
class CTagPairing {
 public:
  // An end tag walking down the stack meets an unknown tag that is not its
  // start tag. Both callers take that tag as empty; they differ in what the
  // end tag does next.
  enum EmPassedUnknown {
    emPassedUnknownWalkOn,  // MarkTags: look further down for the start tag
    emPassedUnknownStops,   // the tree: stop; the end tag is a stray one
  };
  // An unknown tag still open when the tags run out is taken as empty; MarkTags
  // gives one written "<?...?>" the processing-instruction row instead.
  enum EmOpenUnknown { emOpenUnknownEmpty, emOpenUnknownByXmlType };

  CTagPairing(Events& events, EmPassedUnknown nPassed, EmOpenUnknown nOpen)
      : m_Events(events), m_nPassedUnknown(nPassed), m_nOpenUnknown(nOpen) {}

  // A start tag is opened (the stack refuses one that cannot hold content);
  // an end tag closes what it pairs with.
  void Take(CHtmlTagItem* pTag, POSITION pos) {
    if (!pTag->IsEndTag())
      m_Stack.Push(pTag, pos);
    else
      Close(pTag);
  }

  // Everything open is forgotten, unmarked.
  void Forget() { m_Stack.BackStackLevel(0); }

  // Marks what is still open and empties the stack.
  void CloseRest() {
    while (m_Stack.GetStackLevel() > 0) {
      CHtmlTagItem* pOpen = m_Stack.GetTop()->m_pTag;
      if (pOpen != nullptr) {
        if (pOpen->IsUnknownTag())
          pOpen->ChangeUnknownTagIndex(m_nOpenUnknown == emOpenUnknownByXmlType &&
                                               pOpen->GetXmlType() == CHtmlTagItem::emXmlProcessing
                                           ? CHtmlTagItem::emUnknownXmlPiTagIndex
                                           : CHtmlTagItem::emUnknownEmptyTagIndex);
        else if (pOpen->GetCntType() != CHtmlTagItem::emCntEmpty)
          pOpen->SetTokenFlag(CHtmlTokenItem::emTokenUnclosed);
      }
      m_Stack.Pop();
    }
  }

  CHtmlEntityStack& Stack() { return m_Stack; }

 private:
  void Close(CHtmlTagItem* pEnd) {
    const int nBaseId = pEnd->GetTagId() & ~static_cast<int>(CHtmlTagItem::emTagIdEndBit);
    for (int nLevel = m_Stack.GetStackLevel(); nLevel >= 1; --nLevel) {
      EntityStackItem* pItem = m_Stack.GetEntityStackItem(nLevel);
      CHtmlTagItem* pOpen = pItem->m_pTag;
      if (pOpen == nullptr) break;
      if (pItem->m_nTagId == nBaseId) {
        Pair(pOpen, pEnd);
        m_Stack.BackStackLevel(nLevel - 1);
        return;
      }
      if (pOpen->IsUnknownTag()) {
        m_Events.WillChange(pOpen);
        pOpen->ChangeUnknownTagIndex(CHtmlTagItem::emUnknownEmptyTagIndex);
        if (m_nPassedUnknown == emPassedUnknownStops) break;
        continue;
      }
      if (pOpen->GetCntType() == CHtmlTagItem::emCntEmpty) {
        m_Events.WillChange(pEnd);
        pEnd->SetTokenFlag(CHtmlTokenItem::emTokenStrayEndTag);
      } else if (pOpen->GetOcrType() == CHtmlTagItem::emOcrEndOptional ||
                 pOpen->GetOcrType() == CHtmlTagItem::emOcrEndRequired) {
        // An element whose end tag may be left out is closed silently; one
        // whose end tag is required counts as a fault.
        m_Events.WillChange(pOpen);
        pOpen->SetTokenFlag(CHtmlTokenItem::emTokenUnclosed);
        if (pOpen->GetOcrType() == CHtmlTagItem::emOcrEndRequired) m_Events.Mismatch();
      }
    }
    // Nothing open, or its start tag not found.
    m_Events.Mismatch();
    m_Events.WillChange(pEnd);
    pEnd->SetTokenFlag(CHtmlTokenItem::emTokenStrayEndTag);
  }

  void Pair(CHtmlTagItem* pOpen, CHtmlTagItem* pEnd) {
    m_Events.WillChange(pOpen);
    m_Events.WillChange(pEnd);
    if (pEnd->IsUnknownTag()) {
      pOpen->ChangeUnknownTagIndex(CHtmlTagItem::emUnknownContainerTagIndex);
      pEnd->ChangeUnknownTagIndex(CHtmlTagItem::emUnknownContainerTagIndex);
      pOpen->SetTokenFlag(CHtmlTokenItem::emTokenPairedUnknown);
      pEnd->SetTokenFlag(CHtmlTokenItem::emTokenPairedUnknown);
    }
    pOpen->SetTokenFlag(CHtmlTokenItem::emTokenPaired);
    pEnd->SetTokenFlag(CHtmlTokenItem::emTokenPaired);
  }

  Events& m_Events;
  const EmPassedUnknown m_nPassedUnknown;
  const EmOpenUnknown m_nOpenUnknown;
  // A pass's own stack, on its call stack with the pass (see entity_stack.h).
  CHtmlEntityStack m_Stack;
};

}  // namespace telvanix
