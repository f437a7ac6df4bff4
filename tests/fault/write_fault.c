/* A write fault injector, loaded with LD_PRELOAD: makes writes to regular files below one
 * directory stop at a chosen offset, as a full disk or a quota does.
 *
 *   WRITE_FAULT_DIR=DIR      only regular files whose path starts with DIR are affected
 *   WRITE_FAULT_OFFSET=N     no byte at file offset N or beyond is written
 *   WRITE_FAULT_MODE=short   a write across N writes the bytes before N and returns that count;
 *                            the next one fails with ENOSPC (what a nearly full disk does)
 *   WRITE_FAULT_MODE=enospc  a write across N fails with ENOSPC and writes nothing
 *
 * write, pwrite, writev and fallocate-free paths of stdio all end in these calls. While a fault
 * is set, statvfs of a path below DIR reports the file system full, as a real one would. The
 * fault applies to every process that inherits the variables, so a test can run a whole tool. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/statvfs.h>
#include <sys/uio.h>
#include <unistd.h>

typedef ssize_t (*write_fn)(int, const void*, size_t);
typedef ssize_t (*pwrite_fn)(int, const void*, size_t, off_t);
typedef ssize_t (*writev_fn)(int, const struct iovec*, int);

/* How many bytes of a write of `count` bytes at `offset` on `fd` may go through: `count` when the
 * fault doesn't apply, fewer when it does; -1 when none may (errno is then set). */
static ssize_t allowed(int fd, off_t offset, size_t count) {
  const char* dir = getenv("WRITE_FAULT_DIR");
  const char* limit_text = getenv("WRITE_FAULT_OFFSET");
  if (dir == NULL || limit_text == NULL || count == 0) return (ssize_t)count;
  struct stat st;
  if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) return (ssize_t)count;
  char link[64];
  char path[PATH_MAX];
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  if (length < 0) return (ssize_t)count;
  path[length] = '\0';
  if (strncmp(path, dir, strlen(dir)) != 0) return (ssize_t)count;
  const long long limit = atoll(limit_text);
  if (offset < 0) offset = lseek(fd, 0, SEEK_CUR);
  if ((long long)offset + (long long)count <= limit) return (ssize_t)count;
  const char* mode = getenv("WRITE_FAULT_MODE");
  const int shorten = mode == NULL || strcmp(mode, "short") == 0;
  if (shorten && (long long)offset < limit) return (ssize_t)(limit - offset);
  errno = ENOSPC;
  return -1;
}

ssize_t write(int fd, const void* buf, size_t count) {
  static write_fn real;
  if (real == NULL) real = (write_fn)dlsym(RTLD_NEXT, "write");
  const ssize_t n = allowed(fd, -1, count);
  if (n < 0) return -1;
  return real(fd, buf, (size_t)n);
}

ssize_t pwrite(int fd, const void* buf, size_t count, off_t offset) {
  static pwrite_fn real;
  if (real == NULL) real = (pwrite_fn)dlsym(RTLD_NEXT, "pwrite");
  const ssize_t n = allowed(fd, offset, count);
  if (n < 0) return -1;
  return real(fd, buf, (size_t)n, offset);
}

ssize_t pwrite64(int fd, const void* buf, size_t count, off_t offset) {
  return pwrite(fd, buf, count, offset);
}

ssize_t writev(int fd, const struct iovec* iov, int iovcnt) {
  static writev_fn real;
  if (real == NULL) real = (writev_fn)dlsym(RTLD_NEXT, "writev");
  size_t total = 0;
  for (int i = 0; i < iovcnt; ++i) total += iov[i].iov_len;
  const ssize_t n = allowed(fd, -1, total);
  if (n < 0) return -1;
  if ((size_t)n == total) return real(fd, iov, iovcnt);
  /* Cut the vector at n bytes. */
  struct iovec cut[64];
  int parts = 0;
  size_t left = (size_t)n;
  for (int i = 0; i < iovcnt && i < 64 && left > 0; ++i) {
    cut[parts] = iov[i];
    if (cut[parts].iov_len > left) cut[parts].iov_len = left;
    left -= cut[parts].iov_len;
    ++parts;
  }
  return real(fd, cut, parts);
}

typedef int (*statvfs_fn)(const char*, struct statvfs*);

int statvfs(const char* path, struct statvfs* buf) {
  static statvfs_fn real;
  if (real == NULL) real = (statvfs_fn)dlsym(RTLD_NEXT, "statvfs");
  const int result = real(path, buf);
  const char* dir = getenv("WRITE_FAULT_DIR");
  if (result == 0 && dir != NULL && getenv("WRITE_FAULT_OFFSET") != NULL &&
      strncmp(path, dir, strlen(dir)) == 0) {
    buf->f_bavail = 0;
    buf->f_bfree = 0;
  }
  return result;
}

int statvfs64(const char* path, struct statvfs64* buf) {
  /* The same layout on 64-bit systems, where this injector is used. */
  return statvfs(path, (struct statvfs*)buf);
}
