#!/usr/bin/env bash
# Makes the packages with scripts/package.sh, installs the .debs with apt-get and uses them as a
# user and a developer would, with no hints: the tool, its manual, the Tcl package in a stock
# tclsh, pkg-config and find_package(cfgq). Checks every installed file's place and every
# installed binary's RUNPATH, removes the packages again, and checks that the RPMs hold the same
# files at Red Hat's places. Needs root (or password-less sudo): it installs into the system.
#   run_package_test.sh SOURCE_DIR WORK_DIR
set -euo pipefail
source_dir=$1
work=$2
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
  sudo -n true 2>/dev/null || { echo "installs into the system: run as root" >&2; exit 1; }
  sudo_cmd=(sudo -n)
fi
fail() {
  echo "FAIL: $*" >&2
  exit 1
}
packages=(libcfgq1 libcfgq-dev cfgq tcl-cfgq)
for p in "${packages[@]}"; do
  if dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed'; then
    fail "$p is installed already; this test installs and removes it"
  fi
done

# The package build is kept between runs, which then rebuild only what changed.
find "$work" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} + 2>/dev/null || true
mkdir -p "$work/home"
PACKAGE_BUILD_DIR=$work/build bash "$source_dir/scripts/package.sh" >"$work/package.log" 2>&1 ||
  { tail -40 "$work/package.log" >&2; fail "scripts/package.sh"; }
grep '^[EW]: ' "$work/package.log" || true
out=$work/build/packages
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
libdir=/usr/lib/$multiarch

# What each package depends on comes from its binaries' needs, and from its sibling packages.
depends() { dpkg-deb -f "$out/$1"_*.deb Depends; }
[[ $(depends libcfgq1) == *libqt6core6* && $(depends libcfgq1) == *libtcl8.6* ]] ||
  fail "libcfgq1 Depends: $(depends libcfgq1)"
[[ $(depends cfgq) == *"libcfgq1 (= "* ]] || fail "cfgq Depends: $(depends cfgq)"
[[ $(depends libcfgq-dev) == *qt6-base-dev* ]] || fail "libcfgq-dev Depends: $(depends libcfgq-dev)"

remove() {
  "${sudo_cmd[@]}" env DEBIAN_FRONTEND=noninteractive apt-get purge -y "${packages[@]}" \
    >"$work/remove.log" 2>&1
}
trap remove EXIT
debs=()
for p in "${packages[@]}"; do debs+=("$(ls "$out/$p"_*.deb)"); done
"${sudo_cmd[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
  "${debs[@]}" >"$work/install.log" 2>&1 || { cat "$work/install.log" >&2; fail "apt-get install"; }

# Every file at its place, and nothing of ours elsewhere.
dpkg -L "${packages[@]}" | sort -u >"$work/deb_paths"
completions=$(pkg-config --variable=completionsdir bash-completion)
for path in /usr/bin/cfgq /usr/bin/cfgqsh "$libdir/libcfgq.so.1" "$libdir/libcfgq.so" \
            "$libdir/cfgq/libkorvel_host.so.1" /usr/include/cfgq/cfgq.h \
            /usr/include/cfgq/cfgq_export.h "$libdir/pkgconfig/cfgq.pc" \
            "$libdir/cmake/cfgq/cfgqConfig.cmake" "/usr/lib/tcltk/$multiarch/gui_settings/pkgIndex.tcl" \
            /usr/share/man/man1/cfgq.1.gz "$completions/cfgq" /usr/share/zsh/vendor-completions/_cfgq \
            /usr/share/doc/cfgq/copyright /usr/share/doc/libcfgq1/changelog.Debian.gz; do
  grep -qx "$path" "$work/deb_paths" && [ -e "$path" ] || fail "$path is not installed"
done
! grep -q "^$libdir/libkorvel_host" "$work/deb_paths" || fail "the host stand-ins are public"
[ "$(readelf -d "$libdir/libcfgq.so.1" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')" = libcfgq.so.1 ] ||
  fail "libcfgq's SONAME"
# The CMake package names no path of the build machine.
! grep -rlE "$source_dir|$work|/usr/include/tcl|libtcl" "$libdir/cmake/cfgq" ||
  fail "the CMake package names paths of the build machine"
grep -q 'find_dependency(Qt6 6.4 COMPONENTS Core)' "$libdir/cmake/cfgq/cfgqConfig.cmake" ||
  fail "cfgqConfig.cmake does not ask for Qt 6.4"
files=()
while IFS= read -r path; do [ -f "$path" ] && files+=("$path"); done <"$work/deb_paths"
bash "$source_dir/scripts/check_runpath.sh" --installed "${files[@]}"

# Used with no hints, from a directory of its own.
cd "$work/home"
printf '[25.1_pro/General]\nShow_tips=from the package\n' >korvel2.kreg
run() {
  env -u TCLLIBPATH -u PKG_CONFIG_PATH -u CMAKE_PREFIX_PATH -u LD_LIBRARY_PATH \
    -u KORVEL_CONFIG_ON -u KORVEL_REGTEST -u KORVEL_VERSIONS \
    HOME="$work/home" TMPDIR="$work/home" KORVEL_VERSION=25.1 "$@"
}
expect() {
  local what=$1 expected=$2
  shift 2
  local got
  got=$(run "$@" 2>&1) || fail "$what failed: $got"
  [ "$got" = "$expected" ] || fail "$what printed '$got', expected '$expected'"
}
expect "cfgq" "from the package" cfgq get General Show_tips
manual=$(run man -P cat cfgq 2>&1) || fail "man cfgq: $manual"
[[ $manual == *"cfgq get"* ]] || fail "man cfgq printed: $manual"
expect "the Tcl package" "1.0 {from the package}" tclsh <<'EOF'
puts [list [package require ::korvel::gui_settings] [cfgq_read_registry -key Show_tips General]]
EOF
expect "cfgqsh" "from the package" cfgqsh <<'EOF'
puts [cfgq_read_registry -key Show_tips General]
EOF
read -ra pc_flags <<<"$(run pkg-config --cflags --libs cfgq)"
run c++ -std=c++17 "$source_dir/tests/consumer/main.cpp" -o "$work/consumer_pc" "${pc_flags[@]}" ||
  fail "building with pkg-config's flags (${pc_flags[*]})"
expect "the pkg-config consumer" "from the package" "$work/consumer_pc"
run cmake -S "$source_dir/tests/consumer" -B "$work/consumer" >"$work/consumer.log" 2>&1 &&
  run cmake --build "$work/consumer" >>"$work/consumer.log" 2>&1 ||
  { cat "$work/consumer.log" >&2; fail "the CMake consumer"; }
expect "the CMake consumer" "from the package" "$work/consumer/cfgq_consumer"

trap - EXIT
remove || fail "apt-get purge"
for path in /usr/bin/cfgq "$libdir/libcfgq.so.1" "$libdir/cfgq" "/usr/lib/tcltk/$multiarch/gui_settings"; do
  [ ! -e "$path" ] || fail "$path is left after the packages' removal"
done

# The RPMs: the same files, with lib64 for the library directory and Red Hat's Tcl and zsh
# directories; Requires from the binaries' needs; RUNPATHs as in the .debs.
for deb in "${debs[@]}"; do dpkg-deb -c "$deb"; done | awk '$1 !~ /^d/ { sub(/^\./, "", $6); print $6 }' |
  grep -v '^/usr/share/doc/' |
  sed -e "s|^/usr/lib/tcltk/$multiarch/|/usr/lib64/tcl8.6/|" -e "s|^$libdir/|/usr/lib64/|" \
      -e "s|/zsh/vendor-completions/|/zsh/site-functions/|" | sort >"$work/deb_files"
rpms=("$out"/*.rpm)
[ ${#rpms[@]} -eq 4 ] || fail "expected four RPMs: ${rpms[*]}"
rpm -qp --qf '[%{FILEMODES:perms} %{FILENAMES}\n]' "${rpms[@]}" | awk '$1 !~ /^d/ { print $2 }' |
  sort >"$work/rpm_files"
diff "$work/deb_files" "$work/rpm_files" || fail "the RPMs' files differ from the .debs'"
rpm -qpR "$out"/cfgq-libs-*.rpm | grep -q 'libQt6Core.so.6' || fail "cfgq-libs Requires"
mkdir -p "$work/rpm_root"
for r in "${rpms[@]}"; do
  rpm2cpio "$r" >"$work/payload.cpio"
  (cd "$work/rpm_root" && cmake -E tar xf "$work/payload.cpio")
done
bash "$source_dir/scripts/check_runpath.sh" --installed "$work/rpm_root"
echo "packages: installed, used and removed; the RPMs hold the same files"
