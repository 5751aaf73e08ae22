#pragma once

#include <string_view>

namespace vantile::host {

/// The descriptor that this program's own output goes to.
int outputFd();

/// Has standard output for this program alone. While it lives, what the library prints there, its
/// sensor functions their errors, goes nowhere: it would stand between the lines of JSON, or across
/// the dashboard. One a process, for the main thread; where it can't be had, nothing changes.
class OwnOutput {
 public:
  OwnOutput();
  ~OwnOutput();
  OwnOutput(const OwnOutput&) = delete;
  OwnOutput& operator=(const OwnOutput&) = delete;
};

enum class Written {
  All,
  ReaderGone,   ///< the other end of the pipe is closed
  Interrupted,  ///< the interrupting descriptor became readable first
  Failed,       ///< errno says why
};

/// Writes all of `text` to the output, waiting as long as it takes, but not past
/// `interruptFd` becoming readable; -1 never interrupts.
Written writeOut(std::string_view text, int interruptFd = -1);

/// Prints "vantile-host: <message>" on standard error, always one line.
void complain(std::string_view message);

/// Complains of standard output after a failed write; errno still says why.
void complainOfOutput();

/// Whether the locale's characters are UTF-8; sets the locale's characters as a side effect.
bool terminalTakesUtf8();

}  // namespace vantile::host
