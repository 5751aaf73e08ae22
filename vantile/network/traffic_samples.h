#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/value.h"
#include "vantile/network/traffic.h"

namespace vantile {

/// Makes the samples of `NetManage::netStatsWithInterval`, each measured against the one before.
/// Samples and their entries are never changed while anybody else holds them; those that nobody
/// holds any more lend their storage to the next, so that a tick in the steady state makes nothing
/// new. Not synchronised, but for the letting go of samples, which may happen on any thread.
class TrafficSamples {
 public:
  /// An interface's counters; `goesOn`: from the sample before, where it was in that.
  struct Interface {
    std::string_view name;
    CounterReading counters;
    bool goesOn = true;
  };

  /// Begins a sample that covers `interval` seconds.
  void begin(double interval);
  /// Adds an interface to it; a later one of the same name takes the earlier one's place.
  void add(const Interface& interface);
  /// The whole sample: its interfaces' entries by name. From now on it is the one before.
  std::shared_ptr<const Dictionary> finish();

 private:
  struct Line {
    Line(const Interface& now, const Line* before, double interval);
    std::string name;
    Traffic traffic;
    std::shared_ptr<Dictionary> entry;
  };
  /// A sample with its entries, in the order of the lines that it was made of.
  struct Made {
    std::shared_ptr<Dictionary> sample;
    std::vector<std::shared_ptr<Dictionary>> entries;
    std::uint64_t layout = 0;  ///< which names, in which order
  };

  const Line* lineBefore(std::string_view name);
  Made& storage();
  void place(Made& made, std::size_t position);

  double interval_ = 0;
  std::vector<Line> before_, now_;
  bool inStep_ = true;  // so far each line of now_ has the name of before_'s at that place
  std::uint64_t layout_ = 0;
  std::vector<Made> made_;
  std::size_t oldest_ = 0;  // of made_, the next one to be given up
};

}  // namespace vantile
