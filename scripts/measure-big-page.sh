#!/usr/bin/env bash
# Peak memory and time of `check`, `format --dry-run` and `text` on the 30 MB
# page and on the same bytes as 30 pages (scripts/make-big-page.sh); the 30
# pages are read once with every core (the default) and once with one
# (TELVANIX_JOBS=1). One line per command and input: peak resident MB, that
# peak as a multiple of the input's bytes, and the wall and CPU (user +
# system) seconds of the fastest of RUNS runs (default 5; the machine may be
# shared). Usage: scripts/measure-big-page.sh [path/to/telvanix] [RUNS]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
tool=${1:-$top/build/tools/telvanix}
runs=${2:-5}
inputs=$("$top/scripts/make-big-page.sh" 2>/dev/null)
log=$(mktemp)
trap 'rm -f "$log"' EXIT
printf '%-18s %-12s %8s %7s %7s %7s\n' command input "peak MB" "x page" wall cpu
for cmd in check "format --dry-run" text; do
  for input in big split split-1job; do
    dir=$inputs/${input%-1job}
    jobs=${TELVANIX_JOBS:-}
    [ "$input" = split-1job ] && jobs=1
    bytes=$(cat "$dir"/*.htm | wc -c)
    for ((i = 0; i < runs; i++)); do
      # shellcheck disable=SC2086
      TELVANIX_JOBS=$jobs /usr/bin/time -o "$log" -a -f '%M %e %U %S' "$tool" $cmd "$dir" >/dev/null 2>&1 || true
    done
    awk -v c="$cmd" -v i="$input" -v b="$bytes" '
      NF == 4 { if ($1 > kb) kb = $1; if (!n++ || $2 < wall) { wall = $2; cpu = $3 + $4 } }
      END { printf "%-18s %-12s %8.0f %7.1f %7.2f %7.2f\n", c, i, kb / 1024, kb * 1024 / b, wall, cpu }' "$log"
    : > "$log"
  done
done
