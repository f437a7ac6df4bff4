// The limits, marker and suffixes that the library and the cfgq tool share: one source for each.
// May use: nothing of the library (Qt and the standard library only).
#pragma once

#include <QtGlobal>

// Settings files above this many bytes are set aside as ".large" and never loaded.
constexpr qint64 max_file_bytes = 10'000'000;
// The one test of a settings file's size against the limit: a file of exactly max_file_bytes
// is loaded.
constexpr bool cfgq_over_file_limit(qint64 size) { return size > max_file_bytes; }
// A value whose text form has this many UTF-16 code units or more is not stored.
constexpr qsizetype max_value_utf16_units = 10'000'000;
// The one test of a value's text length (UTF-16 code units) against the limit.
constexpr bool cfgq_value_too_large(qsizetype units) { return units >= max_value_utf16_units; }

// Appended to the settings file's path for the copies set aside beside it.
constexpr const char* cfgq_large_suffix = ".large";
constexpr const char* cfgq_corrupt_suffix = ".corrupt";
constexpr const char* cfgq_format_error_suffix = ".format-error";

// The value at the root of a main key that marks it as filled by migration.
constexpr const char* cfgq_registry_version_name = "Registry_version";
