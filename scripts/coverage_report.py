#!/usr/bin/env python3
"""Line coverage per library file from a --coverage build.

    coverage_report.py BUILD_DIR SOURCE_DIR > coverage.txt

Prints one line per file under telvanix/ and tools/: the file, its covered
and executable line counts, and the covered line numbers, so that two runs
can be compared file by file and line set by line set."""
import json, os, subprocess, sys
from collections import defaultdict

build, source = sys.argv[1], os.path.realpath(sys.argv[2])
lines = defaultdict(dict)  # file -> line -> hit
gcdas = [os.path.join(d, f) for d, _, fs in os.walk(build) for f in fs if f.endswith(".gcda")]
for gcda in gcdas:
    out = subprocess.run(["gcov", "--json-format", "--stdout", gcda], cwd=os.path.dirname(gcda),
                         capture_output=True, text=True).stdout
    for doc in out.splitlines():
        if not doc.startswith("{"):
            continue
        for f in json.loads(doc).get("files", []):
            path = os.path.realpath(os.path.join(os.path.dirname(gcda), f["file"])) \
                if not os.path.isabs(f["file"]) else os.path.realpath(f["file"])
            rel = os.path.relpath(path, source)
            if not (rel.startswith("telvanix/") or rel.startswith("tools/")):
                continue
            for l in f["lines"]:
                n = l["line_number"]
                lines[rel][n] = lines[rel].get(n, False) or l["count"] > 0
for rel in sorted(lines):
    hit = sorted(n for n, h in lines[rel].items() if h)
    print(f"{rel} {len(hit)} {len(lines[rel])} " + ",".join(map(str, hit)))
