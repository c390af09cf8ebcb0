// Text that the editing commands write into a META's attribute value and read
// back out of it: a double-quoted value holds no raw quote, "&", "<" or ">".
#pragma once

#include <string>

#include "telvanix/platform/types.h"

namespace telvanix {
class CByteString;
class CHtmlFileEx;
class CHtmlTagItem;
}  // namespace telvanix

namespace telvanix::tool {

// The code page a page's text is in (for now the active one).
UINT PageCodePage(const CByteString& page);

// Text as an attribute value of a page in `codePage`: the double quote, "&",
// "<" and ">" as references. (The bytes are not converted yet.)
std::string ToAttributeValue(const std::string& utf8, UINT codePage);

// An attribute value of a page in `codePage`, its character references
// decoded as the library decodes them (for now into the page's bytes).
std::string AttributeValueToUtf8(const char* value, UINT codePage);

// Text of a page in `codePage` as UTF-8, and back. For now both keep the
// page's bytes as they are: the commands print them through ToUtf8.
std::string PageTextToUtf8(const char* text, UINT codePage);
std::string Utf8ToPageText(const std::string& utf8, UINT codePage);

// The META the topic's getters read for `name` (the first live one whose
// "name" matches without regard to case), or null.
CHtmlTagItem* FindMeta(CHtmlFileEx& doc, const char* name);

}  // namespace telvanix::tool
