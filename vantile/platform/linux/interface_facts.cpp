#include "vantile/platform/linux/interface_facts.h"

#include <linux/if.h>

#include <filesystem>
#include <system_error>

#include "vantile/platform/linux/generic_netlink.h"
#include "vantile/platform/linux/link_requests.h"
#include "vantile/platform/linux/netlink_lister.h"
#include "vantile/platform/parsers/generic_netlink.h"
#include "vantile/platform/parsers/network_messages.h"
#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

constexpr std::size_t allOfAttribute = 64;

/// Whether a link may have the name. It is also safe as the name of a folder.
bool mayBeName(std::string_view name) {
  constexpr std::string_view never("/\0", 2);
  return !name.empty() && name.size() < IFNAMSIZ && name.find_first_of(never) == name.npos &&
         name != "." && name != "..";
}

}  // namespace

LinuxInterfaceFacts::Told LinuxInterfaceFacts::link(std::string_view name) const {
  if (!mayBeName(name)) return {};
  std::optional<Link> found;
  NetlinkLister lister(NETLINK_ROUTE, open_);
  LinkRequest request(name);
  const auto outcome = lister.list(
      request, [&found] { found.reset(); },
      [&](const NetlinkMessage& message) {
        const auto told = parseLinkMessage(message.payload);
        // The kernel may find a link by another of its names.
        if (!told || told->name != name) return;
        const bool ethernet = static_cast<LinkType>(told->type) == LinkType::ethernet;
        found = Link{told->index, ethernet, isOfADevice(told->kind), !told->parentDevice.empty()};
      });
  return {outcome != NetlinkLister::Outcome::failed, found};
}

/// The link's folder, where it is this link's.
std::optional<std::string> LinuxInterfaceFacts::folderOf(std::string_view name,
                                                         const Link& link) const {
  auto folder = folder_ + std::string(name) + "/";
  const auto index = contentsOf(folder + "ifindex", allOfAttribute);
  if (!index || leadingNumber(*index) != link.index) return std::nullopt;
  return folder;
}

std::optional<bool> LinuxInterfaceFacts::isEthernetDevice(std::string_view name) {
  const auto [answered, known] = link(name);
  if (!answered) return std::nullopt;
  if (!known || !known->ethernet || !known->ofADevice) return false;
  if (known->hasParent) return true;
  const auto folder = folderOf(name, *known);
  std::error_code missing;
  return folder && std::filesystem::exists(*folder + "device", missing);
}

std::optional<std::uint64_t> LinuxInterfaceFacts::linkSpeed(std::string_view name) {
  const auto known = link(name).link;
  if (!known) return std::nullopt;
  const GenericNetlink generic(open_);
  if (const auto speed = generic.linkSpeed(known->index)) return speed;
  if (const auto rate = generic.wirelessRate(known->index)) return rate;
  const auto folder = folderOf(name, *known);
  const auto text = folder ? contentsOf(*folder + "speed", allOfAttribute) : std::nullopt;
  return text ? parseSpeedText(*text) : std::nullopt;
}

std::shared_ptr<InterfaceFacts> systemInterfaceFacts() {
  static auto& facts = *new std::shared_ptr<InterfaceFacts>(std::make_shared<LinuxInterfaceFacts>(
      [](int bus, unsigned groups) { return openNetlink(bus, groups); }));
  return facts;
}

}  // namespace vantile
