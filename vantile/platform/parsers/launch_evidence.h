#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantile {

/// The unit that a desktop session runs an application in.
struct ApplicationUnit {
  std::string group;  ///< its path among the control groups, one for each instance
  /// What the application's identifier may be, likelier ones first: launchers leave their own name
  /// out, or put it before the identifier.
  std::vector<std::string> identifiers;
  bool isService = false;  ///< started by the session itself, not by an application's launcher
};

/// From a process's /proc/PID/cgroup: the innermost unit called app[-launcher]-ID-RANDOM.scope or
/// app[-launcher]-ID[@RANDOM].service; nothing outside of one.
std::optional<ApplicationUnit> applicationUnitOf(std::string_view cgroupText);

/// Which desktop entry a process, or an ancestor that it has the environment from, was launched by.
struct DesktopLaunch {
  std::string entry;  ///< a path
  std::int32_t pid = 0;
};

/// From a process's /proc/PID/environ.
std::optional<DesktopLaunch> desktopLaunchOf(std::string_view environment);

/// The program of a desktop entry's command line, its "Exec", quotes and an "env" before it
/// resolved. Nothing for none, and for one that runs whatever it is told: an interpreter, say, of
/// which each process would else be taken for the application.
std::optional<std::string> programOf(std::string_view commandLine);

/// Whether a program of that path runs whatever it is told.
bool runsOthers(std::string_view program);

/// The executable that a link /proc/PID/exe names, also when the file was replaced since.
std::string_view executableOf(std::string_view link);

}  // namespace vantile
