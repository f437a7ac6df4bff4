#!/usr/bin/env bash
# Installs what is needed, builds everything and runs the whole test suite.
#   scripts/test.sh            plain build in build/
#   scripts/test.sh asan       AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
#   scripts/test.sh tsan       ThreadSanitizer build in build-tsan/ (the threaded tests only)
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
mode=${1:-plain}

bash "$here/scripts/setup.sh"

jobs=$(nproc 2>/dev/null || echo 2)
case "$mode" in
  plain)
    build="$here/build"
    cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo
    ;;
  asan)
    build="$here/build-asan"
    cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=Debug -DCFGQ_SANITIZE=address
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
    ;;
  tsan)
    build="$here/build-tsan"
    cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=Debug -DCFGQ_SANITIZE=thread
    # tests/tsan.supp says which reports from the uninstrumented Qt and C libraries are dropped.
    export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=$here/tests/tsan.supp
    ;;
  *)
    echo "test.sh: unknown mode '$mode' (plain, asan, tsan)" >&2
    exit 2
    ;;
esac

cmake --build "$build" -j "$jobs"
if [ "$mode" = tsan ]; then
  ctest --test-dir "$build" --output-on-failure -j "$jobs" -L threads
else
  ctest --test-dir "$build" --output-on-failure -j "$jobs"
fi
