#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "vantile/platform/file_events.h"
#include "vantile/platform/threads.h"

namespace vantile::testing {

/// Thrown by a wait that has nothing to give: it ends the watcher thread's step.
struct NothingLeft {};

class FakeFileEvents;

/// A queue whose events the test makes.
class FakeEventQueue final : public FileEventQueue {
 public:
  struct Watched {
    std::uint32_t changes = 0;
    std::uint64_t tag = 0;
  };

  explicit FakeEventQueue(FakeFileEvents& events) : events_(events) {}
  ~FakeEventQueue() override;

  int add(int watched, std::uint32_t changes, std::uint64_t tag) override;
  std::optional<FileEvent> wait(std::chrono::nanoseconds timeout) override {
    lastTimeout = timeout;
    if (onWait) onWait();
    if (std::exchange(interrupted_, false) && afterInterrupt) return std::nullopt;
    if (toThrow) std::rethrow_exception(std::exchange(toThrow, nullptr));
    const auto next = std::find_if(coming.begin(), coming.end(), [this](const auto& event) {
      return !event || !given_.contains(event->tag);
    });
    if (next == coming.end()) throw NothingLeft();
    const auto event = *next;
    coming.erase(next);
    if (event && oneAtATime) given_.insert(event->tag);
    return event;
  }
  void delivered(std::uint64_t tag) override {
    taken.push_back(tag);
    given_.erase(tag);
  }
  void interrupt() override {
    ++interrupts;
    interrupted_ = true;
    if (onInterrupt) onInterrupt();
  }
  int close() override {
    ++closes;
    return closeError;
  }

  std::map<int, Watched> watched;  ///< by descriptor
  std::deque<std::optional<FileEvent>> coming;
  std::vector<std::uint64_t> taken;  ///< tags of the events that were taken up
  std::exception_ptr toThrow;        ///< by the next wait
  std::function<void()> onWait, onInterrupt, onAdd;
  std::chrono::nanoseconds lastTimeout{0};
  bool afterInterrupt = true;  ///< the wait after an interrupt gives nothing
  bool oneAtATime = false;     ///< an item's next event comes once the one before was taken up
  int adds = 0, interrupts = 0, closes = 0;
  int addError = 0, closeError = 0;

 private:
  FakeFileEvents& events_;
  std::set<std::uint64_t> given_;  // tags of events that were not taken up yet
  bool interrupted_ = false;
};

/// File events of a test's own making, on files that `find` tells of.
class FakeFileEvents final : public FileEvents {
 public:
  std::shared_ptr<FileEventQueue> newQueue(int& error) override {
    error = queueError;
    if (queueError != 0) return nullptr;
    auto queue = std::make_shared<FakeEventQueue>(*this);
    queues.push_back(queue.get());
    return queue;
  }

  int open(const std::string& path) override {
    opened.push_back(path);
    if (openError != 0) return -openError;
    const auto identity = find(path);
    if (!identity) return -ENOENT;
    open_.emplace(++latest_, Open{path, *identity});
    return latest_;
  }
  void close(int watched) override {
    closed.push_back(watched);
    open_.erase(watched);
    for (auto* const queue : queues) queue->watched.erase(watched);
  }
  void standsAt(int watched, const std::string& path) override {
    stands.emplace_back(watched, path);
  }
  std::optional<FileIdentity> identity(int watched) override {
    const auto found = open_.find(watched);
    return found == open_.end() ? std::nullopt : std::optional(found->second.identity);
  }
  std::optional<std::string> limitBehind(int error) override {
    return error == ENOSPC ? std::optional<std::string>("fs.watches is 3") : std::nullopt;
  }

  /// What the paths are watched for that are watched now, by the path that was opened.
  std::map<std::string, std::uint32_t> watchedPaths() const {
    std::map<std::string, std::uint32_t> paths;
    for (const auto* const queue : queues)
      for (const auto& [descriptor, watched] : queue->watched)
        if (const auto found = open_.find(descriptor); found != open_.end())
          paths.emplace(found->second.path, watched.changes);
    return paths;
  }
  /// Lets something happen to the file that was opened under that path, in the latest queue.
  void happen(const std::string& path, std::uint32_t changes) {
    auto& queue = *queues.back();
    for (const auto& [descriptor, watched] : queue.watched)
      if (open_.at(descriptor).path == path && (watched.changes & changes) != 0)
        queue.coming.emplace_back(FileEvent{watched.tag, watched.changes & changes});
  }
  std::size_t openItems() const { return open_.size(); }

  std::function<std::optional<FileIdentity>(const std::string& path)> find;
  std::vector<std::string> opened;  ///< every path that was tried
  std::vector<int> closed;
  std::vector<std::pair<int, std::string>> stands;
  std::vector<FakeEventQueue*> queues;  ///< that live
  int queueError = 0, openError = 0;

 private:
  struct Open {
    std::string path;
    FileIdentity identity;
  };

  std::map<int, Open> open_;
  int latest_ = firstToken;
};

inline FakeEventQueue::~FakeEventQueue() {
  std::erase(events_.queues, this);
}

inline int FakeEventQueue::add(int descriptor, std::uint32_t changes, std::uint64_t tag) {
  ++adds;
  if (addError != 0) return addError;
  watched.insert_or_assign(descriptor, Watched{changes, tag});
  if (onAdd) onAdd();
  return 0;
}

/// Threads that run when the test says so, on the test's own.
class SteppedThreads final : public Threads {
 public:
  bool detach(const char* name, std::function<void()> body) override {
    if (refused) return false;
    names.emplace_back(name);
    bodies.push_back(std::move(body));
    return true;
  }

  /// Lets every thread go on until it waits for what does not come, or ends; those go.
  void step() {
    for (auto body = bodies.begin(); body != bodies.end();) {
      try {
        (*body)();
        body = bodies.erase(body);
      } catch (const NothingLeft&) {
        ++body;
      }
    }
  }

  std::vector<std::string> names;
  std::vector<std::function<void()>> bodies;
  bool refused = false;
};

}  // namespace vantile::testing
