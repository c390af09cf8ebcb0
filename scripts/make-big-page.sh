#!/usr/bin/env bash
# Makes the inputs of the large-page measurements from the fp-docs corpus
# (nothing made here is committed):
#   OUT/big/page.htm        one page of about 30 MB: the bodies of fp-docs
#                           pages (every other page of the whole manual set in
#                           sorted order, then the pages between, until 30 MB:
#                           class references with their tables and code, the
#                           manuals with PRE and long texts) one after another
#                           in one HTML/HEAD/BODY
#   OUT/split/page-NN.htm   the same bodies cut into 30 pages of about 1 MB
#                           at page boundaries, each in the same HTML/HEAD/BODY
# Links keep their fp-docs spelling, so `check` resolves (and mostly misses)
# them as it would in a real project. OUT defaults to the corpus folder's
# bigpage/. Usage: scripts/make-big-page.sh [OUT] ; prints OUT.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
corpus=$("$top/scripts/fetch-corpus.sh")
out=${1:-$corpus/bigpage}
rm -rf "$out/big" "$out/split"
mkdir -p "$out/big" "$out/split"
python3 - "$corpus/fp-docs/usr/share/doc/fp-docs/3.2.2" "$out" <<'PY'
import os, re, sys
src, out = sys.argv[1], sys.argv[2]
TARGET, PARTS = 30 * 1000 * 1000, 30
pages = sorted(os.path.join(d, f) for d, _, fs in os.walk(src) for f in fs if f.endswith(".html"))
body_re = re.compile(rb"<body[^>]*>(.*)</body>", re.S | re.I)
bodies, total = [], 0
for path in pages[::2] + pages[1::2]:
    m = body_re.search(open(path, "rb").read())
    if m:
        bodies.append(m.group(1))
        total += len(m.group(1))
    if total >= TARGET:
        break
head = (b'<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01 Transitional//EN">\n<html>\n<head>\n'
        b'<meta content="text/html; charset=utf-8" http-equiv="Content-Type">\n'
        b'<title>Free Pascal manuals on one page</title>\n'
        b'<link rel="stylesheet" href="fpdoc.css" type="text/css">\n</head>\n<body>\n')
tail = b"</body>\n</html>\n"
with open(os.path.join(out, "big", "page.htm"), "wb") as f:
    f.write(head + b"".join(bodies) + tail)
part, size, n = [], 0, 1
for i, b in enumerate(bodies):
    part.append(b)
    size += len(b)
    if size >= total / PARTS * n or i == len(bodies) - 1:
        with open(os.path.join(out, "split", "page-%02d.htm" % n), "wb") as f:
            f.write(head + b"".join(part) + tail)
        part, n = [], n + 1
print("%d pages' bodies, %d bytes, %d split pages" % (len(bodies), total, n - 1), file=sys.stderr)
PY
echo "$out"
