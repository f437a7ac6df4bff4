#!/usr/bin/env bash
# Checks the library search paths (RUNPATH, RPATH) of every ELF executable and shared library in
# the given directories and files.
#   scripts/check_runpath.sh [--installed] PATH...
# An empty entry or a plain relative one fails: the loader reads both against the current
# directory, so any directory the program is started from could plant a library. An
# $ORIGIN-relative entry must name an existing directory. With --installed (a package's files)
# every entry must be $ORIGIN-relative: nothing may name the machine that built it.
set -euo pipefail
installed=0
if [ "${1:-}" = "--installed" ]; then
  installed=1
  shift
fi
if [ $# -eq 0 ]; then
  echo "usage: check_runpath.sh [--installed] PATH..." >&2
  exit 2
fi

checked=0
bad=0
complain() {
  echo "$1: $2" >&2
  bad=$((bad + 1))
}
while IFS= read -r -d '' file; do
  [ "$(head -c 4 "$file" | tr -d '\0')" = $'\177ELF' ] || continue
  checked=$((checked + 1))
  origin=$(dirname "$file")
  while IFS= read -r value; do
    case ":$value:" in
      *::*) complain "$file" "empty entry in '$value'" ;;
    esac
    IFS=: read -ra entries <<<"$value"
    for entry in "${entries[@]}"; do
      case "$entry" in
        '' ) ;;
        '$ORIGIN'* | '${ORIGIN}'*)
          rest=${entry#\$ORIGIN}
          rest=${rest#\$\{ORIGIN\}}
          [ -d "$origin/$rest" ] || complain "$file" "'$entry' names no directory" ;;
        /*) [ "$installed" -eq 0 ] || complain "$file" "absolute entry '$entry'" ;;
        *) complain "$file" "relative entry '$entry'" ;;
      esac
    done
  done < <(readelf -d "$file" 2>/dev/null | sed -n 's/.*(\(RUNPATH\|RPATH\)).*\[\(.*\)\]$/\2/p')
done < <(find "$@" -type f \( -perm -u+x -o -name '*.so*' \) -print0)

echo "check_runpath: $checked ELF files, $bad bad entries"
[ "$bad" -eq 0 ]
