#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "vantile/foundation/value.h"

namespace vantile {

/// The latest throughput samples and the seconds that each covers, oldest first. Not synchronised.
class ThroughputHistory {
 public:
  /// Adds a sample, null where the system refused it: so samples and intervals stay in step. Before
  /// that, a history of more than `stay` samples is cut to one less than `stay`, so that it goes to
  /// and fro between `stay` and one more; with a `stay` below 2 it is emptied.
  void add(std::shared_ptr<const Dictionary> sample, double interval, std::int32_t stay);

  std::size_t size() const { return netHistoryData.size(); }
  std::size_t intervals() const { return netHistoryIntervals.size(); }

  // There are these once a sample was added.
  const std::shared_ptr<const Dictionary>& newest() const { return netHistoryData.back(); }
  double newestInterval() const { return netHistoryIntervals.back(); }

 private:
  std::vector<std::shared_ptr<const Dictionary>> netHistoryData;
  std::vector<double> netHistoryIntervals;
};

}  // namespace vantile
