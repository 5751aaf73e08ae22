#include "signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace vantile::host {
namespace {

volatile int writeEnd = -1;

void forward(int number) {
  const int kept = errno;
  const auto byte = static_cast<unsigned char>(number);
  // A full pipe loses the signal, but then enough others wait in it.
  [[maybe_unused]] const auto written = write(writeEnd, &byte, 1);
  errno = kept;
}

}  // namespace

Signals::Signals(std::initializer_list<int> numbers) {
  if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
  }
  writeEnd = pipe_[1];
  for (const int number : numbers) {
    struct sigaction action = {};
    action.sa_handler = forward;
    sigemptyset(&action.sa_mask);
    Previous previous{number, {}};
    if (sigaction(number, nullptr, &previous.action) != 0) continue;
    // A signal that our parent had us ignore (nohup) stays ignored.
    if (previous.action.sa_handler == SIG_IGN) continue;
    sigaction(number, &action, nullptr);
    previous_.push_back(previous);
  }
}

Signals::~Signals() {
  for (const auto& previous : previous_) sigaction(previous.number, &previous.action, nullptr);
  writeEnd = -1;
  close(pipe_[0]);
  close(pipe_[1]);
}

std::optional<int> Signals::take() {
  unsigned char byte = 0;
  return read(pipe_[0], &byte, 1) == 1 ? std::optional<int>(byte) : std::nullopt;
}

}  // namespace vantile::host
