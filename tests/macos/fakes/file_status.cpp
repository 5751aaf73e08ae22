// Linux's answers in the shape that macOS gives them.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "fakes/fakes.h"

namespace {

timespec timeOf(const statx_timestamp& time, const std::optional<std::int64_t>& instead) {
  if (instead) return {*instead, 0};
  return {time.tv_sec, static_cast<long>(time.tv_nsec)};
}

int translate(int folder, const char* name, int flags, struct darwin_stat* result) {
  struct statx status = {};
  if (::statx(folder, name, flags, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) return -1;
  *result = {};
  result->st_dev = static_cast<std::int32_t>(makedev(status.stx_dev_major, status.stx_dev_minor));
  result->st_mode = status.stx_mode;
  result->st_nlink = static_cast<std::uint16_t>(status.stx_nlink);
  result->st_ino = status.stx_ino;
  result->st_uid = status.stx_uid;
  result->st_gid = status.stx_gid;
  result->st_size = static_cast<std::int64_t>(status.stx_size);
  result->st_mtimespec = timeOf(status.stx_mtime, fakes::machine.modifiedSeconds);
  result->st_birthtimespec = timeOf(status.stx_btime, fakes::machine.birthSeconds);
  return 0;
}

}  // namespace

#undef stat

int darwin_stat(const char* path, struct darwin_stat* status) {
  return translate(AT_FDCWD, path, 0, status);
}

int lstat(const char* path, struct darwin_stat* status) {
  return translate(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, status);
}

int fstat(int fd, struct darwin_stat* status) {
  return translate(fd, "", AT_EMPTY_PATH, status);
}

int fstatat(int folder, const char* name, struct darwin_stat* status, int flags) {
  return translate(folder, name, flags, status);
}
