// A file reference written in HTML attribute text ("a&amp;b.htm#top"):
// resolved and rewritten through CFileMoves on its decoded form, then
// written back with the character references it was written with, so that a
// rewrite changes nothing but the names that moved.
#pragma once

#include "telvanix/foundation/file_moves.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"

namespace telvanix {

// The project path the reference names, "" for none (CFileMoves::ResolveReference
// of the decoded text).
TELVANIX_API CString ResolveHtmlReference(const CFileMoves& moves, const char* written);

// The reference rewritten as HTML text into `out` (set only for
// emRewritten). Characters the old text wrote as references are written with
// the same references; "&" otherwise as "&amp;" (unless the old text wrote a
// bare "&"), and `quote` ('"' or '\'', the attribute's quote) as a
// reference. With quote 0 and canQuote set, a value that an unquoted
// attribute cannot hold comes back in double quotes.
// `target`, when given, gets what ResolveHtmlReference gives.
TELVANIX_API CFileMoves::EmRewrite RewriteHtmlReference(const CFileMoves& moves, const char* written, char quote,
                                                        int canQuote, CString& out, CString* target = nullptr);

// `plain` written as HTML text the way `like` was written (the rules above).
TELVANIX_API CString EncodeHtmlReferenceLike(const char* plain, const char* like, char quote);

}  // namespace telvanix
