// File-system stand-in on Windows, through the wide Win32 calls so that UTF-8 paths reach the
// system whole whatever the process's code page.
#include "fio.h"

#include "wide_text_win.h"

bool FIO_FILE_SYSTEM::remove_if_exists(const std::string& path) {
  std::wstring wide;
  if (path.empty() || !utf8_to_wide(path, &wide)) return false;
  // A link is removed itself, never what it points to.
  if (DeleteFileW(wide.c_str())) return true;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool FIO_FILE_SYSTEM::rename(const std::string& from, const std::string& to) {
  std::wstring wide_from;
  std::wstring wide_to;
  if (from.empty() || to.empty() || !utf8_to_wide(from, &wide_from) ||
      !utf8_to_wide(to, &wide_to)) {
    return false;
  }
  // Replaces a file at `to` as a POSIX rename does; never copies across volumes.
  return MoveFileExW(wide_from.c_str(), wide_to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}
