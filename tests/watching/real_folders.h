#pragma once

#include <gtest/gtest.h>
#include <poll.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vantile/foundation/run_loop.h"
#include "vantile/utility/utility_ports.h"
#include "vantile/watchqueue/watch_queue.h"

#include "fakes/temporary_folder.h"

namespace vantile::testing {

/// Standard folders below one folder of a test's own.
class FoldersBelow final : public StandardFolders {
 public:
  explicit FoldersBelow(std::string root) : root_(std::move(root)) {}

  std::string home() override { return root_ + "/home"; }
  std::string downloads() override { return root_ + "/home/Downloads"; }
  std::string library() override { return root_ + "/home/.local/share"; }
  std::string preferences() override { return root_ + "/home/.config"; }
  std::string applications() override { return root_ + "/applications"; }
  std::string trash() override { return root_ + "/home/.local/share/Trash/files"; }
  void makeTrash() override { std::filesystem::create_directories(trash()); }

 private:
  const std::string root_;
};

/// Serves the main run loop until `done`, or for too long. Whether it was done.
template <class Done>
bool serveUntil(Done done, std::chrono::milliseconds atMost = std::chrono::seconds(30)) {
  RunLoop& loop = RunLoop::main();
  const auto end = std::chrono::steady_clock::now() + atMost;
  while (!done()) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    pollfd entry = {loop.fd(), POLLIN, 0};
    if (::poll(&entry, 1, static_cast<int>(left.count())) == 1) loop.dispatch();
  }
  return true;
}

/// Real folders in a folder of the test's own, which has a Trash, too.
class RealFolders : public ::testing::Test {
 protected:
  RealFolders()
      : before_(std::exchange(UtilityPorts::installed().folders,
                              std::make_shared<FoldersBelow>(disk.path()))) {
    RunLoop::main().fd();  // takes the loop up on this thread
    trash = disk.folder("home/.local/share/Trash/files");
    watched = disk.folder("watched");
  }
  ~RealFolders() override { UtilityPorts::installed().folders = std::move(before_); }

  TemporaryFolder disk;
  std::string trash, watched;

 private:
  std::shared_ptr<StandardFolders> before_;
};

/// A queue on real folders whose delegate keeps a record: "write PATH", "rename NEW OLD",
/// "trash NEW OLD", "delete PATH", with paths relative to the test's folder.
class RealQueue : public RealFolders {
 protected:
  RealQueue() {
    delegate->WatchQueueReceivedNotificationForPath = [this](FSWatchQueue&, const std::string& name,
                                                             const std::string& path) {
      if (path == sentinel_) {
        ++sentinels_;
      } else {
        record.push_back(word(name) + " " + relative(path));
      }
    };
    delegate->WatchQueueRenameForPath = [this](FSWatchQueue&, const std::string& to,
                                               const std::string& from) {
      record.push_back("rename " + relative(to) + " " + relative(from));
    };
    delegate->WatchQueueRemoveToTrashForPath = [this](FSWatchQueue&, const std::string& to,
                                                      const std::string& from) {
      record.push_back("trash " + relative(to) + " " + relative(from));
    };
    delegate->WatchQueueDeletedForPath = [this](FSWatchQueue&, const std::string& path) {
      record.push_back("delete " + relative(path));
    };
    queue->setDelegate(delegate);
    sentinel_ = disk.folder("sentinel");
    queue->addPathNotifyingAbout(sentinel_, 2);
  }

  /// Serves until everything that has happened was told: events come in order, and the second of
  /// two comes after whatever was held back by the first.
  void settle() {
    for (int round = 0; round < 2; ++round) {
      const auto before = sentinels_;
      disk.file("sentinel/" + std::to_string(++touches_));
      ASSERT_TRUE(serveUntil([&] { return sentinels_ > before; }));
    }
  }
  /// What was told since the last time.
  std::vector<std::string> told() {
    settle();
    return std::exchange(record, {});
  }

  std::string relative(const std::string& path) const {
    return path.starts_with(disk.path() + "/") ? path.substr(disk.path().size() + 1) : path;
  }

  std::shared_ptr<FSWatchQueue> queue = FSWatchQueue::init();
  std::shared_ptr<FSWatchQueueDelegate> delegate = std::make_shared<FSWatchQueueDelegate>();
  std::vector<std::string> record;

 private:
  static std::string word(const std::string& name) {
    if (name == WatchQueueWriteNotification) return "write";
    if (name == WatchQueueRenameNotification) return "renamed";
    if (name == WatchQueueAttributeChangeNotification) return "attributes";
    if (name == WatchQueueSizeIncreaseNotification) return "grew";
    if (name == WatchQueueLinkCountChangeNotification) return "links";
    if (name == WatchQueueAccessRevocationNotification) return "revoked";
    return name;
  }

  std::string sentinel_;
  int sentinels_ = 0, touches_ = 0;
};

}  // namespace vantile::testing
