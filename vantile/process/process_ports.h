#pragma once

#include <memory>

#include "vantile/platform/launched_applications.h"
#include "vantile/platform/process_lister.h"
#include "vantile/platform/text_patterns.h"

namespace vantile {

/// What the process monitor asks of the operating system.
struct ProcessPorts {
  std::shared_ptr<LaunchedApplications> applications = systemLaunchedApplications();
  std::shared_ptr<ProcessLister> lister = systemProcessLister();
  std::shared_ptr<TextPatterns> patterns = systemTextPatterns();

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static ProcessPorts& installed();
};

}  // namespace vantile
