#include "vantile/network/traffic.h"

#include <algorithm>

#include "vantile/network/network_keys.h"

namespace vantile {
namespace {

std::uint64_t advance32(std::uint64_t before, std::uint64_t now) {
  constexpr std::uint64_t wrap = std::uint64_t{1} << 32;
  return now >= before ? now - before : now + wrap - before;
}

bool goesOn(const CounterReading& before, const CounterReading& now) {
  if (before.width != now.width) return false;
  if (now.width == CounterWidth::bits32) return true;
  return before.index == now.index && now.received >= before.received && now.sent >= before.sent;
}

/// What a total grew by; nothing where it went round.
std::uint64_t moved(std::uint64_t before, std::uint64_t total) {
  return total > before ? total - before : 0;
}

}  // namespace

Traffic firstTraffic(const CounterReading& now) {
  Traffic traffic;
  traffic.counters = now;
  traffic.totalIn = now.received;
  traffic.totalOut = now.sent;
  return traffic;
}

Traffic nextTraffic(const Traffic& before, const CounterReading& now, double interval) {
  Traffic traffic = firstTraffic(now);
  if (!goesOn(before.counters, now)) return traffic;
  const bool narrow = now.width == CounterWidth::bits32;
  const auto growth = [narrow](std::uint64_t last, std::uint64_t current) {
    return narrow ? advance32(last, current) : current - last;
  };
  traffic.first = false;
  traffic.totalIn = before.totalIn + growth(before.counters.received, now.received);
  traffic.totalOut = before.totalOut + growth(before.counters.sent, now.sent);
  traffic.movedIn = moved(before.totalIn, traffic.totalIn);
  traffic.movedOut = moved(before.totalOut, traffic.totalOut);
  traffic.peak = before.peak;
  if (interval > 0)
    traffic.peak = std::max(
        before.peak, static_cast<double>(std::max(traffic.movedIn, traffic.movedOut)) / interval);
  return traffic;
}

void writeEntry(Dictionary& entry, const Traffic& traffic) {
  entry.reserve(7);
  entry.set(keys::if_in, static_cast<std::uint32_t>(traffic.counters.received));
  entry.set(keys::if_out, static_cast<std::uint32_t>(traffic.counters.sent));
  if (!traffic.first) {
    entry.set(keys::downlink_speed, traffic.movedIn);
    entry.set(keys::uplink_speed, traffic.movedOut);
  }
  entry.set(keys::total_in, traffic.totalIn);
  entry.set(keys::total_out, traffic.totalOut);
  entry.set(keys::peak_speek, traffic.peak);
}

}  // namespace vantile
