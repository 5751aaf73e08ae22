#pragma once

#include <memory>

#include "vantile/platform/system_entries.h"
#include "vantile/platform/system_facts.h"
#include "vantile/platform/text_pieces.h"

namespace vantile {

/// What the system information asks of the operating system.
struct SystemInfoPorts {
  std::shared_ptr<SystemFacts> facts = systemFacts();
  std::shared_ptr<SystemEntries> entries = systemEntries();
  std::shared_ptr<TextPieces> text = systemTextPieces();

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static SystemInfoPorts& installed();
};

}  // namespace vantile
