#pragma once

#include <signal.h>

#include <initializer_list>
#include <optional>
#include <vector>

namespace vantile::host {

/// Turns signals into something to poll: a handler writes each one's number into a pipe. The
/// handlers leave system calls interrupted, so that a blocked write notices too. One at a time a
/// process.
class Signals {
 public:
  explicit Signals(std::initializer_list<int> numbers);
  /// Puts back the handlers that were there.
  ~Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// Readable while a signal waits to be taken.
  int fd() const { return pipe_[0]; }
  std::optional<int> take();

 private:
  struct Previous {
    int number;
    struct sigaction action;
  };

  int pipe_[2] = {-1, -1};
  std::vector<Previous> previous_;
};

}  // namespace vantile::host
