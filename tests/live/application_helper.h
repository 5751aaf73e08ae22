#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/temporary_folder.h"

namespace vantile::testing {

/// The argument by which this program becomes an application that takes memory, and then a
/// processor or nothing, until it is killed.
inline constexpr const char* beApplication = "--be-application";

inline int runApplication(std::string_view manner, const char* mebibytes) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const auto size = static_cast<std::size_t>(std::atol(mebibytes)) << 20;
  if (size > 0)
    ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1,
           0);
  for (volatile bool busy = manner == "busy"; busy;) {
  }
  while (true) ::pause();
}

/// A program that the test started, ended with it.
class StartedApplication {
 public:
  StartedApplication(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const auto& each : arguments) argv.push_back(const_cast<char*>(each.c_str()));
    argv.push_back(nullptr);
    if (::posix_spawn(&pid_, program.c_str(), nullptr, nullptr, argv.data(), environ) != 0)
      throw std::runtime_error("can't start " + program);
  }
  ~StartedApplication() { end(); }
  StartedApplication(const StartedApplication&) = delete;
  StartedApplication& operator=(const StartedApplication&) = delete;

  pid_t pid() const { return pid_; }
  void end() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }

 private:
  pid_t pid_ = 0;
};

/// While it lives, the entries in its folder are those installed for the user.
class InstalledEntries {
 public:
  InstalledEntries() {
    ::setenv("XDG_DATA_HOME", folder_.path("data").c_str(), 1);
    folder_.folder("data/applications");
  }
  ~InstalledEntries() { ::unsetenv("XDG_DATA_HOME"); }
  InstalledEntries(const InstalledEntries&) = delete;
  InstalledEntries& operator=(const InstalledEntries&) = delete;

  /// Copies a program and installs an entry of that name for it. Gives the program's path.
  std::string install(const std::string& name, const std::string& original,
                      const std::string& arguments = "") const {
    const auto program = folder_.path("vantile-" + name);
    std::filesystem::copy_file(original, program);
    folder_.file("data/applications/" + name + ".desktop",
                 "[Desktop Entry]\nType=Application\nName=The " + name + "\nExec=" + program +
                     arguments + "\n");
    return program;
  }
  std::string entry(const std::string& name) const {
    return folder_.path("data/applications/" + name + ".desktop");
  }

 private:
  TemporaryFolder folder_;
};

}  // namespace vantile::testing
