#!/usr/bin/env bash
# Runs the topic text parser over the fp-docs pages (scripts/fetch-corpus.sh
# puts them under corpus/fp-docs, git-ignored) as an indexer would, checks that
# no markup, style rule or script line reaches the text, and prints words per
# page and pages per second (bench/topic_text_corpus_check.cpp).
#   scripts/corpus-topic-text.sh [BUILD_DIR]
# BUILD_DIR (default ../build-topic-text-corpus beside the repository) gets a
# Release build of the library and the checker; TELVANIX_SANITIZE=ON in the
# environment builds both with AddressSanitizer and UBSan instead.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$repo/../build-topic-text-corpus}"
corpus="$("$repo/scripts/fetch-corpus.sh" | tail -n 1)"
sanitize="${TELVANIX_SANITIZE:-OFF}"
flags=(-O2)
type=Release
if [ "$sanitize" = ON ]; then
  flags=(-O1 -g -fsanitize=address,undefined -fno-sanitize-recover=undefined)
  type=RelWithDebInfo
fi

cmake -S "$repo" -B "$build" -DCMAKE_BUILD_TYPE="$type" -DTELVANIX_SANITIZE="$sanitize" \
  -DTELVANIX_BUILD_TESTS=OFF -DTELVANIX_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" --target telvanix -j2 >/dev/null
c++ -std=c++20 "${flags[@]}" -I"$repo" "$repo/bench/topic_text_corpus_check.cpp" -L"$build" -ltelvanix \
  -Wl,-rpath,"$build" -o "$build/topic_text_corpus_check"

"$build/topic_text_corpus_check" "$corpus/fp-docs"
