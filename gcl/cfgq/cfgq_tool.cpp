// What the cfgq tool asks the library beyond the public header.
#include "cfgq_tool.h"

#include <cerrno>
#include <cstring>

#include <QDateTime>
#include <QFileInfo>

#include "cfgq_file_lock.h"
#include "cfgq_file_write.h"
#include "cfgq_file_platform.h"
#include "cfgq_file_location.h"

QString cfgq_tool_settings_file() { return get_registry_file_path(); }

bool cfgq_tool_isolated_run(QString* why) { return cfgq_isolated_run(why); }

QString cfgq_tool_main_key() { return get_main_key_name(nullptr, nullptr); }

bool cfgq_tool_take_write_failure(cfgq_write_failure* failure) {
  return cfgq_file_take_failure(failure);
}

cfgq_lock_report cfgq_tool_lock_report(const QString& path) {
  cfgq_lock_report report;
  report.locks_stay_local = cfgq_platform::locks_stay_local(path);
  const QString lock = path + QStringLiteral(".lock");
  const QFileInfo info(lock);
  report.exists = info.exists() || info.isSymLink();
  if (!report.exists) return report;
  report.held = cfgq_platform::lock_is_held(lock);
  report.age_ms = info.lastModified().msecsTo(QDateTime::currentDateTime());
  cfgq_platform::lock_holder holder;
  if (cfgq_platform::read_lock_holder(lock, &holder)) {
    report.pid = holder.pid;
    report.program = holder.program;
    report.host = holder.host;
    report.this_host = holder.this_host;
  }
  return report;
}

long long cfgq_tool_lock_wait_ms() { return cfgq_lock_wait_ms(); }

bool cfgq_tool_replace_file(const QString& path, const QByteArray& bytes, QString* why) {
  QString target = QFileInfo(path).absoluteFilePath();
  const cfgq_platform::file_state seen = cfgq_platform::state_of(target, false);
  if (seen.link) {
    // The link stays; the file it names is replaced, and only a regular file is.
    target = cfgq_platform::final_target(target);
    const cfgq_platform::file_state named = cfgq_platform::state_of(target, true);
    if (!named.exists) {
      *why = QStringLiteral("a link to no regular file");
      return false;
    }
    if (!named.regular) {
      *why = QStringLiteral("not a regular file");
      return false;
    }
  } else if (seen.exists && !seen.regular) {
    *why = QStringLiteral("not a regular file");
    return false;
  }
  // A file the user names goes into a directory that is there: none is made for it.
  const cfgq_platform::file_state directory =
      cfgq_platform::state_of(QFileInfo(target).absolutePath(), true);
  if (!directory.exists) {
    *why = QString::fromLocal8Bit(std::strerror(ENOENT));
    return false;
  }
  return cfgq_write_file(target, bytes, why);
}
