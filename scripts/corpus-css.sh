#!/usr/bin/env bash
# Fetches two Debian packages full of real stylesheets (fp-docs-3.2.2,
# libjs-bootstrap4) into corpus/ with scripts/fetch-corpus.sh and checks
# that the stylesheet parser's canonical save is stable over every .css in
# them, at-rules kept byte for byte (bench/css_corpus_check.cpp).
#   scripts/corpus-css.sh [BUILD_DIR]
# BUILD_DIR (default ../build-css-corpus beside the repository) gets a
# Release build of the library and the checker.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
work="$("$repo/scripts/fetch-corpus.sh")"
checker="$("$repo/scripts/build-corpus-checker.sh" css_corpus_check "${1:-$repo/../build-css-corpus}")"
echo "stylesheets: $(find "$work" -name '*.css' | wc -l) files under $work"
"$checker" "$work"
