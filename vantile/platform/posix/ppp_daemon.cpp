#include "vantile/platform/posix/ppp_daemon.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "vantile/platform/posix/descriptor.h"

namespace vantile {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

#ifdef SO_NOSIGPIPE
constexpr int quietly = 0;  // the socket's own option sees to it; older systems lack the flag
#else
constexpr int quietly = MSG_NOSIGNAL;
#endif

/// Milliseconds up to the moment, at least one; 0 when it is past.
int patience(Clock::time_point until) {
  const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
  return static_cast<int>(std::clamp(left, milliseconds(0), milliseconds(60'000)).count());
}

/// Whether a call that failed is to be tried again.
bool isTransient(int error) {
  return error == EINTR || error == EAGAIN || error == EWOULDBLOCK;
}

class LocalConnection final : public PppConnection {
 public:
  explicit LocalConnection(Descriptor socket) : socket_(std::move(socket)) {}

  PppTransfer send(std::string_view bytes, std::chrono::nanoseconds within) override {
    const auto until = Clock::now() + within;
    while (!bytes.empty()) {
      const auto count = ::send(socket_.get(), bytes.data(), bytes.size(), quietly);
      if (count > 0) {
        bytes.remove_prefix(static_cast<std::size_t>(count));
      } else if (!isTransient(errno)) {
        return PppTransfer::closed;
      } else if (!ready(POLLOUT, until)) {
        return PppTransfer::late;
      }
    }
    return PppTransfer::done;
  }

  PppTransfer receive(char* into, std::size_t size, std::chrono::nanoseconds within) override {
    const auto until = Clock::now() + within;
    while (size > 0) {
      const auto count = ::recv(socket_.get(), into, size, 0);
      if (count > 0) {
        into += count;
        size -= static_cast<std::size_t>(count);
      } else if (count == 0 || !isTransient(errno)) {
        return PppTransfer::closed;
      } else if (!ready(POLLIN, until)) {
        return PppTransfer::late;
      }
    }
    return PppTransfer::done;
  }

 private:
  /// Waits until the socket can be used or closed; false when the time is up, or can't be waited.
  bool ready(short direction, Clock::time_point until) const {
    pollfd entry = {.fd = socket_.get(), .events = direction, .revents = 0};
    for (;;) {
      const int left = patience(until);
      const int count = left > 0 ? ::poll(&entry, 1, left) : 0;
      if (count > 0) return true;  // the next call tells
      if (left == 0 || (count < 0 && errno != EINTR)) return false;
    }
  }

  const Descriptor socket_;
};

class LocalDaemon final : public PppDaemon {
 public:
  explicit LocalDaemon(const sockaddr_un& address) : address_(address) {}

  PppConnecting reach(std::chrono::nanoseconds within) override {
    const auto until = Clock::now() + within;
    Descriptor socket = quietSocket();
    if (!socket) return {};
    for (;;) {
      const int result =
          ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address_), sizeof address_);
      if (result == 0 || errno == EISCONN)
        return {PppTransfer::done, std::make_unique<LocalConnection>(std::move(socket))};
      if (!isTransient(errno) && errno != EINPROGRESS && errno != EALREADY) return {};
      // A full queue of connections is told to nobody once it moves on, so it is asked again.
      const int left = patience(until);
      if (left == 0) return {.outcome = PppTransfer::late, .connection = nullptr};
      ::poll(nullptr, 0, std::min(left, 10));
    }
  }

 private:
  /// A socket that never waits by itself, raises no signal and is not for child processes.
  static Descriptor quietSocket() {
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (!socket) return socket;
    ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC);
#ifdef SO_NOSIGPIPE
    const int on = 1;
    if (::setsockopt(socket.get(), SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on) != 0) return {};
#endif
    const int flags = ::fcntl(socket.get(), F_GETFL);
    if (flags < 0 || ::fcntl(socket.get(), F_SETFL, flags | O_NONBLOCK) != 0) return {};
    return socket;
  }

  const sockaddr_un address_;
};

}  // namespace

std::shared_ptr<PppDaemon> pppDaemonAt(const std::string& path) {
  // Its length byte, where there is one, stays 0, and the whole of it is passed: 106 bytes on
  // macOS.
  sockaddr_un address = {};
  if (path.size() >= sizeof address.sun_path) return nullptr;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  return std::make_shared<LocalDaemon>(address);
}

}  // namespace vantile
