#include "vantile/platform/linux/processors.h"

#include <gtest/gtest.h>

#include "fakes/temporary_folder.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;
using testing::TemporaryFolder;

/// A machine whose /proc and /sys stand in a temporary folder.
struct LinuxProcessorsTest : ::testing::Test {
  LinuxProcessorsTest() {
    folder.folder("proc");
    folder.file("proc/stat", fixture("proc-stat.txt"));
    folder.file("proc/loadavg", "0.00 0.49 1.67 2/88 6316\n");
  }

  void cpufreq(const std::string& file, const std::string& text) {
    folder.file("sys/devices/system/cpu/cpu0/cpufreq/" + file, text);
  }
  std::vector<ProcessorTicks> ticksOf(const std::string& stat) {
    folder.file("proc/stat", stat);
    return processors.ticks().value();
  }
  static std::string lines(std::size_t count, std::uint64_t idle) {
    std::string text = "cpu  0 0 0 0\n";
    for (std::size_t number = 0; number < count; ++number)
      text += "cpu" + std::to_string(number) + " 0 0 0 " + std::to_string(idle) + " 0 0 0 0 0 0\n";
    return text + "intr " + std::string(9000, '0') + "\nctxt 1\n";
  }

  TemporaryFolder folder;
  LinuxProcessors processors{LinuxRoots{folder.path("proc"), folder.path("sys")}};
};

TEST_F(LinuxProcessorsTest, CountFromTheFirstReading) {
  EXPECT_EQ(processors.ticks(), std::vector<ProcessorTicks>(2));
  folder.file("proc/stat",
              "cpu  0 0 0 0\ncpu0 1041062 333616 243951 837978 1163 6 217 2155 0 0\n"
              "cpu1 1049014 331482 268304 805227 3333 0 1346 2141 0 0\nintr 1\n");
  const auto ticks = processors.ticks().value();
  EXPECT_EQ(ticks[0], (ProcessorTicks{.user = 1, .system = 3 + 6 + 7 + 8, .idle = 9, .nice = 2}));
  EXPECT_EQ(ticks[1], ProcessorTicks{});
}

TEST_F(LinuxProcessorsTest, MayBeMoreThanOneReadHolds) {
  for (const std::size_t count : {1u, 60u, 100u, 101u, 3000u}) {
    LinuxProcessors many{LinuxRoots{folder.path("proc"), folder.path("sys")}};
    folder.file("proc/stat", lines(count, 5));
    EXPECT_EQ(many.ticks().value().size(), count);
    EXPECT_EQ(many.count(), count);
    folder.file("proc/stat", lines(count, 7));
    EXPECT_EQ(many.ticks().value().back().idle, 2u);
  }
}

TEST_F(LinuxProcessorsTest, AFileOfNothingButProcessorsIsRead) {
  EXPECT_EQ(ticksOf("cpu0 1 2 3 4\n").size(), 1u);
}

TEST_F(LinuxProcessorsTest, AReadingWithoutProcessorsIsRefused) {
  folder.file("proc/stat", "intr 1\nctxt 2\n");
  EXPECT_FALSE(processors.ticks());
  EXPECT_FALSE(processors.count());
  folder.file("proc/stat", "");
  EXPECT_FALSE(processors.ticks());
}

TEST_F(LinuxProcessorsTest, ARefusedReadingCountsForNothing) {
  ticksOf(lines(2, 100));
  folder.file("proc/stat", "");
  EXPECT_FALSE(processors.ticks());
  EXPECT_EQ(ticksOf(lines(2, 103))[1].idle, 3u);
}

TEST_F(LinuxProcessorsTest, WithoutProcTellNothing) {
  LinuxProcessors nowhere{LinuxRoots{folder.path("none"), folder.path("none")}};
  EXPECT_FALSE(nowhere.ticks());
  EXPECT_FALSE(nowhere.tasks());
  EXPECT_FALSE(nowhere.count());
  EXPECT_FALSE(nowhere.frequency());
}

TEST_F(LinuxProcessorsTest, TasksAreTheFoldersOfProcessesAndThreadsAreOfLoadavg) {
  for (const char* name : {"1", "22", "333", "sys", "tty", "1x"})
    folder.folder("proc/" + std::string(name));
  EXPECT_EQ(processors.tasks(), (TaskCounts{3, 88}));
  folder.folder("proc/4444");
  folder.file("proc/loadavg", "0.00 0.49 1.67 2/89 6316\n");
  EXPECT_EQ(processors.tasks(), (TaskCounts{4, 89}));
  folder.remove("proc/1");
  EXPECT_EQ(processors.tasks(), (TaskCounts{3, 89}));
  folder.file("proc/5");  // no link of a folder's, and nothing was listed to see it
  EXPECT_EQ(processors.tasks(), (TaskCounts{3, 89}));
}

TEST_F(LinuxProcessorsTest, LinksAreNoFolders) {
  folder.folder("proc/7");
  folder.symbolicLink("proc/self", folder.path("proc/7"));
  EXPECT_EQ(processors.tasks()->tasks, 1);
}

TEST_F(LinuxProcessorsTest, TasksAreListedWhereLinksAreNotCounted) {
  folder.folder("elsewhere");
  folder.folder("proc/sys");
  for (const char* name : {"1", "22", "333"})  // of which the folder's links know nothing
    folder.symbolicLink("proc/" + std::string(name), folder.path("elsewhere"));
  EXPECT_EQ(processors.tasks()->tasks, 3);
  folder.symbolicLink("proc/4444", folder.path("elsewhere"));
  EXPECT_EQ(processors.tasks()->tasks, 4);
}

TEST_F(LinuxProcessorsTest, AFolderThatComesLaterIsNoProcessForLong) {
  folder.folder("proc/1");
  (void)processors.tasks();
  folder.folder("proc/asound");
  EXPECT_EQ(processors.tasks()->tasks, 2);
  for (int reading = 0; reading < 256; ++reading) (void)processors.tasks();
  EXPECT_EQ(processors.tasks()->tasks, 1);
}

TEST_F(LinuxProcessorsTest, WithoutProcessesOrThreadsThereAreNoCounts) {
  EXPECT_FALSE(processors.tasks());
  folder.folder("proc/1");
  EXPECT_TRUE(processors.tasks());
  folder.file("proc/loadavg", "0.00 0.49 1.67 288 6316\n");
  EXPECT_FALSE(processors.tasks());
}

TEST_F(LinuxProcessorsTest, AHugeCountIsHeldAtTheLargest) {
  folder.folder("proc/1");
  folder.file("proc/loadavg", "0.00 0.49 1.67 2/99999999999 6316\n");
  EXPECT_EQ(processors.tasks()->threads, 2147483647);
}

TEST_F(LinuxProcessorsTest, TheClockIsTheBaseFrequency) {
  cpufreq("base_frequency", "2400000\n");
  cpufreq("cpuinfo_max_freq", "4700000\n");
  EXPECT_EQ(processors.frequency(), 2'400'000'000u);
}

TEST_F(LinuxProcessorsTest, WithoutABaseTheClockIsTheMostItCanBe) {
  cpufreq("cpuinfo_max_freq", "4700000\n");
  EXPECT_EQ(processors.frequency(), 4'700'000'000u);
  cpufreq("base_frequency", "<unsupported>\n");
  EXPECT_EQ(processors.frequency(), 4'700'000'000u);
  cpufreq("base_frequency", "0\n");
  EXPECT_EQ(processors.frequency(), 4'700'000'000u);
}

TEST_F(LinuxProcessorsTest, WithoutCpufreqTheClockIsTheOneOfCpuinfo) {
  folder.file("proc/cpuinfo", fixture("cpuinfo-xeon.txt"));
  EXPECT_EQ(processors.frequency(), 2'400'000'000u);
  cpufreq("cpuinfo_max_freq", "99999999999999999\n");  // whose hertz 64 bits do not hold
  EXPECT_EQ(processors.frequency(), 2'400'000'000u);
}

TEST_F(LinuxProcessorsTest, AreThoseThatAreListed) {
  EXPECT_EQ(processors.count(), 2u);
}

TEST_F(LinuxProcessorsTest, CountingThemIsNoReading) {
  (void)processors.count();
  EXPECT_EQ(ticksOf(lines(3, 9)), std::vector<ProcessorTicks>(3));
}

TEST(SystemProcessors, AreSharedByTheProcess) {
  EXPECT_EQ(systemProcessors(), systemProcessors());
}

}  // namespace
}  // namespace vantile
