#!/usr/bin/env bash
# Repair stability over the fp-docs pages (scripts/fetch-corpus.sh puts them
# under corpus/fp-docs, git-ignored): every page read with the HTML repairs,
# saved as it stands and read again must need no further repair and give a
# tree of the same shape (bench/tree_corpus_check.cpp). Prints how many
# pages needed which repair, and every unstable page.
#   scripts/corpus-tree-check.sh [BUILD_DIR]
# BUILD_DIR (default ../build-tree-corpus beside the repository) gets a
# Release build of the library and the checker; TELVANIX_SANITIZE=ON in the
# environment builds both with AddressSanitizer and UBSan instead.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
corpus="$("$repo/scripts/fetch-corpus.sh" | tail -n 1)"
checker="$("$repo/scripts/build-corpus-checker.sh" tree_corpus_check "${1:-$repo/../build-tree-corpus}" \
  "${TELVANIX_SANITIZE:-OFF}")"
"$checker" "$corpus/fp-docs"
