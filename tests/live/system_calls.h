#pragma once

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace vantile::testing {

/// Counts the system calls of the calling thread in place of making them. The kernel never takes
/// such a filter back, so that nothing is left to a process that counted but to say so and to end.
class SystemCalls {
 public:
  /// Begins to count. False where the kernel has no such filter.
  static bool count() {
    constexpr int outOfTheWay = 500;  // a descriptor that nothing else has
    output_ = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, outOfTheWay);
    struct sigaction action = {};
    action.sa_sigaction = [](int, siginfo_t* call, void*) {
      if (++counted_ > most) end("no end of system calls\n", 1);
      latest_ = call->si_syscall;
    };
    action.sa_flags = SA_SIGINFO;
    return output_ >= 0 && ::sigaction(SIGSYS, &action, nullptr) == 0 && refuseCalls();
  }

  static int counted() { return counted_; }
  /// The kernel's number of the last one.
  static int latest() { return latest_; }

  /// Prints the text and ends the process.
  [[noreturn]] static void end(std::string_view text, int status) {
    [[maybe_unused]] const auto written = ::write(output_, text.data(), text.size());
    ::_exit(status);
  }

 private:
  /// All but those of `end`, and the return from a signal.
  static bool refuseCalls() {
    constexpr std::uint32_t number = offsetof(seccomp_data, nr);
    constexpr std::uint32_t firstArgument = offsetof(seccomp_data, args);
    const auto output = static_cast<std::uint32_t>(output_.load());
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_rt_sigreturn, 4, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 3, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_write, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, firstArgument),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, output, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
    };
    const sock_fprog program = {static_cast<unsigned short>(std::size(filter)), filter};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
  }

  static constexpr int most = 10000;  // what waits for a call that is never made ends, too
  static inline std::atomic<int> counted_ = 0, latest_ = -1, output_ = -1;
};

}  // namespace vantile::testing
