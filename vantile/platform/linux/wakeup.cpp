#include "vantile/platform/linux/wakeup.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace vantile {

Wakeup::Wakeup() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void Wakeup::wake() const {
  const std::uint64_t one = 1;
  // Where it is full, it is readable.
  [[maybe_unused]] const auto written = ::write(event_.get(), &one, sizeof one);
}

bool Wakeup::sleep(std::optional<std::chrono::nanoseconds> duration, int watched) const {
  using Milliseconds = std::chrono::milliseconds;
  constexpr Milliseconds longest = std::chrono::hours(1);
  int timeout = -1;
  if (duration)
    timeout =
        static_cast<int>(std::min(std::chrono::ceil<Milliseconds>(*duration), longest).count());
  std::array<pollfd, 2> waited = {pollfd{event_.get(), POLLIN, 0}, pollfd{watched, POLLPRI, 0}};
  ::poll(waited.data(), waited.size(), timeout);
  std::uint64_t count = 0;
  [[maybe_unused]] const auto read = ::read(event_.get(), &count, sizeof count);
  return (waited[1].revents & POLLPRI) != 0;
}

}  // namespace vantile
