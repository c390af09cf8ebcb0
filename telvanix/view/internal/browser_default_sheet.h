// The formats a browser gives tags before any page stylesheet applies: fonts
// and sizes of headings and phrase tags, block margins, list markers, table
// cells. The formatting view reads them as a stylesheet of the lowest origin,
// below the page's own sheets, attributes and inline styles. What a
// stylesheet cannot say (the TABLE border attribute, the smaller size of
// monospace text whose size was never set) belongs to the view itself.
#pragma once

namespace telvanix {

// Applies to every page.
extern const char kBrowserDefaultSheet[];
// Added for pages a browser shows in its compatibility mode (no DOCTYPE, or
// an old one): tables do not inherit the font of the text around them, and a
// FORM keeps a blank line below it.
extern const char kBrowserQuirksSheet[];

// 1 when a page with this DOCTYPE declaration ("<!DOCTYPE ...>" as written,
// null when the page has none) is shown in compatibility mode: no DOCTYPE, a
// document type other than HTML, HTML 2 and 3, HTML 4.0 Transitional or
// Frameset, and HTML 4.01 Transitional or Frameset without a system
// identifier. HTML 4.01 with one, XHTML and "<!DOCTYPE html>" give 0.
int IsQuirksModeDoctype(const char* declaration);

}  // namespace telvanix
