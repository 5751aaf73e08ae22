#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vantile/watchqueue/watch_queue.h"

#include "fakes/fake_utility_ports.h"
#include "fakes/fake_watch_queue_ports.h"
#include "fakes/recorded_log.h"
#include "fakes/stepped_loop.h"

namespace vantile::testing {

/// A watch queue on a disk in memory that has the folders "/disk/d" and "/disk/Trash", and a
/// delegate that keeps what it is told.
class WatchQueue : public ::testing::Test {
 protected:
  using Paths = std::map<std::string, std::uint32_t>;
  using Lines = std::vector<std::string>;

  WatchQueue() {
    utility.folders->trashFolder = "/disk/Trash";
    tree.folder("Trash");
    tree.folder("d");
    delegate->WatchQueueReceivedNotificationForPath =
        [this](FSWatchQueue& teller, const std::string& name, const std::string& path) {
          keep(teller, name + " " + path);
        };
    delegate->WatchQueueRenameForPath = [this](FSWatchQueue& teller, const std::string& to,
                                               const std::string& from) {
      keep(teller, "renamed " + from + " to " + to);
    };
    delegate->WatchQueueRemoveToTrashForPath = [this](FSWatchQueue& teller, const std::string& to,
                                                      const std::string& from) {
      keep(teller, "trashed " + from + " as " + to);
    };
    delegate->WatchQueueDeletedForPath = [this](FSWatchQueue& teller, const std::string& path) {
      keep(teller, "deleted " + path);
    };
    queue = FSWatchQueue::init();
    queue->setDelegate(delegate);
  }

  /// Makes files, by absolute paths, and watches them for every change.
  void watchFiles(const std::vector<std::string>& paths) {
    for (const auto& path : paths) {
      tree.file(path.substr(sizeof("/disk")));
      queue->addPath(path);
    }
  }

  /// Lets something happen to the file that was opened under that path, and be told.
  void happen(const std::string& path, std::uint32_t changes) {
    events.happen(path, changes);
    serve();
  }
  /// Renames a file, by absolute paths, and lets it be told. The kernel tells it of the file that
  /// was opened as `from`, or as `opened`.
  void rename(const std::string& from, const std::string& to, const std::string& opened = {}) {
    tree.move(from.substr(sizeof("/disk")), to.substr(sizeof("/disk")));
    happen(opened.empty() ? from : opened, fileRenamed);
  }
  /// Lets the watcher threads take what has come, and the main thread what they hand over.
  void serve() {
    threads.step();
    loop.settle();
  }

  FakeEventQueue& kernel() { return *events.queues.back(); }
  /// The path's entry in the table, which must be there.
  std::shared_ptr<WatchQueuePathEntry> entry(const std::string& path) {
    const auto tried = events.opened.size();
    auto found = queue->addPathToQueueNotifyingAbout(path, 0);
    EXPECT_EQ(events.opened.size(), tried) << path << " was not in the table";
    return found;
  }

  FakeUtilityPorts utility;
  FakeWatchQueuePorts ports;
  FakeDisk& disk = *ports.disk;
  FolderTree& tree = *ports.disk->tree;
  FakeFileEvents& events = *ports.events;
  FakeWorkspace& desktop = *ports.workspace;
  SteppedThreads& threads = *ports.threads;
  SteppedLoop loop;
  RecordedLog log;
  std::shared_ptr<FSWatchQueueDelegate> delegate = std::make_shared<FSWatchQueueDelegate>();
  std::shared_ptr<FSWatchQueue> queue;
  Lines told;                                ///< to the delegate
  std::vector<const FSWatchQueue*> tellers;  ///< of these

 private:
  void keep(const FSWatchQueue& teller, std::string line) {
    tellers.push_back(&teller);
    told.push_back(std::move(line));
  }
};

}  // namespace vantile::testing
