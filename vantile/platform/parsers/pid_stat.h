#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantile {

/// What the kernel's /proc/PID/stat says of a process.
struct PidStat {
  std::int32_t pid = 0;
  std::string_view name;  ///< a part of the text; the program's, of 15 bytes at most, any byte
  char state = 0;         ///< a letter
  std::int32_t parent = 0, session = 0;
  std::int64_t nice = 0, threads = 0;
  std::uint64_t userTicks = 0, systemTicks = 0;  ///< of all its threads, those that ended too
  std::uint64_t startTicks = 0;                  ///< since boot
  std::uint64_t virtualBytes = 0;
  std::uint64_t residentPages = 0;
  /// Where its program and its stack begin: 0, or 1, for whoever may not know. The one that an exec
  /// leaves as it was is rare.
  std::uint64_t codeStart = 0, stackStart = 0;
};

/// Nothing for a text that lacks a field or has another thing in its place.
std::optional<PidStat> parsePidStat(std::string_view text);

}  // namespace vantile
