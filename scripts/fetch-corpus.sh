#!/usr/bin/env bash
# Fetches the real-world corpora used by the corpus checks and benchmarks into
# corpus/ (git-ignored): the fp-docs HTML manuals and the bootstrap 4 CSS.
# Nothing fetched here is committed. Prints the corpus folder on success.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
dest="${TELVANIX_CORPUS:-$top/corpus}"
mkdir -p "$dest"
fetch() {  # package, target folder
  local pkg=$1 dir=$2
  [ -d "$dir" ] && [ -n "$(ls -A "$dir" 2>/dev/null)" ] && return 0
  local tmp
  tmp=$(mktemp -d)
  (cd "$tmp" && apt-get download "$pkg" >/dev/null 2>&1) || {
    sudo=""; [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -qq && (cd "$tmp" && apt-get download "$pkg" >/dev/null 2>&1)
  }
  mkdir -p "$dir"
  dpkg -x "$tmp"/*.deb "$dir"
  rm -rf "$tmp"
}
fetch fp-docs-3.2.2 "$dest/fp-docs"
fetch libjs-bootstrap4 "$dest/bootstrap4"
echo "$dest"
