#pragma once

#include <signal.h>

namespace vantile {

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

}  // namespace vantile
