#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// How wide the source's byte counters are, and so how they go on after their highest value.
enum class CounterWidth { bits32, bits64 };

/// What a network interface moved, in bytes since it was made.
struct InterfaceReading {
  std::string name;         ///< as the system shows it, "en0", "eth0"; never empty
  std::uint32_t index = 0;  ///< the kernel's number; another interface of the name has another
  bool loopback = false;
  bool up = false;  ///< set up by its owner, whether or not there is a link
  std::uint64_t received = 0, sent = 0;

  friend bool operator==(const InterfaceReading&, const InterfaceReading&) = default;
};

/// Readings of all interfaces, in the kernel's order. `count` of them are valid; the others are
/// kept for the sake of their storage.
struct InterfaceReadings {
  std::vector<InterfaceReading> readings;
  std::size_t count = 0;
  CounterWidth width = CounterWidth::bits32;
};

/// The byte counters of the machine's network interfaces. Any thread, one at a time.
class InterfaceCounters {
 public:
  virtual ~InterfaceCounters() = default;

  /// Reads all counters into `into`, whose storage is used again. False when the system refuses
  /// them; `into` is then not to be read.
  /// macOS: sysctl {CTL_NET, PF_ROUTE, 0, 0, NET_RT_IFLIST, 0}, 32 bits wide; the buffer only
  /// grows. Linux: one RTM_GETSTATS dump on a kept socket, 64 bits wide, with names and flags from
  /// link events; RTM_GETLINK where the kernel has none.
  virtual bool read(InterfaceReadings& into) = 0;
};

/// A reader of the machine's counters, for one owner.
VANTILE_API std::unique_ptr<InterfaceCounters> makeInterfaceCounters();

}  // namespace vantile
