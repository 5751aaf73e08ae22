#include "vantile/network/throughput_history.h"

#include <utility>

namespace vantile {
namespace {

template <class Held>
void trim(std::vector<Held>& history, std::int32_t stay) {
  if (stay < 2) return history.clear();
  const auto most = static_cast<std::size_t>(stay);
  if (history.size() <= most) return;
  const auto cut = static_cast<std::ptrdiff_t>(history.size() - most + 1);
  history.erase(history.begin(), history.begin() + cut);
}

}  // namespace

void ThroughputHistory::add(std::shared_ptr<const Dictionary> sample, double interval,
                            std::int32_t stay) {
  trim(netHistoryData, stay);
  trim(netHistoryIntervals, stay);
  netHistoryData.push_back(std::move(sample));
  netHistoryIntervals.push_back(interval);
}

}  // namespace vantile
