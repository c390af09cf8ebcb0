// Text that the editing commands write into a META's attribute value and read
// back out of it. The user's text is UTF-8; a page holds its own charset, and
// a double-quoted value holds no raw quote, "&", "<" or ">".
#pragma once

#include <string>

#include "telvanix/platform/types.h"

namespace telvanix {
class CByteString;
class CHtmlFileEx;
class CHtmlFileSitemap;
class CHtmlTagItem;
}  // namespace telvanix

namespace telvanix::tool {

// The code page a page's text is in.
UINT PageCodePage(CHtmlFileEx& doc);
// The charset a contents or index file declares, as a page does; else the
// active code page.
UINT SitemapCodePage(CByteString& bytes, const char* name);
// Reads a contents or index file with its names in UTF-8. The reader decodes
// names into the active code page's bytes, which would cut a reference to a
// character outside it, so a UTF-8 copy is read under UTF-8; only the main
// thread may call it. false, with a one-line error, when the file cannot be
// loaded or decoded, or when it gives no entries (an empty file is read as
// empty where emptyIsRead).
bool ReadSitemapAsUtf8(const std::string& file, CHtmlFileSitemap& sitemap, std::string& error, bool emptyIsRead);

// UTF-8 text as an attribute value of a page in `codePage`: the double quote,
// "&", "<" and ">" as references, and a character the code page cannot hold
// as "&#N;".
std::string ToAttributeValue(const std::string& utf8, UINT codePage);

// An attribute value of a page in `codePage` as UTF-8, its character
// references decoded.
std::string AttributeValueToUtf8(const char* value, UINT codePage);

// Text of a page in `codePage` as UTF-8, and back (a character the code page
// cannot hold becomes "&#N;").
std::string PageTextToUtf8(const char* text, UINT codePage);
std::string Utf8ToPageText(const std::string& utf8, UINT codePage);

// The META the topic's getters read for `name` (the first live one whose
// "name" matches without regard to case), or null.
CHtmlTagItem* FindMeta(CHtmlFileEx& doc, const char* name);

}  // namespace telvanix::tool
