#pragma once

#include <string_view>

namespace vantile::host {

/// Gives the terminal of the output back when a signal ends the program at once, a crash above
/// all, after which nothing else of it runs. One a process, for the main thread.
class TerminalRescue {
 public:
  /// Notes how the terminal is set: to be made before that changes.
  TerminalRescue();
  ~TerminalRescue() { disarm(); }
  TerminalRescue(const TerminalRescue&) = delete;
  TerminalRescue& operator=(const TerminalRescue&) = delete;

  /// From now on a deadly signal puts the settings back and writes `reset` to the terminal, before
  /// it does what it would have done. Too long a `reset` is not written.
  void arm(std::string_view reset);
  /// The signals do again what they did before.
  void disarm();
};

}  // namespace vantile::host
