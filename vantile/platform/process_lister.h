#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "vantile/foundation/api.h"

namespace vantile {

/// How a listing ended, and what it printed.
struct ProcessListing {
  std::int32_t exitStatus = 0;
  std::string output;  ///< bytes, as they came
};

/// The system's tool that prints a line for each process. Any thread.
class ProcessLister {
 public:
  virtual ~ProcessLister() = default;

  /// Lists the processes that `pids` names, decimal identifiers with commas between them, and waits
  /// until that is done; nothing when the tool can't be run. `columns` are the ones asked for.
  /// macOS: "/bin/ps" with "-p", `pids`, "-o", `columns`; a tool that a signal ended has the
  /// signal's number for its status.
  /// Linux: no tool, /proc/PID/stat. Whatever was asked for, the columns are pid, %cpu, %mem, rss
  /// and vsz in KiB, and the letters of the state; the shares are of one processor since this same
  /// process was last listed, at the first time over its life, and of the physical memory. The
  /// status is 1: the parse of these lines is for a tool that failed at a column.
  virtual std::optional<ProcessListing> run(const std::string& pids,
                                            const std::string& columns) = 0;
};

/// The system's tool, shared by the process.
VANTILE_API std::shared_ptr<ProcessLister> systemProcessLister();

}  // namespace vantile
