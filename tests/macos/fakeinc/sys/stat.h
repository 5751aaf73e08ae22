// The macOS shape of a file's status. The functions that fill it ask Linux; those of Linux, for
// its own shape, stay beside them.
#pragma once

#include <stdint.h>
#include_next <sys/stat.h>

struct darwin_stat {
  int32_t st_dev;
  uint16_t st_mode;
  uint16_t st_nlink;
  uint64_t st_ino;
  uint32_t st_uid;
  uint32_t st_gid;
  int32_t st_rdev;
  struct timespec st_atimespec;
  struct timespec st_mtimespec;
  struct timespec st_ctimespec;
  struct timespec st_birthtimespec;
  int64_t st_size;
  int64_t st_blocks;
  int32_t st_blksize;
  uint32_t st_flags;
  uint32_t st_gen;
  int32_t st_lspare;
  int64_t st_qspare[2];
};

int darwin_stat(const char* path, struct darwin_stat* status);
int lstat(const char* path, struct darwin_stat* status);
int fstat(int fd, struct darwin_stat* status);
int fstatat(int folder, const char* name, struct darwin_stat* status, int flags);
#define stat darwin_stat
