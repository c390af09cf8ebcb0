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
corpus="$("$repo/scripts/fetch-corpus.sh" | tail -n 1)"
checker="$("$repo/scripts/build-corpus-checker.sh" topic_text_corpus_check \
  "${1:-$repo/../build-topic-text-corpus}" "${TELVANIX_SANITIZE:-OFF}")"
"$checker" "$corpus/fp-docs"
