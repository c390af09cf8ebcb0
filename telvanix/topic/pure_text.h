// Plain text of a topic page, as a full-text indexer wants it: the words a
// reader sees, in reading order, with character references decoded to the
// active code page. Markup, SCRIPT, STYLE, comments, the HEAD (the title
// too), help-control objects and the fallback content that a help viewer
// does not show (NOSCRIPT, NOFRAMES, NOEMBED, IFRAME) give no words. Blocks,
// table cells, list items and BR separate words; so do images, whose ALT text
// is taken as words. Blank runs collapse to one space; the text has no
// leading or trailing blanks.
//
// CHtmlFileEx::GetPureText is the document's entry point; the walk itself
// works on any token list.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// Option bits of CHtmlFileEx::GetPureText.
enum EmPureTextOption : int32_t {
  // Every break between blocks is one space: the text is a single line.
  emPureTextOneLine = 0,
  // Block boundaries and BR end a line ("\r\n"); runs of breaks and blanks
  // collapse to one line break. The indexer's default.
  emPureTextLineBreaks = 2
};

namespace topic_detail {

// Tells whether the content of an OBJECT start tag stays unseen (for the
// topic document: a help-control object). May be empty: no object is hidden.
using HiddenObjectTest = std::function<int(CHtmlTagItem*)>;

// The plain text of the list's live tokens with the given option bits: in
// the active code page's byte form, or, given the page's code page, as UTF-8.
std::string CollectPureText(const CHtmlTokenList& list, int option, const HiddenObjectTest& hiddenObject,
                            UINT codePage = 0);

}  // namespace topic_detail
}  // namespace telvanix
