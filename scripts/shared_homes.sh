#!/usr/bin/env bash
# Shared homes, as a compute farm's users break them: one HOME written from several "hosts"
# (own host name, PID namespace and runtime directory), a file system with one-second
# timestamps, another host's lock, concurrent environment writes, root in a user's home, a full
# runtime directory, and hostile files. Each probe prints one line "name: figures: ok|FAILED",
# or "name: skipped: why" where the machine forbids what it needs (namespaces, mounts, users).
#   scripts/shared_homes.sh [RUNS] [CASE...]    the full sizes; RUNS rounds of the many-writer
#                                               cases (default 3)
#   scripts/shared_homes.sh --short [CASE...]   the sizes CI runs (tests/reliability.cmake)
# CASE: hosts one-second locks env root runtime small (default: all). Exit status: 1 when a
# probe failed, else 77 when one was skipped, else 0. Needs a build in build/ (BUILD_DIR to use
# another, or CFGQ the tool itself); root for the mounts and the other user.
set -uo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cfgq=${CFGQ:-${BUILD_DIR:-$here/build}/tools/cfgq}
short=0 runs=3 cases=()
for arg; do
  case $arg in
    --short) short=1 runs=1 ;;
    [0-9]*) runs=$arg ;;
    *) cases+=("$arg") ;;
  esac
done
[ ${#cases[@]} -gt 0 ] || cases=(hosts one-second locks env root runtime small)
[ -x "$cfgq" ] || { echo "shared_homes: no cfgq tool at $cfgq (build first)" >&2; exit 2; }
# As root, the whole run gets a mount namespace of its own: its mounts vanish with it, even when
# it is killed (a test's time limit), and no other process sees them.
if [ "$(id -u)" = 0 ] && [ -z "${SHARED_HOMES_NAMESPACE:-}" ] &&
   unshare -m --propagation private true 2>/dev/null; then
  SHARED_HOMES_NAMESPACE=1 exec unshare -m --propagation private bash "$0" "$@"
fi
unset KORVEL_REGTEST QT_QPA_PLATFORM PBUILD_BUILD KORVEL_DEBUG KORVEL_LOCK_WAIT_MS \
      KORVEL_USER_ENV_FILE XDG_CONFIG_HOME
export KORVEL_VERSION=25.1 KORVEL_VERSIONS='25.1;24.3'
work=$(mktemp -d)
export KORVEL_SYSTEM_ENV_FILE=$work/no-system-store.conf  # never the machine's /etc
mounts=()
cleanup() {
  local pid m
  for pid in $(jobs -p); do kill "$pid" 2>/dev/null; done
  wait 2>/dev/null
  for m in "${mounts[@]}"; do umount "$m" 2>/dev/null || umount -l "$m" 2>/dev/null; done
  rm -rf --one-file-system "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM
failed=0 skipped=0

verdict() {  # NAME FIGURES PASSED(0|1)
  if [ "$3" = 1 ]; then echo "$1: $2: ok"; else echo "$1: $2: FAILED"; failed=$((failed + 1)); fi
}
skip() { echo "$1: skipped: $2"; skipped=$((skipped + 1)); }
now_ms() { echo $(($(date +%s%N) / 1000000)); }
is_root() { [ "$(id -u)" = 0 ]; }
# How many distinct lines of the list file $1 stand as whole lines in file $2.
present() {
  if [ -s "$1" ] && [ -f "$2" ]; then grep -Fxf "$1" "$2" | sort -u | wc -l; else echo 0; fi
}
lines() { if [ -f "$1" ]; then wc -l <"$1"; else echo 0; fi; }
has() { grep -qFx -- "$1" "$2" 2>/dev/null && echo 1 || echo 0; }  # 1 when line $1 is in file $2
# The first line of the files named, cut to 160 characters, after "; said: ".
said() { local line; line=$(cat "$@" 2>/dev/null | head -1 | cut -c1-160); echo "${line:+; said: $line}"; }
# 1 when an exit status and the error output are a refusal in the tool's own words: a line
# "cfgq: what: why".
refused() { [ "$1" -ge 1 ] && [ "$1" -le 3 ] && [[ $'\n'$2 == *$'\n'cfgq:* ]] && echo 1 || echo 0; }
# Writes $3 values "General\Old_i=vi" under the running version's main key into $1, and their
# lines into $2.
old_file() {
  seq "$3" | sed 's/.*/General\\Old_&=v&/' >"$2"
  { echo '[25.1_pro]'; echo 'Registry_version=27'; cat "$2"; } >"$1"
}
# A loop of `cfgq set General PREFIX_i vi`, i = 1..N, logging the expected line of each write
# that exited 0 to LOG.ok and each refusal to LOG.refused (stderr to LOG.err).
#   set_loop PREFIX N LOG
set_loop() {
  local i
  for i in $(seq "$2"); do
    if timeout -k 5 60 "$cfgq" set General "$1_$i" "v$i" >/dev/null 2>>"$3.err"; then
      echo "General\\$1_$i=v$i" >>"$3.ok"
    else
      echo "$1_$i" >>"$3.refused"
    fi
  done
}
# A loop of N steps on one counter: `cfgq set General KEY <i in 8 digits>`; before each step
# the loop's last reported value must still be there (no other process writes KEY). Every
# step keeps the file's size, as a window size or a counter does. Logs to LOG.ok, LOG.refused
# and LOG.lost (a reported value gone by the next step).
#   counter_loop KEY N LOG
counter_loop() {
  local i value last=
  for i in $(seq "$2"); do
    value=$(printf %08d "$i")
    if [ -n "$last" ] &&
       [ "$(timeout -k 5 60 "$cfgq" get General "$1" 2>>"$3.err")" != "$last" ]; then
      echo "$last" >>"$3.lost"
    fi
    if timeout -k 5 60 "$cfgq" set General "$1" "$value" >/dev/null 2>>"$3.err"; then
      echo "$value" >>"$3.ok"
      last=$value
    else
      echo "$value" >>"$3.refused"
    fi
  done
}
export -f set_loop counter_loop
export cfgq
mount_it() {  # mount ARGS... DIR; remembered for the exit trap
  mount "$@" 2>/dev/null || return 1
  mounts=("${!#}" "${mounts[@]}")
}
unmount_last() { umount "${mounts[0]}" && mounts=("${mounts[@]:1}"); }

# 1. Three hosts (own host name, PID namespace, runtime directory) on one HOME with 300 values.
case_hosts() {
  local name=hosts per=$((short ? 30 : 120)) d=$work/hosts run h pids statuses kept=0 \
        reported=0 written=0 refused=0 broken=0 probe
  probe=$(unshare -u -p -f --mount-proc --kill-child sh -c 'hostname farm-probe && hostname && echo $$' 2>&1)
  if [ "$probe" != $'farm-probe\n1' ]; then
    skip $name "unshare -u -p -f --mount-proc with hostname is not allowed here: ${probe//$'\n'/ }"
    return
  fi
  for run in $(seq "$runs"); do
    mkdir -p "$d/home$run"
    old_file "$d/home$run/korvel2.kreg" "$d/old$run" 300
    pids=()
    for h in 1 2 3; do
      mkdir -m 700 "$d/runtime$run.$h"
      HOME=$d/home$run XDG_RUNTIME_DIR=$d/runtime$run.$h \
        unshare -u -p -f --mount-proc --kill-child \
        bash -c 'hostname "farm-node-$1" && set_loop "H$1" "$2" "$3"' _ "$h" "$per" "$d/log$run.$h" &
      pids+=($!)
    done
    statuses=(x)
    for h in "${pids[@]}"; do wait "$h"; statuses+=($?); done
    kept=$((kept + $(present "$d/old$run" "$d/home$run/korvel2.kreg")))
    for h in 1 2 3; do
      # The host ran, and every command in it once: its write is logged as reported or refused.
      [ "${statuses[h]}" = 0 ] &&
        [ $(($(lines "$d/log$run.$h.ok") + $(lines "$d/log$run.$h.refused"))) = "$per" ] ||
        broken=$((broken + 1))
      reported=$((reported + $(lines "$d/log$run.$h.ok")))
      refused=$((refused + $(lines "$d/log$run.$h.refused")))
      written=$((written + $(present "$d/log$run.$h.ok" "$d/home$run/korvel2.kreg")))
    done
  done
  local figures="$runs x 3 hosts x $per cfgq set on 300 values: old kept $kept/$((300 * runs)),"
  figures+=" reported writes present $written/$reported, refused $refused"
  [ $broken = 0 ] || figures+=", $broken hosts did not run through"
  figures+=$(said "$d"/log*.err)
  verdict $name "$figures" $((kept == 300 * runs && written == reported && refused == 0 &&
                              broken == 0))
}

# 2. HOME on ext2 with 128-byte inodes: modification times in whole seconds. Four loops step
# counters of the same size, so that only a same-second change of the same size can hide.
case_one_second() {
  local name=one-second per=$((short ? 25 : 80)) d=$work/one-second mnt run k reported=0 \
        lost=0 refused=0 stamp last
  mnt=$d/mnt
  mkdir -p "$mnt"
  if ! is_root || ! command -v mkfs.ext2 >/dev/null; then
    skip $name "needs root and mkfs.ext2 (e2fsprogs) for a loop-mounted ext2"; return
  fi
  truncate -s 32M "$d/ext2.img"
  if ! mkfs.ext2 -q -F -I 128 "$d/ext2.img" >/dev/null 2>&1 || ! mount_it -o loop "$d/ext2.img" "$mnt"; then
    skip $name "a loop mount of ext2 is not allowed here"; return
  fi
  touch "$mnt/stamp"
  stamp=$(stat -c %y "$mnt/stamp")
  if [[ $stamp != *.000000000* ]]; then
    unmount_last; verdict $name "the ext2 mount keeps sub-second times ($stamp)" 0; return
  fi
  for run in $(seq "$runs"); do
    mkdir "$mnt/home$run"
    for k in 1 2 3 4; do HOME=$mnt/home$run counter_loop "C$k" "$per" "$d/log$run.$k" & done
    wait
    for k in 1 2 3 4; do
      # The last reported value of each counter must be in the file after all loops ended.
      last=$(tail -1 "$d/log$run.$k.ok" 2>/dev/null)
      [ -z "$last" ] || [ "$(has "General\\C$k=$last" "$mnt/home$run/korvel2.kreg")" = 1 ] ||
        echo "$last" >>"$d/log$run.$k.lost"
      reported=$((reported + $(lines "$d/log$run.$k.ok")))
      refused=$((refused + $(lines "$d/log$run.$k.refused")))
      lost=$((lost + $(lines "$d/log$run.$k.lost")))
    done
  done
  unmount_last
  verdict $name "$runs x 4 loops x $per cfgq set of same-size counters on ext2 -I 128: reported writes present $((reported - lost))/$reported, refused $refused$(said "$d"/log*.err)" \
    $((lost == 0 && reported + refused == 4 * per * runs && refused == 0))
}

# 3. A lock naming another host, an hour old: taken over at once when nobody holds its system
# lock; waited for, then reported by `cfgq check`, when someone does.
case_locks() {
  local d=$work/locks status elapsed start lock holder check check_status named=0
  export HOME=$d/home
  mkdir -p "$HOME"
  lock=$HOME/korvel2.kreg.lock
  "$cfgq" set General Before 1 >/dev/null
  printf '4242\ncfgq\nfarm-node-17\n%s\n%s\n' 5f0e3c1a9b7d4e2f8a6c0b1d3e5f7a9c \
    3c9b2f1e-7a44-4d0e-9c1b-6a2f8e0d4b57 >"$d/lock.text"
  cp "$d/lock.text" "$lock"
  touch -d '1 hour ago' "$lock"
  start=$(now_ms)
  status=0
  KORVEL_LOCK_WAIT_MS=2000 timeout -k 5 60 "$cfgq" set General AfterDead 1 >/dev/null 2>"$d/dead.err" ||
    status=$?
  elapsed=$(($(now_ms) - start))
  verdict locks-dead-host "lock of farm-node-17, 1 hour old, not held; KORVEL_LOCK_WAIT_MS=2000: cfgq set exit $status after $elapsed ms" \
    $((status == 0 && elapsed < 1000 && $(has 'General\AfterDead=1' "$HOME/korvel2.kreg")))

  if ! command -v flock >/dev/null; then skip locks-held "needs flock (util-linux)"; return; fi
  rm -f "$lock"
  cp "$d/lock.text" "$lock"
  touch -d '1 hour ago' "$lock"
  (exec 9<"$lock" && flock -x 9 && echo held >"$d/held" && exec sleep 120) &
  holder=$!
  until [ -s "$d/held" ] || ! kill -0 $holder 2>/dev/null; do sleep 0.05; done
  if [ ! -s "$d/held" ]; then verdict locks-held "flock could not hold the lock file" 0; return; fi
  start=$(now_ms)
  status=0
  KORVEL_LOCK_WAIT_MS=2000 timeout -k 5 60 "$cfgq" set General WhileHeld 1 >/dev/null 2>"$d/held.err" ||
    status=$?
  elapsed=$(($(now_ms) - start))
  check_status=0
  check=$(timeout -k 5 30 "$cfgq" check 2>&1) || check_status=$?
  kill $holder
  wait $holder 2>/dev/null
  [[ $check == *4242* && $check == *farm-node-17* ]] && named=1
  verdict locks-held "the same lock held (flock): cfgq set exit $status after $elapsed ms; cfgq check exit $check_status, names pid and host: $([ $named = 1 ] && echo yes || echo no)" \
    $((status == 3 && elapsed >= 1900 && elapsed < 6000 && named))
  [ $named = 1 ] || echo "  cfgq check said: ${check//$'\n'/ | }"
}

# 4. Thirty `cfgq setenv` at once on one user store: of thirty variables, of thirty PATH items.
case_env() {
  local d=$work/env i pids refused kept store kind
  mkdir -p "$d"
  for kind in variables path; do
    store=$d/$kind.conf
    export KORVEL_USER_ENV_FILE=$store
    pids=()
    for i in $(seq 30); do
      if [ $kind = variables ]; then
        timeout -k 5 60 "$cfgq" setenv "VAR$i" "value$i" >/dev/null 2>>"$d/$kind.err" &
      else
        timeout -k 5 60 "$cfgq" setenv PATH "/opt/tool$i/bin" --append >/dev/null 2>>"$d/$kind.err" &
      fi
      pids+=($!)
    done
    refused=0
    for i in "${pids[@]}"; do wait "$i" || refused=$((refused + 1)); done
    if [ $kind = variables ]; then
      seq 30 | sed 's/.*/VAR&="value&"/' >"$d/expected"
      kept=$(present "$d/expected" "$store")
    else
      kept=$(grep '^PATH=' "$store" 2>/dev/null | grep -o '/opt/tool[0-9]*/bin' | sort -u | wc -l)
    fi
    verdict "env-$kind" "30 concurrent cfgq setenv$([ $kind = path ] && echo ' PATH --append'): $kept/30 kept, refused $refused" \
      $((kept == 30 && refused == 0))
  done
  unset KORVEL_USER_ENV_FILE
}

# 5. Root in a home owned by nobody (sudo -E): whatever is made there belongs to nobody, and a
# link nobody planted at the settings file's name to a root-only file is not written through.
case_root() {
  local d=$work/root home status_set=0 status_env=0 made foreign secret status=0 message same=no ok
  if ! is_root || ! id nobody >/dev/null 2>&1 || ! command -v runuser >/dev/null; then
    skip root-home "needs root, the user nobody and runuser"; skip root-planted-link "the same"
    return
  fi
  mkdir -p "$d"
  chmod 755 "$work" "$d"
  if ! runuser -u nobody -- true 2>/dev/null; then
    skip root-home "runuser -u nobody is not allowed here"; skip root-planted-link "the same"
    return
  fi
  home=$d/home
  mkdir "$home"
  chown nobody "$home"
  HOME=$home timeout -k 5 60 "$cfgq" set General AsRoot 1 >/dev/null 2>"$d/set.err" || status_set=$?
  HOME=$home timeout -k 5 60 "$cfgq" setenv KORVEL_ROOT_PROBE yes >/dev/null 2>"$d/env.err" || status_env=$?
  made=$(cd "$home" && find . -mindepth 1 -printf '%P\n' | sort | paste -sd ' ')
  foreign=$(cd "$home" && find . -mindepth 1 ! -user nobody -printf '%P\n' | sort | paste -sd ' ')
  ok=0
  [ -z "$foreign" ] && [[ $made == *korvel2.kreg* && $made == *environment.d/90-korvel.conf* ]] && ok=1
  verdict root-home "cfgq set exit $status_set, setenv exit $status_env; made: ${made:-nothing}; not owned by nobody: ${foreign:-none}" \
    $((status_set == 0 && status_env == 0 && ok))

  home=$d/home2
  mkdir "$home"
  chown nobody "$home"
  secret=$d/secret
  echo 'root only' >"$secret"
  chmod 600 "$secret"
  stat -c '%i %U %a %s' "$secret" >"$d/secret.before"
  runuser -u nobody -- ln -s "$secret" "$home/korvel2.kreg"
  message=$(HOME=$home timeout -k 5 60 "$cfgq" set General Planted 1 2>&1 >/dev/null) || status=$?
  [ "$(cat "$secret")" = 'root only' ] && [ "$(stat -c '%i %U %a %s' "$secret")" = "$(cat "$d/secret.before")" ] &&
    same=yes
  ok=0
  [ $same = yes ] && ok=$(refused $status "$message")
  verdict root-planted-link "korvel2.kreg -> a root-only file: cfgq set exit $status, target unchanged: $same${message:+; said: $message}" $ok
}

# 6. XDG_RUNTIME_DIR full, HOME on a disk with room.
case_runtime() {
  local d=$work/runtime rt status=0 free
  rt=$d/rt
  mkdir -p "$rt" "$d/home"
  chmod 700 "$rt"
  if ! is_root || ! mount_it -t tmpfs -o size=64k,mode=0700 tmpfs "$rt"; then
    skip runtime-full "needs root to mount a small tmpfs"; return
  fi
  # Its blocks, as a session's runtime directory fills: names can still be made, data not.
  dd if=/dev/zero of="$rt/fill" bs=4k 2>/dev/null
  free=$(stat -f -c '%a' "$rt")
  HOME=$d/home XDG_RUNTIME_DIR=$rt timeout -k 5 60 "$cfgq" set General Full yes >/dev/null 2>"$d/err" ||
    status=$?
  unmount_last
  verdict runtime-full "runtime directory full ($free blocks free): cfgq set exit $status$(said "$d/err")" \
    $((status == 0 && $(has 'General\Full=yes' "$d/home/korvel2.kreg")))
}

# Runs COMMAND... with a time limit in seconds; sets status and elapsed (ms).
timed() {
  local limit=$1 start
  shift
  start=$(now_ms)
  status=0
  timeout -k 5 "$limit" "$@" || status=$?
  elapsed=$(($(now_ms) - start))
}

# 7. A person's file named like a staged one; /dev/zero imported; a FIFO as the environment
# store; deep nesting migrated.
case_small() {
  local d=$work/small i status elapsed bad=0 depth limit deep times= kept copies
  export HOME=$d/home
  mkdir -p "$HOME"
  echo "a person's notes" >"$d/notes"
  cp "$d/notes" "$HOME/korvel2.kreg.cfgq-new.99999x"
  for i in 1 2 3 4 5; do "$cfgq" set General Stage$i v >/dev/null 2>&1 || bad=$((bad + 1)); done
  kept=0
  cmp -s "$d/notes" "$HOME/korvel2.kreg.cfgq-new.99999x" && kept=1
  verdict small-stage-name "korvel2.kreg.cfgq-new.99999x across 5 writes ($bad refused): $([ $kept = 1 ] && echo kept || echo lost)" \
    $((bad == 0 && kept))

  # Memory is capped, so that a reader without a bound fails instead of filling the machine: the
  # address space, or (a sanitizer's build reserves terabytes of it) the resident size.
  local cap='ulimit -v 1000000' capped='1 GB address space'
  if ! { (eval "$cap" && "$cfgq" --version) >/dev/null 2>&1; } 2>/dev/null; then
    cap=: capped='1 GB resident'
  fi
  ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}hard_rss_limit_mb=1000 \
    timed 20 bash -c "$cap"'; exec "$0" import /dev/zero' "$cfgq" 2>"$d/zero.err" >/dev/null
  verdict small-import-zero "cfgq import /dev/zero ($capped, 20 s): exit $status after $elapsed ms$(said "$d/zero.err")" \
    "$(refused $status "$(cat "$d/zero.err")")"

  mkfifo "$d/store.fifo"
  KORVEL_USER_ENV_FILE=$d/store.fifo timed 10 "$cfgq" setenv FIFO_PROBE x 2>"$d/fifo.err" >/dev/null
  kept=0
  [ -p "$d/store.fifo" ] && kept=$(refused $status "$(cat "$d/fifo.err")")
  verdict small-fifo-store "cfgq setenv on a FIFO store (10 s): exit $status after $elapsed ms$([ -p "$d/store.fifo" ] || echo ', FIFO replaced')$(said "$d/fifo.err")" \
    $kept

  # One value under `depth` nested groups of an earlier version, carried forward by migrate.
  deep_file() {
    { echo '[24.3_pro]'; head -c $(($1 * 2)) /dev/zero | sed 's/\x0\x0/a\\/g'; echo 'Deep=v'; } \
      >"$HOME/korvel2.kreg"
  }
  if [ $short = 0 ]; then
    for depth in 10000 20000 40000; do
      deep_file $depth
      timed 300 "$cfgq" migrate --yes >/dev/null 2>&1
      times+="${times:+, }$depth deep $elapsed ms (exit $status)"
    done
  fi
  depth=$((short ? 40000 : 400000)) limit=$((short ? 10 : 300))
  deep_file $depth
  tail -1 "$HOME/korvel2.kreg" >"$d/deep.line"
  timed $limit "$cfgq" migrate --yes >/dev/null 2>"$d/deep.err"
  # The line is as long as the file: awk compares it whole, where grep -F runs out of memory.
  copies=$(awk 'NR == FNR { want = $0; next } $0 == want { n++ } END { print n + 0 }' \
           "$d/deep.line" "$HOME/korvel2.kreg")
  verdict small-deep-nesting "migrate of one value $depth groups deep: exit $status after $elapsed ms (limit $limit s)${times:+; $times}" \
    $((status == 0 && copies == 2))
}

for c in "${cases[@]}"; do
  case $c in
    hosts) case_hosts ;;
    one-second) case_one_second ;;
    locks) case_locks ;;
    env) case_env ;;
    root) case_root ;;
    runtime) case_runtime ;;
    small) case_small ;;
    *) echo "shared_homes: unknown case $c" >&2; exit 2 ;;
  esac
done
[ $failed = 0 ] || exit 1
[ $skipped = 0 ] || exit 77
exit 0
