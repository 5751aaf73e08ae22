#include "vantile/platform/macos/standard_folders.h"

#include <stdlib.h>

#include <optional>

#include "seam.h"
#include "temporary_folder.h"

namespace vantile {
namespace {

class StandardFoldersSeam : public Seam {
 protected:
  StandardFoldersSeam() {
    if (const char* const home = ::getenv("HOME")) homeBefore_ = home;
  }
  void TearDown() override {
    if (homeBefore_) {
      ::setenv("HOME", homeBefore_->c_str(), 1);
    } else {
      ::unsetenv("HOME");
    }
    Seam::TearDown();
  }

 private:
  std::optional<std::string> homeBefore_;
};

TEST_F(StandardFoldersSeam, StandWhereTheSystemHasThem) {
  const auto folders = makeStandardFolders();
  EXPECT_EQ(folders->home(), "/Users/ada");
  EXPECT_EQ(folders->downloads(), "/Users/ada/Downloads");
  EXPECT_EQ(folders->library(), "/Users/ada/Library");
  EXPECT_EQ(folders->preferences(), "/Users/ada/Library/Preferences");
  EXPECT_EQ(folders->applications(), "/Applications");
  EXPECT_EQ(folders->trash(), "/Users/ada/.Trash");
}

TEST_F(StandardFoldersSeam, LeaveItToTheSystemToMakeTheTrash) {
  const TemporaryFolder home;
  fakes::machine.accountHome = home.path().string();
  makeStandardFolders()->makeTrash();
  EXPECT_TRUE(std::filesystem::is_empty(home.path()));
}

TEST_F(StandardFoldersSeam, EndWithoutASlash) {
  fakes::machine.accountHome = "/Users/ada//";
  EXPECT_EQ(makeStandardFolders()->home(), "/Users/ada");
}

TEST_F(StandardFoldersSeam, MakeRoomForALongAccount) {
  fakes::machine.accountBytes = 100'000;
  EXPECT_EQ(makeStandardFolders()->home(), "/Users/ada");
}

TEST_F(StandardFoldersSeam, GiveUpOnAnEndlessAccount) {
  ::setenv("HOME", "/home/of/environment", 1);
  fakes::machine.accountBytes = std::size_t{1} << 40;
  EXPECT_EQ(makeStandardFolders()->home(), "/home/of/environment");
}

TEST_F(StandardFoldersSeam, TakeTheEnvironmentWhereTheAccountHasNoHome) {
  ::setenv("HOME", "/home/of/environment/", 1);
  fakes::machine.accountHome = std::nullopt;
  EXPECT_EQ(makeStandardFolders()->home(), "/home/of/environment");
  fakes::machine.accountHome = "";
  EXPECT_EQ(makeStandardFolders()->home(), "/home/of/environment");
}

TEST_F(StandardFoldersSeam, StandAtTheRootWhereNothingElseIsKnown) {
  ::setenv("HOME", "relative", 1);
  fakes::machine.accountHome = std::nullopt;
  EXPECT_EQ(makeStandardFolders()->home(), "/");
  EXPECT_EQ(makeStandardFolders()->trash(), "/.Trash");
  ::unsetenv("HOME");
  EXPECT_EQ(makeStandardFolders()->home(), "/");
}

}  // namespace
}  // namespace vantile
