#!/usr/bin/env bash
# Makes the Debian packages and the RPMs from this tree, with CPack (see cmake/cfgq_cpack.cmake):
#   libcfgq1, libcfgq-dev, cfgq, tcl-cfgq      (.deb, checked with lintian)
#   cfgq-libs, cfgq-devel, cfgq, tcl-cfgq      (.rpm)
#   scripts/package.sh          Release build in PACKAGE_BUILD_DIR (default build-package/);
#                               the packages go to PACKAGE_BUILD_DIR/packages
# One build serves both: it is configured for Debian's directories, packaged, then configured
# again for Red Hat's (lib64, the Tcl package in lib64/tcl8.6), which relinks nothing but
# the install, and packaged again.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${PACKAGE_BUILD_DIR:-$here/build-package}
out=$build/packages

packages=(cmake g++ make pkg-config qt6-base-dev libfmt-dev tcl8.6-dev
          dpkg-dev file fakeroot lintian rpm bash-completion)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -ne 0 ]; then
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update >&2
  "${sudo_cmd[@]}" apt-get install -y --no-install-recommends "${missing[@]}" >&2
fi

multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
jobs=$(nproc 2>/dev/null || echo 2)
rm -rf "$out"
mkdir -p "$out"

configure() {
  cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
    -DCMAKE_INSTALL_PREFIX=/usr "$@" >/dev/null
  cmake --build "$build" -j "$jobs" >/dev/null
}

configure -DCFGQ_PACKAGE_LAYOUT=deb -DCMAKE_INSTALL_LIBDIR="lib/$multiarch"
(cd "$build" && cpack -G DEB -B "$out" >/dev/null)
configure -DCFGQ_PACKAGE_LAYOUT=rpm -DCMAKE_INSTALL_LIBDIR=lib64
(cd "$build" && cpack -G RPM -B "$out" >/dev/null)
rm -rf "$out/_CPack_Packages"

# lintian's errors fail the run; its warnings are printed.
lintian --fail-on error --suppress-tags-from-file /dev/null "$out"/*.deb >&2
ls "$out"/*.deb "$out"/*.rpm
