// The settings file read directly, never through a view: a view may set the file aside or
// clean up beside it, and the commands that only look (watch, check, completion) must leave
// everything as it is.
#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace cli {

struct settings_snapshot {
  bool exists = false;        // something is at the path
  QString unreadable;         // why the file could not be read or parsed; empty when it was
  QByteArray bytes;           // the file's contents
  bool format_error = false;  // Qt reads it with format errors (damaged lines are skipped)
  QStringList main_keys;      // the file's top-level groups
  QMap<QString, QVariant> values;  // every value at or below the group asked for, by key path
};

// The bytes of the file at `path`: false, with *why, when it exists but cannot be read.
// A missing file gives true and no bytes, with *exists false.
bool read_file_bytes(const QString& path, QByteArray* bytes, bool* exists, QString* why);

// What the settings `bytes` hold: the main keys, and the values at or below `group` (levels
// joined by "/", empty for all) with their key paths below it. Qt parses a private copy, so
// the settings file itself is never opened by a settings object.
void parse_settings(const QByteArray& bytes, const QString& group, settings_snapshot* snapshot);

// The size of the settings file that `bytes` hold once Qt's INI writer, the one the library
// writes with, has written it again with `writes` (key paths from the root, and values) set:
// worked out in a private copy. -1, with *why, when no copy could be made or read.
qint64 size_after_writes(const QByteArray& bytes, const QList<QPair<QString, QVariant>>& writes,
                         QString* why);

// read_file_bytes and parse_settings together.
settings_snapshot read_settings(const QString& path, const QString& group);

}  // namespace cli
