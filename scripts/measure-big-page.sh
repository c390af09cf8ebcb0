#!/usr/bin/env bash
# Peak memory and time of `check`, `format --dry-run` and `text` on the 30 MB
# page and on the same bytes as 30 pages (scripts/make-big-page.sh); the 30
# pages are read once with every core (the default) and once with one
# (TELVANIX_JOBS=1). The three inputs of a command are run in turn, RUNS
# times over (default 5), so that a slow spell of a shared machine falls on
# all of them. One line per command and input: peak resident MB, that peak
# as a multiple of the input's bytes, the wall and CPU (user + system)
# seconds of the fastest run, and the median wall time; then, per command,
# the big page's time over the 30 pages' on every core (fastest and median).
# Usage: scripts/measure-big-page.sh [path/to/telvanix] [RUNS]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
tool=${1:-$top/build/tools/telvanix}
runs=${2:-5}
inputs=$("$top/scripts/make-big-page.sh" 2>/dev/null)
log=$(mktemp)
one=$(mktemp)
trap 'rm -f "$log" "$one"' EXIT
declare -A bytes
for input in big split; do bytes[$input]=$(cat "$inputs/$input"/*.htm | wc -c); done
for cmd in check "format --dry-run" text; do
  for ((i = 0; i < runs; i++)); do
    for input in big split split-1job; do
      dir=$inputs/${input%-1job}
      jobs=${TELVANIX_JOBS:-}
      [ "$input" = split-1job ] && jobs=1
      # shellcheck disable=SC2086
      TELVANIX_JOBS=$jobs /usr/bin/time -o "$one" -f '%M %e %U %S' "$tool" $cmd "$dir" >/dev/null 2>&1 || true
      # time says first when the command exits non-zero (check does, on findings)
      printf '%s|%s|%s|%s\n' "$cmd" "$input" "${bytes[${input%-1job}]}" "$(tail -n 1 "$one")" >> "$log"
    done
  done
done
awk -F'|' '
  function median(list,   n, a, i, j, t) {
    n = split(list, a, " ")
    for (i = 2; i <= n; i++) for (j = i; j > 1 && a[j - 1] > a[j]; j--) { t = a[j]; a[j] = a[j - 1]; a[j - 1] = t }
    return n % 2 ? a[(n + 1) / 2] : (a[n / 2] + a[n / 2 + 1]) / 2
  }
  {
    split($4, f, " "); k = $1 "|" $2
    if (!(k in kb)) order[++n] = k
    if (f[1] > kb[k]) kb[k] = f[1]
    if (!(k in wall) || f[2] < wall[k]) { wall[k] = f[2]; cpu[k] = f[3] + f[4] }
    walls[k] = walls[k] " " f[2]; bytes[k] = $3
  }
  END {
    printf "%-18s %-12s %8s %7s %7s %7s %7s\n", "command", "input", "peak MB", "x page", "wall", "cpu", "median"
    for (i = 1; i <= n; i++) {
      k = order[i]; split(k, p, "|")
      printf "%-18s %-12s %8.0f %7.1f %7.2f %7.2f %7.2f\n", p[1], p[2], kb[k] / 1024, kb[k] * 1024 / bytes[k], wall[k], cpu[k], median(walls[k])
    }
    for (i = 1; i <= n; i++) {
      k = order[i]; split(k, p, "|")
      if (p[2] != "big") continue
      s = p[1] "|split"
      printf "%-18s big / split on every core: %.2f fastest, %.2f median\n", p[1], wall[k] / wall[s], median(walls[k]) / median(walls[s])
    }
  }' "$log"
