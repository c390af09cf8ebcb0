#!/usr/bin/env bash
# Moves a folder and a page of a real help project and back, and checks that
#   - `check` finds the same problems before and after, apart from the moved names;
#   - every changed file differs from its original only inside rewritten
#     reference values (bench/move_compare.cpp, token by token);
#   - moving back restores every file byte for byte.
# Prints the time of each move.
#   scripts/move-check.sh TOOL MOVE_COMPARE PROJECT ROOT_IN_PROJECT FOLDER NEW_FOLDER PAGE NEW_PAGE [WORK]
# ROOT_IN_PROJECT is the project root inside PROJECT ("." for PROJECT
# itself); the other paths are under that root.
set -euo pipefail
tool="$(realpath "$1")"
compare="$(realpath "$2")"
project="$(realpath "$3")"
inner="$4"
folder="$5"
newfolder="$6"
page="$7"
newpage="$8"
work="${9:-$(mktemp -d)}"
mkdir -p "$work"
work="$(realpath "$work")"

rm -rf "$work/orig" "$work/proj"
cp -a "$project" "$work/orig"
cp -a "$project" "$work/proj"
root="$work/proj/$inner"
orig="$work/orig/$inner"

now() { date +%s.%N; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", b - a }'; }

"$tool" check "$root" --json >"$work/before.json" 2>/dev/null || true

sync  # the copy's own writes are not the move's
t0=$(now)
(cd "$root" && "$tool" mv --root . "$folder" "$newfolder")
t1=$(now)
sync
t1b=$(now)
(cd "$root" && "$tool" mv --root . "$page" "$newpage")
t2=$(now)
echo "move of folder $folder ($(find "$orig/$folder" -type f | wc -l) files): $(elapsed "$t0" "$t1") s"
echo "move of page $page: $(elapsed "$t1b" "$t2") s"

"$tool" check "$root" --json >"$work/after.json" 2>/dev/null || true
# The same findings apart from the moved names: each finding's kind and
# file, the file mapped through the moves.
python3 - "$work/before.json" "$work/after.json" "$folder" "$newfolder" "$page" "$newpage" <<'EOF'
import json, sys
before, after = json.load(open(sys.argv[1])), json.load(open(sys.argv[2]))
folder, newfolder, page, newpage = sys.argv[3:7]
def moved(p):
    if p == page: return newpage
    if p.startswith(page + "#"): return newpage + p[len(page):]
    if p == folder or p.startswith(folder + "/"): return newfolder + p[len(folder):]
    return p
def key(f, m):
    return (f["kind"], m(f["file"]), m(f.get("resolves_to", "")))
a = sorted(key(f, moved) for f in before["findings"])
b = sorted(key(f, lambda p: p) for f in after["findings"])
print(f"check: {len(a)} findings before, {len(b)} after")
if a != b:
    sa, sb = set(a), set(b)
    for x in sorted(sa - sb)[:10]: print("  only before:", x)
    for x in sorted(sb - sa)[:10]: print("  only after:", x)
    sys.exit(1)
EOF

"$compare" "$orig" "$root" "$folder=$newfolder" "$page=$newpage"

sync
t3=$(now)
(cd "$root" && "$tool" mv --root . "$newpage" "$page")
(cd "$root" && "$tool" mv --root . "$newfolder" "$folder")
t4=$(now)
echo "moves back: $(elapsed "$t3" "$t4") s"
if diff -r -q "$work/orig" "$work/proj"; then
  echo "moved back: every file byte for byte as it was"
else
  echo "moved back: files differ" >&2
  exit 1
fi
