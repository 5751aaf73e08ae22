// The functions that traversals hand what they find to, and watchers besides the shared ones.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "unit/watchers/watcher_fixture.h"

namespace vantile::testing {
namespace {

using Callbacks = Watchers;
using Paths = std::vector<std::string>;

TEST_F(Callbacks, IgnoreNull) {
  downloadcallback(nullptr);
  applicationcallback(nullptr, 1);
  applicationcallback(nullptr, 0);
  appcallback(nullptr, 1);
  folder_app_callback(nullptr, 1);
  EXPECT_TRUE(log.lines.empty());
  EXPECT_TRUE(WatchTrash::singleton()->currApps().empty());
}

TEST_F(Callbacks, OfNullMakeNoSharedWatcher) {
  const auto before = events.queues.size();
  downloadcallback(nullptr);
  applicationcallback(nullptr, 1);
  appcallback(nullptr, 1);
  folder_app_callback(nullptr, 1);
  EXPECT_EQ(events.queues.size(), before);
}

TEST_F(Callbacks, OfDownloadsFillTheSharedWatchersList) {
  file(downloads + "/odd");
  ports.browsers->settings["com.google.Chrome.plist"] = {downloads};
  WatchDownload::singleton()->startWatch(&stop);
  downloadcallback((downloads + "/odd").c_str());
  written(downloads);
  EXPECT_EQ(bitsOf(downloads + "/odd"), 0x21u);
}

TEST_F(Callbacks, OfApplicationsFillTheSharedWatchersLists) {
  Paths added;
  const auto delegate = std::make_shared<ApplicationsWatchDelegate>();
  delegate->appAdded = [&added](const std::string& path) { added.push_back(path); };
  const auto watcher = WatchApplication::singleton();
  watcher->setDelegate(delegate);
  watcher->startWatch(&stop);
  applicationcallback("/disk/apps/A", 1);
  for (const std::int32_t kind : {0, 2, -1}) applicationcallback("/disk/apps/folder", kind);
  written(apps);
  EXPECT_EQ(added, Paths{"/disk/apps/A"});
}

TEST_F(Callbacks, OfTheTrashFillTheSharedWatchersListWithApplicationsAlone) {
  appcallback("/disk/A", 1);
  for (const std::int32_t kind : {0, 2, -1}) appcallback("/disk/B", kind);
  EXPECT_EQ(WatchTrash::singleton()->currApps(), Paths{"/disk/A"});
}

TEST_F(Callbacks, OfMovedFoldersReportApplicationsAloneAndLogThem) {
  Paths added;
  const auto delegate = std::make_shared<TrashWatchDelegate>();
  delegate->trashAddedApp = [&added](const std::string& path) { added.push_back(path); };
  WatchTrash::singleton()->setDelegate(delegate);
  for (const std::int32_t kind : {0, 2, -1}) folder_app_callback("/disk/C.app", kind);
  EXPECT_TRUE(log.lines.empty());
  folder_app_callback("/disk/below/A.app", 1);
  folder_app_callback("/disk/B", 1);  // no application by its name, and logged all the same
  EXPECT_EQ(added, Paths{"/disk/below/A.app"});
  ASSERT_GE(log.lines.size(), 2u);
  EXPECT_EQ(log.lines.at(log.lines.size() - 2), "Path add is A.app");
  EXPECT_EQ(log.lines.back(), "Path add is B");
}

TEST_F(Callbacks, MoveAlongNamesThatAreNotUTF8) {
  appcallback("/disk/\xFF", 1);
  EXPECT_EQ(WatchTrash::singleton()->currApps(), Paths{"/disk/\xFF"});
}

using FurtherWatchers = Watchers;

TEST_F(FurtherWatchers, FindNothingByThemselves) {
  file(downloads + "/a.part");
  ports.browsers->settings["com.google.Chrome.plist"] = {downloads};
  const auto shared = WatchDownload::singleton(), own = WatchDownload::init();
  own->startWatch(&stop);
  written(downloads);
  EXPECT_EQ(bitsOf(downloads), 0x23u);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), 0u);
  own->fillDownloadPath(downloads + "/a.part");
  written(downloads);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), 0x21u);
}

TEST_F(FurtherWatchers, HaveQueuesFlagsAndDelegatesOfTheirOwn) {
  std::int32_t secondStop = 0;
  const auto first = WatchDownload::init(), second = WatchDownload::init();
  first->startWatch(&stop);
  second->startWatch(&secondStop);
  EXPECT_EQ(events.queues.size(), 2u);
  EXPECT_EQ(timesOpened(preferences), 2);
  first->stopWatch();
  EXPECT_EQ(stop, 1);
  EXPECT_EQ(secondStop, 0);
  EXPECT_EQ(bitsOf(preferences), 0x02u);
  EXPECT_EQ(second->delegate(), nullptr);
}

TEST_F(FurtherWatchers, HandWhatTheyFindToTheSharedOne) {
  folder(apps + "/A.app");
  folder(trash + "/B.app");
  const auto application = WatchApplication::init();
  const auto trashWatch = WatchTrash::init();
  application->startWatch(&stop);
  trashWatch->startWatch(&stop);
  EXPECT_TRUE(trashWatch->currApps().empty());
  EXPECT_EQ(WatchTrash::singleton()->currApps(), Paths{trash + "/B.app"});
}

TEST_F(FurtherWatchers, ThatAreGoneHearNoMoreEvents) {
  ports.browsers->settings["com.google.Chrome.plist"] = {downloads};
  auto own = WatchDownload::init();
  own->startWatch(&stop);
  ports.browsers->asked.clear();
  events.happen(preferences, fileWritten);
  own.reset();
  settle();
  EXPECT_TRUE(ports.browsers->asked.empty());
  EXPECT_TRUE(watched().empty());
}

}  // namespace
}  // namespace vantile::testing
