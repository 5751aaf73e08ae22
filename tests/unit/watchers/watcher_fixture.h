#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "vantile/utility/paths.h"

#include "fakes/fake_utility_ports.h"
#include "fakes/fake_watch_queue_ports.h"
#include "fakes/fake_watcher_ports.h"
#include "fakes/manual_workers.h"
#include "fakes/recorded_log.h"
#include "fakes/stepped_loop.h"

namespace vantile::testing {

/// What is watched, and the bits that it is watched for.
using Watched = std::map<std::string, std::uint32_t>;

/// Watchers on a disk in memory. Its events, the threads and the time go on when the test says so.
class Watchers : public ::testing::Test {
 protected:
  inline static const std::string home = "/disk/home", downloads = home + "/Down",
                                  preferences = home + "/Prefs", safari = home + "/Lib/Safari",
                                  trash = home + "/Bin", apps = "/disk/apps";

  Watchers() {
    utility.standOn(queue.disk);
    for (const auto& path : {downloads, preferences, safari, trash, apps}) folder(path);
  }

  // Changes of the disk that nothing tells of yet.
  void folder(const std::string& path) { tree.folder(below(path)); }
  void file(const std::string& path, std::uint64_t bytes = 0) { tree.file(below(path), bytes); }
  void remove(const std::string& path) { tree.remove(below(path)); }
  void move(const std::string& path, const std::string& to) { tree.move(below(path), below(to)); }

  /// Lets something happen to what is watched under the path, and be told.
  void happen(const std::string& path, std::uint32_t changes) {
    events.happen(path, changes);
    settle();
  }
  void written(const std::string& path) { happen(path, fileWritten); }
  void settle() {
    queue.threads->step();
    loop.settle();
  }

  // Changes of the disk with what the system tells of them.
  void put(const std::string& path) {
    file(path);
    written(withoutLastPathComponent(path));
  }
  void rename(const std::string& path, const std::string& to) {
    move(path, to);
    events.happen(path, fileRenamed);
    written(withoutLastPathComponent(path));
  }
  void erase(const std::string& path) {
    remove(path);
    events.happen(path, fileDeleted);
    written(withoutLastPathComponent(path));
  }

  Watched watched() const { return events.watchedPaths(); }
  /// The bits that a path is watched for; 0 when it is not.
  std::uint32_t bitsOf(const std::string& path) const {
    const auto paths = watched();
    const auto found = paths.find(path);
    return found == paths.end() ? 0 : found->second;
  }
  auto timesOpened(const std::string& path) const {
    return std::count(events.opened.begin(), events.opened.end(), path);
  }

  FakeUtilityPorts utility;
  FakeWatchQueuePorts queue;
  FakeWatcherPorts ports{queue.disk, utility};
  FolderTree& tree = *queue.disk->tree;
  FakeFileEvents& events = *queue.events;
  SteppedLoop loop;
  ManualWorkers workers;
  RecordedLog log;
  std::int32_t stop = 0;

 private:
  static std::string below(const std::string& path) {
    return path.substr(std::string("/disk/").size());
  }
};

}  // namespace vantile::testing
