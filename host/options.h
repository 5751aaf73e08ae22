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
  Clean,
  Print,  ///< print `text`: help or the version
};

struct Options {
  Command command = Command::Automatic;
  std::vector<std::string> monitors;  ///< without repetitions, in the order given
  std::int32_t interval = 1;          ///< seconds
  std::uint64_t count = 0;            ///< reports of each monitor; 0 is endless
  std::string text;
};

/// What is wrong with the arguments, in one line.
struct UsageError {
  std::string message;
};

/// Reads the arguments after the program's name. `known` are the monitors to choose from; all of
/// them are taken where none is chosen.
std::variant<Options, UsageError> parseOptions(std::span<const std::string> arguments,
                                               std::span<const std::string> known);

}  // namespace vantile::host
