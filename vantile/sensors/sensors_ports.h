#pragma once

#include <memory>

#include "vantile/platform/processors.h"
#include "vantile/platform/smc_service.h"

namespace vantile {

/// What the sensors subsystem asks of the operating system.
struct SensorsPorts {
  std::shared_ptr<Processors> processors = systemProcessors();
  std::shared_ptr<SmcService> smc = systemSmcService();

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static SensorsPorts& installed();
};

}  // namespace vantile
