#!/usr/bin/env bash
# Kills a settings writer at random moments and checks after every kill that the settings file
# still opens with every value whose view had been destroyed, and that no temporary or lock file
# of the killed writers piles up beside it.
#   scripts/soak.sh [KILLS]     default 50 kills; BUILD_DIR (default build/) holds settings_writer
# Prints one line of figures at the end and exits non-zero when a value was lost or files piled up.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
kills=${1:-50}
build=${BUILD_DIR:-$here/build}
writer=${SETTINGS_WRITER:-$build/tests/settings_writer}
if [ ! -x "$writer" ]; then
  cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
  cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target settings_writer >/dev/null
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/cfgq-soak.XXXXXX")
trap '[ -n "${SOAK_KEEP:-}" ] || rm -rf "$work"' EXIT
# The writers use the profile file <HOME>/korvel2.kreg, never the real one.
export HOME=$work KORVEL_VERSION=25.1
unset KORVEL_REGTEST QT_QPA_PLATFORM PBUILD_BUILD KORVEL_DEBUG

temporaries() {  # killed writers' staged writes: their private directories beside the file
  find "$work/.korvel2.kreg.cfgq" -mindepth 1 -maxdepth 1 2>/dev/null | wc -l
}
strays() {  # those and lock files
  echo $(($(temporaries) + $(find "$work" -maxdepth 1 -name 'korvel2.kreg.lock*' | wc -l)))
}

left_behind=0   # kills after which a temporary or lock file stood beside the file
left_temporary=0  # kills after which a temporary stood there
most_strays=0   # the most such files standing at once
checked=0
for ((k = 1; k <= kills; k++)); do
  "$writer" loop "W$k" "$work/log.$k" &
  pid=$!
  # 50 to 550 ms: the first views of a writer, and writes well into a growing file.
  sleep "0.$(printf '%03d' $((50 + RANDOM % 500)))"
  kill -KILL "$pid"
  wait "$pid" 2>/dev/null || true

  n=$(strays)
  if [ "$n" -gt 0 ]; then left_behind=$((left_behind + 1)); fi
  if [ "$(temporaries)" -gt 0 ]; then left_temporary=$((left_temporary + 1)); fi
  if [ "$n" -gt "$most_strays" ]; then most_strays=$n; fi
  # The check opens a view, as every tool's first view does, and reads every logged value.
  if ! out=$("$writer" check "$work"/log.*); then
    echo "soak: kill $k: $out" >&2
    exit 1
  fi
  checked=$(awk '{print $2}' <<<"$out")
  # The next write removes a killed writer's leftovers: at most one kill's stand at once.
  if [ "$(temporaries)" -gt 1 ] || [ "$(strays)" -gt 2 ]; then
    echo "soak: kill $k: temporaries pile up:" >&2
    ls -laR "$work" >&2
    exit 1
  fi
done
damaged=$(find "$work" -maxdepth 1 -name 'korvel2.kreg.format-error' | wc -l)
echo "soak: kills $kills, values checked $checked, lost 0," \
  "kills leaving a temporary or lock $left_behind (a temporary $left_temporary)," \
  "most standing at once $most_strays, left after the next view $(strays)," \
  "damaged-file copies $damaged"
if [ "$damaged" -ne 0 ]; then exit 1; fi
