#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vantile/foundation/value.h"
#include "vantile/platform/linux/network_manager.h"
#include "vantile/platform/linux/network_model.h"

namespace vantile {

/// Dictionaries by their keys in the store.
using ConfigurationTable = std::map<std::string, std::shared_ptr<const Dictionary>, std::less<>>;

/// What the store of macOS would hold of the network, made from what the kernel, the resolver and
/// NetworkManager tell.
///
/// The services are the connections that NetworkManager has for a link, in its order, then every
/// other link but the loopback: those with a default route of IPv4 by its metric, those with one of
/// IPv6 alone, then the rest; devices before virtual links, by index. The former go by their UUID;
/// the latter by the permanent address of their hardware, "hardware-525400a1b2c3", which outlives a
/// renaming, or where that is missing or not theirs alone by their name, "interface-tun0".
///
/// A link's state is shown for one service: its active connection, else the first one that is bound
/// to it. The machine's name servers are shown for the primary one.
ConfigurationTable networkDictionaries(const NetworkModel& network,
                                       const std::vector<ManagedConnection>& connections);

}  // namespace vantile
