// Kernel queues. The descriptor is an eventfd that nobody reads, so that `close` works unchanged.
// As with the run loops, a wait moves the clock on, unless it is for longer than any test takes.

#include <fcntl.h>
#include <sys/event.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <map>

#include "fakes/counters.h"

using fakes::machine;
using std::chrono::nanoseconds;

namespace {

using Watch = std::pair<std::uintptr_t, int>;  // ident and filter

struct Queue {
  std::map<Watch, struct kevent> watches;
  std::vector<struct kevent> pending;
};

std::map<int, Queue> queues;
std::condition_variable changed;
int sleepers = 0;

constexpr nanoseconds longestSleep = std::chrono::hours(24);

bool isOpen(std::uintptr_t fd) {
  return ::fcntl(static_cast<int>(fd), F_GETFD) >= 0;
}

/// Merged with what is pending of the same watch, as the kernel does.
void deliver(Queue& queue, const struct kevent& watch, unsigned changes) {
  const auto found =
      std::find_if(queue.pending.begin(), queue.pending.end(), [&](const struct kevent& event) {
        return event.ident == watch.ident && event.filter == watch.filter;
      });
  if (found != queue.pending.end()) {
    found->fflags |= changes;
  } else {
    queue.pending.push_back(watch);
    queue.pending.back().fflags = changes;
  }
  changed.notify_all();
}

int apply(Queue& queue, const struct kevent& change) {
  const Watch key(change.ident, change.filter);
  if (change.filter == EVFILT_VNODE && !isOpen(change.ident)) return EBADF;
  if (change.flags & EV_ADD) queue.watches[key] = change;
  const auto watch = queue.watches.find(key);
  if (watch == queue.watches.end()) return ENOENT;
  if (change.filter == EVFILT_USER && change.fflags & NOTE_TRIGGER)
    deliver(queue, watch->second, NOTE_TRIGGER);
  return 0;
}

fakes::KernelEvent recorded(const struct kevent& event) {
  return {event.ident,  event.filter, event.flags,
          event.fflags, event.data,   reinterpret_cast<std::uintptr_t>(event.udata)};
}

bool sleep(const Queue& queue, const timespec* timeout, std::unique_lock<std::mutex>& lock) {
  const auto most = timeout ? std::chrono::seconds(timeout->tv_sec) + nanoseconds(timeout->tv_nsec)
                            : nanoseconds::max();
  if (most < longestSleep) {
    fakes::sinceStart += most;
    return false;
  }
  ++sleepers;
  changed.notify_all();
  const auto came = [&queue] { return !queue.pending.empty(); };
  if (!changed.wait_for(lock, std::chrono::seconds(60), came)) std::abort();  // nobody ends it
  --sleepers;
  return true;
}

int fail(int error) {
  errno = error;
  return -1;
}

}  // namespace

namespace fakes {

void happen(int file, std::uint32_t changes) {
  const std::lock_guard lock(mutex);
  const Watch key(static_cast<std::uintptr_t>(file), EVFILT_VNODE);
  for (auto& [descriptor, queue] : queues) {
    const auto watch = queue.watches.find(key);
    if (watch == queue.watches.end() || !isOpen(key.first)) continue;
    if (const auto wanted = changes & watch->second.fflags) deliver(queue, watch->second, wanted);
  }
}

void awaitSleeper() {
  std::unique_lock lock(mutex);
  changed.wait(lock, [] { return sleepers > 0; });
}

}  // namespace fakes

extern "C" {

int kqueue(void) {
  if (machine.queueError) return fail(machine.queueError);
  const int descriptor = ::eventfd(0, EFD_CLOEXEC);
  const std::lock_guard lock(fakes::mutex);
  queues[descriptor] = {};
  return descriptor;
}

int kevent(int descriptor, const struct kevent* changes, int changeCount, struct kevent* events,
           int room, const struct timespec* timeout) {
  std::unique_lock lock(fakes::mutex);
  const auto found = queues.find(descriptor);
  if (found == queues.end() || !isOpen(static_cast<std::uintptr_t>(descriptor))) return fail(EBADF);
  fakes::KernelEventCall call;
  for (int i = 0; i < changeCount; ++i) call.changes.push_back(recorded(changes[i]));
  call.hasEvents = events != nullptr;
  call.room = room;
  if (timeout) call.seconds = timeout->tv_sec, call.nanoseconds = timeout->tv_nsec;
  machine.eventCalls.push_back(call);
  if (timeout && (timeout->tv_sec < 0 || timeout->tv_nsec < 0 || timeout->tv_nsec >= 1'000'000'000))
    return fail(EINVAL);

  if (changeCount > 0 && machine.changeError) return fail(machine.changeError);
  for (int i = 0; i < changeCount; ++i)
    if (const int error = apply(found->second, changes[i])) return fail(error);
  if (room == 0) return 0;
  if (machine.interruptedWaits > 0) {
    --machine.interruptedWaits;
    return fail(EINTR);
  }
  auto& pending = found->second.pending;
  if (pending.empty() && !sleep(found->second, timeout, lock)) return 0;
  *events = pending.front();
  pending.erase(pending.begin());
  return 1;
}

}  // extern "C"

int open(const char* path, int flags, int mode) {
  machine.openFlags = flags;
  machine.openMode = mode;
  if (machine.interruptedOpens > 0) {
    --machine.interruptedOpens;
    return fail(EINTR);
  }
  return ::open(path, O_RDONLY | O_NONBLOCK);
}
