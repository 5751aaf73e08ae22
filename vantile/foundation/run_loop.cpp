#include "vantile/foundation/run_loop.h"

#include <algorithm>
#include <utility>

#include "vantile/foundation/guard.h"

namespace vantile {
namespace {

thread_local std::shared_ptr<RunLoop> overridingLoop;
thread_local const RunLoop* servingLoop = nullptr;  // the loop whose calls this thread is inside of

}  // namespace

/// A thread's own loop. Others may hold on to it for a moment, or for long; what it has of the
/// thread's it gives up with the thread.
struct ThreadLoop {
  ~ThreadLoop() {
    if (own) own->driver_->detach();
  }
  std::shared_ptr<RunLoop> own;
};

namespace {

thread_local ThreadLoop threadLoop;

}  // namespace

Timer& Timer::operator=(Timer&& other) noexcept {
  if (this != &other) {
    invalidate();
    loop_ = std::move(other.loop_);
    id_ = other.id_;
  }
  return *this;
}

void Timer::invalidate() {
  if (const auto loop = loop_.lock()) loop->cancel(id_);
  loop_.reset();
}

bool Timer::isValid() const {
  const auto loop = loop_.lock();
  return loop && loop->isValid(id_);
}

std::shared_ptr<RunLoop>& RunLoop::mainInstance() {
  static auto& instance =
      *new std::shared_ptr<RunLoop>(new RunLoop(makeMainLoopDriver()));  // never destroyed
  return instance;
}

std::mutex& RunLoop::mainLock() {
  static auto& mutex = *new std::mutex;
  return mutex;
}

RunLoop& RunLoop::main() {
  const std::lock_guard lock(mainLock());
  RunLoop& loop = *mainInstance();
  if (onFirstThread() || loop.driver_->attachesAnywhere()) loop.attach();
  return loop;
}

RunLoop& RunLoop::current() {
  if (overridingLoop) return *overridingLoop;
  if (!threadLoop.own) {
    if (onFirstThread()) return main();
    threadLoop.own = on(makeLoopDriver());
  }
  return *threadLoop.own;
}

std::shared_ptr<RunLoop> RunLoop::on(std::unique_ptr<LoopDriver> driver) {
  const std::shared_ptr<RunLoop> loop(new RunLoop(std::move(driver)));
  loop->attach();
  return loop;
}

RunLoop::Override::Override(std::shared_ptr<RunLoop> loop, bool alsoMain)
    : previousCurrent_(std::exchange(overridingLoop, loop)), alsoMain_(alsoMain) {
  if (!alsoMain_) return;
  const std::lock_guard lock(mainLock());
  previousMain_ = std::exchange(mainInstance(), std::move(loop));
}

RunLoop::Override::~Override() {
  overridingLoop = std::move(previousCurrent_);
  if (!alsoMain_) return;
  const std::lock_guard lock(mainLock());
  mainInstance() = std::move(previousMain_);
}

RunLoop::~RunLoop() = default;

void RunLoop::attach() {
  std::call_once(attached_, [this] { driver_->attach([this] { serve(); }); });
}

TimerSchedule::Id RunLoop::schedule(Duration delay, Duration period, std::function<void()> fire) {
  auto shared = std::make_shared<const std::function<void()>>(std::move(fire));
  const auto due = TimerSchedule::later(driver_->now(), std::max(delay, Duration::zero()));
  TimerSchedule::Id id = 0;
  {
    const std::lock_guard lock(mutex_);
    id = timers_.add(due, period, std::move(shared));
  }
  wakeUnlessServing();
  return id;
}

Timer RunLoop::every(Duration period, std::function<void()> fire) {
  if (period <= Duration::zero()) return {};
  return {weak_from_this(), schedule(period, period, std::move(fire))};
}

Timer RunLoop::after(Duration delay, std::function<void()> fire) {
  return {weak_from_this(), schedule(delay, Duration::zero(), std::move(fire))};
}

void RunLoop::postAfter(Duration delay, std::function<void()> work) {
  schedule(delay, Duration::zero(), std::move(work));
}

void RunLoop::post(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    posts_.push_back(std::move(work));
  }
  wakeUnlessServing();
}

// While the loop serves, it looks at timers and posts again before it sleeps. At any other moment
// the driver may be asleep with an older wakeup in mind, or a host may be polling the descriptor.
void RunLoop::wakeUnlessServing() {
  if (servingLoop != this) driver_->wake();
}

bool RunLoop::isValid(TimerSchedule::Id id) {
  const std::lock_guard lock(mutex_);
  return timers_.contains(id);
}

void RunLoop::cancel(TimerSchedule::Id id) {
  TimerSchedule::Fire removed;  // let go of outside the lock: its captures may own timers too
  {
    const std::lock_guard lock(mutex_);
    removed = timers_.remove(id);
  }
  if (removed) wakeUnlessServing();
}

void RunLoop::serve() {
  const auto alive = weak_from_this().lock();  // a call may end the thread's last use of the loop
  const RunLoop* const outer = std::exchange(servingLoop, this);
  serveTimers();
  servePosts();
  servingLoop = outer;

  std::optional<TimerSchedule::Moment> next;
  bool more = false;
  {
    const std::lock_guard lock(mutex_);
    next = timers_.next();
    more = !posts_.empty();
  }
  driver_->wakeAt(next);
  if (more) driver_->wake();
}

void RunLoop::serveTimers() {
  const auto now = driver_->now();
  std::unique_lock lock(mutex_);
  const auto wakeup = timers_.wakeUp(now);
  if (!wakeup) return;
  while (auto fire = timers_.takeDue(*wakeup)) {
    lock.unlock();
    guarded("a timer", *fire);
    fire.reset();  // outside the lock: its captures may own timers too
    lock.lock();
  }
}

void RunLoop::servePosts() {
  std::unique_lock lock(mutex_);
  // Only those that are here now: work that posts itself again must not keep the loop from its
  // timers.
  for (auto left = posts_.size(); left > 0 && !posts_.empty(); --left) {
    auto work = std::move(posts_.front());
    posts_.pop_front();
    lock.unlock();
    guarded("posted work", work);
    work = nullptr;  // outside the lock, as above
    lock.lock();
  }
}

void RunLoop::run() {
  attach();
  if (servingLoop != this) driver_->run();
}

void RunLoop::stop() {
  driver_->stop();
}

int RunLoop::fd() {
  attach();
  return driver_->fd();
}

void RunLoop::dispatch() {
  attach();
  if (servingLoop != this) driver_->dispatch();
}

}  // namespace vantile
