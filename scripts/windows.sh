#!/usr/bin/env bash
# Builds the library, the host stand-ins, the cfgq tool and the test suite for 64-bit Windows and
# runs the suite under Wine (`scripts/test.sh windows` calls this).
#
# What Windows needs and Debian has no package for is built once from Debian's own sources and
# kept outside the build tree, in $CFGQ_WINDOWS_CACHE (default ~/.cache/cfgq-windows), one
# directory per dependency and version:
#   qt-<version>      QtCore only, from the qt6-base source (the Linux build's Qt version)
#   tcl-<version>     Tcl, from the tcl8.6 source
#   gtest-<version>   GoogleTest and GoogleMock, from /usr/src/googletest
#   fmt-<version>     fmt's headers, used header-only
# A directory is complete when it holds the file `.complete`; delete one to build it again.
#
#   bash scripts/windows.sh              build everything, run CTest under Wine
#   bash scripts/windows.sh deps         only make sure the dependencies are built
#   CFGQ_WINDOWS_CTEST_ARGS='-R cli' ... pass arguments to ctest
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
action=${1:-test}
jobs=2
cache=${CFGQ_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/cfgq-windows}
build=$here/build-windows
toolchain=$here/cmake/windows-toolchain.cmake
# mingw-w64's runtime DLLs: the C++ library and libgcc beside the compiler, the threads library
# in the target tree.
mingw_runtime="/usr/lib/gcc/x86_64-w64-mingw32/12-posix;/usr/x86_64-w64-mingw32/lib"
# The dependencies are compiled for a short build, not for speed.
quick_flags="-Og -DNDEBUG"

say() { printf 'windows: %s\n' "$*" >&2; }
as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# --- Debian packages: the Linux build's, then the cross compilers' helpers and Wine. ---
bash "$here/scripts/setup.sh"
packages=(wine64 ninja-build xz-utils)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -ne 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  as_root apt-get update
  as_root apt-get -o DPkg::Lock::Timeout=600 install -y --no-install-recommends "${missing[@]}"
fi
# Debian's wine64 keeps its programs in /usr/lib/wine (the wine package adds the PATH wrappers).
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)

upstream_version() { # the upstream part of an installed package's version: 6.4.2+dfsg-10 -> 6.4.2
  dpkg-query -W -f='${Version}' "$1" | sed -e 's/^[0-9]*://' -e 's/[-+~].*$//'
}
qt_version=$(upstream_version qt6-base-dev)
tcl_version=$(upstream_version tcl8.6-dev)
gtest_version=$(upstream_version googletest)
fmt_version=$(upstream_version libfmt-dev)
qt_prefix=$cache/qt-$qt_version
tcl_prefix=$cache/tcl-$tcl_version
gtest_prefix=$cache/gtest-$gtest_version
fmt_prefix=$cache/fmt-$fmt_version
mkdir -p "$cache"

# --- Debian sources: a deb-src entry for the archive and suites the machine already uses. ---
source_entry=/etc/apt/sources.list.d/cfgq-windows-src.sources
fetch_source() { # fetch_source PACKAGE DIR: the upstream tarball of PACKAGE's source, unpacked in DIR
  local package=$1 dir=$2
  if ! apt-get source --print-uris "$package" >/dev/null 2>&1; then
    say "adding Debian's source entries ($source_entry)"
    {
      if [ -f /etc/apt/sources.list.d/debian.sources ]; then
        sed -e 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources
      fi
      if [ -f /etc/apt/sources.list ]; then
        sed -n -e 's/^deb \(.*\)$/Types: deb-src\nURIs: \1/p' /etc/apt/sources.list |
          awk '/^URIs:/ { split($0, w, " "); print "URIs: " w[2]; print "Suites: " w[3];
                          printf "Components:"; for (i = 4; i <= length(w); i++) printf " %s", w[i];
                          print ""; print ""; next } { print }'
      fi
    } | as_root tee "$source_entry" >/dev/null
    as_root apt-get update
  fi
  mkdir -p "$dir"
  (cd "$dir" && apt-get source --download-only "$package" >/dev/null)
  local tarball
  tarball=$(ls "$dir"/*.orig.tar.* | head -n 1)
  tar -C "$dir" -xf "$tarball"
}

# --- QtCore for Windows. ---
build_qt() {
  local work=$cache/work-qt
  rm -rf "$work" "$qt_prefix"
  say "building QtCore $qt_version for Windows in $work (once; kept in $qt_prefix)"
  fetch_source qt6-base "$work/src"
  local source
  source=$(find "$work/src" -mindepth 2 -maxdepth 2 -name CMakeLists.txt -printf '%h\n' | head -n 1)
  local off=()
  # The other modules are left out. (Leaving out parts of QtCore itself, such as its models,
  # MIME database or translations, would save about 25 of 284 steps; that set has not been
  # built to the end yet.)
  for feature in gui widgets network sql xml dbus testlib printsupport opengl concurrent icu \
                 system_zlib system_pcre2 system_doubleconversion; do
    off+=("-DFEATURE_$feature=OFF")
  done
  # -Og, not Qt's own -O3 for QtCore: it compiles in little more than half the time, and the
  # tests don't measure Qt's speed.
  cmake -S "$source" -B "$work/build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$qt_prefix" \
    -DQT_USE_DEFAULT_CMAKE_OPTIMIZATION_FLAGS=ON \
    -DCMAKE_C_FLAGS_RELEASE="$quick_flags" -DCMAKE_CXX_FLAGS_RELEASE="$quick_flags" \
    -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
    -DBUILD_WITH_PCH=OFF -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF \
    "${off[@]}" >"$work/configure.log"
  cmake --build "$work/build" -j "$jobs" >"$work/build.log"
  cmake --install "$work/build" >/dev/null
  touch "$qt_prefix/.complete"
  rm -rf "$work"
}

# --- Tcl for Windows. ---
build_tcl() {
  local work=$cache/work-tcl
  rm -rf "$work" "$tcl_prefix"
  say "building Tcl $tcl_version for Windows in $work (once; kept in $tcl_prefix)"
  fetch_source tcl8.6 "$work/src"
  local win
  win=$(find "$work/src" -mindepth 2 -maxdepth 2 -type d -name win | head -n 1)
  (cd "$win" &&
    ./configure --host=x86_64-w64-mingw32 --enable-64bit --prefix="$tcl_prefix" \
      CC=x86_64-w64-mingw32-gcc-posix >"$work/configure.log" &&
    make -j "$jobs" >"$work/build.log" 2>&1 &&
    make install >>"$work/build.log" 2>&1)
  touch "$tcl_prefix/.complete"
  rm -rf "$work"
}

# --- GoogleTest for Windows, from the source Debian installs. ---
build_gtest() {
  local work=$cache/work-gtest
  rm -rf "$work" "$gtest_prefix"
  say "building GoogleTest $gtest_version for Windows (once; kept in $gtest_prefix)"
  cmake -S /usr/src/googletest -B "$work" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$gtest_prefix" \
    -DCMAKE_CXX_FLAGS_RELEASE="$quick_flags" \
    -Dgtest_disable_pthreads=OFF >/dev/null
  cmake --build "$work" -j "$jobs" >/dev/null
  cmake --install "$work" >/dev/null
  touch "$gtest_prefix/.complete"
  rm -rf "$work"
}

# --- fmt, header-only: its headers and a package file that says so. ---
build_fmt() {
  rm -rf "$fmt_prefix"
  mkdir -p "$fmt_prefix/include" "$fmt_prefix/lib/cmake/fmt"
  cp -r /usr/include/fmt "$fmt_prefix/include/"
  cat >"$fmt_prefix/lib/cmake/fmt/fmt-config.cmake" <<'EOF'
# fmt used header-only in the Windows build.
if(NOT TARGET fmt::fmt)
  add_library(fmt::fmt INTERFACE IMPORTED)
  set_target_properties(fmt::fmt PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${CMAKE_CURRENT_LIST_DIR}/../../../include"
    INTERFACE_COMPILE_DEFINITIONS FMT_HEADER_ONLY=1)
endif()
EOF
  touch "$fmt_prefix/.complete"
}

timed() { # timed STEP: runs STEP and says how long it took
  local start=$SECONDS
  "$1"
  say "$1: $((SECONDS - start)) s"
}
[ -f "$qt_prefix/.complete" ] || timed build_qt
[ -f "$tcl_prefix/.complete" ] || timed build_tcl
[ -f "$gtest_prefix/.complete" ] || timed build_gtest
[ -f "$fmt_prefix/.complete" ] || build_fmt
[ "$action" = deps ] && exit 0

# --- The project, for Windows. ---
# A Wine prefix of the run's own, and one Wine server for all of it.
export WINEPREFIX=$build/wine
export WINEDEBUG=-all
export WINEPATH="$build/bin;$qt_prefix/bin;$tcl_prefix/bin;$mingw_runtime"
export CFGQ_WINE=$wine
mkdir -p "$build"
if [ ! -d "$WINEPREFIX/drive_c" ]; then
  say "making the Wine prefix $WINEPREFIX"
  "$wine" wineboot --init >/dev/null 2>&1
  "$wineserver" -w  # the prefix is complete when its server ends
fi
tcl_library=$(ls "$tcl_prefix"/lib/libtcl86*.a 2>/dev/null | head -n 1)
# Every program and DLL in one directory, so that Windows finds the project's DLLs beside them.
cmake -S "$here" -B "$build" -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_FIND_ROOT_PATH="$qt_prefix;$tcl_prefix;$gtest_prefix;$fmt_prefix" \
  -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
  -DTCL_INCLUDE_PATH="$tcl_prefix/include" -DTCL_LIBRARY="$tcl_library" \
  -DTCL_TCLSH="$tcl_prefix/bin/tclsh86.exe" \
  -DCMAKE_RUNTIME_OUTPUT_DIRECTORY="$build/bin" \
  -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON -DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST \
  -DCMAKE_CROSSCOMPILING_EMULATOR="$here/scripts/wine_run.sh" >/dev/null
cmake --build "$build" -j "$jobs"

# One Wine server for the whole run, started apart from any pipe: a server started by a test
# program would hold that program's output pipe open, and whoever reads it would wait for the
# server to end.
# The same for the prefix's own background programs, which the first program starts.
"$wineserver" -p </dev/null >/dev/null 2>&1 || true
"$wine" cmd.exe /c exit </dev/null >/dev/null 2>&1 || true
echo "windows: left out of the Windows run (label posix_only, each needs POSIX):"
ctest --test-dir "$build" -N -L posix_only | sed -n 's/^ *Test *#[0-9]*: /  /p'
status=0
# shellcheck disable=SC2086
ctest --test-dir "$build" --output-on-failure -j "$jobs" -LE 'posix_only|fuzz|install' \
  ${CFGQ_WINDOWS_CTEST_ARGS:-} || status=$?
"$wineserver" -k 2>/dev/null || true
exit "$status"
