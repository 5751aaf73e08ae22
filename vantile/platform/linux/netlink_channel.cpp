#include "vantile/platform/linux/netlink_channel.h"

#include <libmnl/libmnl.h>
#include <linux/netlink.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>
#include <vector>

namespace vantile {
namespace {

// The kernel fills its answers up to the size that was last asked for, to this much at most.
constexpr std::size_t longestDatagram = 32768;

struct CloseSocket {
  void operator()(mnl_socket* socket) const { ::mnl_socket_close(socket); }
};
using Socket = std::unique_ptr<mnl_socket, CloseSocket>;

class KernelChannel final : public NetlinkChannel {
 public:
  explicit KernelChannel(Socket socket) : socket_(std::move(socket)), buffer_(longestDatagram) {}

  bool send(std::string_view request) override {
    return ::mnl_socket_sendto(socket_.get(), request.data(), request.size()) >= 0;
  }

  Outcome receive() override {
    size_ = 0;
    const auto received = ::mnl_socket_recvfrom(socket_.get(), buffer_.data(), buffer_.size());
    if (received >= 0) {
      size_ = static_cast<std::size_t>(received);
      return Outcome::datagram;
    }
    if (errno == EINTR) return receive();
    if (errno == ENOBUFS || errno == ENOSPC) return Outcome::overrun;
    return errno == EAGAIN ? Outcome::nothing : Outcome::failed;
  }

  std::string_view datagram() const override { return {buffer_.data(), size_}; }
  int descriptor() const override { return ::mnl_socket_get_fd(socket_.get()); }

 private:
  const Socket socket_;
  std::vector<char> buffer_;
  std::size_t size_ = 0;
};

}  // namespace

std::unique_ptr<NetlinkChannel> openNetlink(int bus, unsigned groups, int receiveBuffer) {
  Socket socket(::mnl_socket_open2(bus, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!socket) return nullptr;
  // Lists may then be limited, to one table of routes for instance. Before Linux 4.20 they are not.
  int strict = 1;
  ::mnl_socket_setsockopt(socket.get(), NETLINK_GET_STRICT_CHK, &strict, sizeof strict);
  if (receiveBuffer > 0)
    ::setsockopt(::mnl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVBUF, &receiveBuffer,
                 sizeof receiveBuffer);
  if (::mnl_socket_bind(socket.get(), groups, MNL_SOCKET_AUTOPID) < 0) return nullptr;
  return std::make_unique<KernelChannel>(std::move(socket));
}

}  // namespace vantile
