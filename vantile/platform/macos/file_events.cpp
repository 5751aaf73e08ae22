#include "vantile/platform/file_events.h"

#include <fcntl.h>
#include <sys/event.h>
#include <sys/resource.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <utility>

#include "vantile/platform/macos/status.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {
namespace {

using KernelEvent = struct kevent;  // a function has that name, too

static_assert(fileDeleted == NOTE_DELETE && fileWritten == NOTE_WRITE && fileGrew == NOTE_EXTEND);
static_assert(attributesChanged == NOTE_ATTRIB && linkCountChanged == NOTE_LINK);
static_assert(fileRenamed == NOTE_RENAME && accessRevoked == NOTE_REVOKE);

timespec timeOf(std::chrono::nanoseconds duration) {
  const auto whole = std::chrono::floor<std::chrono::seconds>(duration);
  return {static_cast<time_t>(whole.count()), static_cast<long>((duration - whole).count())};
}

/// Hands one change of what a queue watches to it. 0, or -1 with errno.
int change(const Descriptor& queue, const KernelEvent& record) {
  const timespec atOnce = {};
  return ::kevent(queue.get(), &record, 1, nullptr, 0, &atOnce);
}

class KernelQueue final : public FileEventQueue {
 public:
  /// Null when it can't be made; then errno says why.
  static std::shared_ptr<KernelQueue> make() {
    Descriptor queue(::kqueue());
    const KernelEvent interrupt = {0, EVFILT_USER, EV_ADD | EV_CLEAR, 0, 0, nullptr};
    if (!queue || change(queue, interrupt) != 0) return nullptr;
    return std::make_shared<KernelQueue>(std::move(queue));
  }

  explicit KernelQueue(Descriptor queue) : queue_(std::move(queue)) {}

  int add(int watched, std::uint32_t changes, std::uint64_t tag) override {
    const KernelEvent watch = {static_cast<std::uintptr_t>(watched),
                               EVFILT_VNODE,
                               EV_ADD | EV_ENABLE | EV_CLEAR,
                               changes,
                               0,
                               reinterpret_cast<void*>(static_cast<std::uintptr_t>(tag))};
    const std::lock_guard lock(mutex_);
    change(queue_, watch);
    return 0;
  }

  std::optional<FileEvent> wait(std::chrono::nanoseconds timeout) override {
    const timespec most = timeOf(std::max(timeout, std::chrono::nanoseconds::zero()));
    KernelEvent event = {};
    const int count = ::kevent(queue_.get(), nullptr, 0, &event, 1, &most);
    if (count != 1 || event.filter != EVFILT_VNODE) return std::nullopt;
    return FileEvent{reinterpret_cast<std::uintptr_t>(event.udata), event.fflags};
  }

  void delivered(std::uint64_t) override {}

  void interrupt() override {
    const KernelEvent trigger = {0, EVFILT_USER, 0, NOTE_TRIGGER, 0, nullptr};
    const std::lock_guard lock(mutex_);
    change(queue_, trigger);
  }

  int close() override {
    const std::lock_guard lock(mutex_);
    return queue_ && ::close(queue_.release()) != 0 ? errno : 0;
  }

 private:
  // Held where the queue is used from any thread and where it is closed: its number may be another
  // file's right after. `wait` is of the thread that closes it.
  std::mutex mutex_;
  Descriptor queue_;
};

std::string limitOf(const char* name, std::uint64_t value) {
  return std::string(name) + " is " + std::to_string(value);
}

std::optional<std::string> kernelLimit(const char* name) {
  int value = 0;
  std::size_t size = sizeof value;
  if (::sysctlbyname(name, &value, &size, nullptr, 0) != 0 || value < 0) return std::nullopt;
  return limitOf(name, static_cast<std::uint64_t>(value));
}

std::optional<std::string> limitOfProcess() {
  rlimit limit = {};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return std::nullopt;
  // Where that one is lifted, another one still holds.
  if (limit.rlim_cur == RLIM_INFINITY) return kernelLimit("kern.maxfilesperproc");
  return limitOf("RLIMIT_NOFILE", limit.rlim_cur);
}

class MacosFileEvents final : public FileEvents {
 public:
  std::shared_ptr<FileEventQueue> newQueue(int& error) override {
    auto queue = KernelQueue::make();
    if (!queue) error = errno;
    return queue;
  }

  int open(const std::string& path) override {
    int item = -1;
    do {
      item = ::open(path.c_str(), O_EVTONLY, 0);
    } while (item < 0 && errno == EINTR);
    if (item < 0) return -errno;
    ::fcntl(item, F_SETFD, FD_CLOEXEC);  // the host's children have no use for it
    return item;
  }

  void close(int watched) override { ::close(watched); }

  void standsAt(int, const std::string&) override {}

  std::optional<FileIdentity> identity(int watched) override {
    struct stat status = {};
    if (::fstat(watched, &status) != 0) return std::nullopt;
    return identityOf(status);
  }

  std::optional<std::string> limitBehind(int error) override {
    if (error == EMFILE) return limitOfProcess();
    if (error == ENFILE) return kernelLimit("kern.maxfiles");
    return std::nullopt;
  }
};

}  // namespace

std::shared_ptr<FileEvents> systemFileEvents() {
  static auto& events = *new std::shared_ptr<FileEvents>(std::make_shared<MacosFileEvents>());
  return events;
}

}  // namespace vantile
