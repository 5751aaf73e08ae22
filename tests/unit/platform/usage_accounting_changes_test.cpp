// Volumes that are swapped, let go of, stopped, or fail.

#include <sys/syscall.h>

#include <cerrno>

#include "unit/platform/refused_calls.h"
#include "unit/platform/usage_accounting_fixture.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::UsageAccountingTest;

TEST_F(UsageAccountingTest, AVolumeThatIsNotThereIsLookedForLater) {
  want({tree.path("missing")});
  EXPECT_EQ(work(), pace.period);
  EXPECT_TRUE(accounting->figures().empty());
  tree.file("missing/a.mkv", contents(10));
  later(pace.period);
  work();
  EXPECT_EQ(of(tree.path("missing")), sums(0, bytes("missing/a.mkv"), 0, 0));
}

TEST_F(UsageAccountingTest, AnotherVolumeInItsPlaceIsCountedAsSuch) {
  tree.file("first/a.mkv", contents(10));
  want({first});
  work();
  std::filesystem::rename(first, tree.path("moved"));
  tree.file("first/b.flac", contents(20));
  later(pace.period);
  work();
  EXPECT_EQ(of(first), sums(0, 0, bytes("first/b.flac"), 0));
  restart();
  want({first});
  turn();
  EXPECT_EQ(of(first), sums(0, 0, bytes("first/b.flac"), 0));  // kept as that volume's
}

TEST_F(UsageAccountingTest, AStopEndsTheWorkAtOnceAndLosesNothing) {
  makeFolders("first", 5);
  want({first});
  turn();
  stopped = true;
  EXPECT_EQ(turn(), 0ns);
  EXPECT_LE(accounting->listed(), 1u);
  EXPECT_TRUE(accounting->figures().empty());
  stopped = false;
  work();
  EXPECT_EQ(of(first)[3], 5 * bytes("first/f0/a.jpg"));
}

TEST_F(UsageAccountingTest, AVolumeSwappedBetweenPassesLosesTheOthersCountsAtOnce) {
  tree.file("first/a.mkv", contents(10));
  want({first});
  work();
  const auto expected = of(first);
  identifier = "5678-EF01";  // the same mount point, device and folder
  tree.remove("first/a.mkv");
  tree.file("first/b.flac", contents(20));
  accounting->lookAgain();
  EXPECT_EQ(turn(), 0ns);
  EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_EQ(of(first), sums(0, 0, bytes("first/b.flac"), 0));
  identifier = "1234-ABCD";
  tree.file("first/a.mkv", contents(10));
  tree.remove("first/b.flac");
  accounting->lookAgain();
  turn();
  turn();
  EXPECT_EQ(of(first), expected);  // what was kept of it
}

TEST_F(UsageAccountingTest, AVolumeSwappedWithinAPassIsCountedAnew) {
  makeFolders("first", 10);
  pace.firstBatch = 6;
  restart();
  want({first});
  turn();
  later(*turn());
  identifier = "5678-EF01";
  const auto listed = accounting->listed();
  EXPECT_GT(listed, 1u);
  work();
  EXPECT_EQ(accounting->listed(), listed + 11);
  EXPECT_EQ(of(first)[3], 10 * bytes("first/f0/a.jpg"));
}

TEST_F(UsageAccountingTest, WhatIsMountedAgainIsLookedForAtOnce) {
  want({tree.path("missing")});
  work();
  tree.file("missing/a.mkv", contents(10));
  accounting->lookAgain();
  work();
  EXPECT_TRUE(accounting->figures().contains(tree.path("missing")));
}

TEST_F(UsageAccountingTest, MountsElsewhereDoNotHastenAPass) {
  pace.batch = 2;
  restart();
  makeFolders("first", 10);
  want({first});
  work();
  later(pace.period);
  EXPECT_EQ(turn(), pace.leastRest);
  later(1s);
  accounting->lookAgain();
  EXPECT_EQ(turn(), 0ns);
  EXPECT_EQ(turn(), pace.leastRest - 1s);
}

TEST_F(UsageAccountingTest, AFirstPassLetsGoOfTheVolumeNowAndThen) {
  pace.firstBatch = 4;
  restart();
  makeFolders("first", 10);
  want({first});
  turn();
  EXPECT_EQ(turn(), pace.release);
  EXPECT_EQ(turn(), pace.release);  // nothing of it has gone by
  later(pace.release);
  EXPECT_EQ(turn(), pace.release);
  EXPECT_EQ(pace.release, 3 * pace.hold);
}

TEST_F(UsageAccountingTest, APartIsHeldForAsLongAsItMayBe) {
  for (int number = 0; number < 100; ++number)
    tree.file("first/" + std::to_string(number) + ".jpg", contents(1));
  pace.hold = 0ns;
  restart();
  want({first});
  turn();
  EXPECT_EQ(turn(), pace.release);
  EXPECT_TRUE(accounting->figures().empty());
}

TEST_F(UsageAccountingTest, TheRootIsNotLetGoOf) {
  pace.firstBatch = 1;
  restart();
  want({"/"});
  turn();
  EXPECT_EQ(turn(), 0ns);
  EXPECT_TRUE(accounting->figures().empty());
}

TEST_F(UsageAccountingTest, AStoppedWriteOfALargeRecordIsNotMadeUpForAtTheEndButLater) {
  makeLarge("first");
  want({first});
  turn();
  accounting->turn([this] { return std::filesystem::exists(caches.path("vantile")); });
  EXPECT_TRUE(accounting->figures().contains(first));
  stopped = true;
  EXPECT_EQ(kept(), 0u);
  EXPECT_EQ(turn(), 0ns);
  EXPECT_EQ(kept(), 0u);
  accounting->keepSmall();
  EXPECT_EQ(kept(), 0u);
  stopped = false;
  turn();
  EXPECT_GT(kept(), 1u << 20);
}

TEST_F(UsageAccountingTest, AStopEndsTheReadingOfARecordAndItIsReadLater) {
  makeLarge("first");
  want({first});
  work();
  restart();
  want({first});
  stopped = true;
  EXPECT_EQ(turn(), 0ns);
  EXPECT_TRUE(accounting->figures().empty());
  stopped = false;
  turn();
  EXPECT_FALSE(accounting->figures().empty());
  EXPECT_EQ(accounting->listed(), 0u);
}

TEST_F(UsageAccountingTest, WhatAFirstPassMissedIsLookedForOnceMoreBeforeThereAreFigures) {
  tree.file("first/films/a.mkv", contents(10));
  want({first});
  Rest rest;
  if (!testing::withRefused(SYS_getdents64, EIO, [&] { rest = work(); }))
    GTEST_SKIP() << "no system call can be refused here";
  EXPECT_EQ(rest, pace.period);
  EXPECT_TRUE(accounting->figures().empty());
  later(pace.period);
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/films/a.mkv"), 0, 0));
}

TEST_F(UsageAccountingTest, WhatCantBeReadASecondTimeIsLeftOut) {
  tree.file("first/films/a.mkv", contents(10));
  want({first});
  for (int time = 0; time < 2; ++time, later(pace.period))
    if (!testing::withRefused(SYS_getdents64, EIO, [&] { work(); }))
      GTEST_SKIP() << "no system call can be refused here";
  EXPECT_EQ(of(first), sums(0, 0, 0, 0));
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/films/a.mkv"), 0, 0));
}

TEST_F(UsageAccountingTest, AVolumeThatCantBeCountedIsLeftAsideForAWhile) {
  tree.file("first/a.mkv", contents(10));
  tree.file("second/b.flac", contents(10));
  failsAt = "a.mkv";
  want({first, second});
  EXPECT_EQ(work(), pace.period);
  EXPECT_EQ(of(second), sums(0, 0, bytes("second/b.flac"), 0));
  EXPECT_FALSE(accounting->figures().contains(first));
  later(pace.period);
  work();
  EXPECT_EQ(log.lines, std::vector<std::string>{"usage by category threw: short of memory"});
  failsAt.clear();
  later(pace.period);
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/a.mkv"), 0, 0));
}

}  // namespace
}  // namespace vantile
