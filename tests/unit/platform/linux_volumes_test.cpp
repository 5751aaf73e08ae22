#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <map>
#include <string>
#include <thread>

#include "vantile/platform/linux/volumes.h"

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using Paths = std::vector<std::string>;

using namespace std::chrono_literals;

const Volumes::Types types = {"ext4", "vfat", "fuseblk"};

/// Bodies that run at once, or never.
class SomeThreads final : public Threads {
 public:
  bool detach(const char*, std::function<void()> body) override {
    ++asked;
    if (before) before();
    if (!dead) body();
    return true;
  }

  std::function<void()> before;
  bool dead = false;
  int asked = 0;
};

struct LinuxVolumesTest : ::testing::Test {
  LinuxVolumesTest() {
    LinuxVolumes::Means means;
    means.changed = [this](KeptFile&) { return std::exchange(changed, false); };
    means.figures = [this](const std::string& mountPoint) -> std::optional<VolumeFigures> {
      asked.push_back(mountPoint);
      if (onFigures) onFigures();
      const auto found = figures.find(mountPoint);
      return found == figures.end() ? std::nullopt : std::optional(found->second);
    };
    means.label = [this](const MountedVolume& volume) {
      ++labelsAsked;
      if (onFacts) onFacts();
      return labels[volume.mount.mountPoint];
    };
    means.icon = [this](const std::string& mountPoint) {
      ++iconsAsked;
      if (onFacts) onFacts();
      return icons[mountPoint];
    };
    means.identity = [this](const MountedVolume& volume) {
      ++identitiesAsked;
      if (onFacts) onFacts();
      return identities[volume.mount.mountPoint];
    };
    means.computerName = [this] { return computerName; };
    means.now = [this] { return now; };
    means.threads = threads;
    means.patience = 0ms;
    volumes = std::make_unique<LinuxVolumes>(LinuxRoots{.proc = folder.path()}, std::move(means));
  }

  void table(std::string_view lines) {
    folder.file("self/mountinfo", lines);
    changed = true;
  }

  Paths told() {
    Paths paths;
    for (const auto& mount : volumes->mounts(types)) paths.push_back(mount.mountPoint);
    return paths;
  }

  const testing::TemporaryFolder folder;
  const std::shared_ptr<SomeThreads> threads = std::make_shared<SomeThreads>();
  bool changed = false;
  std::map<std::string, VolumeFigures> figures = {{"/", {4096, 100, 40}}, {"/a", {512, 10, 5}}};
  Paths asked;
  std::function<void()> onFigures, onFacts;  ///< while somebody is asked
  std::map<std::string, std::optional<std::string>> labels;
  std::map<std::string, std::shared_ptr<const Image>> icons;
  std::map<std::string, std::string> identities;
  std::optional<std::string> computerName = "Ada's computer";
  std::chrono::steady_clock::time_point now;
  int labelsAsked = 0, iconsAsked = 0, identitiesAsked = 0;
  std::unique_ptr<LinuxVolumes> volumes;
};

constexpr const char* rootAndStick =
    "1 0 8:1 / / rw - ext4 /dev/a rw\n"
    "2 1 8:2 / /a rw - vfat /dev/b rw\n"
    "3 1 0:5 / /tmp rw - tmpfs tmpfs rw\n";

TEST_F(LinuxVolumesTest, TellOfTheTableWithFigures) {
  table(rootAndStick);
  const auto mounts = volumes->mounts(types);
  ASSERT_EQ(mounts.size(), 2u);
  EXPECT_EQ(mounts[1].type, "vfat");
  EXPECT_EQ(mounts[1].device, "/dev/b");
  EXPECT_EQ(mounts[1].mountPoint, "/a");
  EXPECT_EQ(mounts[1].blockSize, 512u);
  EXPECT_EQ(mounts[1].totalBlocks, 10u);
  EXPECT_EQ(mounts[1].availableBlocks, 5u);
  EXPECT_EQ(mounts[0].blockSize, 4096u);
}

TEST_F(LinuxVolumesTest, OthersAreNotEvenAsked) {
  table(rootAndStick);
  told();
  EXPECT_EQ(asked, (Paths{"/", "/a"}));
}

TEST_F(LinuxVolumesTest, ReadTheTableAgainOnlyWhenItChanged) {
  table(rootAndStick);
  told();
  folder.file("self/mountinfo", "1 0 8:1 / / rw - ext4 /dev/a rw\n");
  EXPECT_EQ(told(), (Paths{"/", "/a"}));
  changed = true;
  EXPECT_EQ(told(), Paths{"/"});
}

TEST_F(LinuxVolumesTest, ReadTheTableAgainForOtherTypes) {
  table(rootAndStick);
  told();
  EXPECT_EQ(volumes->localPaths({"vfat"}), Paths{"/a"});
  EXPECT_EQ(told(), (Paths{"/", "/a"}));
}

TEST_F(LinuxVolumesTest, ATableThatCantBeReadIsEmptyAndTriedAgain) {
  changed = true;
  EXPECT_TRUE(told().empty());
  table(rootAndStick);
  changed = false;
  EXPECT_EQ(told(), (Paths{"/", "/a"}));
}

TEST_F(LinuxVolumesTest, OneThatCantBeReachedIsLeftOut) {
  table(rootAndStick);
  figures.erase("/a");
  EXPECT_EQ(told(), Paths{"/"});
  figures["/a"] = {512, 10, 5};
  EXPECT_EQ(told(), (Paths{"/", "/a"}));
}

TEST_F(LinuxVolumesTest, ThoseThatMayHangAreAskedOnThreadsOfTheirOwn) {
  table("1 0 8:1 / / rw - ext4 /dev/a rw\n2 1 8:2 / /a rw - fuseblk /dev/b rw\n");
  EXPECT_EQ(told(), (Paths{"/", "/a"}));
  EXPECT_EQ(threads->asked, 1);
}

TEST_F(LinuxVolumesTest, EachHasItsOwnFiguresWhereSomeMayHang) {
  table(
      "1 0 8:1 / / rw - ext4 /dev/a rw\n"
      "2 1 8:2 / /a rw - fuseblk /dev/b rw\n"
      "3 1 8:3 / /b rw - vfat /dev/c rw\n");
  figures["/b"] = {1, 2, 3};
  const auto mounts = volumes->mounts(types);
  ASSERT_EQ(mounts.size(), 3u);
  EXPECT_EQ(mounts[0].blockSize, 4096u);
  EXPECT_EQ(mounts[1].blockSize, 512u);
  EXPECT_EQ(mounts[2].blockSize, 1u);
}

TEST_F(LinuxVolumesTest, ADeadOneIsLeftOutUntilItHasFiguresAndKeepsThemThen) {
  table("1 0 8:1 / / rw - ext4 /dev/a rw\n2 1 8:2 / /a rw - fuseblk /dev/b rw\n");
  threads->dead = true;
  EXPECT_EQ(told(), Paths{"/"});
  identities["/a"] = "another";
  changed = true;
  threads->dead = false;
  EXPECT_EQ(told(), (Paths{"/", "/a"}));
  threads->dead = true;
  EXPECT_EQ(told(), (Paths{"/", "/a"}));
}

TEST_F(LinuxVolumesTest, AreCalledByTheirLabels) {
  table(rootAndStick);
  labels["/"] = "System";
  labels["/a"] = "M\xC3\xBCll";
  told();
  EXPECT_EQ(volumes->name("/"), "System");
  EXPECT_EQ(volumes->name("/a"), "M\xC3\xBCll");
}

TEST_F(LinuxVolumesTest, WithoutALabelAreCalledByTheLastPartOfTheirPath) {
  table("1 0 8:1 / /media/ada/My\\040Disk rw - ext4 /dev/a rw\n");
  told();
  EXPECT_EQ(volumes->name("/media/ada/My Disk"), "My Disk");
}

TEST_F(LinuxVolumesTest, TheRootWithoutALabelIsCalledAsTheComputer) {
  table(rootAndStick);
  told();
  EXPECT_EQ(volumes->name("/"), "Ada's computer");
}

TEST_F(LinuxVolumesTest, TheRootOfANamelessComputerIsCalledByItsPath) {
  table(rootAndStick);
  computerName.reset();
  told();
  EXPECT_EQ(volumes->name("/"), "/");
}

TEST_F(LinuxVolumesTest, WhatIsNoVolumeHasNeitherNameNorPicture) {
  table(rootAndStick);
  told();
  EXPECT_EQ(volumes->name("/tmp"), std::nullopt);
  EXPECT_EQ(volumes->icon("/tmp"), nullptr);
}

TEST_F(LinuxVolumesTest, NamesAndPicturesAreAskedAgainOnlyWhenTheTableChanged) {
  table(rootAndStick);
  labels["/"] = "System";
  const auto picture = std::make_shared<const Image>(Image{"drive-harddisk", "", nullptr});
  icons["/"] = picture;
  for (int round = 0; round < 3; ++round) {
    told();
    EXPECT_EQ(volumes->icon("/"), picture);
    EXPECT_EQ(volumes->icon("/a"), nullptr);
    volumes->name("/");
  }
  EXPECT_EQ(labelsAsked, 1);
  EXPECT_EQ(iconsAsked, 2);
  changed = true;
  told();
  volumes->icon("/");
  volumes->name("/");
  EXPECT_EQ(labelsAsked, 2);
  EXPECT_EQ(iconsAsked, 3);
}

TEST_F(LinuxVolumesTest, ALabelThatComesLateIsTheNameThen) {
  table(rootAndStick);
  told();
  EXPECT_EQ(volumes->name("/a"), "a");
  labels["/a"] = "Stick";
  now += 1s - 1ns;
  EXPECT_EQ(volumes->name("/a"), "a");
  now += 1ns;
  EXPECT_EQ(volumes->name("/a"), "Stick");
}

TEST_F(LinuxVolumesTest, ALabelIsAskedForAgainEverMoreSeldomAndInTheFirstMinuteOnly) {
  table(rootAndStick);
  told();
  std::vector<int> seconds;
  for (int second = 0; second < 600; ++second, now += 1s) {
    const int before = labelsAsked;
    volumes->name("/a");
    if (labelsAsked > before) seconds.push_back(second);
  }
  EXPECT_EQ(seconds, (std::vector<int>{0, 1, 3, 7, 15, 31, 63}));
}

TEST_F(LinuxVolumesTest, OneWithALabelIsNotAskedForItAgain) {
  labels["/a"] = "Stick";
  table(rootAndStick);
  told();
  for (int second = 0; second < 100; ++second, now += 1s) volumes->name("/a");
  EXPECT_EQ(labelsAsked, 1);
}

TEST_F(LinuxVolumesTest, AChangedTableHasEveryLabelAskedForAgain) {
  table(rootAndStick);
  told();
  volumes->name("/a");
  now += 1h;
  volumes->name("/a");
  const int before = labelsAsked;
  changed = true;
  told();
  labels["/a"] = "Stick";
  EXPECT_EQ(volumes->name("/a"), "Stick");
  EXPECT_EQ(labelsAsked, before + 1);
}

TEST_F(LinuxVolumesTest, AVolumeThatTookAnothersPlaceHasItsOwnNamePictureAndIdentity) {
  table(rootAndStick);
  labels["/a"] = "One";
  icons["/a"] = std::make_shared<const Image>(Image{"one", "", nullptr});
  identities["/a"] = "1";
  EXPECT_EQ(volumes->mounts(types)[1].identity, "1");
  volumes->name("/a");
  volumes->icon("/a");
  labels["/a"] = "Two";
  icons["/a"] = std::make_shared<const Image>(Image{"two", "", nullptr});
  identities["/a"] = "2";
  changed = true;  // though not a letter of the table did
  EXPECT_EQ(volumes->mounts(types)[1].identity, "2");
  EXPECT_EQ(volumes->name("/a"), "Two");
  EXPECT_EQ(volumes->icon("/a")->name, "two");
}

TEST_F(LinuxVolumesTest, IdentitiesAreAskedAgainOnlyWhenTheTableChanged) {
  table(rootAndStick);
  told();
  told();
  EXPECT_EQ(identitiesAsked, 2);
  changed = true;
  told();
  EXPECT_EQ(identitiesAsked, 4);
}

TEST_F(LinuxVolumesTest, ADeadOneThatTookAnothersPlaceDoesNotHaveItsFigures) {
  table("1 0 8:1 / / rw - ext4 /dev/a rw\n2 1 8:2 / /a rw - fuseblk /dev/b rw\n");
  identities["/a"] = "1";
  EXPECT_EQ(told(), (Paths{"/", "/a"}));
  threads->dead = true;
  identities["/a"] = "2";
  changed = true;
  EXPECT_EQ(told(), Paths{"/"});
}

/// While somebody is asked, does what others may: on a thread of its own, and not for ever.
struct LinuxVolumesMeanwhile : LinuxVolumesTest {
  ~LinuxVolumesMeanwhile() override {
    for (auto& other : others) other.join();
  }
  void letOthersIn() {
    if (HasFailure()) return;
    const auto done = std::make_shared<std::promise<void>>();
    others.emplace_back([this, done] {
      EXPECT_EQ(volumes->localPaths(types), (Paths{"/", "/a"}));
      EXPECT_TRUE(volumes->name("/"));
      volumes->space("/");
      done->set_value();
    });
    EXPECT_EQ(done->get_future().wait_for(10s), std::future_status::ready);
    ++letIn;
  }
  std::vector<std::thread> others;
  int letIn = 0;
};

TEST_F(LinuxVolumesMeanwhile, NobodyWaitsForAVolumesFigures) {
  table(rootAndStick);
  told();
  volumes->name("/");
  onFigures = [this] { letOthersIn(); };
  told();
  EXPECT_EQ(letIn, 2);
}

TEST_F(LinuxVolumesMeanwhile, NobodyWaitsForThoseThatMayHang) {
  table("1 0 8:1 / / rw - ext4 /dev/a rw\n2 1 8:2 / /a rw - fuseblk /dev/b rw\n");
  told();
  volumes->name("/");
  threads->before = [this] { letOthersIn(); };
  told();
  EXPECT_EQ(letIn, 1);
}

TEST_F(LinuxVolumesMeanwhile, NobodyWaitsForALabelAPictureOrAnIdentity) {
  table(rootAndStick);
  volumes->localPaths(types);
  volumes->name("/");
  onFacts = [this] { letOthersIn(); };
  told();
  EXPECT_EQ(letIn, 2);
  volumes->name("/a");
  EXPECT_EQ(letIn, 3);
  volumes->icon("/a");
  EXPECT_EQ(letIn, 4);
}

TEST_F(LinuxVolumesTest, LocalPathsAskNoVolume) {
  table(rootAndStick);
  EXPECT_EQ(volumes->localPaths(types), (Paths{"/", "/a"}));
  EXPECT_TRUE(asked.empty());
}

TEST_F(LinuxVolumesTest, SpaceIsThatOfTheFileSystemAroundAPath) {
  const auto space = volumes->space(folder.path());
  ASSERT_TRUE(space.size && space.free && space.nodes);
  EXPECT_LE(*space.free, *space.size);
  EXPECT_EQ(volumes->space(folder.path("missing")).size, std::nullopt);
}

TEST_F(LinuxVolumesTest, TheirOwnLocalTypesAreThoseOfDisksSticksAndDiscs) {
  EXPECT_EQ(volumes->localTypes(),
            (Volumes::Types{"ext2", "ext3", "ext4", "xfs", "btrfs", "f2fs", "jfs", "reiserfs",
                            "bcachefs", "zfs", "vfat", "ntfs3", "fuseblk", "iso9660", "hfsplus"}));
}

TEST(LinuxVolumesFile, AFileThatTellsOfNoChangesIsNotReadAgain) {
  const testing::TemporaryFolder folder;
  KeptFile file(folder.file("table", "one"));
  EXPECT_TRUE(file.changed());
  file.text();
  EXPECT_FALSE(file.changed());
}

}  // namespace
}  // namespace vantile
