#!/usr/bin/env bash
# Installs what is needed, builds everything and runs the whole test suite, through the presets
# of CMakePresets.json.
#   scripts/test.sh            plain build in build/
#   scripts/test.sh asan       AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
#   scripts/test.sh tsan       ThreadSanitizer build in build-tsan/ (the threaded tests only)
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
mode=${1:-plain}
case "$mode" in
  plain | asan | tsan) ;;
  *)
    echo "test.sh: unknown mode '$mode' (plain, asan, tsan)" >&2
    exit 2
    ;;
esac

bash "$here/scripts/setup.sh"

jobs=$(nproc 2>/dev/null || echo 2)
cd "$here"
cmake --preset "$mode"
cmake --build --preset "$mode" -j "$jobs"
ctest --preset "$mode" -j "$jobs"
