#include "vantile/platform/linux/process_lister.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <limits>

#include "vantile/platform/text_patterns.h"

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

constexpr std::uint64_t second = 1'000'000'000;

/// A machine whose /proc stands in a temporary folder and whose time stands still.
struct LinuxLister : ::testing::Test {
  LinuxLister() { folder.file("proc/meminfo", "MemTotal: 1000000 kB\nMemFree: 1 kB\n"); }

  void process(int pid, std::uint64_t userTicks, std::uint64_t start = 0,
               std::uint64_t systemTicks = 0, const std::string& name = "name") {
    folder.file("proc/" + std::to_string(pid) + "/stat",
                std::to_string(pid) + " (" + name + ") S 1 1 1 0 0 0 0 0 0 0 " +
                    std::to_string(userTicks) + " " + std::to_string(systemTicks) +
                    " 0 0 20 0 1 0 " + std::to_string(start) + " 2048000 25 0 0 0 0 0 0\n");
  }
  std::string lines(const std::string& pids) {
    auto listing = lister.run(pids, "").value();
    EXPECT_TRUE(listing.output.starts_with(processLineHeader));
    return listing.output.substr(processLineHeader.size());
  }
  const std::uint64_t perSecond = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
  TemporaryFolder folder;
  std::uint64_t now = 100 * second;
  RecentStats recent;
  LinuxProcessLister lister{LinuxRoots{folder.path("proc")}, [this] { return now; }, recent};
};

TEST_F(LinuxLister, PrintsALineOfSixColumnsForEachProcess) {
  process(41, 10 * perSecond);
  process(7, 0);
  EXPECT_EQ(lines("41,7"),
            "     41  10.0  0.0      100       2000 S\n"
            "      7   0.0  0.0      100       2000 S\n");
}

TEST_F(LinuxLister, EndsAsAFailedToolDoes) {
  EXPECT_EQ(lister.run("41", "pid")->exitStatus, 1);
  EXPECT_EQ(lister.run("", "")->exitStatus, 1);
}

TEST_F(LinuxLister, PrintsOnlyWhatWasAskedForAndIsThere) {
  process(41, 0);
  process(42, 0);
  folder.file("proc/43/stat", "nonsense\n");
  folder.file("proc/44/stat", "45 (n) S 1 1 1 0 0 0 0 0 0 0 1 1 0 0 20 0 1 0 1 1 1 0 0 0 0 0 0\n");
  folder.folder("proc/45");
  EXPECT_EQ(lines("42,43,44,45,46,x,,-1"), "     42   0.0  0.0      100       2000 S\n");
}

TEST_F(LinuxLister, WithoutProcItCantBeRun) {
  folder.remove("proc");
  EXPECT_EQ(lister.run("41", ""), std::nullopt);
}

TEST_F(LinuxLister, TheFirstLookTellsTheShareOfTheProcesssLife) {
  process(41, 10 * perSecond, 80 * perSecond, 5 * perSecond);
  EXPECT_EQ(lines("41"), "     41  75.0  0.0      100       2000 S\n");
}

TEST_F(LinuxLister, LaterLooksTellTheShareSinceTheOneBefore) {
  process(41, 0);
  (void)lines("41");
  now += 2 * second;
  process(41, perSecond);
  EXPECT_EQ(lines("41").substr(8, 5), " 50.0");
  now += 4 * second;
  process(41, 2 * perSecond, 0, 6 * perSecond);
  EXPECT_EQ(lines("41").substr(8, 5), "175.0");
  now += 4 * second;
  EXPECT_EQ(lines("41").substr(8, 5), "  0.0");
}

TEST_F(LinuxLister, ALookRightAfterAnotherTellsTheSameShare) {
  process(41, 0);
  (void)lines("41");
  now += 2 * second;
  process(41, perSecond);
  EXPECT_EQ(lines("41").substr(8, 5), " 50.0");
  now += second / 1000;
  process(41, perSecond + 1);
  EXPECT_EQ(lines("41").substr(8, 5), " 50.0");
  now += 2 * second - second / 1000;
  process(41, 2 * perSecond);
  EXPECT_EQ(lines("41").substr(8, 5), " 50.0");  // over the whole time since it was last told
}

TEST_F(LinuxLister, AnotherProcessOfTheSameNumberBeginsAnew) {
  process(41, 50 * perSecond);
  (void)lines("41");
  now += 10 * second;
  process(41, perSecond, 105 * perSecond);
  EXPECT_EQ(lines("41").substr(8, 5), " 20.0");  // of its 5 seconds
  now += 2 * second;
  EXPECT_EQ(lines("41").substr(8, 5), "  0.0");
}

TEST_F(LinuxLister, AProcessThatIsSkippedForAWhileIsStillKnown) {
  process(41, 0);
  process(7, 0);
  (void)lines("41");
  for (int run = 0; run < 16; ++run) (void)lines("7");
  now += 4 * second;
  process(41, perSecond);
  EXPECT_EQ(lines("41").substr(8, 5), " 25.0");
}

TEST_F(LinuxLister, AProcessThatNobodyAsksForAnyMoreIsForgotten) {
  process(41, 0);
  process(7, 0);
  (void)lines("41");
  for (int run = 0; run < 17; ++run) (void)lines("7");
  now += 100 * second;
  process(41, 100 * perSecond);
  EXPECT_EQ(lines("41").substr(8, 5), " 50.0");  // of its life
}

TEST_F(LinuxLister, MemoryIsAShareOfTheMachines) {
  folder.file("proc/meminfo", "MemTotal: 400 kB\n");
  process(41, 0);
  EXPECT_EQ(lines("41"), "     41   0.0 25.0      100       2000 S\n");
}

TEST_F(LinuxLister, MemoryThatIsAddedIsCountedInTime) {
  process(41, 0);
  (void)lines("41");
  folder.file("proc/meminfo", "MemTotal: 400 kB\n");
  for (int run = 0; run < 16; ++run) (void)lines("41");
  EXPECT_EQ(lines("41"), "     41   0.0 25.0      100       2000 S\n");
}

TEST_F(LinuxLister, WithoutTheMachinesMemoryItsShareIsNothing) {
  folder.remove("proc/meminfo");
  process(41, 0);
  EXPECT_EQ(lines("41"), "     41   0.0  0.0      100       2000 S\n");
}

TEST_F(LinuxLister, TimesOfAnySizeHarmNothing) {
  constexpr auto most = std::numeric_limits<std::uint64_t>::max();
  process(41, most, most, most);
  (void)lines("41");
  now = most;
  process(41, 0, most, most);
  EXPECT_NE(lines("41"), "");
}

TEST_F(LinuxLister, ItsLinesAreWhatTheMonitorReads) {
  process(41, 0, 0, 0, "a) R (b\n 7 1.0 1.0 1 1 S\n");
  process(7, perSecond);
  const auto pattern = systemTextPatterns()->compile(
      "[\\n^\\n]*?\\s*(\\d+)\\s+(\\d+.\\d+)\\s+(\\d+.\\d+)\\s+(\\d+)\\s+(\\d+)\\s+([a-zA-Z]+)\\s*"
      "\\n");
  std::vector<std::string> found;
  pattern->matches(lister.run("41,7", "")->output, [&](const TextPattern::Groups& groups) {
    found.push_back(std::string(*groups.at(1)) + " " + std::string(*groups.at(2)));
  });
  EXPECT_EQ(found, (std::vector<std::string>{"41 0.0", "7 1.0"}));
}

/// What another look read of the process 41.
RecentStats::Reading reading(std::uint64_t ticks, std::uint64_t nanoseconds) {
  PidStat stat;
  stat.pid = 41;
  stat.state = 'R';
  stat.threads = 1;
  stat.userTicks = ticks;
  return {stat, nanoseconds};
}

TEST_F(LinuxLister, TakesWhatWasReadAMomentAgoOnceAndAsOfThen) {
  process(41, 0);
  recent.put(reading(10 * perSecond, now - 10'000'000));
  EXPECT_TRUE(lines("41").ends_with(" R\n"));
  EXPECT_TRUE(lines("41").ends_with(" S\n"));
  now += 2 * second;
  recent.put(reading(11 * perSecond, now - 10'000'000));
  EXPECT_EQ(lines("41").substr(8, 5), " 50.0");
}

TEST_F(LinuxLister, DoesNotTakeWhatWasReadLongerAgo) {
  process(41, 0);
  recent.put(reading(0, now - 50'000'001));
  EXPECT_TRUE(lines("41").ends_with(" S\n"));
  recent.put(reading(0, now));
  recent.begin();
  EXPECT_TRUE(lines("41").ends_with(" S\n"));
}

TEST_F(LinuxLister, IsSharedByTheProcess) {
  EXPECT_EQ(systemProcessLister(), systemProcessLister());
}

}  // namespace
}  // namespace vantile
