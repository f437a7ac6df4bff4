// The settings file's damage and its set-asides: a copy kept of a file Qt could not read
// faithfully before any write replaces it, and a file renamed out of the way (too large, or
// failing to load), once however many processes find it.
// May use: cfgq_diagnostics, cfgq_file_location, cfgq_file_lock, cfgq_file_record, cfgq_file_write,
//   cfgq_limits, cfgq_settings_cache, cfgq_utf8.
#pragma once

#include <mutex>

#include <QSettings>
#include <QString>

#include "cfgq_file_record.h"
#include "cfgq_limits.h"

// Before any write can replace what Qt could not read faithfully (a format error, bytes that
// are not UTF-8), keeps a byte-exact copy of the file as "<file>.format-error". A file checked
// once is checked again only after it changed. `settings` stands at the root of the file in
// `state`; the record's mutex is held.
void cfgq_keep_damaged_copy(cfgq_file_record& record, QSettings& settings,
                            const cfgq_platform::file_state& state);

// Renames the record's file to its name with `suffix` appended, if it is still the file that
// `measured` describes (and, `for_size`, still over the size limit), under the file's lock,
// so that it happens once however many processes found it. No file is made in its place: the
// next write makes one, with the set-aside file's owner and mode. False when the lock could not
// be had (*why says why). The record's mutex is held in `guard` (given back for any wait).
bool cfgq_set_aside(cfgq_file_record& record, std::unique_lock<std::mutex>& guard,
                    const cfgq_platform::file_state& measured, const char* suffix,
                    bool for_size, QString* why);
