#!/usr/bin/env bash
# Round trip over the fp-docs corpus: every page parsed (tokens, attributes,
# text) and saved unchanged into memory must come back byte for byte, except
# the bytes the tokenizer drops by rule; prints the counts per class.
# Usage: scripts/corpus-roundtrip.sh [path/to/telvanix]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
tool=${1:-$top/build/tools/telvanix}
if [ ! -x "$tool" ]; then
  cmake --preset default >/dev/null && cmake --build --preset default --target telvanix_tool >/dev/null
  tool=$top/build/tools/telvanix
fi
corpus=$("$top/scripts/fetch-corpus.sh")
"$tool" roundtrip --json "$corpus/fp-docs" > "$corpus/roundtrip.json" || status=$?
python3 - "$corpus/roundtrip.json" <<'PY'
import json, sys
r = json.load(open(sys.argv[1]))
print("pages:", r["pages"])
for k, v in r["outcomes"].items():
    print(f"  {k}: {v}")
for e in r["not_identical"]:
    if e["outcome"] != "trailing-byte":
        print("  ", e["outcome"], e["page"], "first difference at", e["first_difference"])
PY
exit "${status:-0}"
