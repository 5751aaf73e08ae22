#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <exception>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "clean.h"
#include "dashboard/dashboard.h"
#include "disk_monitor.h"
#include "info.h"
#include "options.h"
#include "output.h"
#include "registry.h"
#include "stream.h"

namespace vantile::host {
namespace {

// A closed standard descriptor would be the number of the next file that anybody opens. The wrong
// direction makes its use fail as it should.
void occupyStandardDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) != -1) continue;
    open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

int print(const std::string& text) {
  if (writeOut(text) != Written::Failed) return 0;
  complainOfOutput();
  return 1;
}

int run(std::span<const std::string> arguments) {
  auto parsed = parseOptions(arguments, {sampledNames(), watcherNames()});
  if (const auto* error = std::get_if<UsageError>(&parsed)) {
    complain(error->message);
    return 2;
  }
  auto& options = std::get<Options>(parsed);
  switch (options.command) {
    case Command::Print:
      return print(options.text);
    case Command::Stream:
    case Command::Watch:
      return runStream(options);
    case Command::Clean:
      return runClean();
    case Command::Info: {
      const auto info = KVDSystemInfo::init();
      const auto volumes = volumesNow();
      return print(options.json ? systemJson(*info, volumes) : systemTable(*info, volumes));
    }
    case Command::Automatic:
      break;
  }
  if (isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1) return runDashboard(options);
  options.count = 5;
  return runStream(options);
}

}  // namespace
}  // namespace vantile::host

int main(int argc, char** argv) {
  using namespace vantile::host;
  occupyStandardDescriptors();
  signal(SIGPIPE, SIG_IGN);
  try {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return run(arguments);
  } catch (const std::exception& error) {
    complain(error.what());
    return 1;
  }
}
