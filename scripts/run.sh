#!/usr/bin/env bash
# Installs what is needed, builds the cfgq tool and runs it on the user's own settings file.
#   scripts/run.sh              same as: cfgq show
#   scripts/run.sh get General Show_tips
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/scripts/setup.sh" >&2
build="$here/build"
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target cfgq_tool >/dev/null
if [ $# -eq 0 ]; then
  set -- show
fi
exec "$build/tools/cfgq" "$@"
