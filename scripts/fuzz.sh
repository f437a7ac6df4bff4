#!/usr/bin/env bash
# Fuzzes the settings file: arbitrary bytes as the user's settings file, then views that list,
# read, copy, clear and write it, under AddressSanitizer and UndefinedBehaviorSanitizer.
#   scripts/fuzz.sh [SECONDS]     default 60; Clang build in FUZZ_BUILD_DIR (default build-fuzz/)
# Starts from the seed corpus tests/fuzz/corpus (never written to); new inputs and any crash
# input go to the build directory. Prints the number of executions; exits non-zero on a crash.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
build=${FUZZ_BUILD_DIR:-$here/build-fuzz}

if ! command -v clang++ >/dev/null; then
  echo "fuzz: clang++ is not installed (scripts/setup.sh installs it)" >&2
  exit 1
fi
CC=clang CXX=clang++ cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCFGQ_SANITIZE=address -DCFGQ_FUZZ=ON >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target settings_fuzz >/dev/null

corpus="$build/fuzz-corpus"
artifacts="$build/fuzz-artifacts"
# Crash inputs of an earlier run are reproduced from the corpus; only this run's count.
rm -rf "$artifacts"
mkdir -p "$corpus" "$artifacts"
# Views write the file after every input: a memory file system keeps the run fast when there is one.
if [ -d /dev/shm ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
log="$build/fuzz.log"
status=0
"$build/tests/settings_fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
  -artifact_prefix="$artifacts/" "$corpus" "$here/tests/fuzz/corpus" >"$log" 2>&1 || status=$?
runs=$(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$log" | tail -1)
crashes=$(find "$artifacts" -type f | wc -l)
inputs=$(find "$corpus" -type f | wc -l)
echo "fuzz: ${runs:-0} executions in ${seconds} s, crashes $crashes, corpus $inputs inputs"
if [ "$status" -ne 0 ] || [ "$crashes" -ne 0 ]; then
  tail -40 "$log" >&2
  exit 1
fi
