#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// A program started with its standard output on a pipe. One thread at a time. Letting go of it
/// closes the pipe and leaves no zombie.
class ChildTask {
 public:
  virtual ~ChildTask() = default;
  /// Whether the program has not ended yet. macOS: waitpid, WNOHANG.
  virtual bool isRunning() = 0;
  /// The bytes that are in the pipe; waits for the first ones, empty at the end of the output.
  /// Nothing when reading failed. macOS: read, as NSFileHandle availableData.
  virtual std::optional<std::string> availableData() = 0;
};

/// Starts programs. Any thread.
class ChildTasks {
 public:
  virtual ~ChildTasks() = default;
  /// Starts the program at `path`, or gives null when it can't be started.
  /// macOS: posix_spawn. Linux: nobody asks, the kernel tells without a child process; null.
  virtual std::unique_ptr<ChildTask> launch(const std::string& path,
                                            const std::vector<std::string>& arguments) = 0;
  /// Waits on the calling thread. macOS: usleep. Linux: nobody asks.
  virtual void pause(std::chrono::microseconds duration) = 0;
};

/// The platform's programs, shared by the process.
VANTILE_API std::shared_ptr<ChildTasks> systemChildTasks();

}  // namespace vantile
