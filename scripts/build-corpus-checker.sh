#!/usr/bin/env bash
# Builds the library and one corpus checker from bench/ for the corpus-*.sh
# scripts, and prints the checker's path.
#   scripts/build-corpus-checker.sh NAME BUILD_DIR [ON|OFF]
# NAME is the checker (bench/NAME.cpp); ON builds both with AddressSanitizer
# and UBSan (RelWithDebInfo), OFF (the default) as Release.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
name="$1"
build="$2"
sanitize="${3:-OFF}"
flags=(-O2)
type=Release
if [ "$sanitize" = ON ]; then
  flags=(-O1 -g -fsanitize=address,undefined -fno-sanitize-recover=undefined)
  type=RelWithDebInfo
fi
cmake -S "$repo" -B "$build" -DCMAKE_BUILD_TYPE="$type" -DTELVANIX_SANITIZE="$sanitize" \
  -DTELVANIX_BUILD_TESTS=OFF -DTELVANIX_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" --target telvanix -j2 >/dev/null
c++ -std=c++20 "${flags[@]}" -Wall -Wextra -I"$repo" "$repo/bench/$name.cpp" \
  -L"$build" -ltelvanix -Wl,-rpath,"$build" -o "$build/$name"
echo "$build/$name"
