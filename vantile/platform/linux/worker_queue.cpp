#include "vantile/foundation/worker_queue.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "vantile/foundation/log.h"
#include "vantile/foundation/timer_schedule.h"
#include "vantile/platform/threads.h"

namespace vantile {
namespace {

using Clock = std::chrono::steady_clock;

// As many as work that blocks may hold up before further work waits.
constexpr unsigned mostThreads = 64;
constexpr auto idleLife = std::chrono::seconds(5);

/// Threads that are started when work finds none idle and end when they have had none for a while.
class ThreadPool final : public WorkerQueue {
 public:
  void submit(std::function<void()> work) override {
    const std::lock_guard lock(mutex_);
    ready_.push_back(std::move(work));
    seeToIt();
  }

  void submitAfter(std::chrono::nanoseconds delay, std::function<void()> work) override {
    const std::lock_guard lock(mutex_);
    later_.emplace(TimerSchedule::later(Clock::now(), delay), std::move(work));
    seeToIt();
  }

 private:
  /// Makes sure that an idle thread stands by for each piece of work that is ready and one for
  /// those that are to come: one that is busy may be held up for long.
  void seeToIt() {
    const auto wanted = ready_.size() + (later_.empty() ? 0 : 1);
    const bool started = wanted > idle_ && threads_ < mostThreads && start();
    if (!started) changed_.notify_one();
  }

  bool start() {
    const bool started = systemThreads()->detach("vantile-worker", [this] { serve(); });
    if (started)
      ++threads_;
    else
      logLine("no background thread can be started");
    return started;
  }

  void serve() {
    std::unique_lock lock(mutex_);
    while (auto work = next(lock)) {
      if (!ready_.empty() || !later_.empty()) seeToIt();
      lock.unlock();
      work();
      work = nullptr;  // outside the lock: what it holds may submit more
      lock.lock();
    }
    --threads_;
  }

  /// Waits for work; empty when there was none for long enough.
  std::function<void()> next(std::unique_lock<std::mutex>& lock) {
    const auto end = Clock::now() + idleLife;
    while (true) {
      const auto now = Clock::now();
      while (!later_.empty() && later_.begin()->first <= now)
        ready_.push_back(std::move(later_.extract(later_.begin()).mapped()));
      if (!ready_.empty()) {
        auto work = std::move(ready_.front());
        ready_.pop_front();
        return work;
      }
      if (later_.empty() && now >= end) return nullptr;
      ++idle_;
      const auto until = later_.empty() ? end : later_.begin()->first;  // a copy: it may be gone
      changed_.wait_until(lock, until);
      --idle_;
    }
  }

  std::mutex mutex_;  // over all below
  std::condition_variable changed_;
  std::deque<std::function<void()>> ready_;
  std::multimap<Clock::time_point, std::function<void()>> later_;
  unsigned threads_ = 0, idle_ = 0;
};

}  // namespace

WorkerQueue& systemWorkerQueue() {
  static auto& pool = *new ThreadPool;
  return pool;
}

}  // namespace vantile
