// More events than the kernel keeps: nothing may be missing afterwards, and nothing told twice.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "vantile/platform/linux/file_events.h"
#include "vantile/watchqueue/watch_queue_ports.h"

#include "fakes/gate.h"
#include "fakes/recorded_log.h"
#include "watching/real_folders.h"

namespace vantile::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t deleteAndRename = 33, ofFolders = 35;

/// File events that are not read until the test asks for them.
class Overflow : public RealFolders {
 protected:
  /// Makes more events than the kernel keeps in a folder that is watched.
  void flood(const std::string& folder) {
    for (int number = 0; number < 10000; ++number) {
      const auto name = folder + "/flood" + std::to_string(number);
      ::close(::open(name.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
      ::unlink(name.c_str());
    }
  }
  std::uint64_t tagOf(int item) { return static_cast<std::uint64_t>(item); }
  int watch(const std::string& path, std::uint32_t changes) {
    const int item = events.open(path);
    EXPECT_EQ(queue->add(item, changes, tagOf(item)), 0);
    return item;
  }
  /// What all events there are say, by item.
  std::map<int, std::uint32_t> changes() {
    std::map<int, std::uint32_t> all;
    while (const auto event = queue->wait(std::chrono::nanoseconds(0))) {
      EXPECT_EQ(all[static_cast<int>(event->tag)] & event->changes, 0u) << "told twice";
      all[static_cast<int>(event->tag)] |= event->changes;
      queue->delivered(event->tag);
    }
    return all;
  }

  LinuxFileEvents events;
  int error = 0;
  std::shared_ptr<FileEventQueue> queue = events.newQueue(error);
};

TEST_F(Overflow, WhatWasMissedIsFoundByLookingAndSaidOnce) {
  for (const auto* const name :
       {"renamed", "moved", "deleted", "grown", "linked", "guarded", "replaced", "untouched"})
    disk.file(std::string("a/") + name);
  disk.folder("a/removed");
  disk.folder("a/filled");
  ::usleep(50000);  // what was changed within the last ticks of the clock may have changed again
  const RecordedLog log;
  const auto in = [this](const char* name, std::uint32_t changes) {
    return watch(disk.path(std::string("a/") + name), changes);
  };
  const int folder = watch(watched, ofFolders);
  const int renamed = in("renamed", 127), moved = in("moved", 127), deleted = in("deleted", 127);
  const int removed = in("removed", ofFolders), grown = in("grown", 127);
  const int linked = in("linked", 127), guarded = in("guarded", 127), filled = in("filled", 127);
  const int replaced = in("replaced", 127), untouched = in("untouched", 127);
  flood(watched);
  fs::rename(disk.path("a/renamed"), disk.path("a/renamed2"));
  fs::rename(disk.path("a/moved"), disk.path("moved"));
  disk.remove("a/deleted");
  disk.remove("a/removed");
  std::ofstream(disk.path("a/grown")) << "grown";
  disk.hardLink("a/linked", "a/linked2");
  ::chmod(disk.path("a/guarded").c_str(), 0600);
  disk.folder("a/filled/inner");
  fs::rename(disk.file("a/fresh"), disk.path("a/replaced"));

  const auto all = changes();
  EXPECT_EQ(all.at(folder), fileWritten);
  EXPECT_EQ(all.at(renamed), fileRenamed);
  EXPECT_EQ(all.at(moved), fileRenamed);
  EXPECT_EQ(all.at(deleted), fileDeleted);
  EXPECT_EQ(all.at(removed), fileDeleted);
  EXPECT_EQ(all.at(grown) & (fileWritten | fileGrew), fileWritten | fileGrew);
  EXPECT_EQ(all.at(linked), linkCountChanged);
  EXPECT_EQ(all.at(guarded), attributesChanged);
  EXPECT_EQ(all.at(filled), fileWritten | linkCountChanged);
  EXPECT_EQ(all.at(replaced), fileDeleted);
  EXPECT_FALSE(all.contains(untouched));
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_TRUE(log.lines[0].starts_with(
      "WatchQueue: file events came faster than they were read and some were lost "
      "(fs.inotify.max_queued_events is "))
      << log.lines[0];
  EXPECT_TRUE(log.lines[0].ends_with("; all 11 watched paths were looked at again"));
}

TEST_F(Overflow, AfterItThingsAreToldAsBefore) {
  const RecordedLog log;
  watch(watched, ofFolders);
  const int item = watch(disk.file("a/file"), 127);
  flood(watched);
  changes();
  std::ofstream(disk.path("a/file"), std::ios::app) << "x";
  EXPECT_EQ(changes().at(item), fileWritten | fileGrew);
  fs::rename(disk.path("a/file"), disk.path("a/file2"));
  EXPECT_EQ(changes().at(item), fileRenamed);
}

TEST_F(Overflow, WhatWasToldAsRenamedBeforeIsNotToldSoAgain) {
  const RecordedLog log;
  watch(watched, ofFolders);
  const int item = watch(disk.file("a/file"), 127);
  fs::rename(disk.path("a/file"), disk.path("file"));
  EXPECT_EQ(changes().at(item), fileRenamed);
  flood(watched);
  EXPECT_FALSE(changes().contains(item));
}

/// A desktop that holds up whoever tells it something: the watcher thread.
class HoldingWorkspace final : public Workspace {
 public:
  void noteFileSystemChanged(const std::string&) override {
    if (const auto gate = holding.load()) gate->pass();
  }
  void post(const std::string&, const void*, const std::string&) override {}

  std::atomic<Gate*> holding = nullptr;
};

/// While it lives, new queues tell a desktop that can hold up their threads.
class HeldThreads {
 protected:
  HeldThreads() : before_(std::exchange(WatchQueuePorts::installed().workspace, workspace)) {}
  ~HeldThreads() { WatchQueuePorts::installed().workspace = before_; }

  std::shared_ptr<HoldingWorkspace> workspace = std::make_shared<HoldingWorkspace>();

 private:
  std::shared_ptr<Workspace> before_;
};

/// Keeps a list of a folder as a host would: scans when it is written to, and watches each entry.
class FollowedFolder : protected HeldThreads, public RealQueue {
 protected:
  FollowedFolder() {
    delegate->WatchQueueReceivedNotificationForPath =
        [this, settled = delegate->WatchQueueReceivedNotificationForPath](
            FSWatchQueue& told, const std::string& name, const std::string& path) {
          if (path == watched)
            scan();
          else
            settled(told, name, path);
        };
    delegate->WatchQueueRenameForPath = [this](FSWatchQueue&, const std::string& to,
                                               const std::string& from) {
      known.erase(from);
      known.insert(to);
    };
    delegate->WatchQueueDeletedForPath = [this](FSWatchQueue&, const std::string& path) {
      EXPECT_TRUE(deleted.insert(path).second || known.contains(path)) << path << " deleted twice";
      known.erase(path);
    };
    queue->addPathNotifyingAbout(watched, 2);
  }

  void scan() {
    for (const auto& entry : fs::directory_iterator(watched)) {
      if (!known.insert(entry.path().string()).second) continue;
      queue->addPathNotifyingAbout(entry.path().string(), deleteAndRename);
    }
  }
  std::set<std::string> truth() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(watched)) names.insert(entry.path().string());
    return names;
  }

  std::set<std::string> known, deleted;
};

TEST_F(FollowedFolder, IsTrueAgainAfterFiftyThousandFilesCameAndWentUnseen) {
  for (int number = 0; number < 200; ++number) disk.file("watched/kept" + std::to_string(number));
  settle();
  ASSERT_EQ(known, truth());
  Gate gate;
  workspace->holding = &gate;
  disk.file("watched/first");
  gate.awaitEntry();
  for (int number = 0; number < 50000; ++number) {
    const auto name = disk.path("watched/" + std::to_string(number));
    const auto renamed = name + "r";
    ::close(::open(name.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
    if (number % 2 == 0) ::rename(name.c_str(), renamed.c_str());
    if (number % 100 != 0) ::unlink((number % 2 == 0 ? renamed : name).c_str());
  }
  for (int number = 0; number < 200; ++number) {
    const auto name = disk.path("watched/kept" + std::to_string(number));
    if (number % 3 == 0) ::rename(name.c_str(), (name + "r").c_str());
    if (number % 3 == 1) ::unlink(name.c_str());
  }
  workspace->holding = nullptr;
  gate.open();
  settle();
  EXPECT_EQ(known, truth());
  EXPECT_EQ(queue->numberOfWatchedPaths(), truth().size() + 2);
}

}  // namespace
}  // namespace vantile::testing
