#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "vantile/watchqueue/watch_queue_ports.h"

#include "fakes/fake_disk.h"
#include "fakes/fake_file_events.h"

namespace vantile::testing {

/// A desktop that keeps what it is told.
class FakeWorkspace final : public Workspace {
 public:
  struct Posted {
    std::string name;
    const void* object;
    std::string path;
    friend bool operator==(const Posted&, const Posted&) = default;
  };

  void noteFileSystemChanged(const std::string& path) override {
    noted.push_back(path);
    if (refusal) throw std::runtime_error(*refusal);
  }
  void post(const std::string& name, const void* object, const std::string& path) override {
    posted.push_back({name, object, path});
  }

  std::vector<std::string> noted;  ///< paths that changed
  std::vector<Posted> posted;
  std::optional<std::string> refusal;  ///< thrown at what is noted
};

/// While it lives, watch queues stand on fakes: a disk in memory, events that the test makes, and
/// threads that go on when the test says so.
class FakeWatchQueuePorts {
 public:
  FakeWatchQueuePorts()
      : before_(std::exchange(WatchQueuePorts::installed(),
                              WatchQueuePorts{events, threads, workspace, disk->tree, disk})) {
    events->find = [disk = disk](const std::string& path) { return disk->identityOf(path); };
  }
  ~FakeWatchQueuePorts() { WatchQueuePorts::installed() = std::move(before_); }
  FakeWatchQueuePorts(const FakeWatchQueuePorts&) = delete;
  FakeWatchQueuePorts& operator=(const FakeWatchQueuePorts&) = delete;

  // The threads last: what they run holds on to queues of the events.
  const std::shared_ptr<FakeDisk> disk = std::make_shared<FakeDisk>();
  const std::shared_ptr<FakeFileEvents> events = std::make_shared<FakeFileEvents>();
  const std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
  const std::shared_ptr<SteppedThreads> threads = std::make_shared<SteppedThreads>();

 private:
  WatchQueuePorts before_;
};

}  // namespace vantile::testing
