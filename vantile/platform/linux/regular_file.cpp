#include "vantile/platform/linux/regular_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "vantile/platform/linux/statx.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {

std::optional<FileStamp> stampOf(const std::string& path) {
  const auto status =
      statusOf(AT_FDCWD, path.c_str(), 0, STATX_TYPE | STATX_INO | STATX_SIZE | STATX_MTIME);
  if (!status || !S_ISREG(status->stx_mode)) return std::nullopt;
  return FileStamp{makedev(status->stx_dev_major, status->stx_dev_minor), status->stx_ino,
                   status->stx_size, status->stx_mtime.tv_sec, status->stx_mtime.tv_nsec};
}

std::optional<std::string> contentsOf(const std::string& path, std::size_t most) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  constexpr std::size_t piece = 4096;  // more than it says it has: it may be growing
  std::string contents;
  std::size_t size = 0;
  while (size < most) {
    contents.resize(
        std::min(most, std::max(size, static_cast<std::size_t>(status.st_size)) + piece));
    const auto count = ::read(file.get(), contents.data() + size, contents.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  contents.resize(size);
  return contents;
}

}  // namespace vantile
