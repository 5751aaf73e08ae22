// Applications of the system's own are known by their names and never reported.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "unit/watchers/application_fixture.h"

namespace vantile::testing {
namespace {

using SystemApplications = Applications;

TEST_F(SystemApplications, AreNotReported) {
  systemHas({"Mail", "Maps"});
  started();
  install("/Mail.app");
  install("/Maps.app");
  install("/Other.app");
  EXPECT_EQ(added, Paths{apps + "/Other.app"});
}

TEST_F(SystemApplications, AreComparedWithoutCase) {
  systemHas({"MAIL", "maps"});
  started();
  install("/mAil.app");
  install("/MAPS.app");
  EXPECT_TRUE(added.empty());
}

TEST_F(SystemApplications, AreComparedWithTheirDiacritics) {
  systemHas({"cafe"});
  started();
  install("/caf\u00e9.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(SystemApplications, AreKnownByTheWholeName) {
  systemHas({"Mail"});
  started();
  install("/Mailer.app");
  install("/My Mail.app");
  EXPECT_EQ(added.size(), 2u);
}

TEST_F(SystemApplications, AreKnownByTheNameThatUsersSee) {
  systemHas({"Post"});
  utility.applications->names[apps + "/Mail.app"] = "Post";
  started();
  install("/Mail.app");
  EXPECT_TRUE(added.empty());
}

TEST_F(SystemApplications, AreKnownByThatNameWithoutItsExtension) {
  systemHas({"post"});
  utility.applications->names[apps + "/Mail.app"] = "Post.app";
  started();
  install("/Mail.app");
  EXPECT_TRUE(added.empty());
}

TEST_F(SystemApplications, AreNotKnownByTheFilesNameWhereUsersSeeAnother) {
  systemHas({"Mail"});
  utility.applications->names[apps + "/Mail.app"] = "Post";
  started();
  install("/Mail.app");
  EXPECT_EQ(added, Paths{apps + "/Mail.app"});
}

TEST_F(SystemApplications, AreKnownByTheFilesNameWhereUsersSeeAnEmptyOne) {
  systemHas({"Mail"});
  utility.applications->names[apps + "/Mail.app"] = "";
  started();
  install("/Mail.app");
  EXPECT_TRUE(added.empty());
}

TEST_F(SystemApplications, LoseTheExtensionOfTheFilesNameAndOneMore) {
  systemHas({"Mail"});
  started();
  install("/Mail.beta.app");
  EXPECT_TRUE(added.empty());
}

TEST_F(SystemApplications, AreListedByTheirWholeNames) {
  systemHas({"Mail.app"});  // compared with a name that has lost its extension
  started();
  install("/Mail.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(SystemApplications, AreListedByTheValuesAlone) {
  systemHas({"Mail"});
  started();
  install("/key 0.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(SystemApplications, OfAnotherKindThanTextAreNone) {
  systemHas({7, true, Value(std::shared_ptr<Array>()), "Mail"});
  started();
  install("/7.app");
  install("/Mail.app");
  EXPECT_EQ(added, Paths{apps + "/7.app"});
}

TEST_F(SystemApplications, AreNoneWhereTheHostListsNone) {
  started();
  install("/Mail.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(SystemApplications, AreNoneWhereTheListCantBeRead) {
  ports.resources->paths[{"SystemApplication", "plist"}] = "/host/unreadable";
  started();
  install("/Mail.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(SystemApplications, AreListedInTheResourceOfThatNameAndType) {
  systemHas({"Mail"});
  const auto path = ports.resources->paths.begin()->second;
  ports.resources->paths = {{{"SystemApplications", "plist"}, path},
                            {{"SystemApplication", "xml"}, path}};
  started();
  install("/Mail.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(SystemApplications, AreListedInTheFolderThatTheHostSets) {
  setHostResourceFolder("/host/resources");
  setHostResourceFolder(std::nullopt);
  EXPECT_EQ(ports.resources->folders,
            (std::vector<std::optional<std::string>>{"/host/resources", std::nullopt}));
}

TEST_F(SystemApplications, AreReadOnceWhenTheWatcherIsMade) {
  const auto early = watcher();
  systemHas({"Mail"});
  started();
  install("/Mail.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(SystemApplications, CountAsGoneOnceTheyAreNotRecorded) {
  systemHas({"Post"});
  utility.applications->names[apps + "/Mail.app"] = "Mail";
  started();
  install("/Mail.app");
  ASSERT_EQ(takeAdded().size(), 1u);
  utility.applications->names[apps + "/Mail.app"] = "Post";
  written(apps);
  utility.applications->names[apps + "/Mail.app"] = "Mail";
  written(apps);
  EXPECT_EQ(added, Paths{apps + "/Mail.app"});
}

TEST_F(SystemApplications, MayStillBeMovedToTheTrashWithAReport) {
  systemHas({"Mail"});
  const auto other = FSWatchQueue::init();
  started()->WatchQueueRemoveToTrashForPath(*other, trash + "/Mail.app", apps + "/Mail.app");
  EXPECT_EQ(trashed, Paths{trash + "/Mail.app"});
}

TEST_F(SystemApplications, WithNamesThatAreNotUTF8AreCompared) {
  systemHas({"\xFFMail"});
  started();
  install("/\xFFmail.app");
  install("/\xFEmail.app");
  EXPECT_EQ(added, Paths{apps + "/\xFEmail.app"});
}

}  // namespace
}  // namespace vantile::testing
