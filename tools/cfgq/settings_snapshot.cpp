// Reading the settings file without a view (see settings_snapshot.h).
#include "settings_snapshot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

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

namespace {

// A private copy of a file's bytes for Qt to read or write, in a directory of its own: on
// Windows Qt's writer can replace a file there, never one a temporary file object holds.
class private_copy {
 public:
  explicit private_copy(const QByteArray& bytes)
      : m_dir(QDir::tempPath() + QStringLiteral("/cfgq-XXXXXX")),
        m_file(m_dir.filePath(QStringLiteral("copy.ini"))) {
    if (!m_dir.isValid()) {
      m_error = m_dir.errorString();
      return;
    }
    QFile file(m_file);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()) {
      m_error = file.errorString();
    }
  }
  bool made() const { return m_dir.isValid() && m_error.isEmpty(); }
  const QString& error() const { return m_error; }
  const QString& path() const { return m_file; }

 private:
  QTemporaryDir m_dir;
  QString m_file;
  QString m_error;
};

}  // namespace

void parse_settings(const QByteArray& bytes, const QString& group, settings_snapshot* snapshot) {
  snapshot->main_keys.clear();
  snapshot->values.clear();
  snapshot->format_error = false;
  // Qt keeps one parsed copy per file name and process and reads a file again only when its size
  // or time changed; a fresh name for every read means every read parses these bytes.
  const private_copy copy(bytes);
  if (!copy.made()) {
    snapshot->unreadable = QStringLiteral("no private copy could be made to read it: %1").arg(copy.error());
    return;
  }
  try {
    QSettings raw(copy.path(), QSettings::IniFormat);
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
  const private_copy copy(bytes);
  if (!copy.made()) {
    *why = QStringLiteral("no private copy could be made to measure the write: %1").arg(copy.error());
    return -1;
  }
  try {
    QSettings raw(copy.path(), QSettings::IniFormat);
    for (const auto& [key, value] : writes) raw.setValue(key, value);
    raw.sync();
    if (raw.status() == QSettings::NoError) return QFileInfo(copy.path()).size();
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
