#pragma once

#include <functional>
#include <memory>
#include <string_view>

namespace vantile {

/// A socket of netlink. It never waits: what the kernel answers is there when the request is sent.
/// Not synchronised.
class NetlinkChannel {
 public:
  enum class Outcome {
    datagram,
    nothing,  ///< there is none
    overrun,  ///< the kernel had to drop some, or one was too long: what they told is lost
    failed,
  };

  virtual ~NetlinkChannel() = default;

  virtual bool send(std::string_view request) = 0;
  virtual Outcome receive() = 0;
  /// What was received last. Valid until the next receiving.
  virtual std::string_view datagram() const = 0;
  /// Readable when there is something to receive.
  virtual int descriptor() const = 0;
};

/// Opens a channel to `bus`, NETLINK_ROUTE or another, that gets what is told to `groups`, a mask
/// of the bus's; null where the system refuses.
using OpenNetlink = std::function<std::unique_ptr<NetlinkChannel>(int bus, unsigned groups)>;

/// The kernel's. `receiveBuffer` in bytes, 0 for the system's choice.
std::unique_ptr<NetlinkChannel> openNetlink(int bus, unsigned groups, int receiveBuffer = 0);

}  // namespace vantile
