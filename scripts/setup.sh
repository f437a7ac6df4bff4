#!/usr/bin/env bash
# Installs the Debian packages that the build, the tests and the benchmarks need.
# Safe to run again: apt-get skips what is already installed. systemd is there for its
# environment.d generator, a plain program that the environment tests run; nothing boots.
# e2fsprogs makes the one-second-timestamp file system of scripts/shared_homes.sh.
set -euo pipefail

packages=(
  cmake g++ make pkg-config
  qt6-base-dev
  libfmt-dev
  tcl8.6 tcl8.6-dev tcllib
  libgtest-dev libgmock-dev googletest
  libbenchmark-dev
  clang libclang-rt-14-dev
  g++-mingw-w64-x86-64-posix
  systemd
  e2fsprogs
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
  sudo_cmd=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update
"${sudo_cmd[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
