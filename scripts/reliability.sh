#!/usr/bin/env bash
# The long versions of the settings file's reliability cases, as a user would break them, with
# the figures the README quotes. Each case runs the built tools as separate processes on a fresh
# HOME.
#   scripts/reliability.sh [RUNS]     RUNS rounds of each case (default 5); needs a build in
#                                     build/ (BUILD_DIR to use another)
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$here/build}
runs=${1:-5}
cfgq=$build/tools/cfgq
writer=$build/tests/settings_writer
runner=$here/tests/tcl_load/run_script.tcl
fault=$build/tests/libwrite_fault.so
export TCLLIBPATH=$build/tcl/gui_settings
unset KORVEL_REGTEST QT_QPA_PLATFORM PBUILD_BUILD KORVEL_DEBUG KORVEL_VERSION KORVEL_VERSIONS
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$work"' EXIT

# A home whose settings file holds the running version's main key, migrated: the writers here
# are not all suite programs (which migrate at their start), and a first `cfgq set` on a main key
# without its marker would migrate it, clearing what the others wrote before.
fresh_home() {
  export HOME=$work/home.$1
  rm -rf "$HOME"
  mkdir -p "$HOME"
  printf '[25.1_pro]\nRegistry_version=27\n' >"$HOME/korvel2.kreg"
}
count_keys() { "$cfgq" keys General 2>/dev/null | grep -c "^$1" || true; }

# 1. Six loops of `cfgq set`, one process per value.
per=200
lost=0
for run in $(seq "$runs"); do
  fresh_home "set$run"
  for k in 0 1 2 3 4 5; do
    (for i in $(seq "$per"); do "$cfgq" set General "L${k}_$i" "v$i" >/dev/null; done) &
  done
  wait
  lost=$((lost + 6 * per - $(count_keys L)))
done
echo "six cfgq set loops x $per values, $runs runs: $((6 * per * runs)) values, $lost lost"

# 2. Two C++ writers, two tclsh loops and two cfgq loops, with two readers beside them.
per=100
lost=0
for run in $(seq "$runs"); do
  fresh_home "mixed$run"
  for k in 0 1; do
    (for i in $(seq "$per"); do "$writer" one "C${k}_$i" "v$i"; done) &
    (for i in $(seq "$per"); do
       CFGQ_TCL_SCRIPT="cfgq_create_registry -key T${k}_$i -value v$i General" tclsh "$runner"
     done) &
    (for i in $(seq "$per"); do "$cfgq" set General "S${k}_$i" "v$i" >/dev/null; done) &
    (for i in $(seq "$per"); do "$cfgq" keys General >/dev/null 2>&1; done) &
  done
  wait
  lost=$((lost + 6 * per - $(count_keys '[CTS]')))
done
echo "2 C++ + 2 tclsh + 2 cfgq writers x $per values (+2 readers), $runs runs:" \
     "$((6 * per * runs)) values, $lost lost"

# 3. Eight processes start at once on a file above the size limit.
fresh_home large
rounds=$((runs * 8))
bad=0
big=$work/big.kreg
{ printf '[25.1_pro]\nGeneral\\Precious=kept\nGeneral\\Filler='; head -c 10000100 /dev/zero | tr '\0' x; echo; } >"$big"
for round in $(seq "$rounds"); do
  rm -f "$HOME"/korvel2.kreg*
  cp "$big" "$HOME/korvel2.kreg"
  for p in 1 2 3 4 5 6 7 8; do "$cfgq" get General Precious >/dev/null 2>&1 & done
  wait
  # The data byte for byte in .large, and no file in its place until the next write.
  if ! cmp -s "$big" "$HOME/korvel2.kreg.large" || [ -e "$HOME/korvel2.kreg" ]; then
    bad=$((bad + 1))
  fi
done
echo "8 simultaneous starts on a 10 MB file, $rounds rounds: $bad rounds without the data in .large"

# 4. A writer stopped while it holds the lock.
fresh_home stopped
"$cfgq" set General Before 1 >/dev/null
"$writer" hold "$HOME/korvel2.kreg" >"$work/hold.out" &
holder=$!
until grep -q locked "$work/hold.out" 2>/dev/null; do sleep 0.05; done
kill -STOP "$holder"
start=$(date +%s%N)
status=0
message=$(KORVEL_LOCK_WAIT_MS=2000 "$cfgq" set General During 1 2>&1) || status=$?
elapsed=$(( ($(date +%s%N) - start) / 1000000 ))
kill -KILL "$holder"
wait "$holder" 2>/dev/null || true
echo "stopped lock holder, KORVEL_LOCK_WAIT_MS=2000: exit $status after $elapsed ms: $message"

# 5. Two profiles whose settings files are links to one file.
per=150
lost=0
for run in $(seq "$runs"); do
  fresh_home "linkA$run"
  a=$HOME
  fresh_home "linkB$run"
  b=$HOME
  ln -sf "$a/korvel2.kreg" "$b/korvel2.kreg"
  for k in 0 1 2 3; do
    home=$a
    [ $((k % 2)) = 1 ] && home=$b
    (for i in $(seq "$per"); do HOME=$home "$cfgq" set General "L${k}_$i" v >/dev/null; done) &
  done
  wait
  HOME=$a
  lost=$((lost + 4 * per - $(count_keys L)))
done
echo "linked profiles, 4 loops x $per values, $runs runs: $((4 * per * runs)) values, $lost lost"

# 6. Writes cut short (a full disk) at every offset of the new file, for each writer.
fresh_home fault
damaged=0
cases=0
for keys in 3 40 400; do
  rm -f "$HOME"/korvel2.kreg*
  for i in $(seq "$keys"); do echo "General\\K$i=value $i"; done | sed '1i [25.1_pro]\nRegistry_version=27' >"$work/old.kreg"
  size=$(stat -c %s "$work/old.kreg")
  step=$(( size / 150 + 1 ))
  for writer_kind in cfgq tclsh cpp event; do
    for offset in $(seq 0 "$step" $((size + 40))); do
      cp "$work/old.kreg" "$HOME/korvel2.kreg"
      export LD_PRELOAD=$fault WRITE_FAULT_DIR=$HOME WRITE_FAULT_OFFSET=$offset
      case $writer_kind in
        cfgq) "$cfgq" set General New value >/dev/null 2>&1 || true ;;
        tclsh) CFGQ_TCL_SCRIPT="cfgq_create_registry -key New -value value General" \
                 tclsh "$runner" >/dev/null 2>&1 || true ;;
        cpp) "$writer" one New value >/dev/null 2>&1 || true ;;
        event) "$writer" event New value >/dev/null 2>&1 || true ;;
      esac
      unset LD_PRELOAD WRITE_FAULT_DIR WRITE_FAULT_OFFSET
      cases=$((cases + 1))
      if ! cmp -s "$work/old.kreg" "$HOME/korvel2.kreg"; then
        n=$(count_keys K)
        [ "$n" = "$keys" ] && [ "$("$cfgq" get General New 2>/dev/null)" = value ] ||
          damaged=$((damaged + 1))
      fi
    done
  done
done
echo "writes cut short: $cases cases (3 sizes x every offset step x cfgq, tclsh, C++, event loop): $damaged files damaged"
