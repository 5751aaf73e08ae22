// Run loops as CoreFoundation has them, in one mode, with the traits that a caller trips over: a
// stop without a run is lost, a signal alone wakes nobody, a timer without a period fires once, and
// inside its own call a timer takes no date that is not after the one being served.

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <vector>

#include "fakes/counters.h"
#include "fakes/objects.h"

using fakes::counts;
using fakes::drop;
using fakes::Object;
using fakes::objectOf;
using fakes::sinceStart;
using std::chrono::nanoseconds;

namespace {

// The latest that a timer can be due, and its longest period; what is later is cut down.
constexpr nanoseconds farthest = std::chrono::seconds(504'911'232);
// Sleeps longer than any test means count as without an end.
constexpr nanoseconds longestSleep = std::chrono::hours(24);
constexpr CFAbsoluteTime startOfMachine = 700'000'000;

CFAbsoluteTime dateOf(nanoseconds uptime) {
  return startOfMachine + std::chrono::duration<double>(uptime).count();
}

nanoseconds uptimeOf(CFAbsoluteTime date) {
  const CFAbsoluteTime delay = date - dateOf(sinceStart);
  if (delay <= 0) return sinceStart;
  if (delay > std::chrono::duration<double>(farthest).count()) return sinceStart + farthest;
  return sinceStart + nanoseconds(std::llround(delay * 1e9));
}

}  // namespace

struct __CFRunLoopSource : Object {
  __CFRunLoopSource() { ++counts.sources; }
  ~__CFRunLoopSource() override { --counts.sources; }
  CFRunLoopSourceContext context = {};
  bool signalled = false;
  CFRunLoopRef loop = nullptr;  // null: in none, or invalid
};

struct __CFRunLoopTimer : Object {
  __CFRunLoopTimer() { ++counts.timers; }
  ~__CFRunLoopTimer() override { --counts.timers; }
  CFRunLoopTimerContext context = {};
  CFRunLoopTimerCallBack callout = nullptr;
  nanoseconds due{0}, interval{0};
  CFRunLoopRef loop = nullptr;
};

struct __CFRunLoop : Object {
  ~__CFRunLoop() override {
    for (auto* const source : sources) letGo(source);
    for (auto* const timer : timers) letGo(timer);
  }
  template <class Entry>
  void letGo(Entry* entry) {
    entry->loop = nullptr;
    drop(entry);
  }
  template <class Entry>
  void remove(std::vector<Entry*>& from, Entry* entry) {
    std::erase(from, entry);
    letGo(entry);
  }

  std::vector<CFRunLoopSourceRef> sources;
  std::vector<CFRunLoopTimerRef> timers;
  std::vector<bool> stopped;  // one a run in progress, the innermost last
  bool woken = false;
};

namespace {

std::condition_variable awake;

// A thread's own reference to its loop.
struct ThreadLoop {
  ~ThreadLoop() {
    if (!loop) return;
    const std::lock_guard lock(fakes::mutex);
    drop(loop);
  }
  CFRunLoopRef loop = nullptr;
};
thread_local ThreadLoop threadLoop;

using Lock = std::unique_lock<std::mutex>;

bool performSources(CFRunLoopRef loop, Lock& lock) {
  bool performed = false;
  const auto sources = loop->sources;  // all held: a call may end another one
  for (auto* const source : sources) ++source->references;
  for (auto* const source : sources) {
    if (!source->signalled || source->loop != loop) continue;
    source->signalled = false;
    const auto context = source->context;
    lock.unlock();
    context.perform(context.info);
    lock.lock();
    performed = true;
  }
  for (auto* const source : sources) drop(source);
  return performed;
}

void moveOn(CFRunLoopTimerRef timer, nanoseconds served) {
  if (served < timer->due) return;  // a later date was set meanwhile
  if (timer->interval == nanoseconds(0)) {
    timer->loop->remove(timer->loop->timers, timer);
    return;
  }
  for (timer->due = served; timer->due <= sinceStart;) timer->due += timer->interval;
}

void fireTimers(CFRunLoopRef loop, Lock& lock) {
  const auto limit = sinceStart;
  for (auto* const timer : std::vector(loop->timers)) {
    if (timer->loop != loop || timer->due > limit) continue;
    ++timer->references;
    const auto served = timer->due;
    const auto context = timer->context;
    const auto callout = timer->callout;
    lock.unlock();
    callout(timer, context.info);
    lock.lock();
    if (timer->loop == loop) moveOn(timer, served);
    drop(timer);
  }
}

void sleep(CFRunLoopRef loop, Lock& lock) {
  nanoseconds due = nanoseconds::max();
  for (const auto* const timer : loop->timers) due = std::min(due, timer->due);
  if (!loop->woken && due < sinceStart + longestSleep) {
    sinceStart = std::max(sinceStart, due);
  } else if (!awake.wait_for(lock, std::chrono::seconds(60), [loop] { return loop->woken; })) {
    std::abort();  // nobody wakes it any more
  }
  loop->woken = false;
  ++fakes::wakeupCount;
}

CFRunLoopRunResult runLoop(CFRunLoopRef loop, bool onePass, bool returnAfterSource) {
  Lock lock(fakes::mutex);
  loop->stopped.push_back(false);
  CFRunLoopRunResult result = 0;
  while (result == 0) {
    if (loop->sources.empty() && loop->timers.empty()) {
      result = kCFRunLoopRunFinished;
      break;
    }
    const bool performed = performSources(loop, lock);
    fireTimers(loop, lock);
    if (performed && returnAfterSource) {
      result = kCFRunLoopRunHandledSource;
    } else if (loop->stopped.back()) {
      result = kCFRunLoopRunStopped;
    } else if (onePass) {
      result = kCFRunLoopRunTimedOut;
    } else if (!performed) {
      sleep(loop, lock);
    }
  }
  loop->stopped.pop_back();
  return result;
}

template <class Object>
Object* created() {
  const std::lock_guard lock(fakes::mutex);
  return fakes::machine.refusesObjects ? nullptr : new Object;
}

template <class Entry>
void add(CFRunLoopRef loop, std::vector<Entry*>& to, Entry* entry, CFRunLoopMode mode) {
  const std::lock_guard lock(fakes::mutex);
  if (mode == kCFRunLoopDefaultMode) ++fakes::machine.sourcesInDefaultMode;
  if ((mode != kCFRunLoopCommonModes && mode != kCFRunLoopDefaultMode) || entry->loop) std::abort();
  entry->loop = loop;
  ++entry->references;
  to.push_back(entry);
}

}  // namespace

namespace fakes {

[[gnu::noinline]] void drop(Object* object) {
  if (--object->references == 0) delete object;
}

}  // namespace fakes

extern "C" {

const CFRunLoopMode kCFRunLoopDefaultMode = reinterpret_cast<CFRunLoopMode>(0x10);
const CFRunLoopMode kCFRunLoopCommonModes = reinterpret_cast<CFRunLoopMode>(0x20);

CFTypeRef CFRetain(CFTypeRef object) {
  const std::lock_guard lock(fakes::mutex);
  ++objectOf(object)->references;
  if (dynamic_cast<CFRunLoopRef>(objectOf(object))) ++counts.loopReferences;
  return object;
}

void CFRelease(CFTypeRef object) {
  const std::lock_guard lock(fakes::mutex);
  if (dynamic_cast<CFRunLoopRef>(objectOf(object))) --counts.loopReferences;
  drop(objectOf(object));
}

CFAbsoluteTime CFAbsoluteTimeGetCurrent(void) {
  return dateOf(fakes::uptime());
}

CFRunLoopRef CFRunLoopGetCurrent(void) {
  if (!threadLoop.loop) threadLoop.loop = new __CFRunLoop;
  return threadLoop.loop;
}

// The tests run on the first thread, which asks first.
CFRunLoopRef CFRunLoopGetMain(void) {
  static const CFRunLoopRef loop = CFRunLoopGetCurrent();
  return loop;
}

void CFRunLoopRun(void) {
  runLoop(CFRunLoopGetCurrent(), false, false);
}

CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled) {
  if (mode != kCFRunLoopDefaultMode) std::abort();
  return runLoop(CFRunLoopGetCurrent(), seconds <= 0, returnAfterSourceHandled != 0);
}

void CFRunLoopStop(CFRunLoopRef loop) {
  const std::lock_guard lock(fakes::mutex);
  if (!loop->stopped.empty()) loop->stopped.back() = true;
  loop->woken = true;
  awake.notify_all();
}

void CFRunLoopWakeUp(CFRunLoopRef loop) {
  const std::lock_guard lock(fakes::mutex);
  loop->woken = true;
  awake.notify_all();
}

CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef, CFIndex, CFRunLoopSourceContext* context) {
  auto* const source = created<__CFRunLoopSource>();
  if (source) source->context = *context;
  return source;
}

void CFRunLoopSourceSignal(CFRunLoopSourceRef source) {
  const std::lock_guard lock(fakes::mutex);
  source->signalled = true;
}

void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source) {
  const std::lock_guard lock(fakes::mutex);
  if (source->loop) source->loop->remove(source->loop->sources, source);
}

void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  add(loop, loop->sources, source, mode);
}

void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  const std::lock_guard lock(fakes::mutex);
  if (mode != kCFRunLoopDefaultMode || source->loop != loop) std::abort();
  loop->remove(loop->sources, source);
}

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef, CFAbsoluteTime fireDate,
                                       CFTimeInterval interval, CFOptionFlags, CFIndex,
                                       CFRunLoopTimerCallBack callout,
                                       CFRunLoopTimerContext* context) {
  auto* const timer = created<__CFRunLoopTimer>();
  if (!timer) return nullptr;
  const std::lock_guard lock(fakes::mutex);
  timer->context = *context;
  timer->callout = callout;
  timer->due = uptimeOf(fireDate);
  const CFTimeInterval longest = std::chrono::duration<double>(farthest).count();
  timer->interval = nanoseconds(std::llround(std::min(interval, longest) * 1e9));
  return timer;
}

void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef timer, CFAbsoluteTime fireDate) {
  const std::lock_guard lock(fakes::mutex);
  timer->due = uptimeOf(fireDate);
}

void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer) {
  const std::lock_guard lock(fakes::mutex);
  if (timer->loop) timer->loop->remove(timer->loop->timers, timer);
}

void CFRunLoopAddTimer(CFRunLoopRef loop, CFRunLoopTimerRef timer, CFRunLoopMode mode) {
  add(loop, loop->timers, timer, mode);
}

}  // extern "C"
