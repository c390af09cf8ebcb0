#!/usr/bin/env bash
# Compares `telvanix text` with the independent extractor scripts/visible_words.py
# word for word on fp-docs and on the Debian Reference in German, French,
# Japanese and Simplified Chinese (fetched by scripts/fetch-corpus.sh into
# corpus/ or TELVANIX_CORPUS, never committed). Prints per corpus the pages
# compared, identical and the percentage, and the pages that differ with the
# first differing word and a reason class (scripts/corpus_text_words.py).
#   scripts/corpus-text-words.sh [TOOL] [options of corpus_text_words.py]
# TOOL (or TELVANIX_TOOL) is the telvanix binary to check; without one,
# build/tools/telvanix of this work tree is built (default preset) and used.
# Exit status 0 when every corpus reaches 99.9% identical pages, 1 otherwise.
set -euo pipefail
repo="$(cd "$(dirname "$0")/.." && pwd)"
tool="${TELVANIX_TOOL:-}"
if [ $# -gt 0 ] && [ "${1#-}" = "$1" ]; then tool=$1; shift; fi
if [ -z "$tool" ]; then
  tool="$repo/build/tools/telvanix"
  (cd "$repo" && { [ -f build/CMakeCache.txt ] || cmake --preset default >/dev/null; } &&
    cmake --build --preset default --target telvanix_tool -j2 >/dev/null)
fi
corpus="$("$repo/scripts/fetch-corpus.sh" | tail -n 1)"
trees=("$corpus/fp-docs")
for lang in de fr ja zh-cn; do
  # The manual's own folder: the package also links it from two doc folders.
  trees+=("$corpus/debian-reference-$lang/usr/share/debian-reference")
done
exec python3 "$repo/scripts/corpus_text_words.py" --tool "$tool" "$@" "${trees[@]}"
