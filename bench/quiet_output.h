#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace vantile {

/// While it lives, what is printed goes nowhere: the sensors say each time that there is none.
class QuietOutput {
 public:
  QuietOutput() {
    std::fflush(stdout);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
  }
  ~QuietOutput() {
    std::fflush(stdout);
    ::dup2(output_, STDOUT_FILENO);
    ::close(output_);
  }
  QuietOutput(const QuietOutput&) = delete;
  QuietOutput& operator=(const QuietOutput&) = delete;

 private:
  const int output_ = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
};

}  // namespace vantile
