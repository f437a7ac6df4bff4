// Reading the settings file without a view (see settings_snapshot.h).
#include "settings_snapshot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryFile>

namespace cli {

bool read_file_bytes(const QString& path, QByteArray* bytes, bool* exists, QString* why) {
  const QFileInfo info(path);
  *exists = info.exists();
  bytes->clear();
  if (!*exists) return true;
  if (!info.isFile()) {
    *why = QStringLiteral("not a regular file");
    return false;
  }
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    *why = file.errorString();
    return false;
  }
  *bytes = file.readAll();
  if (file.error() != QFileDevice::NoError) {
    *why = file.errorString();
    return false;
  }
  return true;
}

void parse_settings(const QByteArray& bytes, const QString& group, settings_snapshot* snapshot) {
  snapshot->main_keys.clear();
  snapshot->values.clear();
  snapshot->format_error = false;
  // Qt keeps one parsed copy per file name and process and reads a file again only when its size
  // or time changed; a fresh name for every read means every read parses these bytes.
  QTemporaryFile copy(QDir::tempPath() + QStringLiteral("/cfgq-read-XXXXXX"));
  if (!copy.open() || copy.write(bytes) != bytes.size() || !copy.flush()) {
    snapshot->unreadable = QStringLiteral("no private copy could be made to read it: %1").arg(copy.errorString());
    return;
  }
  copy.close();
  try {
    QSettings raw(copy.fileName(), QSettings::IniFormat);
    // At the root, the key list makes Qt parse every section, and so find every damaged line.
    (void)raw.childKeys();
    snapshot->main_keys = raw.childGroups();
    raw.beginGroup(group);
    for (const QString& key : raw.allKeys()) snapshot->values.insert(key, raw.value(key));
    snapshot->format_error = raw.status() == QSettings::FormatError;
  } catch (...) {
    snapshot->unreadable = QStringLiteral("its settings can't be read");
  }
}

qint64 size_after_writes(const QByteArray& bytes, const QList<QPair<QString, QVariant>>& writes,
                         QString* why) {
  QTemporaryFile copy(QDir::tempPath() + QStringLiteral("/cfgq-size-XXXXXX"));
  if (!copy.open() || copy.write(bytes) != bytes.size() || !copy.flush()) {
    *why = QStringLiteral("no private copy could be made to measure the write: %1").arg(copy.errorString());
    return -1;
  }
  copy.close();
  try {
    QSettings raw(copy.fileName(), QSettings::IniFormat);
    for (const auto& [key, value] : writes) raw.setValue(key, value);
    raw.sync();
    if (raw.status() == QSettings::NoError) return QFileInfo(copy.fileName()).size();
  } catch (...) {
  }
  *why = QStringLiteral("the private copy that measures the write could not be written");
  return -1;
}

settings_snapshot read_settings(const QString& path, const QString& group) {
  settings_snapshot snapshot;
  if (read_file_bytes(path, &snapshot.bytes, &snapshot.exists, &snapshot.unreadable)) {
    parse_settings(snapshot.bytes, group, &snapshot);
  }
  return snapshot;
}

}  // namespace cli
