#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "vantile/foundation/api.h"

namespace vantile {

/// What the system knows of a network interface by its name. Any thread.
class InterfaceFacts {
 public:
  virtual ~InterfaceFacts() = default;

  /// Whether the platform counts it as Ethernet though its name does not begin with "en".
  /// macOS: never, its names are rule enough. Linux: a link of Ethernet type that is a device,
  /// wired or wireless, and no bridge, tunnel or virtual link: "eth0", "wlan0"; nothing while the
  /// kernel can't be asked.
  virtual std::optional<bool> isEthernetDevice(std::string_view name) = 0;

  /// The link's speed in bits per second, or nothing when the system does not tell, as while there
  /// is no link.
  /// macOS: "IOLinkSpeed" of the parent, in the "IOService" plane, of the first service that
  /// IOBSDNameMatching finds. Linux: the kernel's ethtool answer, the current bit rate of a
  /// wireless link, or the speed in /sys.
  virtual std::optional<std::uint64_t> linkSpeed(std::string_view name) = 0;
};

/// The machine's interfaces, shared by the process.
VANTILE_API std::shared_ptr<InterfaceFacts> systemInterfaceFacts();

}  // namespace vantile
