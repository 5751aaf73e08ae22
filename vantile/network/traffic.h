#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "vantile/foundation/value.h"
#include "vantile/platform/interface_counters.h"

namespace vantile {

/// What an interface's counters said in one sample.
struct CounterReading {
  CounterWidth width = CounterWidth::bits32;
  std::uint32_t index = 0;  ///< the kernel's number of the interface
  std::uint64_t received = 0, sent = 0;

  friend bool operator==(const CounterReading&, const CounterReading&) = default;
};

/// The running totals of an interface, and what it moved since the sample before.
struct Traffic {
  CounterReading counters;
  bool first = true;  ///< there was nothing to go on from
  std::uint64_t totalIn = 0, totalOut = 0;
  std::uint64_t movedIn = 0, movedOut = 0;
  double peak = 0;  ///< highest rate in bytes per second

  friend bool operator==(const Traffic&, const Traffic&) = default;
};

/// Traffic with nothing to go on from: the totals are the counters.
Traffic firstTraffic(const CounterReading& now);

/// Traffic that goes on from the sample before, `interval` seconds ago. A 32-bit counter that is
/// lower than before wrapped once. A 64-bit one was made anew, as was another interface of the
/// name: that is first traffic.
Traffic nextTraffic(const Traffic& before, const CounterReading& now, double interval);

/// The per-interface entry of network_keys.h, written over one of the same keys or a new one.
void writeEntry(Dictionary& entry, const Traffic& traffic);

}  // namespace vantile
