#!/usr/bin/env bash
# Runs the topic document over the fp-docs pages (scripts/fetch-corpus.sh puts
# them under corpus/fp-docs, git-ignored) with AddressSanitizer and
# UndefinedBehaviorSanitizer: every getter and enumerator, then an edit, save
# and read-back of each page (bench/topic_corpus_check.cpp).
#   scripts/corpus-topic.sh [BUILD_DIR]
# BUILD_DIR (default ../build-topic-corpus beside the repository) gets a
# sanitized build of the library and the checker.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$repo/../build-topic-corpus}"
corpus="$("$repo/scripts/fetch-corpus.sh" | tail -n 1)"

cmake -S "$repo" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTELVANIX_SANITIZE=ON \
  -DTELVANIX_BUILD_TESTS=OFF -DTELVANIX_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" --target telvanix -j2 >/dev/null
c++ -std=c++20 -O1 -g -fsanitize=address,undefined -fno-sanitize-recover=undefined -I"$repo" \
  "$repo/bench/topic_corpus_check.cpp" -L"$build" -ltelvanix -Wl,-rpath,"$build" -o "$build/topic_corpus_check"

"$build/topic_corpus_check" "$corpus/fp-docs"
