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
build="${1:-$repo/../build-css-corpus}"
mkdir -p "$build"
# Both packages, as every corpus check gets them.
work="$("$repo/scripts/fetch-corpus.sh")"

cmake -S "$repo" -B "$build" -DCMAKE_BUILD_TYPE=Release -DTELVANIX_BUILD_TESTS=OFF \
  -DTELVANIX_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" --target telvanix -j2 >/dev/null
c++ -std=c++20 -O2 -I"$repo" "$repo/bench/css_corpus_check.cpp" -L"$build" -ltelvanix \
  -Wl,-rpath,"$build" -o "$build/css_corpus_check"

echo "stylesheets: $(find "$work" -name '*.css' | wc -l) files under $work"
"$build/css_corpus_check" "$work"
