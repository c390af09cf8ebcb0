#!/usr/bin/env python3
"""Compares `telvanix text` with an independent extractor, page by page.

    scripts/corpus_text_words.py [--tool PATH] [--default-charset NAME]
        [--jobs N] [--list N] [--report FILE] [--goal PERCENT] TREE...

For every page under each TREE (".htm" and ".html", any letter case) the
visible words of scripts/visible_words.py are compared with the words of the
`text` field that `telvanix text TREE` prints; words are split the same way
on both sides (white space, C0 controls, DEL, U+00A0), so only the words
count, not where lines break. Prints per tree: pages compared, pages
identical and the percentage, the pages whose title words differ, a count
per reason class, and the differing pages (at most --list of them; --report
writes every one as JSON lines) with the first differing word.

The tool is --tool, else $TELVANIX_TOOL, else build/tools/telvanix of this
work tree. A page that declares no charset is read in --default-charset,
else the one TELVANIX_CODEPAGE names, else windows-1252.

Reason classes, tried in this order:
  charset      the tool's words are the page's words read in the default
               code page: the page's own charset was not honoured
  reference    the tool's words are the page's words with only the names of
               the tool's own reference table decoded (read from
               telvanix/html/char_entity_table.cpp): a name the tool does not
               know; the fair comparison for this class is the count without it
  charset+X    a page in a charset other than the default: read in the
               default code page, what is left differs by class X (the word
               shown is from that reading)
  not-extracted  the tool printed nothing for the page (its message is shown)
  char-as-blank  the tool gives a blank where the page shows a character
  replacement  the tool's word holds U+FFFD where the page has a character
  raw-reference  the tool's word still holds "&name;" or "&#...;"
  boundary     the same characters, cut into words differently
  missing      words the page shows that the tool leaves out
  extra        words the tool gives that the page does not show
  cut-to-byte  the tool's character is the page's character cut to its low
               byte (a numeric reference beyond the code page)
  character    the words differ in characters
Exit status: 0 when every tree reaches the goal (99.9% by default), 1 when
one does not, 2 when the tool cannot be run.
"""

import argparse
import difflib
import json
import multiprocessing
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import visible_words as vw  # noqa: E402

REPO = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def tool_reference_names():
    """{name: character} of the tool's own named-reference table, or {}."""
    path = os.path.join(REPO, "telvanix", "html", "char_entity_table.cpp")
    try:
        src = open(path, encoding="utf-8").read()
    except OSError:
        return {}
    names = {}
    for name, code in re.findall(r'\{"([A-Za-z0-9]+)", 0, (\d+)\}', src):
        code = int(code)
        names[name] = bytes([code]).decode("cp1252", "telvanix-check") if code < 256 else chr(code)
    return names


_TOOL_NAMES = {}
_NAMED = re.compile(r"&([A-Za-z][A-Za-z0-9]*)(;?)")


def _tool_table_references(s):
    """Numeric references as HTML5 reads them; named ones only when the tool's table has the name."""
    if "&" not in s:
        return s
    s = vw._numeric_only(s)

    def one(m):
        ch = _TOOL_NAMES.get(m.group(1))
        return ch if ch is not None else m.group(0)

    return _NAMED.sub(one, s)


def _words_with(path, default, forced=None, tool_table=False):
    with open(path, "rb") as f:
        data = f.read()
    text, _, _ = vw.decode_page(data, default, forced)
    if tool_table:
        vw._references = _tool_table_references
    try:
        return vw.visible(text)[1]
    finally:
        vw.set_references("html5")


def _low_byte(ch):
    """What a character becomes when cut to its low byte read as windows-1252 (a control as a blank)."""
    b = ord(ch) & 0xFF
    return " " if b <= 0x20 else bytes([b]).decode("cp1252", "telvanix-check")


def _first_difference(tool, mine):
    """(class, index, tool word, checker word) of the first differing region."""
    sm = difflib.SequenceMatcher(None, tool, mine, autojunk=False)
    for op, a1, a2, b1, b2 in sm.get_opcodes():
        if op == "equal":
            continue
        tw = " ".join(tool[a1:a2][:3])
        mw = " ".join(mine[b1:b2][:3])
        if op == "insert":
            return "missing", b1, "", mw
        if op == "delete":
            return "extra", b1, tw, ""
        ta, mb = "".join(tool[a1:a2]), "".join(mine[b1:b2])
        if ta == mb:
            return "boundary", b1, tw, mw
        ts, ms = " ".join(tool[a1:a2]), " ".join(mine[b1:b2])
        if len(ts) == len(ms) and all(x == y or x == " " for x, y in zip(ts, ms)):
            return "char-as-blank", b1, tw, mw
        if len(ts) == len(ms) and all(x == y or x == _low_byte(y) or (x == " " and _low_byte(y) in " \x7f\xa0")
                                          for x, y in zip(ts, ms)):
            return "cut-to-byte", b1, tw, mw
        if "\ufffd" in ta and "\ufffd" not in mb:
            return "replacement", b1, tw, mw
        if re.search(r"&(#[0-9xX]|[A-Za-z])[A-Za-z0-9]*;?", ta) and not re.search(r"&(#|[A-Za-z])", mb):
            return "raw-reference", b1, tw, mw
        return "character", b1, tw, mw
    return "equal", 0, "", ""


def _compare(job):
    path, tool_words, tool_title, default = job
    try:
        with open(path, "rb") as f:
            data = f.read()
        text, codec, source = vw.decode_page(data, default)
        title, mine = vw.visible(text)
    except (OSError, LookupError) as e:
        return {"file": path, "class": "checker-error", "detail": str(e)}
    r = {"file": path, "charset": codec, "charset_source": source,
         "title_same": tool_title is not None and vw.split_words(tool_title) == vw.split_words(title)}
    if tool_words is None:
        r.update({"class": "not-extracted", "index": 0, "tool": "", "checker": " ".join(mine[:3])})
        return r
    if tool_words == mine:
        r["class"] = "equal"
        return r
    cls = None
    against = mine
    if codec != default:
        # Read as the default code page: what is left is not the charset.
        forced = _words_with(path, default, forced=default)
        if tool_words == forced:
            cls = "charset"
        elif _TOOL_NAMES and tool_words == _words_with(path, default, default, True):
            cls = "charset+reference"
        else:
            against = forced
    if cls is None and _TOOL_NAMES and tool_words == _words_with(path, default, tool_table=True):
        cls = "reference"
    first, index, tw, mw = _first_difference(tool_words, against)
    if cls is None and against is not mine:
        cls = "charset+" + first
    r.update({"class": cls or first, "index": index, "tool": tw, "checker": mw,
              "words": [len(tool_words), len(mine)]})
    return r


def _init_worker(names):
    global _TOOL_NAMES
    _TOOL_NAMES = names


def list_pages(tree):
    pages = []
    for top, dirs, files in os.walk(tree):
        dirs.sort()
        for f in sorted(files):
            if f.lower().endswith((".htm", ".html")):
                pages.append(os.path.join(top, f))
    return pages


def run_tool(tool, tree):
    """({path: (words, title)}, [error lines])."""
    proc = subprocess.run([tool, "text", tree], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if proc.returncode not in (0, 1, 2) or (proc.returncode == 2 and not proc.stdout):
        msg = proc.stderr.decode("utf-8", "replace").strip().splitlines()
        raise RuntimeError("%s text %s: exit status %d%s" % (tool, tree, proc.returncode,
                                                              (": " + msg[0]) if msg else ""))
    out = {}
    for line in proc.stdout.decode("utf-8", "surrogateescape").splitlines():
        if not line.strip():
            continue
        j = json.loads(line)
        out[os.path.normpath(j["file"])] = (vw.split_words(j.get("text", "")), j.get("title", ""))
    return out, proc.stderr.decode("utf-8", "replace").splitlines()


def default_codec(arg):
    if arg:
        return vw._python_codec(arg)
    cp = os.environ.get("TELVANIX_CODEPAGE", "").strip().lower()
    if not cp:
        return "windows-1252"
    cp = re.sub(r"^(windows-|cp)", "", cp)
    if cp == "65001":
        return "utf-8"
    return vw._python_codec("cp" + cp if cp.isdigit() else cp)


def main(argv=None):
    ap = argparse.ArgumentParser(description="telvanix text against an independent extractor.")
    ap.add_argument("trees", nargs="+")
    ap.add_argument("--tool", default=os.environ.get("TELVANIX_TOOL", os.path.join(REPO, "build/tools/telvanix")))
    ap.add_argument("--default-charset")
    ap.add_argument("--jobs", type=int, default=min(2, os.cpu_count() or 1))
    ap.add_argument("--list", type=int, default=20, help="differing pages listed per tree (0: all)")
    ap.add_argument("--report", help="write every differing page to this file as JSON lines")
    ap.add_argument("--goal", type=float, default=99.9)
    args = ap.parse_args(argv)
    default = default_codec(args.default_charset)
    if not default:
        print("corpus_text_words.py: unknown default charset", file=sys.stderr)
        return 2
    names = tool_reference_names()
    report = open(args.report, "w", encoding="utf-8") if args.report else None
    status = 0
    totals = [0, 0]
    with multiprocessing.Pool(max(1, args.jobs), _init_worker, (names,)) as pool:
        for tree in args.trees:
            try:
                tool_out, tool_errors = run_tool(args.tool, tree)
            except (OSError, RuntimeError, ValueError) as e:
                print("corpus_text_words.py: %s" % e, file=sys.stderr)
                return 2
            pages = list_pages(tree)
            seen = set(os.path.normpath(p) for p in pages)
            pages += sorted(p for p in tool_out if p not in seen)
            jobs = []
            for p in pages:
                words, title = tool_out.get(os.path.normpath(p), (None, None))
                jobs.append((p, words, title, default))
            results = list(pool.imap(_compare, jobs, chunksize=32))
            errors_by_page = {}
            for line in tool_errors:
                for p in pages:
                    if line.startswith("telvanix: " + p + ":") or line.startswith(p + ":"):
                        errors_by_page[p] = line
            same = sum(1 for r in results if r["class"] == "equal")
            titles = sum(1 for r in results if r.get("title_same"))
            n = len(results)
            pct = 100.0 * same / n if n else 100.0
            met = pct >= args.goal
            status = status if met else 1
            totals[0] += n
            totals[1] += same
            classes = {}
            for r in results:
                if r["class"] != "equal":
                    classes[r["class"]] = classes.get(r["class"], 0) + 1
            print("%s: %d pages compared, %d identical (%.2f%%), %d differ; titles identical: %d; goal %.1f%% %s"
                  % (tree, n, same, pct, n - same, titles, args.goal, "met" if met else "NOT met"))
            if classes:
                print("  classes: " + ", ".join("%s %d" % kv for kv in sorted(classes.items(), key=lambda kv: -kv[1])))
                fair = n - sum(classes.get(c, 0) for c in ("reference",))
                if classes.get("reference"):
                    print("  without the reference class: %d of %d identical (%.2f%%)"
                          % (same, fair, 100.0 * same / fair if fair else 100.0))
            listed = 0
            for r in results:
                if r["class"] == "equal":
                    continue
                if report:
                    report.write(json.dumps(r, ensure_ascii=False) + "\n")
                if args.list and listed >= args.list:
                    continue
                listed += 1
                rel = os.path.relpath(r["file"], tree)
                if r["class"] == "not-extracted":
                    print("  %s: not-extracted: %s" % (rel, errors_by_page.get(r["file"], "no line in the output")))
                else:
                    print("  %s: %s (%s from %s): word %d: tool %s / checker %s"
                          % (rel, r["class"], r.get("charset"), r.get("charset_source"), r.get("index", 0),
                             json.dumps(r.get("tool", ""), ensure_ascii=False),
                             json.dumps(r.get("checker", ""), ensure_ascii=False)))
            if args.list and n - same > listed:
                print("  ... %d more" % (n - same - listed))
    if len(args.trees) > 1:
        print("all: %d pages compared, %d identical (%.2f%%)"
              % (totals[0], totals[1], 100.0 * totals[1] / totals[0] if totals[0] else 100.0))
    if report:
        report.close()
    return status


if __name__ == "__main__":
    sys.exit(main())
