#!/usr/bin/env bash
# A help project of this repository's own headers, made by Debian's doxygen
# (GENERATE_HTMLHELP=YES, CREATE_SUBDIRS=YES: pages in d0/.../ folders, a
# ".hhp", ".hhc" and ".hhk"), then scripts/move-check.sh on it: the folder d8
# moves to api/d8 and the class page of CString to strings/CString.html.
#   scripts/move-check-doxygen.sh TOOL MOVE_COMPARE [WORK]
set -euo pipefail
repo="$(cd "$(dirname "$0")/.." && pwd)"
work="$(mkdir -p "${3:-$(mktemp -d)}" && cd "${3:-.}" && pwd)"
command -v doxygen >/dev/null || { echo "move-check-doxygen.sh: doxygen is not installed" >&2; exit 2; }
rm -rf "$work/doxygen"
cat >"$work/Doxyfile" <<EOD
PROJECT_NAME = telvanix
INPUT = $repo/telvanix
FILE_PATTERNS = *.h
EXCLUDE_PATTERNS = */internal/*
RECURSIVE = YES
EXTRACT_ALL = YES
GENERATE_HTML = YES
GENERATE_HTMLHELP = YES
CHM_FILE = telvanix.chm
GENERATE_LATEX = NO
SEARCHENGINE = NO
HAVE_DOT = NO
QUIET = YES
WARNINGS = NO
CREATE_SUBDIRS = YES
OUTPUT_DIRECTORY = $work/doxygen
EOD
doxygen "$work/Doxyfile" >/dev/null 2>&1
html="$work/doxygen/html"
page="$(cd "$html" && find . -name 'classtelvanix_1_1CString.html' | sed 's|^\./||')"
exec bash "$repo/scripts/move-check.sh" "$1" "$2" "$html" . d8 api/d8 "$page" strings/CString.html "$work/check"
