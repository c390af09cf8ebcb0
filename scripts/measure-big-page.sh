#!/usr/bin/env bash
# Peak memory and wall time of `check`, `format --dry-run` and `text` on the
# 30 MB page and on the same bytes as 30 pages (scripts/make-big-page.sh),
# one line per command and input: peak MB, peak as a multiple of the input's
# bytes, seconds. Usage: scripts/measure-big-page.sh [path/to/telvanix]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
tool=${1:-$top/build/tools/telvanix}
inputs=$("$top/scripts/make-big-page.sh" 2>/dev/null)
printf '%-18s %-6s %9s %7s %8s\n' command input "peak MB" "x page" seconds
for cmd in check "format --dry-run" text; do
  for input in big split; do
    dir=$inputs/$input
    bytes=$(cat "$dir"/*.htm | wc -c)
    log=$(mktemp)
    # shellcheck disable=SC2086
    /usr/bin/time -v "$tool" $cmd "$dir" >/dev/null 2>"$log" || true
    kb=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$log")
    wall=$(sed -n 's/.*Elapsed (wall clock) time (h:mm:ss or m:ss): //p' "$log")
    secs=$(echo "$wall" | awk -F: '{ s = 0; for (i = 1; i <= NF; i++) s = s * 60 + $i; print s }')
    awk -v c="$cmd" -v i="$input" -v kb="$kb" -v b="$bytes" -v s="$secs" \
      'BEGIN { printf "%-18s %-6s %9.0f %7.1f %8.2f\n", c, i, kb / 1024, kb * 1024 / b, s }'
    rm -f "$log"
  done
done
