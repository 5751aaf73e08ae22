#include "vantile/platform/linux/file_stamp.h"

#include <time.h>

#include "vantile/platform/linux/statx.h"

namespace vantile {

namespace {

std::optional<FileStamp> stampAt(int folder, const char* name, int flags) {
  const auto status =
      statusOf(folder, name, flags, STATX_TYPE | STATX_INO | STATX_SIZE | STATX_MTIME);
  if (!status || !S_ISREG(status->stx_mode)) return std::nullopt;
  return FileStamp{makedev(status->stx_dev_major, status->stx_dev_minor), status->stx_ino,
                   status->stx_size, status->stx_mtime.tv_sec, status->stx_mtime.tv_nsec};
}

}  // namespace

std::optional<FileStamp> stampOf(const std::string& path) {
  return stampAt(AT_FDCWD, path.c_str(), 0);
}

std::optional<FileStamp> stampOf(int file) {
  return stampAt(file, "", AT_EMPTY_PATH);
}

std::int64_t presentSecond() {
  timespec now = {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec;
}

bool isSettled(std::int64_t modified, std::int64_t now) {
  constexpr std::int64_t step = 2;
  return modified < now - step || modified > now + step;
}

}  // namespace vantile
