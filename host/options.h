#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace vantile::host {

enum class Command {
  Automatic,  ///< no command was given: a dashboard on a terminal, five samples elsewhere
  Stream,
  Watch,
  Clean,
  Info,
  Print,  ///< print `text`: help or the version
};

struct Options {
  Command command = Command::Automatic;
  std::vector<std::string> monitors;  ///< without repetitions, in the order given
  std::int32_t interval = 1;          ///< seconds
  std::uint64_t count = 0;  ///< reports of each monitor, with Watch of all together; 0 is endless
  bool json = false;        ///< with Info
  std::string text;
};

/// The names to choose from.
struct KnownMonitors {
  std::vector<std::string> sampled, watchers;
};

/// What is wrong with the arguments, in one line.
struct UsageError {
  std::string message;
};

/// Reads the arguments after the program's name. Where no monitor is chosen, Watch takes all
/// watchers and everything else all that sample.
std::variant<Options, UsageError> parseOptions(std::span<const std::string> arguments,
                                               const KnownMonitors& known);

}  // namespace vantile::host
