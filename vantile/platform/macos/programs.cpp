#include "vantile/platform/macos/programs.h"

#include <crt_externs.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace vantile {
namespace {

/// A pipe whose ends no other program inherits, and which stand clear of the three descriptors
/// that the child's own are put in place of. The system offers no pipe that is born that way.
struct Pipe {
  Descriptor reading, writing;
  explicit operator bool() const { return reading && writing; }

  static Pipe make() {
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0) return {};
    const Descriptor reading(ends[0]), writing(ends[1]);
    return {clearOfStandardOnes(reading), clearOfStandardOnes(writing)};
  }

 private:
  static Descriptor clearOfStandardOnes(const Descriptor& end) {
    return Descriptor(::fcntl(end.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  }
};

class FileActions {
 public:
  FileActions() : valid_(::posix_spawn_file_actions_init(&actions_) == 0) {}
  ~FileActions() {
    if (valid_) ::posix_spawn_file_actions_destroy(&actions_);
  }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  /// Output to `output`, nothing else from here or to here.
  bool set(const Descriptor& output) {
    return valid_ && open(STDIN_FILENO, O_RDONLY) && open(STDERR_FILENO, O_WRONLY) &&
           ::posix_spawn_file_actions_adddup2(&actions_, output.get(), STDOUT_FILENO) == 0;
  }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  bool open(int fd, int flags) {
    return ::posix_spawn_file_actions_addopen(&actions_, fd, "/dev/null", flags, 0) == 0;
  }

  posix_spawn_file_actions_t actions_;
  const bool valid_;
};

class SpawnAttributes {
 public:
  SpawnAttributes() : valid_(::posix_spawnattr_init(&attributes_) == 0) {}
  ~SpawnAttributes() {
    if (valid_) ::posix_spawnattr_destroy(&attributes_);
  }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  /// The host's descriptors stay the host's, and signals that the calling thread blocks reach the
  /// child.
  bool set() {
    sigset_t none;
    sigemptyset(&none);
    return valid_ && ::posix_spawnattr_setsigmask(&attributes_, &none) == 0 &&
           ::posix_spawnattr_setflags(&attributes_,
                                      POSIX_SPAWN_CLOEXEC_DEFAULT | POSIX_SPAWN_SETSIGMASK) == 0;
  }
  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
  const bool valid_;
};

/// The host's. A shared library may not refer to `environ` itself.
char** environment() {
  return *_NSGetEnviron();
}

}  // namespace

std::optional<StartedProgram> startProgram(const std::string& path,
                                           const std::vector<std::string>& arguments) {
  Pipe pipe = Pipe::make();
  FileActions actions;
  SpawnAttributes attributes;
  if (!pipe || !actions.set(pipe.writing) || !attributes.set()) return std::nullopt;

  std::vector<char*> argv = {const_cast<char*>(path.c_str())};  // posix_spawn only reads them
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t pid = 0;
  const int result = ::posix_spawn(&pid, path.c_str(), actions.get(), attributes.get(), argv.data(),
                                   environment());
  if (result != 0) return std::nullopt;
  return StartedProgram{pid, std::move(pipe.reading)};
}

std::optional<std::string> readAvailable(const Descriptor& output) {
  constexpr std::size_t mostInPipe = 65536;
  std::string data(mostInPipe, '\0');
  ssize_t count = 0;
  do {
    count = ::read(output.get(), data.data(), data.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) return std::nullopt;
  data.resize(static_cast<std::size_t>(count));
  return data;
}

pid_t waitForProgram(pid_t pid, int* status, int options) {
  pid_t result = 0;
  do {
    result = ::waitpid(pid, status, options);
  } while (result < 0 && errno == EINTR);
  return result;
}

std::optional<FinishedProgram> runToEnd(const std::string& path,
                                        const std::vector<std::string>& arguments) {
  auto program = startProgram(path, arguments);
  if (!program) return std::nullopt;
  FinishedProgram finished;
  // Read before it is waited for: a program whose pipe is full does not end.
  auto data = readAvailable(program->output);
  for (; data && !data->empty(); data = readAvailable(program->output)) finished.output += *data;
  program->output = {};
  int status = 0;
  const bool isKnown = waitForProgram(program->pid, &status, 0) == program->pid;
  if (!data || !isKnown) return std::nullopt;
  finished.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
  return finished;
}

}  // namespace vantile
