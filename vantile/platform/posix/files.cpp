#include "vantile/platform/posix/files.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

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

std::optional<std::string> contentsOf(const std::string& path, std::size_t most) {
  return beginningOf(AT_FDCWD, path.c_str(), most, 0);
}

std::optional<std::string> beginningOf(int folder, const char* name, std::size_t most, int flags) {
  const Descriptor file(
      ::openat(folder, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | flags));
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

std::optional<std::string> fileIn(std::string folder, std::string_view name,
                                  std::string_view type) {
  if (folder.empty()) return std::nullopt;
  if (!folder.ends_with('/')) folder.push_back('/');
  auto path = std::move(folder.append(name));
  if (!type.empty()) path.append(".").append(type);
  struct stat status = {};
  const bool isFile = ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  return isFile ? std::optional(std::move(path)) : std::nullopt;
}

}  // namespace vantile
