// The stack of open elements that the tag-matching passes and the tree builder
// keep while they walk a token list. It is a fixed array (128 KiB), so
// pushing never allocates, and nesting deeper than the array simply stops
// growing instead of writing past it. Ownership: a pass holds its own stack by
// value on its call stack, as a local or as a member of the pass's object
// (the tag pairing holds one); none is made with new or kept past its pass.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CHtmlTagItem;
class CRglObject;

// One open element.
struct TELVANIX_API EntityStackItem {
  CHtmlTagItem* m_pTag;         // the open start tag (not owned)
  POSITION m_Position;          // where that start tag is in the token list
  int m_nTagId;                 // GetTagId() of the tag, cached at push time
  CRglObject* m_pAttachment;    // free for the user; owned only when the stack says so
};

class TELVANIX_API CHtmlEntityStack {
 public:
  enum { emMaxStackLevel = 4095, emStackSize = 4096 };

  CHtmlEntityStack();
  explicit CHtmlEntityStack(int bOwnsAttachments);
  CHtmlEntityStack(const CHtmlEntityStack& other);
  CHtmlEntityStack& operator=(const CHtmlEntityStack& other);
  ~CHtmlEntityStack();

  // Back to level 0 holding only the shared sentinel. Attachments above level
  // 0 are forgotten, not deleted. Returns 1.
  int Resume();

  // Opens an element. Refuses (0, nothing stored) end tags and known tags that
  // cannot have content; unknown tags are always taken. Returns 0 as well when
  // the item just stored is at the last level, which then is never exceeded.
  int Push(CHtmlTagItem* pTag, POSITION pos);

  // Closes the top element. At level 0 it clears the sentinel item itself and
  // returns 0; after that the top tag is null.
  int Pop();

  // The item at the present level; never null.
  EntityStackItem* GetTop();
  // The item at nLevel, or null outside 0..present level.
  EntityStackItem* GetEntityStackItem(int nLevel);
  int GetStackLevel() const { return m_nLevel; }
  // Pops until the present level is nLevel; a target that popping cannot
  // reach stops at level 0. Returns 1.
  int BackStackLevel(int nLevel);

  // The empty tag kept at level 0 by every stack of the process.
  static CHtmlTagItem* GetSentinelTag();

 private:
  int m_nLevel;
  EntityStackItem m_Items[emStackSize];
  int m_bOwnsAttachments;
  // Highest level written since the last Resume; items above it are never
  // read, so Resume and copies touch only what was used.
  int m_nHighWater;
};

}  // namespace telvanix
