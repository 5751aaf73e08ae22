#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vantile {

/// What is known of a process, as far as it tells which application it belongs to. An entry is a
/// desktop entry's number, `none` where there is none.
struct LaunchedProcess {
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  std::int32_t pid = 0, parent = 0;
  std::uint64_t startTicks = 0;
  const std::string* group = nullptr;       ///< of its application's unit; null outside of one
  std::size_t unitEntry = none;             ///< by its unit
  std::size_t launchEntry = none;           ///< by its environment, when it was launched itself
  std::size_t programEntry = none;          ///< by its executable
  const std::string* executable = nullptr;  ///< null for unknown
};

/// An application's leader: which process, by its place in the list, and the application's entry.
struct ApplicationLeader {
  std::size_t process = 0, entry = 0;
  friend bool operator==(const ApplicationLeader&, const ApplicationLeader&) = default;
};

/// One leader for each application among the processes, in the order of the list, which is by pid:
/// - of a unit, the process that began first;
/// - a process that was launched by an entry, but for another of its unit's;
/// - a process whose executable is an entry's, but for one of an application of the same entry or
///   executable that began it.
std::vector<ApplicationLeader> applicationLeaders(const std::vector<LaunchedProcess>& processes);

}  // namespace vantile
