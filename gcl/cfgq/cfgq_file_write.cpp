// How the library writes a file; the steps are explained in cfgq_file_write.h.
#include "cfgq_file_write.h"

#include <optional>

#include <QFile>
#include <QFileInfo>

namespace platform = cfgq_platform;

namespace {

std::mutex failure_mutex;
std::optional<cfgq_write_failure> first_failure;

}  // namespace

void cfgq_file_note_failure(const cfgq_write_failure& failure) {
  std::lock_guard<std::mutex> lock(failure_mutex);
  if (!first_failure) first_failure = failure;
}

bool cfgq_file_take_failure(cfgq_write_failure* failure) {
  std::lock_guard<std::mutex> lock(failure_mutex);
  if (!first_failure) return false;
  *failure = std::move(*first_failure);
  first_failure.reset();
  return true;
}

cfgq_file_write::cfgq_file_write(const QString& file)
    : m_file(file), m_parent(cfgq_beside_parent(file)), m_lock(file) {}

cfgq_file_write::~cfgq_file_write() {
  // An uncommitted stage goes with its directory; the directory beside the file goes when no
  // other writer has one there. The lock is given back after (m_lock is destroyed last).
  m_dir.reset();
  cfgq_remove_if_empty(m_parent);
}

bool cfgq_file_write::lock(QString* why, qint64* holder, std::unique_lock<std::mutex>* guard) {
  return m_lock.take(why, holder, guard);
}

bool cfgq_file_write::make_stage_dir(bool sweep, QString* why) {
  // Gone writers' leftovers are removed by the sweep, which takes each one's owner lock.
  if (sweep) cfgq_sweep_private_dirs(m_parent);
  QString failure;
  m_dir = cfgq_private_dir::make(m_parent, {}, &failure);
  if (m_dir) {
    m_stage = m_dir->file(QStringLiteral("stage"));
    return true;
  }
  *why = QStringLiteral("can't create a file in %1: %2")
             .arg(QFileInfo(m_file).absolutePath(), failure);
  return false;
}

bool cfgq_file_write::stage_bytes(const QByteArray& bytes, QString* why) {
  return make_stage_dir(true, why) && platform::write_new_file(m_stage, bytes, why);
}

bool cfgq_file_write::stage_current(const platform::file_state& before, bool sweep,
                                    QString* why) {
  if (!make_stage_dir(sweep, why)) return false;
  const auto failed = [why](const QString& reason) {
    *why = QStringLiteral("the file can't be staged for writing: ") + reason;
    return false;
  };
  if (!before.exists) {
    return platform::make_private_file(m_stage, nullptr, why) || failed(*why);
  }
  if (platform::hard_link(m_file, m_stage, nullptr)) return true;
  QFile source(m_file);
  if (!source.open(QIODevice::ReadOnly)) return failed(source.errorString());
  const QByteArray bytes = source.readAll();
  if (!platform::make_private_file(m_stage, &before, why)) return failed(*why);
  QFile copy(m_stage);
  if (!copy.open(QIODevice::WriteOnly) || copy.write(bytes) != bytes.size() || !copy.flush()) {
    return failed(copy.errorString());
  }
  return true;
}

bool cfgq_file_write::commit(const platform::file_state& like, QString* why) {
  const QString directory = QFileInfo(m_file).absolutePath();
  if (!like.exists) {
    platform::adopt_owner(m_stage, directory);
  } else if (!platform::restore_owner_and_mode(m_stage, like, why)) {
    return false;
  }
  if (!platform::rename_over(m_stage, m_file, why)) return false;
  platform::sync_directory(directory);
  return true;
}

bool cfgq_write_file(const QString& path, const QByteArray& bytes, QString* why) {
  // Whatever stands at the path is replaced, a link too (never written through); a regular
  // file's owner and mode stay.
  const platform::file_state old = platform::state_of(path, false);
  if (!platform::make_directories(QFileInfo(path).absolutePath(), why)) return false;
  cfgq_file_write write(path);
  qint64 holder = 0;
  return write.lock(why, &holder) && write.stage_bytes(bytes, why) &&
         write.commit(old.regular ? old : platform::file_state(), why);
}
