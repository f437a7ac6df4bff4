#!/usr/bin/env bash
# The share of test code: non-blank, non-comment lines of C, C++ and Tcl files under tests/
# against the same count over the whole repository (files tracked by git).
#   scripts/test_share.sh          one line: test lines, all lines, share
#   scripts/test_share.sh -v       also the count of each file
# A line counts unless it is blank, a whole-line // comment, inside a /* */ block, or (Tcl) a
# whole-line # comment. A code line with a trailing comment counts.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here"

count_file() {
  case "$1" in
    *.tcl|*.test)
      awk '/^[[:space:]]*$/ {next} /^[[:space:]]*#/ {next} {n++} END {print n+0}' "$1" ;;
    *)
      awk '
        { line = $0 }
        in_block { if (index(line, "*/") == 0) next; line = substr(line, index(line, "*/") + 2); in_block = 0 }
        { sub(/^[[:space:]]+/, "", line) }
        line ~ /^\/\*/ && index(line, "*/") == 0 { in_block = 1; next }
        line ~ /^\/\*.*\*\/[[:space:]]*$/ { next }
        line == "" || line ~ /^\/\// { next }
        { n++ }
        END { print n+0 }' "$1" ;;
  esac
}

tests=0
all=0
while IFS= read -r file; do
  [ -f "$file" ] || continue
  n=$(count_file "$file")
  all=$((all + n))
  case "$file" in tests/*) tests=$((tests + n)) ;; esac
  if [ "${1:-}" = -v ]; then printf '%6d %s\n' "$n" "$file"; fi
done < <(git ls-files -- '*.c' '*.h' '*.cpp' '*.cc' '*.hpp' '*.h.in' '*.tcl' '*.test')

awk -v t="$tests" -v a="$all" \
  'BEGIN { printf "test lines %d of %d code lines: %.1f%%\n", t, a, a ? 100 * t / a : 0 }'
