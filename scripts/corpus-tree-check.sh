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
build="${1:-$repo/../build-tree-corpus}"
corpus="$("$repo/scripts/fetch-corpus.sh" | tail -n 1)"
sanitize="${TELVANIX_SANITIZE:-OFF}"

flags=(-O2)
type=Release
if [ "$sanitize" = ON ]; then
  flags=(-O1 -g -fsanitize=address,undefined -fno-sanitize-recover=undefined)
  type=RelWithDebInfo
fi
cmake -S "$repo" -B "$build" -DCMAKE_BUILD_TYPE=$type -DTELVANIX_SANITIZE="$sanitize" \
  -DTELVANIX_BUILD_TESTS=OFF -DTELVANIX_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" --target telvanix -j2 >/dev/null
c++ -std=c++20 "${flags[@]}" -Wall -Wextra -I"$repo" "$repo/bench/tree_corpus_check.cpp" \
  -L"$build" -ltelvanix -Wl,-rpath,"$build" -o "$build/tree_corpus_check"

"$build/tree_corpus_check" "$corpus/fp-docs"
