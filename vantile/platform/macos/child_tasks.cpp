#include "vantile/platform/child_tasks.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

#include "vantile/platform/macos/programs.h"

namespace vantile {
namespace {

class MacosChildTask final : public ChildTask {
 public:
  explicit MacosChildTask(StartedProgram program) : program_(std::move(program)) {}

  ~MacosChildTask() override {
    program_.output = {};
    if (!isRunning()) return;
    ::kill(program_.pid, SIGKILL);
    waitForProgram(program_.pid, nullptr, 0);
  }

  bool isRunning() override {
    // -1: somebody else reaped it, since the host ignores SIGCHLD, say.
    if (!ended_) ended_ = waitForProgram(program_.pid, nullptr, WNOHANG) != 0;
    return !ended_;
  }

  std::optional<std::string> availableData() override { return readAvailable(program_.output); }

 private:
  StartedProgram program_;
  bool ended_ = false;
};

class MacosChildTasks final : public ChildTasks {
 public:
  std::unique_ptr<ChildTask> launch(const std::string& path,
                                    const std::vector<std::string>& arguments) override {
    auto program = startProgram(path, arguments);
    return program ? std::make_unique<MacosChildTask>(*std::move(program)) : nullptr;
  }

  void pause(std::chrono::microseconds duration) override {
    ::usleep(static_cast<useconds_t>(duration.count()));
  }
};

}  // namespace

std::shared_ptr<ChildTasks> systemChildTasks() {
  static auto& tasks = *new std::shared_ptr<ChildTasks>(std::make_shared<MacosChildTasks>());
  return tasks;
}

}  // namespace vantile
