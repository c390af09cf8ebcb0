// Values measured with getComputedStyle in a headless browser on pages of
// bare tags, written only with the CSS the library's stylesheet parser reads:
// sizes in em of the parent (0.833333em is the browser's "smaller"), margins
// in em of the element's own size. Tags the tag table does not know are left
// out: a rule for one unknown tag would match them all.
#include "telvanix/view/internal/browser_default_sheet.h"

#include <strings.h>

#include <cctype>
#include <cstring>
#include <string>

namespace telvanix {

const char kBrowserDefaultSheet[] = R"css(
html { color: #000000; font-family: "Times New Roman"; font-size: 16px }
body { margin: 8px }

p { margin: 1em 0 }
h1 { font-size: 2em; font-weight: bold; margin: 0.67em 0 }
h2 { font-size: 1.5em; font-weight: bold; margin: 0.83em 0 }
h3 { font-size: 1.17em; font-weight: bold; margin: 1em 0 }
h4 { font-weight: bold; margin: 1.33em 0 }
h5 { font-size: 0.83em; font-weight: bold; margin: 1.67em 0 }
h6 { font-size: 0.67em; font-weight: bold; margin: 2.33em 0 }
blockquote { margin: 1em 40px }
dl { margin: 1em 0 }
dd { margin-left: 40px }
address { font-style: italic }
center { text-align: center }
hr { color: #808080; margin: 0.5em 0; border: 1px inset }

ul, menu, dir { list-style-type: disc; margin: 1em 0; padding-left: 40px }
ol { list-style-type: decimal; margin: 1em 0; padding-left: 40px }
/* Lists inside lists: no margins; markers by depth of unordered lists. */
ul ul, ul ol, ul dir, ul menu, ul dl, ol ul, ol ol, ol dir, ol menu, ol dl, dir ul, dir ol,
dir dir, dir menu, dir dl, menu ul, menu ol, menu dir, menu menu, menu dl, dl ul, dl ol,
dl dir, dl menu, dl dl { margin-top: 0; margin-bottom: 0 }
ul ul, ul dir, ul menu, ol ul, ol dir, ol menu, dir ul, dir dir, dir menu, menu ul, menu dir,
menu menu { list-style-type: circle }
ul ul ul, ul ul dir, ul ul menu, ul ol ul, ul ol dir, ul ol menu, ul dir ul, ul dir dir,
ul dir menu, ul menu ul, ul menu dir, ul menu menu, ol ul ul, ol ul dir, ol ul menu, ol ol ul,
ol ol dir, ol ol menu, ol dir ul, ol dir dir, ol dir menu, ol menu ul, ol menu dir,
ol menu menu, dir ul ul, dir ul dir, dir ul menu, dir ol ul, dir ol dir, dir ol menu,
dir dir ul, dir dir dir, dir dir menu, dir menu ul, dir menu dir, dir menu menu, menu ul ul,
menu ul dir, menu ul menu, menu ol ul, menu ol dir, menu ol menu, menu dir ul, menu dir dir,
menu dir menu, menu menu ul, menu menu dir, menu menu menu { list-style-type: square }

pre, xmp, listing, plaintext { font-family: monospace; white-space: pre; margin: 1em 0 }
tt, code, kbd, samp { font-family: monospace }
b, strong { font-weight: bold }
i, em, cite, var, dfn { font-style: italic }
u, ins { text-decoration: underline }
s, strike, del { text-decoration: line-through }
small { font-size: 0.833333em }
big { font-size: 1.2em }
sub { font-size: 0.833333em; vertical-align: sub }
sup { font-size: 0.833333em; vertical-align: super }
nobr { white-space: nowrap }
a:link { color: #0000ee; text-decoration: underline }

caption { text-align: center }
thead, tbody, tfoot, tr { vertical-align: middle }
/* A cell takes its row's alignment; a format that cannot hold "inherit"
   keeps the "middle" before it. */
td, th { vertical-align: middle; vertical-align: inherit; padding: 1px }
th { font-weight: bold; text-align: center }

/* Form controls take nothing of the text around them; an INPUT is a text field
   unless its type says otherwise, which a tag rule cannot tell. */
input, select, textarea, button { color: #000000; font-family: Arial; font-size: 13.333333px; font-weight: normal; font-style: normal; text-align: left }
textarea { font-family: monospace; white-space: pre-wrap; background-color: #ffffff; padding: 2px; border: 1px solid #767676 }
select { background-color: #efefef; white-space: pre; border: 1px solid #767676 }
input { background-color: #ffffff; padding: 1px 2px; border: 2px inset #767676 }
option { padding: 0 2px 1px; white-space: nowrap }
button { background-color: #efefef; text-align: center; padding: 1px 6px; border: 2px outset #000000 }
fieldset { margin: 0 2px; padding: 0.35em 0.75em 0.625em; border: 2px groove #efefef }
iframe { border: 2px inset }
)css";

const char kBrowserQuirksSheet[] = R"css(
table { font-size: 16px; font-weight: normal; font-style: normal; text-align: left; white-space: normal }
form { margin-bottom: 1em }
)css";

namespace {

// Public identifiers of document types older than HTML 4.01, by prefix.
constexpr const char* kQuirksPublicPrefixes[] = {
    "-//IETF//DTD HTML",  "-//W3C//DTD HTML 3",           "-//W3C//DTD HTML 4.0 Transitional//",
    "-//W3C//DTD HTML 4.0 Frameset//", "-//W3C//DTD HTML Experimental", "-//W3C//DTD W3 HTML//",
    "-//W3O//DTD W3 HTML",
};
constexpr const char* kQuirksWithoutSystemId[] = {
    "-//W3C//DTD HTML 4.01 Transitional//",
    "-//W3C//DTD HTML 4.01 Frameset//",
};

bool StartsNoCase(const std::string& text, const char* prefix) {
  return strncasecmp(text.c_str(), prefix, strlen(prefix)) == 0;
}

// The next word, or the next quoted literal without its quotes; `quoted` says
// which it was.
std::string NextItem(const char*& p, bool& quoted) {
  while (*p && (isspace(static_cast<unsigned char>(*p)) != 0)) ++p;
  quoted = *p == '"' || *p == '\'';
  const char* begin = quoted ? ++p : p;
  while (*p && (quoted ? *p != begin[-1] : (isspace(static_cast<unsigned char>(*p)) == 0 && *p != '>'))) ++p;
  std::string item(begin, p);
  if (quoted && *p) ++p;
  return item;
}

}  // namespace

int IsQuirksModeDoctype(const char* declaration) {
  if (declaration == nullptr || strncasecmp(declaration, "<!doctype", 9) != 0) return 1;
  const char* p = declaration + 9;
  bool quoted = false;
  if (strcasecmp(NextItem(p, quoted).c_str(), "html") != 0) return 1;
  const std::string keyword = NextItem(p, quoted);
  if (strcasecmp(keyword.c_str(), "public") != 0) return 0;
  const std::string publicId = NextItem(p, quoted);
  NextItem(p, quoted);
  const bool hasSystemId = quoted;
  for (const char* prefix : kQuirksPublicPrefixes) {
    if (StartsNoCase(publicId, prefix)) return 1;
  }
  for (const char* prefix : kQuirksWithoutSystemId) {
    if (!hasSystemId && StartsNoCase(publicId, prefix)) return 1;
  }
  return 0;
}

}  // namespace telvanix
