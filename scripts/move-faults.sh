#!/usr/bin/env bash
# Kills a changing command at every step and checks that the project is
# always exactly as before or as after, with no temporary file left.
#   scripts/move-faults.sh TOOL PROJECT [WORK] -- MV-ARGUMENTS...
# MV-ARGUMENTS are project paths (SRC... DST) for `telvanix mv`, run from the
# copy's root with --root. For k = 1, 2, ... the move runs with
# TELVANIX_FAULT_AFTER=k (the process kills itself after its k-th write or
# rename), then `telvanix refs` runs plainly (it completes or undoes what it
# finds), and the tree is compared with the tree before and the tree after a
# move that was not interrupted. Stops at the first k the move survives.
# Prints the count of runs and of inconsistent results; exit status 1 when
# any result is inconsistent.
set -euo pipefail
tool="$(realpath "$1")"
project="$(realpath "$2")"
shift 2
work=""
if [ "${1:-}" != "--" ]; then work="$1"; shift; fi
[ "${1:-}" = "--" ] && shift
work="${work:-$(mktemp -d)}"
mkdir -p "$work"
work="$(realpath "$work")"
args=("$@")

rm -rf "$work/before" "$work/after"
cp -a "$project" "$work/before"
cp -a "$project" "$work/after"
(cd "$work/after" && "$tool" mv --root . "${args[@]}" >/dev/null)
if diff -r -q "$work/before" "$work/after" >/dev/null; then
  echo "move-faults.sh: the move changed nothing; nothing to test" >&2
  exit 2
fi

runs=0
bad=0
killed=0
for ((k = 1; k < 100000; k++)); do
  rm -rf "$work/run"
  # Hard links are enough: a change never writes a file in place (it writes
  # a new file and renames it), so the original stays as it was.
  cp -al "$project" "$work/run" 2>/dev/null || cp -a "$project" "$work/run"
  # (The shell's own "Killed" notice is not wanted either.)
  status=$( { (cd "$work/run" && TELVANIX_FAULT_AFTER=$k exec "$tool" mv --root . "${args[@]}" >/dev/null 2>&1); echo $?; } 2>/dev/null)
  # A plain command after the crash completes or undoes the change.
  (cd "$work/run" && "$tool" refs --root . "${args[0]}" >/dev/null 2>&1) || true
  runs=$((runs + 1))
  [ -n "${MOVE_FAULTS_VERBOSE:-}" ] && echo "k=$k status=$status" >&2
  if diff -r -q "$work/before" "$work/run" >/dev/null 2>&1; then
    state=before
  elif diff -r -q "$work/after" "$work/run" >/dev/null 2>&1; then
    state=after
  else
    state=between
    bad=$((bad + 1))
    echo "k=$k: the project is neither as before nor as after:" >&2
    diff -r -q "$work/after" "$work/run" 2>&1 | head -5 >&2 || true
  fi
  if [ "$status" -ne 137 ] && [ "$status" -ne 0 ]; then
    echo "k=$k: the move ended with status $status" >&2
    bad=$((bad + 1))
  fi
  if [ "$status" -eq 137 ]; then killed=$((killed + 1)); fi
  # The first run that is not killed has passed every step.
  if [ "$status" -eq 0 ]; then
    [ "$state" = after ] || { echo "k=$k: finished but not as after" >&2; bad=$((bad + 1)); }
    break
  fi
done
echo "fault runs: $runs ($killed killed), inconsistent: $bad"
[ "$bad" -eq 0 ]
