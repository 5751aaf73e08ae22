#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// Fakes of the macOS functions that the adapters call: what a test sets, and what it reads.
namespace fakes {

/// What the faked system answers.
struct Machine {
  bool isFirstThread = true;

  std::uint32_t hostName = 0x203;  ///< what mach_host_self gives
  int statisticsResult = 0;        ///< of both statistics calls
  bool exportsStatistics64 = true;

  std::map<std::string, std::string> sysctlValues;  ///< bytes by name; a name not here fails
  std::optional<std::string> swapUsage;             ///< bytes of the record; nothing fails

  std::optional<std::string> accountHome = "/Users/ada";  ///< nothing: no account
  std::size_t accountBytes = 0;  ///< what the account's entry takes, where the buffer matters

  std::optional<std::int64_t> modifiedSeconds;  ///< in place of a file's own
  std::optional<std::int64_t> birthSeconds;     ///< in place of a file's own
  bool refusesObjects = false;                  ///< Create gives null

  int spawnFlags = 0;  ///< that the last spawn asked for
};

extern Machine machine;

/// Objects that somebody still owes a release.
struct Live {
  int hostRights = 0;
  int sources = 0, timers = 0;
  int loopReferences = 0;  ///< beyond a thread's own to its loop
  int work = 0;            ///< on the global queue

  friend bool operator==(const Live&, const Live&) = default;
};

/// What became live since `reset`.
Live live();

/// Sets the machine back and counts from here on.
void reset();

/// The time since the machine started, which stands still by itself. A sleeping run loop moves it
/// on to its next timer.
std::chrono::nanoseconds uptime();
void advance(std::chrono::nanoseconds time);

/// How often a run loop woke from its sleep since `reset`.
int wakeups();

/// Does what is due on the global queue, in order, on this thread.
void runGlobalQueue();

}  // namespace fakes
