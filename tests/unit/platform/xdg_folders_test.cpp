#include <gtest/gtest.h>
#include <sys/stat.h>

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
  EXPECT_EQ(known.caches(), folder.path(".cache"));
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
  environment = {
      {"XDG_DATA_HOME", "/data/"}, {"XDG_CONFIG_HOME", "/config"}, {"XDG_CACHE_HOME", "/caches"}};
  EXPECT_EQ(folders().library(), "/data");
  EXPECT_EQ(folders().trash(), "/data/Trash/files");
  EXPECT_EQ(folders().preferences(), "/config");
  EXPECT_EQ(folders().caches(), "/caches");
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

TEST_F(XdgFoldersTest, TheUsersFileNamesTheDesktop) {
  EXPECT_EQ(folders().desktop(), folder.path("Desktop"));
  folder.file(".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Top\"\n");
  EXPECT_EQ(folders().desktop(), folder.path("Top"));
}

/// While it lives, new files and folders get no other bits than the umask leaves them.
class Umask {
 public:
  explicit Umask(mode_t mask) : before_(::umask(mask)) {}
  ~Umask() { ::umask(before_); }
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;

 private:
  const mode_t before_;
};

unsigned modeOf(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

TEST_F(XdgFoldersTest, TheTrashIsMadeForTheUserAloneWhateverTheUmask) {
  for (const mode_t mask : {0u, 022u, 0777u}) {
    const Umask during(mask);
    folders().makeTrash();
    for (const auto* made : {".local", ".local/share", ".local/share/Trash",
                             ".local/share/Trash/files", ".local/share/Trash/info"})
      EXPECT_EQ(modeOf(folder.path(made)), S_IFDIR | 0700u) << made << " " << mask;
    folder.remove(".local");
  }
}

TEST_F(XdgFoldersTest, FoldersThatLeadToTheTrashStayAsTheyAre) {
  folder.folder(".local/share/Trash/info");
  ASSERT_EQ(::chmod(folder.path(".local/share").c_str(), 0755), 0);
  ASSERT_EQ(::chmod(folder.path(".local/share/Trash/info").c_str(), 0750), 0);
  folders().makeTrash();
  EXPECT_EQ(modeOf(folder.path(".local/share")), S_IFDIR | 0755u);
  EXPECT_EQ(modeOf(folder.path(".local/share/Trash/info")), S_IFDIR | 0750u);
  EXPECT_EQ(modeOf(folder.path(".local/share/Trash/files")), S_IFDIR | 0700u);
}

TEST_F(XdgFoldersTest, ATrashThatCantBeMadeIsLeft) {
  folder.file(".local");
  folders().makeTrash();
  EXPECT_EQ(modeOf(folder.path(".local")) & S_IFMT, unsigned{S_IFREG});
}

TEST_F(XdgFoldersTest, TheTrashIsMadeWhereTheEnvironmentSays) {
  environment["XDG_DATA_HOME"] = folder.path("data//");
  folders().makeTrash();
  EXPECT_EQ(modeOf(folder.path("data/Trash/files")), S_IFDIR | 0700u);
  EXPECT_EQ(modeOf(folder.path(".local")), 0u);
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
