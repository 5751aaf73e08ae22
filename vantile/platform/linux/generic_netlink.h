#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "vantile/platform/linux/netlink_channel.h"

namespace vantile {

/// Questions to the families of generic netlink. A channel is opened for each: they are rare, and a
/// kept one would go on asking in the network that it was opened in.
class GenericNetlink {
 public:
  explicit GenericNetlink(OpenNetlink open) : open_(std::move(open)) {}

  /// A link's speed as ethtool knows it, in bits per second.
  std::optional<std::uint64_t> linkSpeed(std::uint32_t index) const;
  /// At what rate a wireless link sends to its access point, in bits per second.
  std::optional<std::uint64_t> wirelessRate(std::uint32_t index) const;
  /// The links that are wireless; nothing where the kernel did not answer. Without nl80211 there
  /// are none.
  std::optional<std::vector<std::uint32_t>> wirelessLinks() const;

 private:
  OpenNetlink open_;
};

}  // namespace vantile
