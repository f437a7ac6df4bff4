#!/usr/bin/env bash
# How many planted faults does the test suite catch? Plants each fault (mutant) of the fixed
# list below in the library's sources, one at a time, rebuilds, runs the suite up to its first
# failing test and prints whether a test failed ("caught") or none did ("missed").
#   scripts/mutate.sh              every mutant, then "caught N of M"
#   scripts/mutate.sh 3 17         only mutants 3 and 17
#   scripts/mutate.sh --list       the mutants, and whether each still applies; builds nothing
# A mutant is one exact replacement of text that must occur once in its file; a text the file no
# longer holds exactly once is reported "not applied" and left out of the count. The sources
# are put back after every mutant and whenever the script ends (a copy of the file being
# mutated waits in the build directory, and a later run puts it back first if a run was killed).
# Builds in MUTATE_BUILD_DIR (default build-mutate/, RelWithDebInfo); each test may take
# MUTATE_TIMEOUT seconds (default 120). The long runs (labels soak, fuzz, install) are left out.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${MUTATE_BUILD_DIR:-$here/build-mutate}
timeout=${MUTATE_TIMEOUT:-120}
jobs=2
long_labels='soak|fuzz|install'

files=()
names=()
olds=()
news=()
# mutant FILE DESCRIPTION OLD-TEXT NEW-TEXT
mutant() {
  files+=("$1")
  names+=("$2")
  olds+=("$3")
  news+=("$4")
}

# ---- The mutants -----------------------------------------------------------------------------
# Grouped by file, so that consecutive mutants recompile one source.

k=gcl/cfgq/cfgq_registry_key.cpp
mutant $k "get_value finds a missing value" \
  'm_last_error = REGISTRY_VALUE_NOT_FOUND;
    return false;' \
  'm_last_error = REGISTRY_VALUE_NOT_FOUND;
    return true;'
mutant $k "get_value leaves the last error of a failed read" \
  '  m_last_error = REGISTRY_NO_ERROR;
  return true;' \
  '  return true;'
mutant $k "value limit off by one (10,000,001 units refused)" \
  'cfgq_text_reaches(value, max_value_utf16_units, &length)' \
  'cfgq_text_reaches(value, max_value_utf16_units + 1, &length)'
mutant $k "value limit off by one (9,999,999 units refused)" \
  'cfgq_text_reaches(value, max_value_utf16_units, &length)' \
  'cfgq_text_reaches(value, max_value_utf16_units - 1, &length)'
mutant $k "set_value drops the write" \
  '    m_settings->setValue(value_name, value);' \
  '    (void)value;'
mutant $k "set_value keeps the last error" \
  '  // Also after a refused value: a write never leaves a read'"'"'s outcome behind.
  m_last_error = REGISTRY_NO_ERROR;' \
  ''
mutant $k "is_equal inverted" \
  'QString::compare(stored.toString(), text, sensitivity) == 0' \
  'QString::compare(stored.toString(), text, sensitivity) != 0'
mutant $k "is_yes compares case-sensitively" \
  'is_equal(value_name, QString::fromUtf8(CFGQ_YES_STR), Qt::CaseInsensitive)' \
  'is_equal(value_name, QString::fromUtf8(CFGQ_YES_STR), Qt::CaseSensitive)'
mutant $k "set_no writes the yes text" \
  'set_value(value_name, QVariant(QString::fromUtf8(CFGQ_NO_STR)));' \
  'set_value(value_name, QVariant(QString::fromUtf8(CFGQ_YES_STR)));'
mutant $k "copy descends with source and destination swapped" \
  "pending.emplace_back(from + QLatin1Char('/') + *group, to + QLatin1Char('/') + *group);" \
  "pending.emplace_back(to + QLatin1Char('/') + *group, from + QLatin1Char('/') + *group);"
mutant $k "copy does not count the values it visits" \
  '      set_value(key, buffer.value(key));
      ++count;' \
  '      set_value(key, buffer.value(key));'
mutant $k "copy writes into the current group, not the destination" \
  '    m_settings->beginGroup(to);
    for' \
  '    m_settings->beginGroup(QString());
    for'
mutant $k "clear_registry_key clears the whole file" \
  'for (const QString& key : m_settings->allKeys()) m_settings->remove(key);' \
  'm_settings->clear();'

mutant gcl/cfgq/cfgq_registry_sections.cpp "section table: one group name wrong" \
  '{"OFCQ", "Orlesk_Foundation_Class"},' \
  '{"OFCQ", "Orlesk_Foundation_Classes"},'

k=gcl/cfgq/cfgq_limits.h
mutant $k "file size limit: a file of exactly the limit is set aside" \
  'return size > max_file_bytes;' \
  'return size >= max_file_bytes;'
mutant $k "file size limit off by one upwards" \
  'return size > max_file_bytes;' \
  'return size > max_file_bytes + 1;'
mutant $k "the tool's value limit off by one" \
  'return units >= max_value_utf16_units;' \
  'return units > max_value_utf16_units;'

k=gcl/cfgq/cfgq_settings_file_write.cpp
mutant $k "a write cut short is renamed over the file" \
  'if (found == expected && (written.size == 0 || ends_with_line_end)) return QString();' \
  'if (found == expected || (written.size == 0 || ends_with_line_end)) return QString();'
mutant $k "a write goes ahead without the file's lock" \
  '!takes_own_lock(record, generation) ||
                      file_write.lock(&why, &holder, &guard);' \
  '!takes_own_lock(record, generation) ||
                      true;'
mutant $k "the event loop's flush bypasses the lock and the check" \
  'if (event->type() != QEvent::UpdateRequest) return QSettings::event(event);' \
  'return QSettings::event(event);'

k=gcl/cfgq/cfgq_file_record.cpp
mutant $k "a file rewritten within one tick counts as unchanged" \
  '  if (view.settled) return true;
  platform::file_state read;' \
  '  if (true) return true;
  platform::file_state read;'

k=gcl/cfgq/cfgq_file_write.cpp
mutant $k "a written file loses the old file's owner and mode" \
  '} else if (!platform::restore_owner_and_mode(m_stage, like, why)) {' \
  '} else if (false) {'
mutant $k "a stage that could not be written completely is committed" \
  'return make_stage_dir(true, why) && platform::write_new_file(m_stage, bytes, why);' \
  'return make_stage_dir(true, why) && (platform::write_new_file(m_stage, bytes, why) || true);'

k=gcl/cfgq/cfgq_settings_file.cpp
mutant $k "a view whose flush was refused never writes again" \
  'if (generation.discarding && generation.dirty_objects == 0 &&' \
  'if (generation.discarding && generation.dirty_objects < 0 &&'

k=gcl/cfgq/cfgq_file_location.cpp
mutant $k "main key: a given suffix is appended only when already there" \
  'if (!name.endsWith(given, Qt::CaseSensitive)) return name + given;' \
  'if (name.endsWith(given, Qt::CaseSensitive)) return name + given;'
mutant $k "main key: 64-bit part misspelt" \
  'name += QLatin1String("_64-Bit");' \
  'name += QLatin1String("_64-bit");'

k=gcl/cfgq/cfgq_file_private_dir.cpp
mutant $k "a live writer's staged file is removed" \
  'switch (taken.take(owner)) {' \
  'switch (platform::holding::free) {'

k=gcl/cfgq/cfgq_registry.cpp
mutant $k "migration copies only from the running version" \
  'if (text == running) continue;' \
  'if (text != running) continue;'
mutant $k "migration goes on after the first version with settings" \
  'versions.end() && count == 0;' \
  'versions.end() && count >= 0;'
mutant $k "migration copies with source and destination swapped" \
  'count = root.copy(get_main_key_name(local.constData(), nullptr), current);' \
  'count = root.copy(current, get_main_key_name(local.constData(), nullptr));'
mutant $k "start screens keep their old values" \
  '  if (count > 0) {' \
  '  if (count < 0) {'
mutant $k "one start-screen key left out" \
  '    {CFGQ_REGISTRY_KEY::GENERAL, CFGQ_PJM_SHOW_WHATSNEW_SCREEN},
' \
  ''
mutant $k "a current marker counts as old" \
  'marker.toInt() < CURRENT_REGISTRY_VERSION' \
  'marker.toInt() <= CURRENT_REGISTRY_VERSION'
mutant $k "reset keeps the settings" \
  '  if (present) root.remove(QString());' \
  ''

k=gcl/cfgq/cfgq_keys.cpp
mutant $k "catalogue: the yes text in capitals" \
  'const char* const CFGQ_YES_STR = "Yes";' \
  'const char* const CFGQ_YES_STR = "YES";'
mutant $k "catalogue: a numbered name off by one" \
  '"Tcl_9", "Tcl_10",' \
  '"Tcl_9", "Tcl_9",'
mutant $k "catalogue: the resizing table's count" \
  '    23, 8111,' \
  '    22, 8111,'

k=gcl/cfgq/cfgq_tcl.cpp
mutant $k "create accepts an empty key" \
  '  const char* value = args.get_one_arg_option(CFGQ_AUTO_ARGUMENT_VALUE);
  if (gen_is_empty_string(section)) return report_empty_type(interp);
  if (gen_is_empty_string(key)) return report_empty_key(interp);' \
  '  const char* value = args.get_one_arg_option(CFGQ_AUTO_ARGUMENT_VALUE);
  if (gen_is_empty_string(section)) return report_empty_type(interp);'
mutant $k "read answers a found value with the empty text" \
  'if (view.get_value(from_tcl(key), &value)) {' \
  'if (!view.get_value(from_tcl(key), &value)) {'
mutant $k "font: bold read from the italic field" \
  'const bool bold = field_array[4] == QLatin1String("1");' \
  'const bool bold = field_array[5] == QLatin1String("1");'
mutant $k "get_all_keys runs the keys together" \
  'Tcl_AppendElement(interp, to_tcl(key.toLocal8Bit()).constData());' \
  'Tcl_AppendResult(interp, to_tcl(key.toLocal8Bit()).constData(), nullptr);'
mutant $k "clear_registry clears the whole file" \
  '  view.clear_registry_key();' \
  '  view.clear();'

k=gcl/cfgq/cfgq_tcl_args_auto.cpp
mutant $k "read_registry does not take -key" \
  '{{named(CFGQ_AUTO_ARGUMENT_KEY), positional(CFGQ_AUTO_ARGUMENT_TYPE)}}' \
  '{{positional(CFGQ_AUTO_ARGUMENT_KEY), positional(CFGQ_AUTO_ARGUMENT_TYPE)}}'
mutant $k "abbreviations start at two letters" \
  'for (std::size_t length = 1; length < name.size(); ++length) {' \
  'for (std::size_t length = 2; length < name.size(); ++length) {'
mutant $k "a positional argument is accepted by name" \
  'if (argument.id != CFGQ_AUTO_ARGUMENT_NONE && argument.positional == 0) {' \
  'if (argument.id != CFGQ_AUTO_ARGUMENT_NONE) {'
mutant $k "the last argument name left out of the full-name table" \
  'id <= CFGQ_AUTO_ARGUMENT_VALUE; ++id' \
  'id < CFGQ_AUTO_ARGUMENT_VALUE; ++id'
mutant $k "an unknown name reads as an empty one" \
  'return entry ? static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(entry->id) : CFGQ_AUTO_ARGUMENT_NONE;' \
  'return entry ? static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(entry->id) : CFGQ_AUTO_ARGUMENT_EMPTY;'
mutant $k "identifier check off by one" \
  'if (id >= CFGQ_AUTO_ARGUMENT_EMPTY || id <= CFGQ_AUTO_ARGUMENT_NONE) {' \
  'if (id > CFGQ_AUTO_ARGUMENT_EMPTY || id <= CFGQ_AUTO_ARGUMENT_NONE) {'

k=gcl/cfgq/cfgq_setenv.cpp
mutant $k "setenv: item test is case-sensitive" \
  'if (items.contains(env_value, Qt::CaseInsensitive)) return false;' \
  'if (items.contains(env_value, Qt::CaseSensitive)) return false;'
mutant $k "setenv: the machine's store wins when both hold the variable" \
  'if (user_text.isEmpty() && !system_text.isEmpty()) {' \
  'if (!system_text.isEmpty()) {'
mutant $k "setenv: append replaces and replace appends" \
  '    if (append) {' \
  '    if (!append) {'
mutant $k "setenv: process value prepended instead of appended" \
  'value = current + separator.toLocal8Bit() + value;' \
  'value = value + separator.toLocal8Bit() + current;'

mutant host/ver.cpp "version list keeps empty entries" \
  'if (end > start) versions.push_back' \
  'if (end >= start) versions.push_back'
mutant host/cfg.cpp "configuration switch matches a prefix" \
  'if (entry == name) return true;' \
  'if (entry.compare(0, name.size(), name) == 0) return true;'
mutant host/msg.cpp "debug level: the lowest of repeated entries wins" \
  'if (level > best) best = level;' \
  'if (best < 0 || level < best) best = level;'
mutant host/atcl.cpp "Tcl: one surplus argument accepted" \
  'if (m_positional.size() >= positional_places.size())' \
  'if (m_positional.size() > positional_places.size())'
mutant host/atcl.cpp "Tcl: the first of a repeated option wins" \
  'if (option.first == id) value = option.second;' \
  'if (option.first == id && value == nullptr) value = option.second;'

# ---- Running them ----------------------------------------------------------------------------

count=${#files[@]}
saved="$build/mutate-original"   # the file being mutated, as it was
saved_path="$build/mutate-path"  # which file that is

restore() {
  if [ -f "$saved_path" ]; then
    # A new modification time: the restored source is compiled again.
    cp "$saved" "$here/$(cat "$saved_path")"
    rm -f "$saved" "$saved_path"
  fi
}
trap restore EXIT
trap 'exit 130' INT TERM

# occurrences FILE TEXT: how often TEXT stands in FILE, exactly.
occurrences() {
  TEXT=$2 perl -0777 -ne 'BEGIN { $t = $ENV{TEXT} } $n = () = /\Q$t\E/g; print $n' "$here/$1"
}

# apply FILE OLD NEW: replaces the one occurrence.
apply() {
  OLD=$2 NEW=$3 perl -0777 -i -pe 'BEGIN { $o = $ENV{OLD}; $n = $ENV{NEW} } s/\Q$o\E/$n/' "$here/$1"
}

chosen=()
list_only=0
for arg in "$@"; do
  case "$arg" in
    --list) list_only=1 ;;
    *[!0-9]*|'') echo "mutate: unknown argument '$arg' (mutant numbers or --list)" >&2; exit 2 ;;
    *) chosen+=("$arg") ;;
  esac
done
if [ ${#chosen[@]} -eq 0 ]; then
  for ((i = 1; i <= count; ++i)); do chosen+=("$i"); done
fi

if [ "$list_only" = 1 ]; then
  for i in "${chosen[@]}"; do
    j=$((i - 1))
    n=$(occurrences "${files[$j]}" "${olds[$j]}")
    state=applies
    [ "$n" = 1 ] || state="not applied (text found $n times)"
    printf '%3d  %-32s %s: %s\n' "$i" "${files[$j]#gcl/cfgq/}" "${names[$j]}" "$state"
  done
  exit 0
fi

mkdir -p "$build"
restore  # a run killed without its trap left its mutant in place
if git -C "$here" rev-parse --is-inside-work-tree >/dev/null 2>&1 &&
  ! git -C "$here" diff --quiet -- gcl host; then
  echo "mutate: gcl/ or host/ has uncommitted changes; the mutants apply to committed text" >&2
fi

echo "mutate: building the unmutated tree in $build"
# The test programs that link the shared libraries are not relinked when only a library
# changes; the internal tests, on the static archive, are.
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_LINK_DEPENDS_NO_SHARED=ON \
  -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON >"$build/mutate-configure.log"
cmake --build "$build" -j "$jobs" >"$build/mutate-build.log" 2>&1 || {
  tail -30 "$build/mutate-build.log" >&2
  echo "mutate: the unmutated tree does not build" >&2
  exit 1
}
run_suite() {
  ctest --test-dir "$build" -j "$jobs" --timeout "$timeout" --stop-on-failure \
    -LE "$long_labels" >"$build/mutate-ctest.log" 2>&1
}
if ! run_suite; then
  grep -E 'Failed|Timeout|Not Run' "$build/mutate-ctest.log" | head -20 >&2
  echo "mutate: the unmutated tree fails its tests" >&2
  exit 1
fi

caught=0
missed=0
skipped=0
missed_list=()
started=$(date +%s)
for i in "${chosen[@]}"; do
  j=$((i - 1))
  file=${files[$j]}
  label=$(printf '%3d  %-30s %s' "$i" "${file#gcl/cfgq/}" "${names[$j]}")
  if [ "$j" -ge "$count" ] || [ "$j" -lt 0 ]; then
    echo "mutate: there is no mutant $i" >&2
    continue
  fi
  if [ "$(occurrences "$file" "${olds[$j]}")" != 1 ]; then
    echo "$label: not applied"
    skipped=$((skipped + 1))
    continue
  fi
  cp -p "$here/$file" "$saved"
  echo "$file" >"$saved_path"
  apply "$file" "${olds[$j]}" "${news[$j]}"
  t0=$(date +%s)
  if ! cmake --build "$build" -j "$jobs" >"$build/mutate-build.log" 2>&1; then
    # A mutant that does not compile says nothing about the tests.
    echo "$label: not applied (does not compile)"
    skipped=$((skipped + 1))
  elif run_suite; then
    echo "$label: MISSED ($(($(date +%s) - t0)) s)"
    missed=$((missed + 1))
    missed_list+=("$i")
  else
    first=$(sed -n "/The following tests FAILED/{n;s/^[[:space:]]*[0-9]* - //p;q}" \
      "$build/mutate-ctest.log")
    echo "$label: caught by ${first:-a failing test} ($(($(date +%s) - t0)) s)"
    caught=$((caught + 1))
  fi
  restore
done

total=$((caught + missed))
echo "caught $caught of $total (missed: ${missed_list[*]:-none}; not applied: $skipped;" \
  "$(($(date +%s) - started)) s)"
# The library as it is, built again, so that the build directory matches the sources.
cmake --build "$build" -j "$jobs" >"$build/mutate-build.log" 2>&1 || true
