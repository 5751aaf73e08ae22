#include "vantile/platform/linux/usage_accounting.h"

#include <optional>

#include "fakes/recorded_log.h"
#include "unit/platform/usage_fixture.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using Rest = std::optional<std::chrono::nanoseconds>;

struct UsageAccountingTest : testing::UsageTest {
  UsageAccountingTest() { restart(); }

  /// As another run of the program begins.
  void restart() {
    UsageAccounting::Means means;
    means.cacheFolder = caches.path("vantile");
    means.installed = {tree.path("first/usr")};
    means.pace = pace;
    means.now = [this] { return now; };
    means.processorTime = [this] { return processor += cost; };
    means.presentSecond = muchLater;
    accounting = std::make_unique<UsageAccounting>(std::move(means));
  }

  Rest turn() { return accounting->turn(isStopped); }
  /// Turns until there is some rest.
  Rest work() {
    auto rest = turn();
    while (rest == 0ns) rest = turn();
    return rest;
  }
  void later(std::chrono::nanoseconds duration) { now += duration; }
  UsageSums of(const std::string& mountPoint) const { return accounting->figures().at(mountPoint); }

  const testing::TemporaryFolder caches;
  const std::string first = tree.folder("first"), second = tree.folder("second");
  UsagePace pace;
  UsageAccounting::Clock::time_point now{1h};
  std::chrono::nanoseconds processor{0}, cost{0};
  const std::function<bool()> isStopped = [this] { return stopped; };
  bool stopped = false;
  testing::RecordedLog log;
  std::unique_ptr<UsageAccounting> accounting;
};

TEST_F(UsageAccountingTest, WithoutVolumesThereIsNothingToDo) {
  EXPECT_EQ(turn(), std::nullopt);
  accounting->want({first});
  accounting->want({});
  EXPECT_EQ(turn(), std::nullopt);
}

TEST_F(UsageAccountingTest, AVolumeHasNoFiguresUntilItWasGoneThrough) {
  tree.file("first/a.mkv", contents(10));
  accounting->want({first});
  EXPECT_EQ(turn(), 0ns);  // what was kept
  EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/a.mkv"), 0, 0));
}

TEST_F(UsageAccountingTest, AnEmptyVolumeHasFigures) {
  accounting->want({first});
  work();
  EXPECT_EQ(of(first), sums(0, 0, 0, 0));
}

TEST_F(UsageAccountingTest, VolumesAreGoneThroughOneAfterTheOtherInTheirOrder) {
  pace.firstBatch = 1;
  restart();
  for (const auto* const volume : {"first", "second"})
    for (int number = 0; number < 5; ++number)
      tree.file(std::string(volume) + "/f" + std::to_string(number) + "/a.jpg", contents(1));
  accounting->want({second, first});
  while (accounting->figures().empty()) EXPECT_EQ(turn(), 0ns);
  EXPECT_TRUE(accounting->figures().contains(second));
  EXPECT_EQ(accounting->listed(), 6u);
  work();
  EXPECT_EQ(accounting->figures().size(), 2u);
}

TEST_F(UsageAccountingTest, AfterTheFirstPassThereIsRestUntilTheNext) {
  accounting->want({first});
  EXPECT_EQ(work(), pace.period);
  later(pace.period - 1s);
  EXPECT_EQ(turn(), 1s);
}

TEST_F(UsageAccountingTest, FurtherPassesFindGrowthAdditionAndRemovalAndListChangedFoldersAlone) {
  tree.file("first/films/a.mkv", contents(10));
  tree.file("first/music/b.flac", contents(10));
  tree.file("first/photos/c.jpg", contents(10));
  tree.file("first/photos/d.jpg", contents(10));
  accounting->want({first});
  work();
  EXPECT_EQ(accounting->listed(), 4u);
  tree.file("first/films/a.mkv", contents(1000));
  tree.file("first/music/new.flac", contents(50));
  tree.remove("first/photos/d.jpg");
  later(pace.period);
  work();
  EXPECT_EQ(accounting->listed(), 6u);
  EXPECT_EQ(of(first), sums(0, bytes("first/films/a.mkv"),
                            bytes("first/music/b.flac") + bytes("first/music/new.flac"),
                            bytes("first/photos/c.jpg")));
}

TEST_F(UsageAccountingTest, FurtherPassesGoInSmallPartsWithRestBetweenThem) {
  pace.batch = 2;
  pace.leastRest = 10s;
  restart();
  for (int number = 0; number < 10; ++number)
    tree.file("first/f" + std::to_string(number) + "/a.jpg", contents(1));
  accounting->want({first});
  work();
  later(pace.period);
  int parts = 0;
  for (auto rest = turn(); rest && *rest == pace.leastRest; rest = turn()) {
    ++parts;
    later(*rest);
  }
  EXPECT_GE(parts, 10);
  EXPECT_LE(parts, 12);
}

TEST_F(UsageAccountingTest, RestIsInProportionToTheProcessorTimeThatAPartTook) {
  accounting->want({first});
  work();
  later(pace.period);
  cost = 7ms;
  EXPECT_EQ(turn(), 7ms * pace.restFactor);
  EXPECT_EQ(pace.restFactor, 5000);
}

TEST_F(UsageAccountingTest, WhatWasCountedIsThereAtTheNextStartAtOnce) {
  tree.file("first/a.mkv", contents(10));
  accounting->want({first});
  work();
  const auto expected = of(first);
  restart();
  accounting->want({first});
  EXPECT_EQ(turn(), 0ns);
  EXPECT_EQ(of(first), expected);
  EXPECT_EQ(accounting->listed(), 0u);
  work();
  EXPECT_EQ(accounting->listed(), 0u);
}

TEST_F(UsageAccountingTest, AnInterruptedFirstPassIsTakenUp) {
  pace.firstBatch = 4;
  restart();
  for (int number = 0; number < 10; ++number)
    tree.file("first/f" + std::to_string(number) + "/a.jpg", contents(1));
  accounting->want({first});
  for (int part = 0; part < 3; ++part) turn();
  const auto listed = accounting->listed();
  EXPECT_GT(listed, 2u);
  EXPECT_LT(listed, 11u);
  accounting->keep();
  restart();
  accounting->want({first});
  EXPECT_EQ(turn(), 0ns);
  EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_EQ(accounting->listed() + listed, 11u);
  EXPECT_EQ(of(first)[3], 10 * bytes("first/f0/a.jpg"));
}

TEST_F(UsageAccountingTest, ALongFirstPassIsKeptNowAndThen) {
  pace.firstBatch = 1;
  restart();
  for (int number = 0; number < 5; ++number)
    tree.file("first/f" + std::to_string(number) + "/a.jpg", contents(1));
  accounting->want({first});
  turn();
  turn();
  EXPECT_FALSE(std::filesystem::exists(caches.path("vantile")));
  later(pace.checkpoint);
  turn();
  EXPECT_TRUE(std::filesystem::exists(caches.path("vantile")));
}

TEST_F(UsageAccountingTest, WhatIsNoLongerWantedIsKeptAndForgotten) {
  pace.firstBatch = 1;
  restart();
  tree.file("first/a/b.jpg", contents(1));
  accounting->want({first, second});
  turn();
  turn();
  turn();
  accounting->want({second});
  EXPECT_TRUE(std::filesystem::exists(caches.path("vantile")));
  work();
  EXPECT_EQ(accounting->figures().size(), 1u);
  EXPECT_TRUE(accounting->figures().contains(second));
}

TEST_F(UsageAccountingTest, AVolumeThatStaysWantedGoesOn) {
  tree.file("first/a.jpg", contents(1));
  accounting->want({first});
  work();
  accounting->want({second, first, first});
  EXPECT_TRUE(accounting->figures().contains(first));
  work();
  EXPECT_EQ(accounting->figures().size(), 2u);
}

TEST_F(UsageAccountingTest, ADamagedRecordIsCountedAnew) {
  tree.file("first/a.mkv", contents(10));
  accounting->want({first});
  work();
  for (const auto& kept : std::filesystem::directory_iterator(caches.path("vantile")))
    std::filesystem::resize_file(kept, 30);
  restart();
  accounting->want({first});
  turn();
  EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/a.mkv"), 0, 0));
  EXPECT_EQ(log.lines.size(), 1u);
}

TEST_F(UsageAccountingTest, WithoutACacheFolderItCountsAllTheSame) {
  caches.file("vantile", "no folder");
  tree.file("first/a.mkv", contents(10));
  accounting->want({first});
  work();
  later(pace.period);
  tree.file("first/b.mkv", contents(10));
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/a.mkv") + bytes("first/b.mkv"), 0, 0));
  EXPECT_EQ(log.lines.size(), 1u);
}

TEST_F(UsageAccountingTest, AVolumeThatIsNotThereIsLookedForLater) {
  accounting->want({tree.path("missing")});
  EXPECT_EQ(work(), pace.period);
  EXPECT_TRUE(accounting->figures().empty());
  tree.file("missing/a.mkv", contents(10));
  later(pace.period);
  work();
  EXPECT_EQ(of(tree.path("missing")), sums(0, bytes("missing/a.mkv"), 0, 0));
}

TEST_F(UsageAccountingTest, AnotherVolumeInItsPlaceIsCountedAsSuch) {
  tree.file("first/a.mkv", contents(10));
  accounting->want({first});
  work();
  std::filesystem::rename(first, tree.path("moved"));
  tree.file("first/b.flac", contents(20));
  later(pace.period);
  work();
  EXPECT_EQ(of(first), sums(0, 0, bytes("first/b.flac"), 0));
  restart();
  accounting->want({first});
  turn();
  EXPECT_EQ(of(first), sums(0, 0, bytes("first/b.flac"), 0));  // kept as that volume's
}

TEST_F(UsageAccountingTest, AStopEndsTheWorkAtOnceAndLosesNothing) {
  for (int number = 0; number < 5; ++number)
    tree.file("first/f" + std::to_string(number) + "/a.jpg", contents(1));
  accounting->want({first});
  turn();
  stopped = true;
  EXPECT_EQ(turn(), 0ns);
  EXPECT_LE(accounting->listed(), 1u);
  EXPECT_TRUE(accounting->figures().empty());
  stopped = false;
  work();
  EXPECT_EQ(of(first)[3], 5 * bytes("first/f0/a.jpg"));
}

}  // namespace
}  // namespace vantile
