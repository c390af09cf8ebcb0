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
corpus="$("$repo/scripts/fetch-corpus.sh" | tail -n 1)"
checker="$("$repo/scripts/build-corpus-checker.sh" topic_corpus_check "${1:-$repo/../build-topic-corpus}" ON)"
"$checker" "$corpus/fp-docs"
