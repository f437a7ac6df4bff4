/* Loaded with LD_PRELOAD: no symbolic link can be made, as on Windows or a share without them,
 * so the library's settings objects work on private copies of the file instead of links. */
#define _GNU_SOURCE
#include <errno.h>
#include <unistd.h>

int symlink(const char* target, const char* link) {
  (void)target;
  (void)link;
  errno = EPERM;
  return -1;
}

int symlinkat(const char* target, int dir, const char* link) {
  (void)target;
  (void)dir;
  (void)link;
  errno = EPERM;
  return -1;
}
