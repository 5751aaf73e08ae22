#include "vantile/platform/threads.h"

#include <pthread.h>

#include <string>
#include <utility>

namespace vantile {
namespace {

struct Task {
  std::string name;
  std::function<void()> body;
};

void* perform(void* given) {
  const std::unique_ptr<Task> task(static_cast<Task*>(given));
  ::pthread_setname_np(task->name.c_str());  // a thread can name only itself
  task->body();
  return nullptr;
}

class MacosThreads final : public Threads {
 public:
  bool detach(const char* name, std::function<void()> body) override {
    auto task = std::make_unique<Task>(Task{name, std::move(body)});
    pthread_t thread = {};
    if (::pthread_create(&thread, nullptr, perform, task.get()) != 0) return false;
    static_cast<void>(task.release());  // the thread's own now
    ::pthread_detach(thread);
    return true;
  }
};

}  // namespace

std::shared_ptr<Threads> systemThreads() {
  static auto& threads = *new std::shared_ptr<Threads>(std::make_shared<MacosThreads>());
  return threads;
}

}  // namespace vantile
