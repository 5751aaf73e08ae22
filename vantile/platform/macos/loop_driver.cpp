#include "vantile/foundation/loop_driver.h"

#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

#include "vantile/platform/macos/core_foundation.h"

namespace vantile {
namespace {

// A timer without a period is invalid once it fired, so that this one has the longest: it is told
// its next date each time. CoreFoundation cuts both down to what it can count.
constexpr CFTimeInterval longestPeriod = 1e10;
constexpr CFAbsoluteTime never = 1e11;

/// Gives what a function named Create made, which is null only for want of memory.
template <class Object>
Object made(Object object) {
  if (!object) throw std::bad_alloc();
  return object;
}

/// A thread's CFRunLoop, with one timer and one source of the library's in its common modes, so
/// that they are served while the host tracks a menu, too.
///
/// The two stand in the loop by address: the driver goes on the loop's thread, as at the end of a
/// call of it, or once that thread has ended.
class MacosLoopDriver final : public LoopDriver {
 public:
  /// The driver of the calling thread's loop, or of the one that `find` gives whoever asks.
  explicit MacosLoopDriver(CFRunLoopRef (*find)() = nullptr);
  ~MacosLoopDriver() override;

  void attach(std::function<void()> serve) override;
  void detach() override;
  bool attachesAnywhere() const override { return find_ != nullptr; }
  Moment now() override;
  void wakeAt(std::optional<Moment> moment) override;
  void wake() override;
  void run() override;
  void stop() override;
  int fd() override { return -1; }
  void dispatch() override;

 private:
  static void onTimer(CFRunLoopTimerRef, void* driver);
  static void onSource(void* driver);

  CFRunLoopRef (*const find_)();
  Owned<CFRunLoopSourceRef> source_;
  Owned<CFRunLoopTimerRef> timer_;
  Owned<CFRunLoopRef> loop_;
  std::atomic<CFRunLoopRef> sleeper_ = nullptr;  // loop_, for other threads
  std::function<void()> serve_;
  std::atomic<bool> stopAsked_ = false;
  bool running_ = false;  // loop thread
};

MacosLoopDriver::MacosLoopDriver(CFRunLoopRef (*find)()) : find_(find) {
  // Made before there is a loop: a signal from before `attach` stays with the source.
  CFRunLoopSourceContext source = {};
  source.info = this;
  source.perform = onSource;
  source_.reset(made(CFRunLoopSourceCreate(nullptr, 0, &source)));
  CFRunLoopTimerContext timer = {};
  timer.info = this;
  timer_.reset(made(CFRunLoopTimerCreate(nullptr, never, longestPeriod, 0, 0, onTimer, &timer)));
}

MacosLoopDriver::~MacosLoopDriver() {
  detach();
}

void MacosLoopDriver::detach() {
  CFRunLoopTimerInvalidate(timer_.get());
  CFRunLoopSourceInvalidate(source_.get());
}

void MacosLoopDriver::attach(std::function<void()> serve) {
  serve_ = std::move(serve);
  const CFRunLoopRef loop = find_ ? find_() : CFRunLoopGetCurrent();
  CFRetain(loop);
  loop_.reset(loop);
  sleeper_ = loop;
  CFRunLoopAddSource(loop, source_.get(), kCFRunLoopCommonModes);
  CFRunLoopAddTimer(loop, timer_.get(), kCFRunLoopCommonModes);
  CFRunLoopWakeUp(loop);  // a signal from before is served now
}

// The clock that the system's own timers go by: it rests while the machine sleeps, which
// std::chrono::steady_clock here does not.
LoopDriver::Moment MacosLoopDriver::now() {
  return Moment(std::chrono::nanoseconds(::clock_gettime_nsec_np(CLOCK_UPTIME_RAW)));
}

void MacosLoopDriver::wakeAt(std::optional<Moment> moment) {
  if (!moment) {
    CFRunLoopTimerSetNextFireDate(timer_.get(), never);
    return;
  }
  // At least a microsecond from now, since a date is a double that holds a tenth of one: rounded
  // down, the wakeup would find nothing due. And a date that is not after the one being served
  // counts for nothing inside the timer's own call.
  const std::chrono::duration<double> delay =
      std::max(*moment - now(), Moment::duration::zero()) + std::chrono::microseconds(1);
  CFRunLoopTimerSetNextFireDate(timer_.get(), CFAbsoluteTimeGetCurrent() + delay.count());
}

void MacosLoopDriver::wake() {
  CFRunLoopSourceSignal(source_.get());
  // Without a loop so far, `attach` is yet to come and the loop not asleep.
  if (const CFRunLoopRef loop = sleeper_) CFRunLoopWakeUp(loop);
}

void MacosLoopDriver::onTimer(CFRunLoopTimerRef, void* driver) {
  const auto serve = static_cast<MacosLoopDriver*>(driver)->serve_;  // may be the driver's end
  serve();
}

void MacosLoopDriver::onSource(void* driver) {
  auto& self = *static_cast<MacosLoopDriver*>(driver);
  if (self.running_ && self.stopAsked_) {
    // Ends the innermost run, which may be one of the host's inside a call of the loop; the signal
    // that stays ends the next one, until it was this driver's.
    CFRunLoopStop(self.loop_.get());
    CFRunLoopSourceSignal(self.source_.get());
  }
  const auto serve = self.serve_;
  serve();
}

void MacosLoopDriver::run() {
  if (stopAsked_.exchange(false)) return;
  running_ = true;
  CFRunLoopRun();
  running_ = false;
  stopAsked_ = false;
}

// Not by CFRunLoopStop from here: it is lost on a loop that is just about to run, and ends a run of
// the host's where there is none of this driver's.
void MacosLoopDriver::stop() {
  stopAsked_ = true;
  wake();
}

void MacosLoopDriver::dispatch() {
  // One pass serves every signalled source but at most one of what comes through ports, the timer
  // among them. The signal has what is due served whichever that is.
  CFRunLoopSourceSignal(source_.get());
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
}

}  // namespace

std::unique_ptr<LoopDriver> makeLoopDriver() {
  return std::make_unique<MacosLoopDriver>();
}

std::unique_ptr<LoopDriver> makeMainLoopDriver() {
  return std::make_unique<MacosLoopDriver>(CFRunLoopGetMain);
}

bool onFirstThread() {
  return ::pthread_main_np() == 1;
}

}  // namespace vantile
