// File-system stand-in. Paths are UTF-8.
#pragma once

#include <string>

class FIO_FILE_SYSTEM {
 public:
  // Deletes the file at `path` if there is one. True when no file remains there.
  static bool remove_if_exists(const std::string& path);
  // Renames `from` to `to`, replacing a file at `to`. True on success.
  static bool rename(const std::string& from, const std::string& to);
};
