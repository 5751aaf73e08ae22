// The watchers on real folders, with the platform's own adapters: what browsers, package managers
// and file managers do, and what is reported of it.

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <thread>

#include "vantile/foundation/notification_center.h"
#include "vantile/platform/linux/browsers.h"
#include "vantile/platform/posix/files.h"
#include "vantile/watchers/shared_watchers.h"
#include "vantile/watchers/watch_application.h"
#include "vantile/watchers/watch_download.h"
#include "vantile/watchers/watch_trash.h"
#include "vantile/watchers/watcher_ports.h"

#include "watching/real_folders.h"

namespace vantile::testing {
namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

const std::string shownEntry = "[Desktop Entry]\nType=Application\nName=Tool\nExec=tool\n";

class RealWatchers : public RealFolders {
 protected:
  RealWatchers() : before_(WatcherPorts::installed()) {
    auto& ports = WatcherPorts::installed();
    ports.folders = UtilityPorts::installed().folders;
    const auto nothingSet = [](const char*) { return std::optional<std::string>(); };
    ports.browsers =
        std::make_shared<LinuxBrowsers>(XdgFolders(disk.path("home"), nothingSet),
                                        [](const std::string& path) { return contentsOf(path); });
    forgetWatchers();
    downloads->downloadFileCompleted = [this](const std::optional<std::string>& path) {
      completed.push_back(path.value_or("(nil)"));
    };
    applications->appAdded = [this](const std::string& path) { added.push_back(path); };
    applicationsTrash->trashAddedApp = [this](const std::string& path) { thrown.push_back(path); };
    applicationsTrash->trashUsedSizeChanged = [this](std::uint64_t bytes) {
      sizes.push_back(bytes);
    };
  }
  ~RealWatchers() override {
    WatchDownload::singleton()->stopWatch();
    WatchApplication::singleton()->stopWatch();
    WatchTrash::singleton()->stopWatch();
    forgetWatchers();
    WatcherPorts::installed() = before_;
  }

  void chromiumSavesTo(const std::string& folder) {
    // As it writes them: a new file that takes the old one's place.
    const auto fresh = disk.file("home/.config/chromium/Default/.org.chromium.new",
                                 R"({"download":{"default_directory":")" + folder + R"("}})");
    fs::rename(fresh, disk.path("home/.config/chromium/Default/Preferences"));
  }
  void startDownloads() {
    WatchDownload::singleton()->setDelegate(downloads);
    WatchDownload::singleton()->startWatch(&stop);
  }
  /// Does something in a folder and serves until the watcher has taken it up.
  template <class Work>
  void seen(const std::string& folder, Work work) {
    const auto before = writes_[folder];
    work();
    ASSERT_TRUE(serveUntil([&] { return writes_[folder] > before; }));
  }
  /// Begins downloads in the folder until one is seen there; that one is finished, and reported.
  void expectADownloadOnceWatched(const std::string& folder) {
    std::string download;
    for (int number = 0; writes_[folder] == 0; ++number) {
      ASSERT_LT(number, 200);
      download = folder + "/" + std::to_string(number) + ".bin";
      std::ofstream(download + ".crdownload");
      serveUntil([&] { return writes_[folder] > 0; }, std::chrono::milliseconds(50));
    }
    fs::rename(download + ".crdownload", download);
    await([&] { return !completed.empty(); });
    EXPECT_EQ(completed, Paths{download});
  }
  /// Serves until something is true.
  template <class Done>
  void await(Done done) {
    ASSERT_TRUE(serveUntil(done));
  }

  std::int32_t stop = 0;
  std::shared_ptr<DownloadWatchDelegate> downloads = std::make_shared<DownloadWatchDelegate>();
  std::shared_ptr<ApplicationsWatchDelegate> applications =
      std::make_shared<ApplicationsWatchDelegate>();
  std::shared_ptr<TrashWatchDelegate> applicationsTrash = std::make_shared<TrashWatchDelegate>();
  Paths completed, added, thrown;
  std::vector<std::uint64_t> sizes;

 private:
  static void forgetWatchers() {
    sharedDownloadWatch().forget();
    sharedApplicationWatch().forget();
    sharedTrashWatch().forget();
  }

  WatcherPorts before_;
  std::map<std::string, int> writes_;  // that were told, by folder
  // A queue posts what happened once its watcher has dealt with it.
  NotificationCenter::Registration written_ = NotificationCenter::workspace().observe(
      WatchQueueWriteNotification,
      [this](const Notification& told) { ++writes_[*told.userInfo->text("path")]; });
};

TEST_F(RealWatchers, ChromiumsDownloadIsReportedOnceWithItsFinalPath) {
  const auto folder = disk.folder("saved");
  chromiumSavesTo(folder);
  startDownloads();
  seen(folder, [&] { disk.file("saved/.com.google.Chrome.x1"); });
  seen(folder, [&] {
    fs::rename(disk.path("saved/.com.google.Chrome.x1"),
               disk.path("saved/Unconfirmed 7.crdownload"));
  });
  disk.file("saved/Unconfirmed 7.crdownload", "all of it");
  disk.file("saved/film.mp4");  // takes the name, and is replaced at once
  fs::rename(disk.path("saved/Unconfirmed 7.crdownload"), disk.path("saved/film.mp4"));
  await([&] { return !completed.empty(); });
  seen(folder, [&] { disk.file("saved/other"); });
  EXPECT_EQ(completed, Paths{disk.path("saved/film.mp4")});
}

TEST_F(RealWatchers, ChromiumsItemThatIsReplacedRightAfterItWasMadeIsReportedOnce) {
  const auto folder = disk.folder("saved");
  chromiumSavesTo(folder);
  startDownloads();
  disk.file("saved/.com.google.Chrome.x1", "all of it");
  disk.file("saved/film.mp4");
  seen(folder, [&] { disk.file("saved/film.mp4.crdownload"); });
  seen(folder, [&] {
    fs::rename(disk.path("saved/.com.google.Chrome.x1"), disk.path("saved/film.mp4.crdownload"));
  });
  completed.clear();  // what was replaced is gone, and a file has the name of what it was to be
  fs::rename(disk.path("saved/film.mp4.crdownload"), disk.path("saved/film.mp4"));
  await([&] { return !completed.empty(); });
  seen(folder, [&] { disk.file("saved/other"); });
  EXPECT_EQ(completed, Paths{disk.path("saved/film.mp4")});
}

TEST_F(RealWatchers, FirefoxsDownloadIsReportedOnceThoughItIsRenamedTwice) {
  disk.file("home/.mozilla/firefox/installs.ini", "[4F96]\nDefault=p.default\nLocked=1\n");
  const auto folder = disk.folder("saved");
  disk.file("home/.mozilla/firefox/p.default/prefs.js",
            "user_pref(\"browser.download.folderList\", 2);\n"
            "user_pref(\"browser.download.dir\", \"" +
                folder + "\");\n");
  startDownloads();
  seen(folder, [&] { disk.file("saved/3fQ2.bin.part"); });
  disk.file("saved/a.bin");  // stays empty for the whole download
  fs::rename(disk.path("saved/3fQ2.bin.part"), disk.path("saved/a.Zx9.bin.part"));
  seen(folder, [&] { disk.file("saved/other"); });
  EXPECT_EQ(completed, Paths{});
  fs::rename(disk.path("saved/a.Zx9.bin.part"), disk.path("saved/a.bin"));
  await([&] { return !completed.empty(); });
  seen(folder, [&] { disk.file("saved/another"); });
  EXPECT_EQ(completed, Paths{disk.path("saved/a.bin")});
}

TEST_F(RealWatchers, ACancelledDownloadIsNotReported) {
  const auto folder = disk.folder("saved");
  chromiumSavesTo(folder);
  startDownloads();
  seen(folder, [&] { disk.file("saved/Unconfirmed 7.crdownload", "half"); });
  seen(folder, [&] { disk.remove("saved/Unconfirmed 7.crdownload"); });
  seen(folder, [&] { disk.file("saved/other"); });
  EXPECT_EQ(completed, Paths{});
}

TEST_F(RealWatchers, AnArchiveIsReportedAsWhatItWasUnpackedTo) {
  const auto folder = disk.folder("saved");
  chromiumSavesTo(folder);
  startDownloads();
  seen(folder, [&] { disk.file("saved/a.tar.gz.crdownload"); });
  seen(folder,
       [&] { fs::rename(disk.path("saved/a.tar.gz.crdownload"), disk.path("saved/a.tar.gz")); });
  disk.folder("saved/a");
  disk.remove("saved/a.tar.gz");
  await([&] { return !completed.empty(); });
  EXPECT_EQ(completed, Paths{disk.path("saved/a")});
}

TEST_F(RealWatchers, AChangedDownloadFolderIsFollowedWhileItWatches) {
  const auto first = disk.folder("first"), second = disk.folder("second");
  chromiumSavesTo(first);
  startDownloads();
  const auto preferences = disk.path("home/.config/chromium/Default");
  seen(preferences, [&] { chromiumSavesTo(second); });
  seen(second, [&] { disk.file("second/a.bin.crdownload"); });
  fs::rename(disk.path("second/a.bin.crdownload"), disk.path("second/a.bin"));
  await([&] { return !completed.empty(); });
  EXPECT_EQ(completed, Paths{disk.path("second/a.bin")});
}

TEST_F(RealWatchers, ABrowserThatIsFirstStartedWhileItWatchesIsFollowed) {
  disk.folder("home");
  const auto folder = disk.folder("saved");
  startDownloads();
  chromiumSavesTo(folder);  // home, .config, chromium and Default come one after another
  expectADownloadOnceWatched(folder);
}

TEST_F(RealWatchers, ADownloadFolderThatIsRemovedAndMadeAgainIsWatchedAgain) {
  const auto folder = disk.folder("saved");
  chromiumSavesTo(folder);
  startDownloads();
  fs::remove(folder);
  disk.folder("saved");
  expectADownloadOnceWatched(folder);
}

TEST_F(RealWatchers, AnApplicationThatIsInstalledIsReportedAndARemovedOneIsNot) {
  const auto folder = disk.folder("applications");
  disk.file("applications/old.desktop", shownEntry);
  WatchApplication::singleton()->setDelegate(applications);
  WatchApplication::singleton()->startWatch(&stop);
  // As package managers do it.
  seen(folder, [&] { disk.file("applications/new.desktop.dpkg-new", shownEntry); });
  EXPECT_EQ(added, Paths{});
  fs::remove(disk.path("applications/old.desktop"));
  fs::rename(disk.path("applications/new.desktop.dpkg-new"), disk.path("applications/new.desktop"));
  await([&] { return !added.empty(); });
  EXPECT_EQ(added, Paths{disk.path("applications/new.desktop")});
}

TEST_F(RealWatchers, AnApplicationInTheTrashIsReportedWithWhatTheTrashHolds) {
  const auto entry = disk.file("applications/tool.desktop", shownEntry);
  WatchTrash::singleton()->setDelegate(applicationsTrash);
  WatchTrash::singleton()->startWatch(&stop);
  EXPECT_EQ(sizes, std::vector<std::uint64_t>{0});
  fs::rename(entry, trash + "/tool.desktop");
  await([&] { return sizes.size() == 2; });
  EXPECT_EQ(thrown, Paths{trash + "/tool.desktop"});
  EXPECT_EQ(sizes[1], shownEntry.size());
}

TEST_F(RealWatchers, MayBeStartedAndStoppedOnSeveralThreadsAtOnce) {
  const auto folder = disk.folder("applications");
  disk.file("applications/old.desktop", shownEntry);
  chromiumSavesTo(disk.folder("saved"));
  std::array<std::int32_t, 4> stops = {};
  std::vector<std::thread> threads;
  for (auto& flag : stops) {
    threads.emplace_back([&flag] {
      for (int round = 0; round < 20; ++round) {
        std::atomic_ref<std::int32_t>(flag).store(0);
        WatchDownload::singleton()->startWatch(&flag);
        WatchApplication::singleton()->startWatch(&flag);
        WatchTrash::singleton()->startWatch(&flag);
        WatchTrash::singleton()->stopWatch();
        WatchApplication::singleton()->stopWatch();
        WatchDownload::singleton()->stopWatch();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  WatchDownload::singleton()->startWatch(&stop);
  WatchTrash::singleton()->startWatch(&stop);
  WatchApplication::singleton()->setDelegate(applications);
  WatchApplication::singleton()->startWatch(&stop);
  disk.file("applications/new.desktop", shownEntry);
  await([&] { return !added.empty(); });
  EXPECT_EQ(added, Paths{disk.path("applications/new.desktop")});
}

TEST_F(RealWatchers, TheTrashIsMadeWhenItIsMissing) {
  fs::remove_all(disk.path("home/.local"));
  WatchTrash::singleton()->startWatch(&stop);
  EXPECT_TRUE(fs::is_directory(trash));
}

}  // namespace
}  // namespace vantile::testing
