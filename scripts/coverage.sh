#!/usr/bin/env bash
# Builds the suite with --coverage, runs it, and prints line coverage per
# library file (see coverage_report.py).
#   scripts/coverage.sh [BUILD_DIR] > coverage.txt
set -euo pipefail
repo="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$repo/build-coverage}"
cmake -S "$repo" -B "$build" -DCMAKE_BUILD_TYPE=Debug -DTELVANIX_LTO=OFF \
  -DCMAKE_CXX_FLAGS=--coverage -DCMAKE_C_FLAGS=--coverage \
  -DCMAKE_EXE_LINKER_FLAGS=--coverage -DCMAKE_SHARED_LINKER_FLAGS=--coverage >/dev/null
cmake --build "$build" -j2 >/dev/null
find "$build" -name '*.gcda' -delete
ctest --test-dir "$build" -j2 --output-on-failure >&2 || true
python3 "$repo/scripts/coverage_report.py" "$build" "$repo"
