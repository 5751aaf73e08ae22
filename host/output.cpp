#include "output.h"

#include <fcntl.h>
#include <langinfo.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "text.h"

namespace vantile::host {

namespace {

int output = STDOUT_FILENO;

}  // namespace

int outputFd() {
  return output;
}

OwnOutput::OwnOutput() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const bool moved = nowhere >= 0 && own >= 0 && dup2(nowhere, STDOUT_FILENO) == STDOUT_FILENO;
  if (nowhere >= 0) close(nowhere);
  if (moved) {
    output = own;
    return;
  }
  complain("what the library prints cannot be kept out of the output");
  if (own >= 0) close(own);
}

OwnOutput::~OwnOutput() {
  if (output == STDOUT_FILENO) return;
  std::fflush(stdout);  // what the library printed and still waits
  dup2(output, STDOUT_FILENO);
  close(std::exchange(output, STDOUT_FILENO));
}

Written writeOut(std::string_view text, int interruptFd) {
  while (!text.empty()) {
    pollfd polled[] = {{output, POLLOUT, 0}, {interruptFd, POLLIN, 0}};
    if (poll(polled, 2, -1) < 0) {
      if (errno == EINTR) continue;
      return Written::Failed;
    }
    if (polled[1].revents != 0) return Written::Interrupted;
    // A pipe that polls writable takes PIPE_BUF bytes without blocking.
    const auto chunk = std::min<std::size_t>(text.size(), PIPE_BUF);
    const auto written = write(output, text.data(), chunk);
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EPIPE) {
      return Written::ReaderGone;
    } else if (errno != EINTR && errno != EAGAIN) {
      return Written::Failed;
    }
  }
  return Written::All;
}

void complain(std::string_view message) {
  const std::string line = "vantile-host: " + printable(message) + "\n";
  // There is nowhere left to tell of a failure here.
  [[maybe_unused]] const auto written = write(STDERR_FILENO, line.data(), line.size());
}

void complainOfOutput() {
  const int cause = errno;
  complain(std::string("cannot write to standard output: ") + std::strerror(cause));
}

bool terminalTakesUtf8() {
  // LC_CTYPE alone: numbers are printed the same in every locale.
  std::setlocale(LC_CTYPE, "");
  return std::string_view(nl_langinfo(CODESET)) == "UTF-8";
}

}  // namespace vantile::host
