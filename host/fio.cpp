// File-system stand-in on the C library.
#include "fio.h"

#include <cerrno>
#include <cstdio>

#ifndef _WIN32
#include <unistd.h>
#endif

bool FIO_FILE_SYSTEM::remove_if_exists(const std::string& path) {
  if (path.empty()) return false;
#ifndef _WIN32
  return ::unlink(path.c_str()) == 0 || errno == ENOENT;
#else
  return std::remove(path.c_str()) == 0 || errno == ENOENT;
#endif
}

bool FIO_FILE_SYSTEM::rename(const std::string& from, const std::string& to) {
  if (from.empty() || to.empty()) return false;
  return std::rename(from.c_str(), to.c_str()) == 0;
}
