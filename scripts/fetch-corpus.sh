#!/usr/bin/env bash
# Fetches the real-world corpora used by the corpus checks and benchmarks into
# corpus/ (git-ignored), or into TELVANIX_CORPUS when that is set, so several
# work trees can share one copy:
#   fp-docs/                 the fp-docs HTML manuals (16,021 pages, mostly 1252)
#   bootstrap4/              the bootstrap 4 CSS
#   debian-reference-LANG/   the Debian Reference HTML for LANG = de, fr, ja,
#                            zh-cn (UTF-8 pages in four languages), each with
#                            the common stylesheet and images beside its pages
# Nothing fetched here is committed. Prints the corpus folder on success.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
dest="${TELVANIX_CORPUS:-$top/corpus}"
mkdir -p "$dest"
fetch() {  # target folder, package...
  local dir=$1
  shift
  [ -d "$dir" ] && [ -n "$(ls -A "$dir" 2>/dev/null)" ] && return 0
  local tmp
  tmp=$(mktemp -d)
  (cd "$tmp" && apt-get download "$@" >/dev/null 2>&1) || {
    sudo=""; [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -qq && (cd "$tmp" && apt-get download "$@" >/dev/null 2>&1)
  }
  # Unpacked beside the target first, so an interrupted fetch leaves no
  # half-filled folder that the next run would take as done.
  local part="$dir.part"
  rm -rf "$part"
  mkdir -p "$part"
  for deb in "$tmp"/*.deb; do dpkg -x "$deb" "$part"; done
  rm -rf "$tmp" "$dir"
  mv "$part" "$dir"
}
fetch "$dest/fp-docs" fp-docs-3.2.2
fetch "$dest/bootstrap4" libjs-bootstrap4
for lang in de fr ja zh-cn; do
  fetch "$dest/debian-reference-$lang" "debian-reference-$lang" debian-reference-common
done
echo "$dest"
