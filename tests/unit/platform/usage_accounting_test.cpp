#include "unit/platform/usage_accounting_fixture.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::UsageAccountingTest;

TEST_F(UsageAccountingTest, WithoutVolumesThereIsNothingToDo) {
  EXPECT_EQ(turn(), std::nullopt);
  want({first});
  want({});
  EXPECT_EQ(turn(), std::nullopt);
}

TEST_F(UsageAccountingTest, AVolumeHasNoFiguresUntilItWasGoneThrough) {
  tree.file("first/a.mkv", contents(10));
  want({first});
  EXPECT_EQ(turn(), 0ns);  // what was kept
  EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/a.mkv"), 0, 0));
}

TEST_F(UsageAccountingTest, AnEmptyVolumeHasFigures) {
  want({first});
  work();
  EXPECT_EQ(of(first), sums(0, 0, 0, 0));
}

TEST_F(UsageAccountingTest, VolumesAreGoneThroughOneAfterTheOtherInTheirOrder) {
  pace.firstBatch = 1;
  restart();
  for (const auto* const volume : {"first", "second"}) makeFolders(volume, 5);
  want({second, first});
  while (accounting->figures().empty()) later(*turn());
  EXPECT_TRUE(accounting->figures().contains(second));
  EXPECT_EQ(accounting->listed(), 6u);
  work();
  EXPECT_EQ(accounting->figures().size(), 2u);
}

TEST_F(UsageAccountingTest, AfterTheFirstPassThereIsRestUntilTheNext) {
  want({first});
  EXPECT_EQ(work(), pace.period);
  later(pace.period - 1s);
  EXPECT_EQ(turn(), 1s);
}

TEST_F(UsageAccountingTest, FurtherPassesFindGrowthAdditionAndRemovalAndListChangedFoldersAlone) {
  tree.file("first/films/a.mkv", contents(10));
  tree.file("first/music/b.flac", contents(10));
  tree.file("first/photos/c.jpg", contents(10));
  tree.file("first/photos/d.jpg", contents(10));
  want({first});
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
  makeFolders("first", 10);
  want({first});
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
  want({first});
  work();
  later(pace.period);
  cost = 7ms;
  EXPECT_EQ(turn(), 7ms * pace.restFactor);
  EXPECT_EQ(pace.restFactor, 5000);
}

TEST_F(UsageAccountingTest, WhatWasCountedIsThereAtTheNextStartAtOnce) {
  tree.file("first/a.mkv", contents(10));
  want({first});
  work();
  const auto expected = of(first);
  restart();
  want({first});
  EXPECT_EQ(turn(), 0ns);
  EXPECT_EQ(of(first), expected);
  EXPECT_EQ(accounting->listed(), 0u);
  work();
  EXPECT_EQ(accounting->listed(), 0u);
}

TEST_F(UsageAccountingTest, AnInterruptedFirstPassIsTakenUp) {
  pace.firstBatch = 4;
  restart();
  makeFolders("first", 10);
  want({first});
  for (int part = 0; part < 3; ++part) later(*turn());
  const auto listed = accounting->listed();
  EXPECT_GT(listed, 2u);
  EXPECT_LT(listed, 11u);
  accounting->keepSmall();
  restart();
  want({first});
  EXPECT_EQ(turn(), 0ns);
  EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_LE(accounting->listed() + listed, 12u);  // the one that it was in a second time
  EXPECT_EQ(of(first)[3], 10 * bytes("first/f0/a.jpg"));
}

TEST_F(UsageAccountingTest, ALongFirstPassIsKeptNowAndThen) {
  pace.firstBatch = 1;
  restart();
  makeFolders("first", 5);
  want({first});
  turn();
  later(*turn());
  EXPECT_FALSE(std::filesystem::exists(caches.path("vantile")));
  later(pace.checkpoint);
  turn();
  EXPECT_TRUE(std::filesystem::exists(caches.path("vantile")));
}

/// How often a record was written, or was to be, while folders are counted one by one. Each has
/// names of six bytes.
struct UsageAccountingNamesTest : UsageAccountingTest {
  UsageAccountingNamesTest() {
    pace.firstBatch = pace.batch = 1;
    pace.mostHeld = 12;
    restart();
  }
  int writesUntilAllAreCounted() {
    const auto all = 100 * bytes("first/f0/a.jpg");
    std::filesystem::file_time_type before = {};
    int count = 0;
    for (int turns = 0; turns < 1000; ++turns) {
      std::filesystem::last_write_time(folder, before);
      later(turn().value_or(0ns));
      count += std::filesystem::last_write_time(folder) != before;
      if (accounting->figures().contains(first) && of(first)[3] == all) return count;
    }
    return 0;
  }
  const std::string folder = caches.folder("vantile");
};

TEST_F(UsageAccountingNamesTest, ManyNamesAreKeptBeforeAMinuteIsOver) {
  makeFolders("first", 100);
  want({first});
  // Two folders' at a time, then a quarter of those that are kept.
  const int written = writesUntilAllAreCounted();
  EXPECT_GE(written, 12);
  EXPECT_LE(written, 25);
}

TEST_F(UsageAccountingNamesTest, SoAreThoseOfALaterPass) {
  want({first});
  work();
  makeFolders("first", 100);
  later(pace.period);
  EXPECT_GE(writesUntilAllAreCounted(), 12);
}

TEST_F(UsageAccountingNamesTest, ThoseThatCantBeKeptAreTriedAsTheyBecomeMore) {
  makeFolders("first", 100);
  caches.folder("vantile/" + usageRecordName(*volumeAt(first)) + "/in the way");
  want({first});
  const int tried = writesUntilAllAreCounted();
  EXPECT_GE(tried, 12);
  EXPECT_LE(tried, 25);
}

TEST_F(UsageAccountingTest, WhatIsNoLongerWantedIsKeptAndForgotten) {
  pace.firstBatch = 1;
  restart();
  tree.file("first/a/b.jpg", contents(1));
  want({first, second});
  turn();
  turn();
  later(*turn());
  want({second});
  EXPECT_TRUE(std::filesystem::exists(caches.path("vantile")));
  work();
  EXPECT_EQ(accounting->figures().size(), 1u);
  EXPECT_TRUE(accounting->figures().contains(second));
}

TEST_F(UsageAccountingTest, AVolumeThatStaysWantedGoesOn) {
  tree.file("first/a.jpg", contents(1));
  want({first});
  work();
  want({second, first, first});
  EXPECT_TRUE(accounting->figures().contains(first));
  work();
  EXPECT_EQ(accounting->figures().size(), 2u);
}

TEST_F(UsageAccountingTest, ADamagedRecordIsCountedAnew) {
  tree.file("first/a.mkv", contents(10));
  want({first});
  work();
  for (const auto& kept : std::filesystem::directory_iterator(caches.path("vantile")))
    std::filesystem::resize_file(kept, 30);
  restart();
  want({first});
  turn();
  EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/a.mkv"), 0, 0));
  EXPECT_EQ(log.lines.size(), 1u);
}

TEST_F(UsageAccountingTest, WithoutACacheFolderItCountsAllTheSame) {
  caches.file("vantile", "no folder");
  tree.file("first/a.mkv", contents(10));
  want({first});
  work();
  later(pace.period);
  tree.file("first/b.mkv", contents(10));
  work();
  EXPECT_EQ(of(first), sums(0, bytes("first/a.mkv") + bytes("first/b.mkv"), 0, 0));
  EXPECT_EQ(log.lines.size(), 1u);
}

}  // namespace
}  // namespace vantile
