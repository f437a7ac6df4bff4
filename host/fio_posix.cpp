// File-system stand-in on POSIX systems.
#include "fio.h"

#include <cerrno>
#include <cstdio>

#include <unistd.h>

bool FIO_FILE_SYSTEM::remove_if_exists(const std::string& path) {
  if (path.empty()) return false;
  return ::unlink(path.c_str()) == 0 || errno == ENOENT;
}

bool FIO_FILE_SYSTEM::rename(const std::string& from, const std::string& to) {
  if (from.empty() || to.empty()) return false;
  return std::rename(from.c_str(), to.c_str()) == 0;
}
