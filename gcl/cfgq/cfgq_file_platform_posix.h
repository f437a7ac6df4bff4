// What the POSIX platform files share: conversions and the checked write of a descriptor.
// Used by cfgq_file_platform_posix.cpp and cfgq_file_lock_posix.cpp only.
// May use: cfgq_file_platform.
#pragma once

#include <cerrno>
#include <cstring>

#include <QByteArray>
#include <QString>

#include <sys/stat.h>
#include <unistd.h>

#include "cfgq_file_platform.h"

namespace cfgq_platform {
namespace posix {

constexpr mode_t owner_only = S_IRUSR | S_IWUSR;

inline file_state from_stat(const struct stat& st) {
  file_state state;
  state.exists = true;
  state.regular = S_ISREG(st.st_mode);
  state.link = S_ISLNK(st.st_mode);
  state.size = st.st_size;
  state.modified_ms = qint64{st.st_mtim.tv_sec} * 1'000 + st.st_mtim.tv_nsec / 1'000'000;
  state.device = static_cast<qint64>(st.st_dev);
  state.inode = static_cast<qint64>(st.st_ino);
  state.changed_ns = qint64{st.st_ctim.tv_sec} * 1'000'000'000 + st.st_ctim.tv_nsec;
  state.mode = st.st_mode & 07777;
  state.owner = st.st_uid;
  state.group = st.st_gid;
  return state;
}

inline QString error_text(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

inline void set_why(QString* why, int error) {
  if (why != nullptr) *why = error_text(error);
}

// Writes all of `bytes`; a short write is continued, and the error that stops it is returned
// (0 when everything was written).
inline int write_all(int fd, const QByteArray& bytes) {
  qsizetype done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.constData() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return errno;
    if (n == 0) return ENOSPC;
    done += n;
  }
  return 0;
}

}  // namespace posix
}  // namespace cfgq_platform
