#include "vantile/platform/posix/files.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "vantile/platform/posix/descriptor.h"

namespace vantile {

std::chrono::sys_time<std::chrono::nanoseconds> momentOf(std::int64_t seconds,
                                                         std::int64_t nanoseconds) {
  using Moment = std::chrono::sys_time<std::chrono::nanoseconds>;
  using Seconds = std::chrono::seconds;
  constexpr auto earliest = std::chrono::ceil<Seconds>(Moment::min()).time_since_epoch();
  constexpr auto latest = std::chrono::floor<Seconds>(Moment::max()).time_since_epoch();
  const Seconds whole(seconds);
  if (whole < earliest) return Moment(earliest);
  if (whole >= latest) return Moment(latest);
  return Moment(whole + std::chrono::nanoseconds(nanoseconds));
}

std::optional<std::string> beginningOf(int folder, const char* name, std::size_t most) {
  const Descriptor file(
      ::openat(folder, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY));
  struct stat status = {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  const auto wanted = std::min(most, static_cast<std::size_t>(status.st_size));
  std::string contents(wanted, '\0');
  std::size_t size = 0;
  while (size < wanted) {
    const auto count = ::read(file.get(), contents.data() + size, wanted - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  contents.resize(size);
  return contents;
}

}  // namespace vantile
