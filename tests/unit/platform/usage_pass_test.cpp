#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "unit/platform/usage_pass_fixture.h"

namespace vantile {
namespace {

using testing::UsagePassTest;

TEST_F(UsagePassTest, FilesCountByTheirKindInBytesOnTheDisk) {
  tree.file("films/a.mkv", contents(100));
  tree.file("films/notes.txt", contents(100));
  tree.file("music/deep/b.flac", contents(20));
  tree.file("c.jpg", contents(3));
  run();
  EXPECT_EQ(counted(), sums(0, bytes("films/a.mkv"), bytes("music/deep/b.flac"), bytes("c.jpg")));
}

TEST_F(UsagePassTest, AHoleTakesNoSpace) {
  tree.file("a.mkv");
  std::filesystem::resize_file(tree.path("a.mkv"), 100 << 20);
  run();
  EXPECT_EQ(counted(), sums(0, bytes("a.mkv"), 0, 0));
}

TEST_F(UsagePassTest, WhatIsInstalledIsAnApplicationWhateverItsName) {
  tree.file("usr/share/a.mkv", contents(10));
  tree.file("usr/bin/program", contents(20));
  tree.file("usr-local/b.mkv", contents(30));
  tree.file("program", contents(40));
  run();
  EXPECT_EQ(counted(), sums(bytes("usr/share/a.mkv") + bytes("usr/bin/program"),
                            bytes("usr-local/b.mkv"), 0, 0));
}

TEST_F(UsagePassTest, WhatIsInstalledIsFoundWhereTheMountPointEndsInASlash) {
  tree.file("usr/share/a.mkv", contents(10));  // as at "/"
  tree.file("b.mkv", contents(30));
  UsagePass slashed(index, tree.path() + "/", {&installed, &kinds});
  EXPECT_EQ(slashed.run(all, never), UsagePass::Came::toTheEnd);
  EXPECT_EQ(counted(), sums(bytes("usr/share/a.mkv"), bytes("b.mkv"), 0, 0));
}

TEST_F(UsagePassTest, AVolumeMayBeInstalledAsAWhole) {
  installed = InstalledFolders({tree.path()});
  tree.file("program", contents(40));
  run();
  EXPECT_EQ(counted(), sums(bytes("program"), 0, 0, 0));
}

TEST_F(UsagePassTest, AFileOfSeveralNamesCountsOnce) {
  tree.file("a.mkv", contents(100));
  tree.folder("other");
  tree.hardLink("a.mkv", "other/b.mkv");
  tree.hardLink("a.mkv", "c.mkv");
  run();
  EXPECT_EQ(counted(), sums(0, bytes("a.mkv"), 0, 0));
  tree.remove("c.mkv");
  tree.remove("a.mkv");
  run();
  EXPECT_EQ(counted(), sums(0, bytes("other/b.mkv"), 0, 0));
}

TEST_F(UsagePassTest, LinksAreNotFollowed) {
  testing::TemporaryFolder elsewhere;
  elsewhere.file("films/a.mkv", contents(100));
  tree.symbolicLink("films", elsewhere.path("films"));
  tree.symbolicLink("b.mkv", elsewhere.path("films/a.mkv"));
  tree.symbolicLink("around", tree.path());
  EXPECT_EQ(run(), 1u);
  EXPECT_EQ(counted(), sums(0, 0, 0, 0));
}

TEST_F(UsagePassTest, WhatIsNoRegularFileDoesNotCount) {
  ASSERT_EQ(::mkfifo(tree.path("pipe.mkv").c_str(), 0600), 0);
  tree.folder("folder.mkv");
  run();
  EXPECT_EQ(counted(), sums(0, 0, 0, 0));
}

TEST_F(UsagePassTest, NamesAreBytes) {
  tree.file("\xFF\xFE/\xFF.jpg", contents(10));
  tree.file("a\nb/c\t.jpg", contents(10));
  run();
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("\xFF\xFE/\xFF.jpg") + bytes("a\nb/c\t.jpg")));
}

TEST_F(UsagePassTest, FoldersThatDidNotChangeAreNotListedAgain) {
  tree.file("a/b/c.jpg", contents(1));
  tree.file("d/e.jpg", contents(1));
  EXPECT_EQ(run(), 4u);
  EXPECT_EQ(run(), 0u);
}

TEST_F(UsagePassTest, AFileThatGrewIsSeenWithoutAListing) {
  tree.file("a/b.jpg", contents(1));
  run();
  tree.file("a/b.jpg", contents(500));
  EXPECT_EQ(run(), 0u);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg")));
}

TEST_F(UsagePassTest, AFileThatIsAddedOrRemovedCostsTheListingOfItsFolder) {
  tree.file("a/b.jpg", contents(1));
  tree.file("c/d.jpg", contents(10));
  run();
  tree.file("a/new.jpg", contents(7));
  EXPECT_EQ(run(), 1u);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg") + bytes("c/d.jpg") + bytes("a/new.jpg")));
  tree.remove("c/d.jpg");
  EXPECT_EQ(run(), 1u);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg") + bytes("a/new.jpg")));
}

TEST_F(UsagePassTest, AFolderWhoseTimeWasSetBackIsListed) {
  tree.file("a/b.jpg", contents(1));
  const auto before = std::filesystem::last_write_time(tree.path("a"));
  run();
  tree.file("a/c.jpg", contents(1));
  std::filesystem::last_write_time(tree.path("a"), before);
  run();
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg") + bytes("a/c.jpg")));
}

TEST_F(UsagePassTest, AFolderThatWasJustChangedIsListedAgain) {
  second = presentSecond;
  tree.file("a.jpg", contents(1));
  EXPECT_EQ(run(), 1u);
  EXPECT_EQ(run(), 1u);
}

TEST_F(UsagePassTest, AClockThatWentBackHarmsNothing) {
  second = [] { return presentSecond() - 100000; };
  tree.file("a.jpg", contents(1));
  EXPECT_EQ(run(), 1u);
  EXPECT_EQ(run(), 0u);
  tree.file("b.jpg", contents(1));
  EXPECT_EQ(run(), 1u);
}

TEST_F(UsagePassTest, FoldersComeGoAndMoveWithAllBelowThem) {
  tree.file("a/b/c.jpg", contents(1));
  tree.file("d/e/f.jpg", contents(10));
  run();
  tree.remove("a");
  std::filesystem::rename(tree.path("d"), tree.path("g"));
  run();
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("g/e/f.jpg")));
  EXPECT_EQ(index.size(), 3u);
}

TEST_F(UsagePassTest, AFolderThatIsReplacedByALinkIsGone) {
  testing::TemporaryFolder elsewhere;
  elsewhere.file("b.jpg", contents(1));
  tree.file("a/b.jpg", contents(1));
  run();
  tree.remove("a");
  tree.symbolicLink("a", elsewhere.path());
  run();
  EXPECT_EQ(counted(), sums(0, 0, 0, 0));
}

TEST_F(UsagePassTest, AVolumeThatIsNotThereIsNowhere) {
  EXPECT_EQ(UsagePass(index, tree.path("missing"), {&installed, &kinds}).run(all, never),
            UsagePass::Came::nowhere);
  tree.file("a/b.jpg", contents(1));
  auto parts = pass();
  EXPECT_EQ(parts.run(1, never), UsagePass::Came::some);
  const auto moved = tree.path() + "-moved";
  std::filesystem::rename(tree.path(), moved);
  std::filesystem::create_directory(tree.path());
  EXPECT_EQ(parts.run(all, never), UsagePass::Came::nowhere);
  std::filesystem::remove_all(moved);
}

/// Root may open any folder, so it is somebody else meanwhile.
class AsNobody {
 public:
  AsNobody() { EXPECT_EQ(wasRoot_ ? ::seteuid(65534) : 0, 0); }
  ~AsNobody() { EXPECT_EQ(wasRoot_ ? ::seteuid(0) : 0, 0); }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;

 private:
  const bool wasRoot_ = ::geteuid() == 0;
};

TEST_F(UsagePassTest, AFolderThatIsClosedToUsCountsNothing) {
  using std::filesystem::perms;
  tree.file("a/below/b.jpg", contents(1));
  tree.file("c.jpg", contents(1));
  std::filesystem::permissions(tree.path(), perms::all);
  run();
  std::filesystem::permissions(tree.path("a"), perms::none);
  {
    const AsNobody nobody;
    run();
  }
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("c.jpg")));
  std::filesystem::permissions(tree.path("a"), perms::owner_all);
  run();
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/below/b.jpg") + bytes("c.jpg")));
}

TEST_F(UsagePassTest, VeryDeepTreesTakeFewDescriptors) {
  constexpr int depth = 1500;  // far beyond the longest path that the kernel takes
  int folder = ::open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int level = 0; level < depth; ++level) {
    ASSERT_EQ(::mkdirat(folder, "dd", 0700), 0);
    const int below = ::openat(folder, "dd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::close(folder);
    folder = below;
  }
  ::close(::openat(folder, "a.jpg", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  ::close(folder);
  const auto before = testing::openDescriptors();
  std::size_t most = 0, looks = 0;
  auto deep = pass();
  EXPECT_EQ(deep.run(all,
                     [&] {
                       if (++looks % 100 == 0) most = std::max(most, testing::openDescriptors());
                       return false;
                     }),
            UsagePass::Came::toTheEnd);
  EXPECT_EQ(deep.listed(), depth + 1u);
  EXPECT_LE(most, before + 40);
  EXPECT_EQ(run(), 0u);
  auto parts = pass();
  std::size_t count = 0;
  while (parts.run(250, never) == UsagePass::Came::some) ++count;
  EXPECT_EQ(parts.asked(), depth + 1u);
  EXPECT_GE(count, 5u);
}

TEST(ShowsChanges, ATimeThatIsSettledDoes) {
  struct statx status = {};
  status.stx_mtime.tv_sec = status.stx_ctime.tv_sec = 1700000000;
  EXPECT_TRUE(showsChanges(status, 1700000003));
  EXPECT_FALSE(showsChanges(status, 1700000002));
  EXPECT_TRUE(showsChanges(status, 1600000000));
  status.stx_mtime.tv_sec = 1;
  EXPECT_FALSE(showsChanges(status, 1700000002));
  EXPECT_TRUE(showsChanges(status, 1700000003));
}

TEST(ShowsChanges, AFolderThatKeepsNoTimeDoesNot) {
  struct statx status = {};
  EXPECT_FALSE(showsChanges(status, 1700000000));
  status.stx_mtime.tv_sec = status.stx_ctime.tv_sec = 315532800;
  EXPECT_FALSE(showsChanges(status, 1700000000));
}

}  // namespace
}  // namespace vantile
