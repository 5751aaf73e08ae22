#include "vantile/platform/threads.h"

#include <pthread.h>

#include <exception>
#include <string>
#include <thread>
#include <utility>

#include "vantile/platform/linux/blocked_signals.h"

namespace vantile {
namespace {

constexpr std::size_t longestName = 15;  // a longer one the kernel refuses

class LinuxThreads final : public Threads {
 public:
  bool detach(const char* name, std::function<void()> body) override {
    try {
      const SignalsBlocked blocked;
      std::thread([name = std::string(name).substr(0, longestName), body = std::move(body)] {
        ::pthread_setname_np(::pthread_self(), name.c_str());
        body();
      }).detach();
      return true;
    } catch (const std::exception&) {
      return false;
    }
  }
};

}  // namespace

std::shared_ptr<Threads> systemThreads() {
  static auto& threads = *new std::shared_ptr<Threads>(std::make_shared<LinuxThreads>());
  return threads;
}

}  // namespace vantile
