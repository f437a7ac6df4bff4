// Directories of one process's own: where a process keeps what it makes beside a settings file
// (a staged new file) or in the runtime directory (the aliases Qt opens). Each is
// "cfgq.XXXXXX" holding "owner", a file its process keeps locked by the system while it runs.
// So any process, on any host and in any PID namespace, can tell a live owner from a gone one
// by that lock alone; a process id or host name proves nothing about a process elsewhere.
// May use: cfgq_file_platform.
#pragma once

#include <memory>

#include <QByteArray>
#include <QString>

#include "cfgq_file_platform.h"

class cfgq_private_dir {
 public:
  // Makes one in `parent` (made first when missing, the user's alone; made by root in another
  // user's directory, that user's). `note` goes into the owner file: what a sweeper should remove
  // with the directory, as "remove=<path>" lines. Null, with the reason in *why, when it can't
  // be made or its owner file can't be written (a full file system).
  static std::unique_ptr<cfgq_private_dir> make(const QString& parent, const QByteArray& note,
                                                QString* why);
  // Removes the directory with everything in it.
  ~cfgq_private_dir();
  cfgq_private_dir(const cfgq_private_dir&) = delete;
  cfgq_private_dir& operator=(const cfgq_private_dir&) = delete;

  const QString& path() const { return m_path; }
  QString file(const QString& name) const { return m_path + QLatin1Char('/') + name; }

 private:
  explicit cfgq_private_dir(QString path) : m_path(std::move(path)) {}
  QString m_path;
  cfgq_platform::held_file m_owner;
};

// Removes from `parent` the private directories whose owner is gone: a "cfgq.XXXXXX" directory
// of this user whose owner file nobody holds, with everything in it and the files its owner
// file names (a temporary settings file of a killed process); an empty one without an owner
// file (its maker was killed making or removing it; one still making it makes another). Nothing
// else, whatever its name.
void cfgq_sweep_private_dirs(const QString& parent);

// The directory beside the settings file at `file` that holds the private directories of its
// writers: ".<name>.cfgq" in the file's directory.
QString cfgq_beside_parent(const QString& file);

// Removes `parent` when it is empty (the last writer beside a file leaves nothing behind).
void cfgq_remove_if_empty(const QString& parent);
