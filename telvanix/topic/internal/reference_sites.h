// One value in a page that names a file: where its bytes stand, how it is
// written and what unlinking it does. The topic document's reference walk
// makes these; listing, rewriting and unlinking all read the same list.
#pragma once

#include "telvanix/foundation/file_moves.h"
#include "telvanix/platform/types.h"

namespace telvanix::topic_detail {

// Which walk a site belongs to, so each Replace… variant takes its own.
enum SiteGroup : int {
  kSiteTag = 0x1,       // attributes of ordinary tags, comments' vector images
  kSiteStyle = 0x2,     // url() and "@import" in style attributes and STYLE blocks
  kSiteHhctrl = 0x4,    // help-control items and buttons
  kSiteSitemap = 0x8,   // contents and index entries
  kSiteMedia = 0x10,    // PARAM values of other objects
  kSiteAll = 0x1F
};

// What removing a reference to a deleted file does.
enum SiteUnlink : int {
  kUnlinkNone = 0,     // left as written
  kUnlinkAnchor,       // the link is unwrapped
  kUnlinkElement,      // the element goes
  kUnlinkObject,       // the OBJECT at objectPos goes
  kUnlinkParam,        // the PARAM goes
  kUnlinkSitemapEntry  // the entry's topic goes (contents or index rule)
};

// What a run may do: rewrite moved references, unlink deleted ones.
enum ReplaceMode : int { kReplaceRewrite = 0x1, kReplaceUnlink = 0x2 };

struct ReferenceSite {
  POSITION pos = nullptr;        // token that holds the bytes
  POSITION objectPos = nullptr;  // the OBJECT a PARAM or "data" belongs to
  int offset = 0;                // span in the token's source bytes
  int length = 0;
  int html = 1;                  // written as HTML text (character references)
  char quote = 0;                // the attribute's quote, 0 for none
  int wholeValue = 0;            // the span is an attribute's whole value
  int group = kSiteTag;
  int unlink = kUnlinkNone;
  CFileReference ref;
};

}  // namespace telvanix::topic_detail
