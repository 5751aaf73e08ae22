#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vantile/platform/posix/descriptor.h"

namespace vantile {

/// A program that was started with its output on a pipe; somebody has to wait for it.
struct StartedProgram {
  pid_t pid = 0;
  Descriptor output;
};

/// Starts the program without input, its errors silenced, and without the host's descriptors and
/// blocked signals; nothing when it can't be started.
std::optional<StartedProgram> startProgram(const std::string& path,
                                           const std::vector<std::string>& arguments);

/// The bytes that are in the pipe; waits for the first ones, empty at the end, nothing when reading
/// failed.
std::optional<std::string> readAvailable(const Descriptor& output);

/// waitpid, taken up again after a signal.
pid_t waitForProgram(pid_t pid, int* status, int options);

struct FinishedProgram {
  std::int32_t exitStatus = 0;  ///< or the number of the signal that ended it
  std::string output;
};

/// Runs a program to its end; nothing when it can't be started or read, or when how it ended can't
/// be learned: a host that ignores SIGCHLD has it forgotten.
std::optional<FinishedProgram> runToEnd(const std::string& path,
                                        const std::vector<std::string>& arguments);

}  // namespace vantile
