#!/usr/bin/env bash
# Builds one corpus checker from bench/ (its CMake target, with the library)
# for the corpus-*.sh scripts, and prints the checker's path.
#   scripts/build-corpus-checker.sh NAME BUILD_DIR [ON|OFF]
# NAME is the checker (bench/NAME.cpp); ON builds both with AddressSanitizer
# and UBSan (RelWithDebInfo), OFF (the default) as Release.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
name="$1"
build="$2"
sanitize="${3:-OFF}"
type=Release
if [ "$sanitize" = ON ]; then
  type=RelWithDebInfo
fi
cmake -S "$repo" -B "$build" -DCMAKE_BUILD_TYPE="$type" -DTELVANIX_SANITIZE="$sanitize" \
  -DTELVANIX_BUILD_TESTS=OFF -DTELVANIX_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" --target "$name" -j2 >/dev/null
echo "$build/bench/$name"
