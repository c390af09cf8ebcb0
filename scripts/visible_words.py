#!/usr/bin/env python3
"""The words a reader sees on an HTML page, found independently of telvanix.

Used by scripts/corpus_text_words.py to check `telvanix text` word for word;
also runs on its own:

    scripts/visible_words.py [--default-charset cp1252] [--charset NAME]
                             [--references html5|none] [--lines] PAGE...

prints one JSON object per page: file, charset (the Python codec used),
charset_source (bom, meta-charset, meta-http-equiv, default, forced), title
and words. --lines prints the words one per line instead.

What counts, and why:
- Charset: a byte order mark, else the first <meta charset>, else the first
  <meta http-equiv="Content-Type" content="...; charset=...">, else the
  default (windows-1252, the tool's default code page). Labels are read as a
  browser reads them: "iso-8859-1" and "us-ascii" mean windows-1252, a
  "utf-16" label on a page without a byte order mark means UTF-8, an unknown
  label is ignored. Bytes the charset cannot decode become U+FFFD, except the
  five bytes windows-1252 leaves undefined, which stand for themselves.
- References: every numeric and named reference is decoded as HTML5 does
  (html.unescape: the full table of 2,231 names, the legacy names without a
  semicolon, &#128; to &#159; as windows-1252, &#0; and out-of-range values
  as U+FFFD). --references none leaves named references as written, for
  telling apart words that differ only by a name the tool does not know.
- Hidden: the page's head content (TITLE, META, LINK, STYLE, SCRIPT),
  SCRIPT, STYLE, comments, declarations and processing instructions,
  NOSCRIPT, NOFRAMES, NOEMBED, IFRAME content and TEMPLATE, wherever they
  stand, and the fallback content of the help viewer's own controls (OBJECT
  with their class ids), as the viewer shows the control instead. Text written in the head is shown, as a browser moves it into the
  body. CSS (display:none, generated content such as list numbers or the
  quotes of Q) is not applied. An unclosed TITLE holds the rest of the page
  up to a "</title>", as in a browser.
- Shown besides text: the alt text of IMG and of INPUT type=image.
- Word boundaries: a word is a run of characters between whitespace (any
  Unicode white space, the C0 controls, DEL and U+00A0). Tags of elements
  laid out as blocks, list items, table rows and cells, BR, and replaced or
  form elements (IMG, INPUT, SELECT, TEXTAREA, BUTTON, OBJECT, APPLET, EMBED,
  IFRAME) separate words; inline tags do not, so "<b>Ca</b>fé" is one word.
- Raw content: SCRIPT, STYLE, XMP, IFRAME, NOEMBED, NOFRAMES, NOSCRIPT hold
  text up to their end tag (tags inside are text); TITLE and TEXTAREA too,
  with references decoded; PLAINTEXT holds the rest of the page.
"""

import argparse
import codecs
import html
import html.parser as _html_parser
import json
import re
import sys

# --- charset ---------------------------------------------------------------

_LABELS = {}


def _label(codec, *labels):
    for name in labels:
        _LABELS[name] = codec


_label("utf-8", "utf-8", "utf8", "unicode-1-1-utf-8", "unicode11utf8", "unicode20utf8", "x-unicode20utf8")
# A browser reads all of these as windows-1252.
_label("windows-1252", "windows-1252", "cp1252", "x-cp1252", "iso-8859-1", "iso8859-1", "iso_8859-1",
       "iso88591", "iso_8859-1:1987", "latin1", "l1", "us-ascii", "ascii", "ansi_x3.4-1968", "cp819",
       "csisolatin1", "ibm819", "iso-ir-100")
_label("cp932", "shift_jis", "shift-jis", "sjis", "ms_kanji", "ms932", "windows-31j", "x-sjis", "csshiftjis", "cp932")
_label("cp949", "euc-kr", "ks_c_5601-1987", "ks_c_5601-1989", "ksc5601", "ksc_5601", "windows-949", "cp949",
       "korean", "csksc56011987", "iso-ir-149")
_label("gb18030", "gb2312", "gbk", "chinese", "x-gbk", "csgb2312", "gb_2312", "gb_2312-80", "iso-ir-58",
       "cp936", "windows-936", "gb18030")
_label("big5hkscs", "big5", "big5-hkscs", "x-x-big5", "cn-big5", "csbig5", "cp950")
_label("euc_jp", "euc-jp", "x-euc-jp", "cseucpkdfmtjapanese")
_label("iso2022_jp", "iso-2022-jp", "csiso2022jp")
# A utf-16 label is taken as UTF-8 when no byte order mark says otherwise.
_label("utf-8", "utf-16", "utf-16le", "utf-16be", "unicode", "ucs-2")
for _n in range(1250, 1259):
    _label("windows-%d" % _n, "windows-%d" % _n, "cp%d" % _n, "x-cp%d" % _n)
_label("cp874", "windows-874", "tis-620", "iso-8859-11")
_label("koi8-r", "koi8-r", "koi8", "koi", "cskoi8r")
_label("koi8-u", "koi8-u", "koi8-ru")


def _python_codec(label):
    """The Python codec for a charset label, or None when the label means nothing."""
    label = label.strip().strip("\"'").strip().lower()
    if not label:
        return None
    if label in _LABELS:
        return _LABELS[label]
    m = re.fullmatch(r"iso[-_ ]?8859[-_ ]?(\d+)", label)
    if m and m.group(1) != "1":
        label = "iso8859_" + m.group(1)
    try:
        return codecs.lookup(label).name
    except LookupError:
        return None


_META = re.compile(rb"<meta(?=[\s/])([^>]*)>", re.I)
_ATTR = re.compile(rb"""([^\s=/>"']+)(?:\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s>]*)))?""")
_COMMENT = re.compile(rb"<!--.*?(?:-->|\Z)", re.S)


def _meta_attributes(body):
    attrs = {}
    for m in _ATTR.finditer(body):
        name = m.group(1).lower().decode("latin-1")
        if name not in attrs:
            value = m.group(2) if m.group(2) is not None else m.group(3) if m.group(3) is not None else m.group(4)
            attrs[name] = (value or b"").decode("latin-1")
    return attrs


def _charset_from_content(content):
    # The way a browser reads "text/html; charset=..." in a META content.
    m = re.search(r"charset\s*=\s*(\"[^\"]*\"?|'[^']*'?|[^\s;\"']+)", content, re.I)
    return m.group(1).strip("\"'") if m else None


def detect_charset(data, default="windows-1252"):
    """(codec, source, bytes after any byte order mark) for a page's bytes."""
    if data.startswith(codecs.BOM_UTF8):
        return "utf-8", "bom", data[3:]
    if data.startswith(codecs.BOM_UTF16_BE):
        return "utf-16-be", "bom", data[2:]
    if data.startswith(codecs.BOM_UTF16_LE):
        return "utf-16-le", "bom", data[2:]
    scan = _COMMENT.sub(b"", data)
    metas = [_meta_attributes(m.group(1)) for m in _META.finditer(scan)]
    for attrs in metas:
        if "charset" in attrs:
            codec = _python_codec(attrs["charset"])
            if codec:
                return codec, "meta-charset", data
    for attrs in metas:
        if attrs.get("http-equiv", "").strip().lower() == "content-type" and "content" in attrs:
            label = _charset_from_content(attrs["content"])
            codec = _python_codec(label) if label else None
            if codec:
                return codec, "meta-http-equiv", data
    return default, "default", data


def _c1_passthrough(err):
    # windows-1252 leaves 0x81, 0x8D, 0x8F, 0x90 and 0x9D undefined; a browser
    # shows them as the C1 controls of the same number.
    if isinstance(err, UnicodeDecodeError) and err.encoding in ("cp1252", "windows-1252"):
        bad = err.object[err.start:err.end]
        return "".join(chr(b) for b in bad), err.end
    return "\ufffd", err.end


codecs.register_error("telvanix-check", _c1_passthrough)


def decode_page(data, default="windows-1252", forced=None):
    """(text, codec, source) for a page's bytes."""
    if forced:
        codec, source, body = _python_codec(forced) or forced, "forced", data
        if body.startswith(codecs.BOM_UTF8):
            body = body[3:]
    else:
        codec, source, body = detect_charset(data, default)
    text = body.decode(codec, "telvanix-check")
    if text.startswith("\ufeff"):
        text = text[1:]
    return text, codec, source


# --- references ------------------------------------------------------------

_NAMED_OR_NUMERIC = re.compile(r"&(#[0-9]+;?|#[xX][0-9a-fA-F]+;?|[^\t\n\f <&#;]{1,32};?)")


def _numeric_only(s):
    if "&" not in s:
        return s

    def one(m):
        return html.unescape(m.group(0)) if m.group(1).startswith("#") else m.group(0)

    return _NAMED_OR_NUMERIC.sub(one, s)


_references = html.unescape


def _unescape(s):
    return _references(s)


# html.parser decodes text and attribute values through its module's
# unescape; routing it here lets --references choose the table.
_html_parser.unescape = _unescape


def set_references(mode):
    global _references
    _references = html.unescape if mode == "html5" else _numeric_only


# --- the walk --------------------------------------------------------------

BLOCKS = frozenset(
    "address article aside blockquote body caption center col colgroup dd details dialog dir div dl dt "
    "fieldset figcaption figure footer form frame frameset h1 h2 h3 h4 h5 h6 header hgroup hr html isindex "
    "layer legend li listing main menu multicol nav ol optgroup option p plaintext pre search section summary "
    "table tbody td tfoot th thead tr ul xmp".split())
# Replaced and form elements: a box of their own between the words around.
SEPARATORS = frozenset("applet button embed iframe img input object select textarea".split())
HIDDEN = frozenset("title script style noscript noframes noembed iframe template".split())
# Content read as text up to the end tag.
RAW_TEXT = frozenset("script style xmp iframe noembed noframes noscript title textarea".split())
RCDATA = frozenset("title textarea".split())

# Controls of the help viewer: it shows the control, never the fallback
# content written inside the OBJECT.
VIEWER_CONTROLS = frozenset(("adb880a6-d8ff-11cf-9377-00aa003b7a11", "4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab",
                             "3b6a91e4-5c2d-11d0-9e37-0000a4c81d55"))


def _is_viewer_control(attrs):
    classid = (dict(attrs).get("classid") or "").strip().lower()
    if classid.startswith("clsid:"):
        classid = classid[6:]
    return classid.strip("{}") in VIEWER_CONTROLS


_BLANKS = re.compile(r"[\s\x00-\x20\x7f\xa0]+")


def split_words(text):
    return [w for w in _BLANKS.split(text) if w]


class _Walk(_html_parser.HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.parts = []
        self.hidden = None  # name of the hidden element being passed over
        self.hidden_depth = 0
        self.title = None
        self._title_parts = None

    def _sep(self):
        self.parts.append(" ")

    def handle_starttag(self, tag, attrs):
        self._start(tag, attrs)

    # HTML ignores the slash of "<x/>": "<title/>" still opens a title.
    handle_startendtag = handle_starttag

    def _start(self, tag, attrs):
        if tag in RAW_TEXT:
            self.set_cdata_mode(tag)
        elif tag == "plaintext":
            self.set_cdata_mode("plaintext\0")  # no end tag ends it
        if self.hidden:
            if tag == self.hidden:
                self.hidden_depth += 1
            return
        if tag in HIDDEN or (tag == "object" and _is_viewer_control(attrs)):
            if tag in SEPARATORS:
                self._sep()
            if tag == "title" and self.title is None:
                self._title_parts = []
            self.hidden, self.hidden_depth = tag, 1
            return
        if tag in BLOCKS or tag == "br" or tag in SEPARATORS:
            self._sep()
        if tag == "img" or (tag == "input" and (dict(attrs).get("type") or "").strip().lower() == "image"):
            alt = dict(attrs).get("alt")
            if alt:
                self.parts.append(alt)
                self._sep()

    def handle_endtag(self, tag):
        if self.hidden:
            if tag == self.hidden:
                self.hidden_depth -= 1
                if self.hidden_depth <= 0:
                    if tag == "title" and self._title_parts is not None:
                        self.title = " ".join(split_words("".join(self._title_parts)))
                        self._title_parts = None
                    if tag in SEPARATORS:
                        self._sep()
                    self.hidden = None
            return
        if tag in BLOCKS or tag == "br" or tag in SEPARATORS:
            self._sep()

    def handle_data(self, data):
        if self.cdata_elem in RCDATA:
            data = _unescape(data)
        if self.hidden:
            if self._title_parts is not None:
                self._title_parts.append(data)
            return
        self.parts.append(data)

    def close(self):
        super().close()
        # Raw content never closed: what the parser holds back is still text.
        rest = self.rawdata
        if rest and self.cdata_elem and not self.hidden:
            self.handle_data(rest)
        self.rawdata = ""


def visible(text):
    """(title, words) of a page's decoded text."""
    walk = _Walk()
    walk.feed(text)
    walk.close()
    return walk.title or "", split_words("".join(walk.parts))


def page_words(path, default="windows-1252", forced=None):
    with open(path, "rb") as f:
        data = f.read()
    text, codec, source = decode_page(data, default, forced)
    title, words = visible(text)
    return {"file": path, "charset": codec, "charset_source": source, "title": title, "words": words}


def main(argv=None):
    ap = argparse.ArgumentParser(description="The words a reader sees on HTML pages.")
    ap.add_argument("pages", nargs="+")
    ap.add_argument("--default-charset", default="windows-1252",
                    help="charset of a page that declares none (default windows-1252)")
    ap.add_argument("--charset", help="read every page in this charset, whatever it declares")
    ap.add_argument("--references", choices=("html5", "none"), default="html5",
                    help="html5: decode every reference (default); none: numeric ones only")
    ap.add_argument("--lines", action="store_true", help="print the words one per line")
    args = ap.parse_args(argv)
    default = _python_codec(args.default_charset)
    if not default:
        print("visible_words.py: unknown charset %r" % args.default_charset, file=sys.stderr)
        return 2
    set_references(args.references)
    status = 0
    for path in args.pages:
        try:
            r = page_words(path, default, args.charset)
        except (OSError, LookupError) as e:
            print("visible_words.py: %s: %s" % (path, e), file=sys.stderr)
            status = 2
            continue
        if args.lines:
            sys.stdout.write("".join(w + "\n" for w in r["words"]))
        else:
            print(json.dumps(r, ensure_ascii=False))
    return status


if __name__ == "__main__":
    sys.exit(main())
