#include <gtest/gtest.h>

#include <map>

#include "vantile/platform/linux/standard_folders.h"

#include "fakes/temporary_folder.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;
using testing::TemporaryFolder;

struct XdgFoldersTest : ::testing::Test {
  XdgFolders in(const std::string& home) {
    return XdgFolders(home, [this](const char* name) {
      const auto found = environment.find(name);
      return found == environment.end() ? std::nullopt : std::optional(found->second);
    });
  }
  XdgFolders folders() { return in(folder.path()); }

  TemporaryFolder folder;
  std::map<std::string, std::string> environment;
};

TEST_F(XdgFoldersTest, WithoutSettingsAreTheConventionalOnes) {
  auto known = folders();
  EXPECT_EQ(known.home(), folder.path());
  EXPECT_EQ(known.downloads(), folder.path("Downloads"));
  EXPECT_EQ(known.library(), folder.path(".local/share"));
  EXPECT_EQ(known.preferences(), folder.path(".config"));
  EXPECT_EQ(known.trash(), folder.path(".local/share/Trash/files"));
  EXPECT_EQ(known.applications(), "/usr/share/applications");
}

TEST_F(XdgFoldersTest, TheHomeHasNoSlashAtItsEnd) {
  EXPECT_EQ(in("/home/ada//").home(), "/home/ada");
  EXPECT_EQ(in("/home/ada/").library(), "/home/ada/.local/share");
}

TEST_F(XdgFoldersTest, AHomeThatIsTheRootGivesNoDoubleSlash) {
  EXPECT_EQ(in("/").home(), "/");
  EXPECT_EQ(in("/").preferences(), "/.config");
}

TEST_F(XdgFoldersTest, TheEnvironmentNamesTheBaseFolders) {
  environment = {{"XDG_DATA_HOME", "/data/"}, {"XDG_CONFIG_HOME", "/config"}};
  EXPECT_EQ(folders().library(), "/data");
  EXPECT_EQ(folders().trash(), "/data/Trash/files");
  EXPECT_EQ(folders().preferences(), "/config");
}

TEST_F(XdgFoldersTest, ABaseFolderThatIsTheRootGivesNoDoubleSlash) {
  environment = {{"XDG_DATA_HOME", "/"}};
  EXPECT_EQ(folders().library(), "/");
  EXPECT_EQ(folders().trash(), "/Trash/files");
}

TEST_F(XdgFoldersTest, RelativeAndEmptyBaseFoldersAreIgnored) {
  environment = {{"XDG_DATA_HOME", "data"}, {"XDG_CONFIG_HOME", ""}};
  EXPECT_EQ(folders().library(), folder.path(".local/share"));
  EXPECT_EQ(folders().preferences(), folder.path(".config"));
}

TEST_F(XdgFoldersTest, TheUsersFileNamesTheDownloads) {
  folder.file(".config/user-dirs.dirs", fixture("user-dirs.dirs"));
  EXPECT_EQ(folders().downloads(), folder.path("Transfers \"big\" $5"));
}

TEST_F(XdgFoldersTest, TheUsersFileStandsInTheFolderOfTheSettings) {
  environment["XDG_CONFIG_HOME"] = folder.path("elsewhere");
  folder.file(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"/not/here\"\n");
  folder.file("elsewhere/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"/here\"\n");
  EXPECT_EQ(folders().downloads(), "/here");
}

TEST_F(XdgFoldersTest, AUsersFileThatNamesNoDownloadsLeavesTheConventionalOnes) {
  folder.file(".config/user-dirs.dirs", "XDG_MUSIC_DIR=\"/m\"\nXDG_DOWNLOAD_DIR=\"relative\"\n");
  EXPECT_EQ(folders().downloads(), folder.path("Downloads"));
}

TEST_F(XdgFoldersTest, ChangesAreSeenAtTheNextQuestion) {
  auto known = folders();
  EXPECT_EQ(known.downloads(), folder.path("Downloads"));
  folder.file(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"$HOME/New\"\n");
  EXPECT_EQ(known.downloads(), folder.path("New"));
  environment["XDG_DATA_HOME"] = "/data";
  EXPECT_EQ(known.library(), "/data");
}

TEST_F(XdgFoldersTest, OfThisProcessAreAbsoluteWithoutASlashAtTheEnd) {
  const auto known = systemStandardFolders();
  for (const auto& path : {known->home(), known->downloads(), known->library(),
                           known->preferences(), known->applications(), known->trash()}) {
    EXPECT_TRUE(path.starts_with('/')) << path;
    EXPECT_TRUE(path.size() == 1 || !path.ends_with('/')) << path;
  }
}

}  // namespace
}  // namespace vantile
