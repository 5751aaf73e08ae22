#include "vantile/foundation/loop_driver.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <system_error>
#include <utility>

#include "vantile/foundation/log.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {
namespace {

struct Unreference {
  void operator()(sd_event* event) const { sd_event_unref(event); }
  void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};

int checked(int result, const char* what) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), what);
  return result;
}

/// The thread's default sd-event loop, with one timer and one eventfd of the library's in it.
///
/// sd-event arms its timer descriptor when it prepares to sleep and is not thread-safe. So whoever
/// changes something goes through the eventfd, and `dispatch` goes on until sd-event has nothing
/// left, which leaves the descriptor armed for whatever comes next.
class LinuxLoopDriver final : public LoopDriver {
 public:
  LinuxLoopDriver() : wakeup_(checked(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {}

  void attach(std::function<void()> serve) override;
  void detach() override;
  Moment now() override { return std::chrono::steady_clock::now(); }
  void wakeAt(std::optional<Moment> moment) override;
  void wake() override;
  void run() override;
  void stop() override;
  int fd() override { return event_ ? sd_event_get_fd(event_.get()) : -1; }
  void dispatch() override;

 private:
  static int onWakeup(sd_event_source*, int fd, std::uint32_t, void* driver);
  static int onTime(sd_event_source*, std::uint64_t, void* driver);
  /// One round of the loop: positive when something was served, 0 when nothing was in the time
  /// given, negative when the loop can't go on.
  int serveOnce(std::uint64_t timeoutMicroseconds);

  const Descriptor wakeup_;
  std::function<void()> serve_;
  std::unique_ptr<sd_event, Unreference> event_;
  std::unique_ptr<sd_event_source, Unreference> time_, wakeupSource_;
  std::atomic<bool> stopped_ = false;
  bool failed_ = false;
};

void LinuxLoopDriver::attach(std::function<void()> serve) {
  serve_ = std::move(serve);
  sd_event* event = nullptr;
  checked(sd_event_default(&event), "sd_event_default");
  event_.reset(event);
  sd_event_source* source = nullptr;
  checked(sd_event_add_io(event, &source, wakeup_.get(), EPOLLIN, onWakeup, this),
          "sd_event_add_io");
  wakeupSource_.reset(source);
  // An accuracy of 1 microsecond: which timers share a wakeup is decided elsewhere.
  checked(sd_event_add_time(event, &source, CLOCK_MONOTONIC, 0, 1, onTime, this),
          "sd_event_add_time");
  time_.reset(source);
  checked(sd_event_source_set_enabled(source, SD_EVENT_OFF), "sd_event_source_set_enabled");
}

void LinuxLoopDriver::detach() {
  time_.reset();
  wakeupSource_.reset();
  event_.reset();
}

void LinuxLoopDriver::wakeAt(std::optional<Moment> moment) {
  if (!moment) {
    sd_event_source_set_enabled(time_.get(), SD_EVENT_OFF);
    return;
  }
  const auto microseconds =
      std::chrono::ceil<std::chrono::microseconds>(moment->time_since_epoch()).count();
  sd_event_source_set_time(time_.get(), static_cast<std::uint64_t>(microseconds));
  sd_event_source_set_enabled(time_.get(), SD_EVENT_ONESHOT);
}

void LinuxLoopDriver::wake() {
  // A full counter has woken the loop already.
  [[maybe_unused]] const int result = ::eventfd_write(wakeup_.get(), 1);
}

int LinuxLoopDriver::onWakeup(sd_event_source*, int fd, std::uint32_t, void* driver) {
  eventfd_t count = 0;
  [[maybe_unused]] const int result = ::eventfd_read(fd, &count);
  static_cast<LinuxLoopDriver*>(driver)->serve_();
  return 0;
}

int LinuxLoopDriver::onTime(sd_event_source*, std::uint64_t, void* driver) {
  static_cast<LinuxLoopDriver*>(driver)->serve_();
  return 0;
}

int LinuxLoopDriver::serveOnce(std::uint64_t timeoutMicroseconds) {
  const int result = event_ ? sd_event_run(event_.get(), timeoutMicroseconds) : -ENOTCONN;
  if (result == -EINTR) return 1;
  if (result < 0 && !failed_)
    logLine(std::string("the run loop can't go on: ") + std::strerror(-result));
  failed_ = result < 0;
  return result;
}

void LinuxLoopDriver::run() {
  constexpr std::uint64_t forever = UINT64_MAX;
  while (!stopped_.exchange(false))
    if (serveOnce(forever) < 0) return;
}

void LinuxLoopDriver::stop() {
  stopped_ = true;
  wake();
}

void LinuxLoopDriver::dispatch() {
  // Bounded, so that a source that is always ready does not keep the host from its own work.
  constexpr int mostRounds = 64;
  int rounds = 0;
  while (rounds < mostRounds && serveOnce(0) > 0) ++rounds;
  // sd-event has not armed its timer for what came last: the descriptor is to be readable again.
  if (rounds == mostRounds) wake();
}

}  // namespace

std::unique_ptr<LoopDriver> makeLoopDriver() {
  return std::make_unique<LinuxLoopDriver>();
}

std::unique_ptr<LoopDriver> makeMainLoopDriver() {
  return makeLoopDriver();  // sd-event has a thread's loop on that thread alone
}

bool onFirstThread() {
  return ::gettid() == ::getpid();
}

}  // namespace vantile
