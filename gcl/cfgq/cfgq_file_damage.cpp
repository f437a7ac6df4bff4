// Copies of damaged settings files, and set-asides.
#include "cfgq_file_damage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include "cfgq_diagnostics.h"
#include "cfgq_file_lock.h"
#include "cfgq_file_write.h"
#include "cfgq_limits.h"
#include "cfgq_file_location.h"
#include "cfgq_settings_cache.h"
#include "cfgq_utf8.h"

namespace platform = cfgq_platform;

namespace {

// True when Qt reads the file of `settings`, standing at the root, with a format error. Qt finds
// a damaged header when it reads the file, a damaged line only when it parses its section.
bool reads_with_format_error(const QSettings& settings) {
  if (settings.status() == QSettings::FormatError) return true;
  (void)settings.childKeys();
  return settings.status() == QSettings::FormatError;
}

}  // namespace

void cfgq_keep_damaged_copy(cfgq_file_record& record, QSettings& settings,
                            const platform::file_state& state) {
  if (!state.exists || state.size == 0 || record.checked.same_as(state)) return;
  QFile file(record.real);
  if (!file.open(QIODevice::ReadOnly)) return;
  const QByteArray bytes = file.readAll();
  file.close();
  const bool format_error = reads_with_format_error(settings);
  const bool undecodable = !cfgq_is_utf8(bytes);
  if (!format_error && !undecodable) {
    record.checked = state;
    return;
  }
  // Another process may have rewritten the file since Qt read it: its writer saw the damage
  // first and kept the copy, which clean bytes must not replace.
  if (!undecodable) {
    // In the process's own directory: a process killed here leaves nothing beside the user's
    // file, and its directory goes with it.
    const QString dir = !cfgq_process_dir().isEmpty() ? cfgq_process_dir()
                        : record.beside ? record.beside->path()
                                        : QString::fromStdString(cfgq_temp_directory());
    QTemporaryFile probe(QDir(dir).filePath(QStringLiteral("format-check.XXXXXX")));
    if (!probe.open() || probe.write(bytes) != bytes.size() || !probe.flush()) return;
    probe.close();
    const QSettings reader(probe.fileName(), QSettings::IniFormat);
    if (!reads_with_format_error(reader)) return;
  }
  const QString copy = record.real + QLatin1String(cfgq_format_error_suffix);
  QString why;
  if (cfgq_write_file(copy, bytes, &why)) {
    cfgq_debug("Kept a copy of " + record.real.toStdString() + " as " + copy.toStdString() +
               ": " + (undecodable ? "it holds bytes that are not UTF-8" : "it has format errors") +
               ", which the next write would not keep");
    record.checked = state;
  } else {
    cfgq_debug("Could not keep a copy of the damaged file " + record.real.toStdString() + ": " +
               why.toStdString());
  }
}

bool cfgq_set_aside(cfgq_file_record& record, std::unique_lock<std::mutex>& guard,
                    const platform::file_state& measured, const char* suffix, bool for_size,
                    QString* why) {
  cfgq_file_lock lock(record.real);
  qint64 holder = 0;
  // Taken even where Qt opens the file under its own name: no settings object holds it here.
  if (record.shared && !lock.take(why, &holder, &guard)) return false;
  const platform::file_state now = platform::state_of(record.real, true);
  if (!now.same_file(measured) || (for_size && !cfgq_over_file_limit(now.size))) return true;
  // The file's parsed state goes with it: a file set aside for its size must not stay in memory.
  if (record.current) cfgq_release_settings_file(record.current->alias);
  QString rename_why;
  if (!platform::rename_over(record.real, record.real + QLatin1String(suffix), &rename_why)) {
    cfgq_debug("Could not set aside " + record.real.toStdString() + ": " +
               rename_why.toStdString());
    return true;
  }
  record.pending_like = now;
  // Settings objects must not go on with what they read of the old file.
  cfgq_new_generation(record);
  return true;
}

