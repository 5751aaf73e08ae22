#pragma once

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>

namespace vantile::testing {

/// Runs `work` on a thread whose calls of the kernel's `number` fail with `error`, but for those
/// that go by whole paths. False, without having run it, where the kernel has no such filters.
inline bool withRefused(long number, int error, const std::function<void()>& work) {
  bool isRefused = false;
  std::thread thread([&] {
    constexpr auto word = BPF_LD | BPF_W | BPF_ABS;
    constexpr auto equal = BPF_JMP | BPF_JEQ | BPF_K;
    constexpr auto firstArgument = static_cast<std::uint32_t>(offsetof(seccomp_data, args));
    sock_filter steps[] = {
        BPF_STMT(word, static_cast<std::uint32_t>(offsetof(seccomp_data, nr))),
        BPF_JUMP(equal, static_cast<std::uint32_t>(number), 0, 3),
        BPF_STMT(word, firstArgument),
        BPF_JUMP(equal, static_cast<std::uint32_t>(AT_FDCWD), 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter = {sizeof steps / sizeof *steps, steps};
    isRefused = ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
    if (isRefused) work();
  });
  thread.join();
  return isRefused;
}

}  // namespace vantile::testing
