#include "vantile/platform/linux/kept_file.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace vantile {
namespace {

constexpr std::size_t piece = 4096;

}  // namespace

std::optional<std::size_t> KeptFile::readAt(std::size_t offset, std::size_t most) {
  if (!descriptor_)
    descriptor_ = Descriptor(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!descriptor_) return std::nullopt;
  if (buffer_.size() < offset + most) buffer_.resize(offset + most);
  ssize_t count = 0;
  do {
    count = ::pread(descriptor_.get(), buffer_.data() + offset, most, static_cast<off_t>(offset));
  } while (count < 0 && errno == EINTR);
  if (count < 0) {
    descriptor_ = Descriptor();  // what it stood for is gone: a device, say
    return std::nullopt;
  }
  return static_cast<std::size_t>(count);
}

std::optional<std::string_view> KeptFile::beginning(std::size_t most) {
  const auto count = readAt(0, most);
  if (!count) return std::nullopt;
  return std::string_view(buffer_.data(), *count);
}

std::optional<std::string_view> KeptFile::text(std::size_t most) {
  std::size_t size = 0;
  while (true) {
    const auto count = readAt(size, piece);
    if (!count) return std::nullopt;
    if (*count == 0 || size > most) return std::string_view(buffer_.data(), size);
    size += *count;
  }
}

bool KeptFile::changed() {
  if (!descriptor_) return true;
  pollfd asked = {.fd = descriptor_.get(), .events = POLLPRI, .revents = 0};
  return ::poll(&asked, 1, 0) != 0;
}

}  // namespace vantile
