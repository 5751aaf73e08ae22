#include "vantile/platform/linux/launched_applications.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>

#include "fakes/open_descriptors.h"
#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using testing::TemporaryFolder;

/// A machine whose /proc, entries and programs stand in a temporary folder.
struct LinuxLaunched : ::testing::Test {
  LinuxLaunched() {
    folder.folder("proc");
    for (const auto* name : {"mail", "chess", "terminal"}) entry(name);
  }

  void entry(const std::string& name, const std::string& lines = "") {
    folder.file("data/applications/" + name + ".desktop",
                "[Desktop Entry]\nType=Application\nName=The " + name + "\nExec=" + program(name) +
                    "\n" + lines);
  }
  std::string entryPath(const std::string& name) {
    return folder.path("data/applications/" + name + ".desktop");
  }
  std::string program(const std::string& name) { return folder.file("bin/" + name, "\x7F"); }

  struct Facts {
    std::string name = "name";
    char state = 'S';
    int parent = 1;
    int start = 100;
    int code = 1000;
    int stack = 0;
  };
  void process(int pid, const Facts& facts) {
    folder.file("proc/" + std::to_string(pid) + "/stat",
                std::to_string(pid) + " (" + facts.name + ") " + facts.state + " " +
                    std::to_string(facts.parent) + " 1 1 0 0 0 0 0 0 0 0 0 0 0 20 0 1 0 " +
                    std::to_string(facts.start) + " 0 0 0 " + std::to_string(facts.code) + " 0 " +
                    std::to_string(facts.stack) + " 0\n");
  }
  void process(int pid) { process(pid, Facts{}); }
  void runs(int pid, const std::string& executable) {
    const auto link = "proc/" + std::to_string(pid) + "/exe";
    folder.remove(link);
    folder.symbolicLink(link, executable);
  }
  void inGroup(int pid, const std::string& group) {
    folder.file("proc/" + std::to_string(pid) + "/cgroup", "0::" + group + "\n");
  }
  void launched(int pid, const std::string& entry, int leader) {
    folder.file("proc/" + std::to_string(pid) + "/environ",
                "A=1\0GIO_LAUNCHED_DESKTOP_FILE="s + entry + "\0GIO_LAUNCHED_DESKTOP_FILE_PID="s +
                    std::to_string(leader) + "\0"s);
  }
  /// A process that is gone answers nothing, through a descriptor that is still open either.
  void ends(int pid) {
    folder.file("proc/" + std::to_string(pid) + "/stat");
    folder.remove("proc/" + std::to_string(pid));
  }

  using Found = std::map<int, std::string>;
  Found names() {
    Found found;
    const auto list = applications.list().value();
    for (const auto& each : list) found[each.pid] = each.name.value();
    return found;
  }
  /// So many looks that each process had its turn.
  Found namesInTime() {
    for (int look = 0; look < 24; ++look) (void)applications.list();
    return names();
  }

  TemporaryFolder folder;
  RecentStats recent;
  LinuxLaunchedApplications applications{
      LinuxRoots{folder.path("proc")}, folder.path("home"),
      [this](const char* name) {
        const bool isData = name == "XDG_DATA_HOME"s || name == "XDG_DATA_DIRS"s;
        return isData ? std::optional(folder.path("data")) : std::nullopt;
      },
      recent};
};

TEST_F(LinuxLaunched, RestsWithoutADescriptor) {
  const auto before = testing::openDescriptors();
  process(41);
  launched(41, entryPath("mail"), 41);
  (void)namesInTime();
  EXPECT_GT(testing::openDescriptors(), before);
  applications.rest();
  EXPECT_EQ(testing::openDescriptors(), before);
  EXPECT_EQ(names(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, WithoutProcThereIsNoAnswer) {
  folder.remove("proc");
  EXPECT_EQ(applications.list(), std::nullopt);
}

TEST_F(LinuxLaunched, WithoutProcessesThereIsAnEmptyList) {
  folder.file("proc/meminfo");
  folder.folder("proc/self");
  folder.folder("proc/0");
  folder.folder("proc/12x");
  EXPECT_EQ(applications.list()->size(), 0u);
}

TEST_F(LinuxLaunched, AScopeTellsWithTheEntrysNameAndPath) {
  process(41);
  inGroup(41, "/app.slice/app-gnome-mail-41.scope");
  EXPECT_EQ(applications.list(),
            (std::vector<LaunchedApplication>{{"The mail", entryPath("mail"), 41}}));
}

TEST_F(LinuxLaunched, AnEnvironmentTells) {
  process(41);
  launched(41, entryPath("mail"), 41);
  process(42, {.parent = 41});
  launched(42, entryPath("mail"), 41);  // has it from its parent
  EXPECT_EQ(names(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, AnEnvironmentMayNameAnEntryAnywhere) {
  process(41);
  launched(41, folder.file("x.desktop", "[Desktop Entry]\nType=Application\nName=X\n"), 41);
  EXPECT_EQ(names(), (Found{{41, "X"}}));
}

TEST_F(LinuxLaunched, AnExecutableTells) {
  process(41);
  runs(41, program("mail"));
  process(42, {.parent = 41});
  runs(42, program("mail"));
  EXPECT_EQ(names(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, AnExecutableThatWasReplacedTells) {
  process(41);
  runs(41, program("mail") + " (deleted)");
  EXPECT_EQ(names(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, OtherProcessesAreNone) {
  process(41);
  process(42);
  runs(42, "/usr/bin/other");
  inGroup(42, "/system.slice/cron.service");
  folder.folder("proc/43");
  folder.file("proc/44/stat", "nonsense\n");
  runs(44, program("mail"));
  EXPECT_EQ(names(), Found{});
}

TEST_F(LinuxLaunched, OtherUsersApplicationsAreNone) {
  process(41);
  runs(41, program("mail"));
  constexpr uid_t another = 4711;
  if (::chown(folder.path("proc/41").c_str(), another, another) != 0)
    GTEST_SKIP() << "only root gives files away";
  EXPECT_EQ(namesInTime(), Found{});
}

TEST_F(LinuxLaunched, AServiceThatNoMenuShowsIsNone) {
  entry("hidden", "NoDisplay=true\n");
  process(41);
  inGroup(41, "/app-gnome-hidden@autostart.service");
  process(42);
  inGroup(42, "/app-gnome-mail@autostart.service");
  process(43);
  inGroup(43, "/app-gnome-hidden-43.scope");
  EXPECT_EQ(names(), (Found{{42, "The mail"}, {43, "The hidden"}}));
}

TEST_F(LinuxLaunched, OneThatEndsLeaves) {
  process(41);
  runs(41, program("mail"));
  process(42);
  runs(42, program("chess"));
  EXPECT_EQ(names().size(), 2u);
  ends(41);
  EXPECT_EQ(names(), (Found{{42, "The chess"}}));
}

TEST_F(LinuxLaunched, OneThatEndedAndIsNotWaitedForLeavesAtOnce) {
  process(41);
  runs(41, program("mail"));
  EXPECT_EQ(namesInTime().size(), 1u);
  process(41, {.state = 'Z'});
  EXPECT_EQ(names(), Found{});
}

TEST_F(LinuxLaunched, OneThatEndedBeforeItWasSeenIsNone) {
  process(41, {.state = 'Z'});
  runs(41, program("mail"));
  EXPECT_EQ(names(), Found{});
}

TEST_F(LinuxLaunched, OneThatBeginsIsSeenAtOnce) {
  EXPECT_EQ(namesInTime(), Found{});
  process(41);
  runs(41, program("mail"));
  EXPECT_EQ(names(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, AnotherProcessOfTheSameNumberIsLookedAtAnew) {
  process(41);
  runs(41, program("mail"));
  EXPECT_EQ(namesInTime(), (Found{{41, "The mail"}}));
  ends(41);
  process(41, {.start = 200});
  runs(41, program("chess"));
  EXPECT_EQ(names(), (Found{{41, "The chess"}}));
  ends(41);
  process(41, {.start = 300});
  EXPECT_EQ(names(), Found{});
}

TEST_F(LinuxLaunched, AnotherProcessOfANumberThatNoApplicationHadIsSeenAtOnce) {
  process(41);
  runs(41, "/bin/sh");
  EXPECT_EQ(namesInTime(), Found{});
  // Made before the old one is gone, so that the new folder has another inode.
  folder.folder("proc/new");
  ends(41);
  std::filesystem::rename(folder.path("proc/new"), folder.path("proc/41"));
  process(41, {.start = 200});
  runs(41, program("mail"));
  EXPECT_EQ(names(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, AYoungProcessThatBecomesAnotherProgramIsSeenAtOnce) {
  process(41);
  runs(41, "/bin/sh");
  for (int look = 0; look < 7; ++look) EXPECT_EQ(names(), Found{});
  runs(41, program("mail"));
  EXPECT_EQ(names(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, AYoungProcessThatIsMovedIntoAScopeIsSeenAtOnce) {
  process(41);
  inGroup(41, "/session.slice");
  EXPECT_EQ(names(), Found{});
  inGroup(41, "/app-mail-41.scope");
  EXPECT_EQ(names(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, AnOldProcessThatBecomesAnotherProgramIsSeenInTime) {
  process(41);
  runs(41, "/bin/sh");
  EXPECT_EQ(namesInTime(), Found{});
  process(41, {.code = 2000});
  runs(41, program("mail"));
  Found found;
  for (int look = 0; look < 16; ++look) found = names();
  EXPECT_EQ(found, (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, AnApplicationThatBecomesAnotherOneIsSeenByItsNameToo) {
  process(41, {.code = 0});  // who may not know sees 0
  runs(41, program("mail"));
  EXPECT_EQ(namesInTime(), (Found{{41, "The mail"}}));
  process(41, {.name = "chess", .code = 0});
  runs(41, program("chess"));
  EXPECT_EQ(names(), (Found{{41, "The chess"}}));
}

TEST_F(LinuxLaunched, AnApplicationThatBecomesAnotherOneIsSeenAtOnce) {
  process(41);
  runs(41, program("mail"));
  EXPECT_EQ(namesInTime(), (Found{{41, "The mail"}}));
  process(41, {.code = 2000});
  runs(41, program("chess"));
  EXPECT_EQ(names(), (Found{{41, "The chess"}}));
}

TEST_F(LinuxLaunched, AnApplicationThatBecomesAnotherOneIsSeenByItsStackToo) {
  process(41, {.code = 0});
  runs(41, program("mail"));
  EXPECT_EQ(namesInTime(), (Found{{41, "The mail"}}));
  process(41, {.code = 0, .stack = 7000});
  runs(41, program("chess"));
  EXPECT_EQ(names(), (Found{{41, "The chess"}}));
}

TEST_F(LinuxLaunched, OfManyApplicationsSomeAreKeptOpen) {
  const auto before = testing::openDescriptors();
  for (int pid = 41; pid < 41 + 200; ++pid) {
    process(pid);
    launched(pid, entryPath("mail"), pid);
  }
  EXPECT_EQ(namesInTime().size(), 200u);
  EXPECT_LE(testing::openDescriptors(), before + 128);
}

TEST_F(LinuxLaunched, WhatDidNotChangeIsNotReadAnew) {
  process(41);
  runs(41, program("mail"));
  EXPECT_EQ(namesInTime(), (Found{{41, "The mail"}}));
  runs(41, program("chess"));  // without becoming another program
  EXPECT_EQ(namesInTime(), (Found{{41, "The mail"}}));
}

TEST_F(LinuxLaunched, AChildLeadsOnceItsParentEnded) {
  process(41);
  runs(41, program("mail"));
  process(42, {.parent = 41});
  runs(42, program("mail"));
  EXPECT_EQ(namesInTime(), (Found{{41, "The mail"}}));
  ends(41);
  process(42, {.parent = 1});
  EXPECT_EQ(names(), (Found{{42, "The mail"}}));
}

TEST_F(LinuxLaunched, AProcessThatTookItsParentsNumberIsNotItsParent) {
  process(41);
  runs(41, program("mail"));
  process(42, {.parent = 41, .start = 110});
  runs(42, program("mail"));
  EXPECT_EQ(namesInTime().size(), 1u);
  ends(41);
  process(41, {.start = 500});
  runs(41, program("mail"));
  process(42, {.parent = 1, .start = 110});
  EXPECT_EQ(names(), (Found{{41, "The mail"}, {42, "The mail"}}));
}

TEST_F(LinuxLaunched, AnEntryThatIsInstalledWhileItRunsIsSeen) {
  process(41);
  runs(41, program("late"));
  EXPECT_EQ(names(), Found{});
  entry("late");
  EXPECT_EQ(names(), (Found{{41, "The late"}}));
  folder.remove("data/applications/late.desktop");
  EXPECT_EQ(names(), Found{});
}

TEST_F(LinuxLaunched, WhatIsReadOfApplicationsIsLeftForTheirFigures) {
  process(41);
  runs(41, program("mail"));
  process(42);
  (void)namesInTime();
  const auto reading = recent.take(41, sinceBoot());
  ASSERT_TRUE(reading);
  EXPECT_EQ(reading->stat.startTicks, 100u);
  EXPECT_TRUE(reading->stat.name.empty());
  EXPECT_FALSE(recent.take(42, sinceBoot()));
}

TEST_F(LinuxLaunched, AreSharedByTheProcess) {
  EXPECT_EQ(systemLaunchedApplications(), systemLaunchedApplications());
}

}  // namespace
}  // namespace vantile
