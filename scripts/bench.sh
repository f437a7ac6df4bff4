#!/usr/bin/env bash
# Builds the benchmarks (Release) and runs them all, then prints one table: the library ("ours")
# beside raw QSettings (and the Tcl commands beside tcllib's inifile), medians per call, ratios.
#   scripts/bench.sh                 build in build-bench/, 5 repetitions, 1,000 Tcl calls each
# Environment: BENCH_BUILD_DIR (build directory), BENCH_REPETITIONS, BENCH_TCL_READS,
# BENCH_TCL_WRITES, BENCH_OUT (directory for the raw results; a temporary one by default).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${BENCH_BUILD_DIR:-$here/build-bench}
repetitions=${BENCH_REPETITIONS:-5}
tcl_reads=${BENCH_TCL_READS:-1000}
tcl_writes=${BENCH_TCL_WRITES:-1000}
out=${BENCH_OUT:-$(mktemp -d)}
mkdir -p "$out"

bash "$here/scripts/setup.sh" >&2
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCFGQ_BENCHMARKS=ON >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" \
  --target registry_bench cfgq_peak_memory cfgq >/dev/null

echo "machine: $(nproc) cores, $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ //')" \
     "load before: $(cut -d' ' -f1-3 /proc/loadavg)" >&2

# Medians of the repetitions (the single run when there is one), as name,real_us,cpu_us. Each
# operation runs in a process of its own, ours beside raw: files that one operation leaves parsed
# in memory (up to four of 10 MB) would otherwise weigh on the next operation's allocations.
: >"$out/registry_bench.csv"
for operation in reading_view get_value set_value persisted_write migration; do
  "$build/bench/registry_bench" --benchmark_filter="^$operation/" \
    --benchmark_repetitions="$repetitions" \
    --benchmark_report_aggregates_only="$([ "$repetitions" -gt 1 ] && echo true || echo false)" \
    --benchmark_format=csv 2>/dev/null >>"$out/registry_bench.csv"
done
awk -F, -v single="$([ "$repetitions" -gt 1 ] && echo 0 || echo 1)" '
  $1 ~ /^"/ && (single || $1 ~ /_median"$/) {
    name = $1; gsub(/"/, "", name); sub(/_median$/, "", name)
    scale = ($5 == "ms") ? 1000 : ($5 == "ns") ? 0.001 : ($5 == "s") ? 1000000 : 1
    printf "%s,%.4f,%.4f\n", name, $3 * scale, $4 * scale
  }' "$out/registry_bench.csv" >"$out/cpp.csv"
# Peak resident set in KiB, and Tcl microseconds per call (both once: the Tcl run takes minutes).
"$build/bench/cfgq_peak_memory" | awk -F, '{ printf "%s,%s,\n", $1, $2 }' >"$out/memory.csv"
TCLLIBPATH="$build/tcl/gui_settings" tclsh "$here/bench/tcl_bench.tcl" "$tcl_reads" "$tcl_writes" \
  | awk -F, '{ printf "%s,%s,\n", $1, $2 }' >"$out/tcl.csv"

echo "load after: $(cut -d' ' -f1-3 /proc/loadavg)" >&2

# operation | size | ours | raw | target: which results stand beside each other.
pairs='reading view (raw: file held)|10KB|reading_view/ours/10KB|reading_view/raw_held/10KB|<= 2
reading view (raw: file held)|1MB|reading_view/ours/1MB|reading_view/raw_held/1MB|<= 2
reading view (raw: file held)|10MB|reading_view/ours/10MB|reading_view/raw_held/10MB|<= 2
reading view (raw: nothing held)|10KB|reading_view/ours/10KB|reading_view/raw/10KB|
reading view (raw: nothing held)|1MB|reading_view/ours/1MB|reading_view/raw/1MB|
reading view (raw: nothing held)|10MB|reading_view/ours/10MB|reading_view/raw/10MB|
get_value / value|10 keys|get_value/ours/10|get_value/raw/10|
get_value / value|1,000 keys|get_value/ours/1000|get_value/raw/1000|
get_value / value|10,000 keys|get_value/ours/10000|get_value/raw/10000|<= 1.2
set_value / setValue|10 keys|set_value/ours/10|set_value/raw/10|<= 1.3
set_value / setValue|1,000 keys|set_value/ours/1000|set_value/raw/1000|<= 1.3
set_value / setValue|10,000 keys|set_value/ours/10000|set_value/raw/10000|<= 1.3
persisted write|10KB|persisted_write/ours/10KB|persisted_write/raw/10KB|
persisted write|1MB|persisted_write/ours/1MB|persisted_write/raw/1MB|<= 0.85
persisted write|10MB|persisted_write/ours/10MB|persisted_write/raw/10MB|<= 0.85
copy of a 20,000-key main key + write-out|~1.3MB|migration/ours/20k|migration/raw/20k|<= 1.3
Tcl cfgq_read_registry / ini::value|1MB|tcl_read/ours/1MB|tcl_read/tcllib/1MB|<= 3
Tcl cfgq_create_registry / ini::set+commit|1MB|tcl_write/ours/1MB|tcl_write/tcllib/1MB|<= 0.6
peak memory, KiB (open + one read)|10MB|peak_memory/ours/10MB|peak_memory/raw/10MB|<= 1.2'

printf '%s\n' "$pairs" | awk -F'|' -v results="$out/cpp.csv $out/memory.csv $out/tcl.csv" '
  BEGIN {
    n = split(results, files, " ")
    for (i = 1; i <= n; ++i) {
      while ((getline line < files[i]) > 0) {
        split(line, f, ","); real[f[1]] = f[2]; cpu[f[1]] = f[3]
      }
    }
    printf "| %-42s | %-11s | %12s | %12s | %7s | %7s | %-7s |\n", "operation", "size",
           "ours", "raw", "ratio", "cpu", "target"
    printf "|%s|%s|%s|%s|%s|%s|%s|\n", "--------------------------------------------",
           "-------------", "-------------:", "-------------:", "--------:", "--------:", "---------"
  }
  function shown_ratio(r) { return (r < 0.1) ? sprintf("%.5f", r) : sprintf("%.2f", r) }
  function shown(v, is_memory) {
    if (v == "") return "n/a"
    if (is_memory) return sprintf("%d", v)
    if (v >= 10000) return sprintf("%.1f ms", v / 1000)
    if (v >= 1000) return sprintf("%.2f ms", v / 1000)
    return sprintf("%.3g us", v)
  }
  {
    memory = ($3 ~ /^peak_memory/)
    ratio = (real[$3] != "" && real[$4] > 0) ? shown_ratio(real[$3] / real[$4]) : "n/a"
    cpu_ratio = (cpu[$3] != "" && cpu[$4] > 0) ? shown_ratio(cpu[$3] / cpu[$4]) : ""
    printf "| %-42s | %-11s | %12s | %12s | %7s | %7s | %-7s |\n", $1, $2, shown(real[$3], memory),
           shown(real[$4], memory), ratio, cpu_ratio, $5
  }'
echo "(medians of $repetitions repetitions; ratio = ours / raw on wall time, cpu = the same on" \
     "CPU time; Tcl: mean of $tcl_reads reads / $tcl_writes writes; raw results in $out)"
