#!/usr/bin/env bash
# Installs what is needed, builds everything and runs the whole test suite, through the presets
# of CMakePresets.json.
#   scripts/test.sh            plain build in build/
#   scripts/test.sh asan       AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
#   scripts/test.sh tsan       ThreadSanitizer build in build-tsan/ (the threaded tests only)
#   scripts/test.sh windows    64-bit Windows build in build-windows/, run under Wine
#                              (scripts/windows.sh; its own toolchain, no preset)
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
mode=${1:-plain}
case "$mode" in
  plain | asan | tsan) ;;
  windows) exec bash "$here/scripts/windows.sh" ;;
  *)
    echo "test.sh: unknown mode '$mode' (plain, asan, tsan, windows)" >&2
    exit 2
    ;;
esac

bash "$here/scripts/setup.sh"

jobs=$(nproc 2>/dev/null || echo 2)
cd "$here"
cmake --preset "$mode"
cmake --build --preset "$mode" -j "$jobs"
ctest --preset "$mode" -j "$jobs"
