// Directories of one process's own, their owner files and the sweep of gone owners' ones.
#include "cfgq_file_private_dir.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace platform = cfgq_platform;

namespace {

const QString owner_name = QStringLiteral("owner");
const QString dir_prefix = QStringLiteral("cfgq.");

// Removes the directory `dir` and everything in it (files and links: private directories hold
// nothing else), `owner` (holding its owner file) given back last:
// where a removed file goes at once (POSIX), the directory goes while it is still held; where
// it goes only once closed (Windows), the directory goes after, and only if no other process
// has a file of it open.
void remove_tree(const QString& dir, platform::held_file* owner) {
  QDir listing(dir);
  for (const QString& name : listing.entryList(QDir::AllEntries | QDir::System | QDir::Hidden |
                                               QDir::NoDotAndDotDot)) {
    if (name != owner_name) platform::remove_file(listing.filePath(name));
  }
  platform::remove_file(listing.filePath(owner_name));
  if (!QDir().rmdir(dir)) {
    owner->release();
    QDir().rmdir(dir);
  }
}

// The files a gone owner's note names for removal: only regular files of this user, never
// through a link.
void remove_noted(const QString& owner_file) {
  QFile file(owner_file);
  if (!file.open(QIODevice::ReadOnly)) return;
  for (const QByteArray& line : file.read(64 * 1024).split('\n')) {
    if (!line.startsWith("remove=")) continue;
    const QString path = QFile::decodeName(line.mid(7));
    const platform::file_state state = platform::state_of(path, false);
    if (state.exists && state.regular && state.owner == platform::this_user()) {
      platform::remove_file(path);
    }
  }
}

}  // namespace

std::unique_ptr<cfgq_private_dir> cfgq_private_dir::make(const QString& parent,
                                                         const QByteArray& note, QString* why) {
  // A writer that empties the parent removes it, and a sweeper removes an empty directory
  // without an owner file: made again, a few times, when either went.
  for (int round = 0; round < 3; ++round) {
    const platform::file_state state = platform::state_of(parent, false);
    if (!state.exists) {
      if (!QDir().mkdir(parent)) {
        *why = platform::last_error_text();
        continue;
      }
      platform::adopt_owner(parent);
      QFile::setPermissions(parent, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    } else if (state.link || state.regular) {
      *why = QStringLiteral("%1 is not a directory").arg(parent);
      return nullptr;
    }
    const QString path = platform::make_private_dir(parent + QLatin1Char('/') + dir_prefix +
                                                    QStringLiteral("XXXXXX"));
    if (path.isEmpty()) {
      *why = platform::last_error_text();
      if (platform::state_of(parent, false).exists) return nullptr;
      continue;
    }
    platform::adopt_owner(path);
    std::unique_ptr<cfgq_private_dir> dir(new cfgq_private_dir(path));
    // The owner file's lock is all that counts; it holds no bytes unless there is a note, so
    // that a disk with no room left still takes it.
    if (dir->m_owner.make(dir->file(owner_name), note, why)) return dir;
    // The destructor removes what was made; a sweeper that took the directory meanwhile
    // leaves nothing to keep.
  }
  return nullptr;
}

cfgq_private_dir::~cfgq_private_dir() {
  // The owner file goes last, while still held: until then no sweeper takes the directory.
  remove_tree(m_path, &m_owner);
}

void cfgq_sweep_private_dirs(const QString& parent) {
  QDir dir(parent);
  const QStringList names = dir.entryList({dir_prefix + QLatin1Char('*')},
                                          QDir::Dirs | QDir::Hidden | QDir::NoSymLinks |
                                              QDir::NoDotAndDotDot);
  for (const QString& name : names) {
    const QString path = dir.filePath(name);
    const platform::file_state state = platform::state_of(path, false);
    if (!state.exists || state.link || state.owner != platform::this_user()) continue;
    const QString owner = path + QLatin1Char('/') + owner_name;
    // Held until the directory is gone: a maker that made the owner file but has not locked it
    // yet fails to lock it and makes another directory.
    platform::held_file taken;
    switch (taken.take(owner)) {
      case platform::holding::held:
        break;
      case platform::holding::free:
        remove_noted(owner);
        remove_tree(path, &taken);
        break;
      case platform::holding::missing:
        // Its maker was killed making or removing it; one still making it makes another.
        QDir().rmdir(path);  // only when empty
        break;
    }
  }
}

QString cfgq_beside_parent(const QString& file) {
  const QFileInfo info(file);
  return info.absolutePath() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".cfgq");
}

void cfgq_remove_if_empty(const QString& parent) { QDir().rmdir(parent); }
