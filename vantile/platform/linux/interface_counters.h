#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vantile/platform/interface_counters.h"
#include "vantile/platform/linux/netlink_channel.h"
#include "vantile/platform/linux/netlink_lister.h"
#include "vantile/platform/parsers/network_messages.h"

namespace vantile {

/// The kernel's counters, which come without names: those are kept from what it tells of links.
class LinuxInterfaceCounters final : public InterfaceCounters {
 public:
  explicit LinuxInterfaceCounters(const OpenNetlink& open);

  bool read(InterfaceReadings& into) override;

 private:
  struct Link {
    std::uint32_t index = 0;
    std::string name;
    bool loopback = false, up = false;
  };
  enum class Counted { all, notAll, unsupported, refused };

  bool followLinks();
  void takeIn(std::string_view datagram);
  void keep(const LinkMessage& link);
  void forget(std::uint32_t index);
  bool listLinks();
  const Link* linkOf(std::uint32_t index);
  Counted readCounters(InterfaceReadings& into);
  bool readLinks(InterfaceReadings& into);

  const OpenNetlink open_;
  NetlinkLister lister_;
  std::unique_ptr<NetlinkChannel> events_;
  std::vector<Link> links_;  // by index
  std::size_t next_ = 0;     // where in `links_` the next one asked for is likely to be
  bool linksAreKnown_ = false;
  bool countersHaveNames_ = false;  // on an old kernel, which has them with the links only
};

}  // namespace vantile
