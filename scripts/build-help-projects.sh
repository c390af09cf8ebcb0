#!/usr/bin/env bash
# Builds two real help projects from the small sources in
# samples/generated-src/ with Debian's generators: doxygen with
# GENERATE_HTMLHELP=YES into OUT/doxygen/html, and Sphinx's htmlhelp builder
# into OUT/sphinx (pages, ".hhp", ".hhc", ".hhk"; no help compiler is run).
# Installs doxygen, python3-sphinx and python3-sphinxcontrib.htmlhelp when
# they are missing (sudo when not root). Prints OUT on success.
#   scripts/build-help-projects.sh [OUT]      (default: build-help/, git-ignored)
set -euo pipefail
repo="$(cd "$(dirname "$0")/.." && pwd)"
out="$(mkdir -p "${1:-$repo/build-help}" && cd "${1:-$repo/build-help}" && pwd)"
src="$repo/samples/generated-src"

need=()
command -v doxygen >/dev/null || need+=(doxygen)
command -v sphinx-build >/dev/null || need+=(python3-sphinx)
/usr/bin/python3 -c 'import sphinxcontrib.htmlhelp' 2>/dev/null || need+=(python3-sphinxcontrib.htmlhelp)
if [ ${#need[@]} -gt 0 ]; then
  sudo=""; [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${need[@]}" >/dev/null
fi

# doxygen: the Doxyfile's relative paths are read from the source folder.
rm -rf "$out/doxygen"
mkdir -p "$out/doxygen"
(cd "$src/doxygen" && { cat Doxyfile; echo "OUTPUT_DIRECTORY = $out/doxygen"; } | doxygen - >"$out/doxygen.log" 2>&1) || {
  echo "build-help-projects.sh: doxygen failed, see $out/doxygen.log" >&2; exit 1; }

# Sphinx: Debian's own interpreter, where its packages are installed.
rm -rf "$out/sphinx" "$out/sphinx-doctrees"
/usr/bin/python3 -m sphinx -q -b htmlhelp -d "$out/sphinx-doctrees" "$src/sphinx" "$out/sphinx" >"$out/sphinx.log" 2>&1 || {
  echo "build-help-projects.sh: sphinx-build failed, see $out/sphinx.log" >&2; exit 1; }
echo "$out"
