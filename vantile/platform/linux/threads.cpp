#include "vantile/platform/threads.h"

#include <pthread.h>
#include <signal.h>

#include <exception>
#include <string>
#include <thread>
#include <utility>

namespace vantile {
namespace {

constexpr std::size_t longestName = 15;  // a longer one the kernel refuses

/// Blocks the host's signals on the threads that are started in its scope, so that they are handled
/// on the host's own threads. Those that a thread brings upon itself come to it, so that a host's
/// crash handler sees them.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int open : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
      sigdelset(&blocked, open);
    ::pthread_sigmask(SIG_SETMASK, &blocked, &before_);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

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
