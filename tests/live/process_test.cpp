// Running applications of this machine, beside ps(1) and top(1).

#include <gio/gdesktopappinfo.h>
#include <gtest/gtest.h>
#include <linux/sched.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <thread>

#include "vantile/process/process_stats.h"

#include "fakes/open_descriptors.h"
#include "live/application_helper.h"
#include "live/command.h"

namespace vantile {
namespace {

using std::chrono::milliseconds;
using testing::quoted;
using testing::run;
using testing::StartedApplication;

/// A monitor that is sampled by hand.
struct LiveProcess : ::testing::Test {
  LiveProcess() {
    delegate->updateProcessStaus = [this](const auto* processes) {
      records.clear();
      if (processes)
        for (const auto& each : *processes) records[each->pid()] = each;
    };
    monitor->setFreshInterval(0);
    monitor->setDelegate(delegate);
  }

  /// The record of that process in a new sample, or null.
  std::shared_ptr<ProcessInfo> sampled(std::int32_t pid) {
    monitor->updateInfo();
    const auto found = records.find(pid);
    return found == records.end() ? nullptr : found->second;
  }
  /// The pid of the application of that name, once it is listed; 0 when that takes too long.
  std::int32_t awaited(const std::string& name, bool listed = true) {
    for (int attempt = 0; attempt < 500; ++attempt) {
      monitor->updateInfo();
      const auto found = std::find_if(records.begin(), records.end(), [&](const auto& each) {
        return each.second->appName() == name;
      });
      if ((found != records.end()) == listed) return listed ? found->first : -1;
      std::this_thread::sleep_for(milliseconds(20));
    }
    return 0;
  }
  static std::string self() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

  testing::InstalledEntries entries;
  const std::shared_ptr<ProcessStats> monitor = ProcessStats::init();
  const std::shared_ptr<ProcessStatsDelegate> delegate = std::make_shared<ProcessStatsDelegate>();
  std::map<std::int32_t, std::shared_ptr<ProcessInfo>> records;
};

/// What ps tells of a process.
struct Told {
  double cpu = -1, memory = -1, resident = -1, virtualSize = -1;
  std::string state;
};

Told toldByPs(pid_t pid) {
  Told told;
  std::istringstream(
      run("LC_ALL=C ps -o %cpu=,%mem=,rss=,vsz=,stat= -p " + std::to_string(pid)).text) >>
      told.cpu >> told.memory >> told.resident >> told.virtualSize >> told.state;
  const auto isMarker = [](char letter) { return letter == '<' || letter == '+' || letter == 'L'; };
  std::erase_if(told.state, isMarker);
  return told;
}

/// The share of a processor over the next two seconds, by top; below 0 where it does not tell.
double toldByTop(pid_t pid) {
  const auto output =
      run("LC_ALL=C HOME=/nonexistent top -b -n 2 -d 2 -p " + std::to_string(pid)).text;
  std::istringstream line(output.substr(output.rfind('\n', output.size() - 2) + 1));
  std::string field;
  for (int number = 1; number < 9; ++number) line >> field;
  double share = -1;
  line >> share;
  return share;
}

TEST_F(LiveProcess, SharesAndSizesAreThoseOfPsAndTop) {
  if (run("ps --version").status != 0 || run("top -v").status != 0) GTEST_SKIP() << "no ps or top";
  const StartedApplication busy(entries.install("busy", self()),
                                {testing::beApplication, "busy", "10"});
  const StartedApplication idle(entries.install("idle", self()),
                                {testing::beApplication, "idle", "300"});
  std::this_thread::sleep_for(milliseconds(3000));

  // The first look: over the process's life, as ps counts.
  monitor->updateInfo();
  for (const auto pid : {busy.pid(), idle.pid()}) {
    ASSERT_TRUE(records.contains(pid));
    const auto ps = toldByPs(pid);
    const auto& info = *records[pid];
    EXPECT_NEAR(info.cpu(), ps.cpu, 5.0);  // points of a percent
    EXPECT_NEAR(info.memory(), ps.memory, 0.2);
    EXPECT_NEAR(info.phyMemoryPages(), ps.resident, std::max(512.0, ps.resident / 50));
    EXPECT_EQ(info.virtMemoryPages(), std::min(ps.virtualSize, 2147483647.0));
    if (pid == idle.pid()) {
      EXPECT_EQ(info.stats(), ps.state);
    }
  }
  EXPECT_EQ(records[busy.pid()]->appName(), "The busy");
  EXPECT_EQ(records[busy.pid()]->appPath(), entries.entry("busy"));
  EXPECT_GT(records[idle.pid()]->phyMemoryPages(), 300 << 10);

  // Then: over the two seconds since the look before, as top counts.
  for (const auto pid : {busy.pid(), idle.pid()}) {
    monitor->updateInfo();
    const double top = toldByTop(pid);
    const auto info = sampled(pid);
    ASSERT_GE(top, 0);
    // Others use the processors, too, and top's two seconds begin a moment later.
    EXPECT_NEAR(info->cpu(), top, pid == busy.pid() ? 10.0 : 1.0);
  }
}

TEST_F(LiveProcess, AnApplicationThatIsLaunchedAppearsAndLeaves) {
  if (run("gio version").status != 0) GTEST_SKIP() << "no gio(1)";
  entries.install("nap", "/bin/sleep", " 600");
  EXPECT_EQ(awaited("The nap", false), -1);
  ASSERT_EQ(run("gio launch " + quoted(entries.entry("nap")) + " </dev/null >/dev/null").status, 0);
  const auto pid = awaited("The nap");
  ASSERT_GT(pid, 0);
  EXPECT_EQ(records[pid]->appPath(), entries.entry("nap"));
  ::kill(pid, SIGTERM);
  EXPECT_EQ(awaited("The nap", false), -1);
}

/// Launches an entry as desktops do.
bool launch(const std::string& entry) {
  GDesktopAppInfo* const info = g_desktop_app_info_new_from_filename(entry.c_str());
  if (!info) return false;
  const bool launched = g_app_info_launch(G_APP_INFO(info), nullptr, nullptr, nullptr) != FALSE;
  g_object_unref(info);
  return launched;
}

TEST_F(LiveProcess, AnApplicationIsKnownByItsEnvironmentAlone) {
  const auto entry = entries.entry("script");
  std::ofstream(entry) << "[Desktop Entry]\nType=Application\nName=The script\n"
                          "Exec=sh -c \"exec sleep 600\"\n";  // no entry's program
  ASSERT_TRUE(launch(entry));
  const auto pid = awaited("The script");
  ASSERT_GT(pid, 0);
  EXPECT_EQ(records[pid]->appPath(), entry);
  ::kill(pid, SIGKILL);
  EXPECT_EQ(awaited("The script", false), -1);
  ::waitpid(pid, nullptr, 0);
}

TEST_F(LiveProcess, AProgramThatBecomesAnApplicationAppears) {
  const auto program = entries.install("late", self());
  const StartedApplication shell("/bin/sh", {"-c", "sleep 1; exec " + quoted(program) + " " +
                                                       testing::beApplication + " idle 0"});
  EXPECT_EQ(awaited("The late"), shell.pid());
}

/// Starts a program under a pid that was another's; 0 where that is not allowed.
pid_t startUnder(pid_t wanted, const std::string& program) {
  clone_args arguments = {};
  arguments.exit_signal = SIGCHLD;
  arguments.set_tid = reinterpret_cast<std::uint64_t>(&wanted);
  arguments.set_tid_size = 1;
  const auto pid = static_cast<pid_t>(::syscall(SYS_clone3, &arguments, sizeof arguments));
  if (pid == 0) {
    ::execl(program.c_str(), program.c_str(), testing::beApplication, "idle", "0", nullptr);
    ::_exit(127);
  }
  return std::max(pid, 0);
}

TEST_F(LiveProcess, AReusedPidHasNoFiguresOfTheProcessBefore) {
  const auto other = entries.install("other", self());
  StartedApplication busy(entries.install("busy", self()), {testing::beApplication, "busy", "200"});
  const auto pid = busy.pid();
  for (int sample = 0; sample < 20; ++sample) {
    ASSERT_TRUE(sampled(pid));
    std::this_thread::sleep_for(milliseconds(100));
  }
  EXPECT_GT(records[pid]->cpu(), 10);
  EXPECT_GT(records[pid]->phyMemoryPages(), 200 << 10);
  busy.end();
  if (startUnder(pid, other) != pid) GTEST_SKIP() << "a pid may not be chosen here";
  std::this_thread::sleep_for(milliseconds(1500));
  const auto info = sampled(pid);
  ::kill(pid, SIGKILL);
  ::waitpid(pid, nullptr, 0);
  ASSERT_TRUE(info);
  EXPECT_EQ(info->appName(), "The other");
  EXPECT_LT(info->cpu(), 40);  // of its 1.5 seconds; starting it takes some
  EXPECT_LT(info->phyMemoryPages(), 200 << 10);
}

TEST_F(LiveProcess, ThousandsThatComeAndGoLeaveNothingBehind) {
  const auto program = entries.install("brief", "/bin/sleep");
  {
    const StartedApplication first(program, {"60"});
    ASSERT_GT(awaited("The brief"), 0);
    for (int sample = 0; sample < 10; ++sample) sampled(0);  // until what is kept has been opened
  }
  ASSERT_EQ(awaited("The brief", false), -1);
  const auto before = testing::openDescriptors();
  std::atomic<bool> done = false;
  std::thread starter([&] {
    for (int number = 0; number < 2000; number += 4) {
      const std::vector<std::string> briefly = {"0.004"};
      const StartedApplication a(program, briefly), b(program, briefly), c(program, briefly),
          d(program, briefly);
      std::this_thread::sleep_for(milliseconds(number % 3 * 2));
    }
    done = true;
  });
  int samples = 0;
  std::size_t seen = 0;
  while (!done) {
    monitor->updateInfo();
    ++samples;
    for (const auto& [pid, info] : records) {
      if (info->appName() != "The brief") continue;
      ++seen;
      EXPECT_LE(info->cpu(), 110) << "a share of more than the process's life";
    }
  }
  starter.join();
  EXPECT_GT(samples, 50);
  EXPECT_GT(seen, 50u);
  EXPECT_EQ(awaited("The brief", false), -1);
  EXPECT_EQ(testing::openDescriptors(), before);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
  EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace vantile
