#pragma once

#include <memory>

#include "vantile/foundation/api.h"

namespace vantile {

/// How long the machine will run on its batteries. Any thread.
class TimeRemaining {
 public:
  static constexpr double unknown = -1;    ///< on battery, not told or not known yet
  static constexpr double unlimited = -2;  ///< on external power

  virtual ~TimeRemaining() = default;

  /// Seconds, `unknown` or `unlimited`.
  /// macOS: IOPSGetTimeRemainingEstimate. Linux: what all batteries hold by what they give.
  virtual double estimate() = 0;
};

/// The machine's estimate, shared by the process.
VANTILE_API std::shared_ptr<TimeRemaining> systemTimeRemaining();

}  // namespace vantile
