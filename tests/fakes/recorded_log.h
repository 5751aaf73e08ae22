#pragma once

#include <string>
#include <vector>

#include "vantile/foundation/log.h"

namespace vantile::testing {

/// Keeps the library's log lines while it lives. Lines that other threads log meanwhile are in it,
/// too; read it when they are done.
class RecordedLog {
 public:
  RecordedLog() {
    setLogSink([this](std::string_view line) { lines.emplace_back(line); });
  }
  ~RecordedLog() { setLogSink(nullptr); }
  RecordedLog(const RecordedLog&) = delete;
  RecordedLog& operator=(const RecordedLog&) = delete;

  std::vector<std::string> lines;
};

}  // namespace vantile::testing
