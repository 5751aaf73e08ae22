#pragma once

#include <string_view>

#include "vantile/platform/interface_counters.h"

namespace vantile {

/// Reads the interfaces out of the answer to macOS's sysctl NET_RT_IFLIST: routing messages, each
/// beginning with its length. An interface's message (RTM_IFINFO) holds its flags and 32-bit
/// counters, and behind them its link-level address with the name. Other messages are passed over,
/// as is an interface without a name in ASCII. A message that is longer than what is left, or too
/// short to be one, ends the walk.
void parseRoutingMessages(std::string_view messages, InterfaceReadings& into);

}  // namespace vantile
