#include "event_loop.h"

#include <poll.h>
#include <vantile/foundation/run_loop.h>

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>

namespace vantile::host {

void EventLoop::watch(int fd, short events, std::function<void(short found)> ready) {
  watched_.push_back({fd, events, std::move(ready)});
}

void EventLoop::end(int code) {
  if (!code_) code_ = code;
}

int EventLoop::run() {
  RunLoop& library = RunLoop::current();
  while (!code_) {
    std::vector<pollfd> polled{{library.fd(), POLLIN, 0}, {signals_.fd(), POLLIN, 0}};
    const auto ours = polled.size();
    for (const auto& watched : watched_) polled.push_back({watched.fd, watched.events, 0});

    if (poll(polled.data(), polled.size(), -1) < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "cannot wait for events");
    }
    while (const auto number = signals_.take()) {
      if (onSignal_) onSignal_(*number);
    }
    if (polled[0].revents != 0 && !code_) library.dispatch();
    for (std::size_t at = 0; at < watched_.size() && !code_; ++at) {
      const short found = polled[ours + at].revents;
      if (found == 0) continue;
      if (found & (POLLERR | POLLHUP | POLLNVAL)) watched_[at].fd = -1;
      watched_[at].ready(found);
    }
    if (afterEach_ && !code_) afterEach_();
  }
  return *code_;
}

}  // namespace vantile::host
