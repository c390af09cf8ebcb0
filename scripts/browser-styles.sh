#!/usr/bin/env bash
# Compares the formatting view of `telvanix style --json` with headless
# chromium's computed styles over fp-docs pages (tests/browser/compare_styles.py)
# and prints agreement per property and the disagreement classes.
#   scripts/browser-styles.sh [PAGES] [BUILD_DIR] [-- compare_styles options]
# PAGES (default 500) pages are spread evenly over the 16,021 of fp-docs;
# BUILD_DIR (default ../build-browser-styles beside the repository) gets a
# Release build of the tool. Installs chromium and the npm packages first
# (scripts/install-deps.sh --browser) when they are missing.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
pages="${1:-500}"
build="${2:-$repo/../build-browser-styles}"
shift $(( $# < 2 ? $# : 2 ))
[ "${1:-}" = "--" ] && shift
if ! command -v chromium >/dev/null || [ ! -d "$repo/tests/browser/node_modules/puppeteer-core" ]; then
  "$repo/scripts/install-deps.sh" --browser
fi
corpus="$("$repo/scripts/fetch-corpus.sh")"
cmake -S "$repo" -B "$build" -DCMAKE_BUILD_TYPE=Release -DTELVANIX_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --target telvanix_tool -j2 >/dev/null
start=$(date +%s)
status=0
python3 "$repo/tests/browser/compare_styles.py" --tool "$build/tools/telvanix" \
  --sample "$pages" "$@" "$corpus/fp-docs" || status=$?
echo "time: $(( $(date +%s) - start )) s for $pages pages"
exit $status
