#!/usr/bin/env bash
# Keeps the Windows code compiling: every library source (gcl/cfgq/*.cpp) and every host stand-in
# (host/*.cpp), POSIX-only files (*_posix.cpp) excepted, is compiled for 64-bit Windows with
# mingw-w64 in syntax-only mode, against the installed Qt 6, fmt and Tcl headers. Nothing is
# linked or run. Prints each source with "ok" or its errors; exits non-zero when any fails.
#
#   bash scripts/check_windows.sh
set -uo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here" || exit 2
bash scripts/setup.sh || exit 2

cxx=x86_64-w64-mingw32-g++-posix
qt_include=/usr/include/x86_64-linux-gnu/qt6
tcl_include=/usr/include/tcl8.6
fmt_include=/usr/include/fmt

if ! command -v "$cxx" >/dev/null; then
  echo "check_windows: $cxx not found (Debian package g++-mingw-w64-x86-64-posix;" \
       "scripts/setup.sh installs it)" >&2
  exit 2
fi
for dir in "$qt_include/QtCore" "$tcl_include" "$fmt_include"; do
  if [ ! -d "$dir" ]; then
    echo "check_windows: $dir not found (scripts/setup.sh installs it)" >&2
    exit 2
  fi
done

# Headers the build would generate, in their Windows form. fmt sits directly in /usr/include,
# which must not be searched (it holds the Linux C library's headers), so it gets a directory of
# its own.
gen=$(mktemp -d)
trap 'rm -rf "$gen"' EXIT
mkdir -p "$gen/fmt_only"
ln -s "$fmt_include" "$gen/fmt_only/fmt"
# The export macro as CMake writes it for a Windows DLL.
cat >"$gen/cfgq_export.h" <<'EOF'
#ifndef CFGQ_EXPORT_H
#define CFGQ_EXPORT_H
#ifdef CFGQ_STATIC_DEFINE
#  define CFGQ_EXPORT
#  define CFGQ_NO_EXPORT
#else
#  ifndef CFGQ_EXPORT
#    ifdef cfgq_objects_EXPORTS
#      define CFGQ_EXPORT __declspec(dllexport)
#    else
#      define CFGQ_EXPORT __declspec(dllimport)
#    endif
#  endif
#  ifndef CFGQ_NO_EXPORT
#    define CFGQ_NO_EXPORT
#  endif
#endif
#ifndef CFGQ_DEPRECATED
#  define CFGQ_DEPRECATED __attribute__ ((__deprecated__))
#endif
#endif
EOF
# Configured headers (*.h.in): any text serves for their values.
for template in host/*.h.in gcl/cfgq/*.h.in; do
  [ -e "$template" ] || continue
  sed 's/@[A-Za-z0-9_]*@/windows-check/g' "$template" >"$gen/$(basename "$template" .in)"
done

# What a Windows build on Qt gives its sources: wide-character Win32 calls, the platform macros
# and the secure C runtime that Qt's own Windows headers expect.
flags=(-std=c++17 -fsyntax-only -Wall -Wextra -Wno-unused-parameter
       -DUNICODE -D_UNICODE -DWIN32 -DWIN64 -DMINGW_HAS_SECURE_API=1 -DQT_CORE_LIB
       -I"$gen" -Ihost -Igcl/cfgq
       -isystem "$qt_include" -isystem "$qt_include/QtCore"
       -isystem "$gen/fmt_only" -isystem "$tcl_include")

failed=0
total=0
for source in gcl/cfgq/*.cpp host/*.cpp; do
  case "$source" in *_posix.cpp) continue ;; esac
  extra=()
  # The library's own sources export its interface, as in the build.
  case "$source" in gcl/cfgq/*) extra=(-Dcfgq_objects_EXPORTS) ;; esac
  total=$((total + 1))
  if output=$("$cxx" "${flags[@]}" "${extra[@]}" "$source" 2>&1); then
    if [ -z "$output" ]; then
      echo "ok      $source"
    else
      echo "ok      $source (with warnings)"
      printf '%s\n' "$output" | sed 's/^/        /'
    fi
  else
    failed=$((failed + 1))
    echo "FAILED  $source"
    printf '%s\n' "$output" | sed 's/^/        /'
  fi
done

if [ "$failed" -ne 0 ]; then
  echo "check_windows: $failed of $total sources do not compile for Windows"
  exit 1
fi
echo "check_windows: all $total sources compile for Windows"
