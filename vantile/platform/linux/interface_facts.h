#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/platform/interface_facts.h"
#include "vantile/platform/linux/netlink_channel.h"
#include "vantile/platform/linux/roots.h"

namespace vantile {

/// What netlink says of a link; where the kernel is too old to say it, /sys/class/net, which may
/// show the links of another network and is believed where a link's number agrees.
class LinuxInterfaceFacts final : public InterfaceFacts {
 public:
  explicit LinuxInterfaceFacts(OpenNetlink open, const LinuxRoots& roots = {})
      : open_(std::move(open)), folder_(roots.sys + "/class/net/") {}

  std::optional<bool> isEthernetDevice(std::string_view name) override;
  std::optional<std::uint64_t> linkSpeed(std::string_view name) override;

 private:
  struct Link {
    std::uint32_t index = 0;
    bool ethernet = false, ofADevice = false, hasParent = false;
  };
  /// What the kernel told of a link.
  struct Told {
    bool answered = true;
    std::optional<Link> link;  ///< nothing where there is none of the name
  };

  Told link(std::string_view name) const;
  std::optional<std::string> folderOf(std::string_view name, const Link& link) const;

  const OpenNetlink open_;
  const std::string folder_;
};

}  // namespace vantile
