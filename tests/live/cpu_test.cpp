// Processor samples of this machine against what /proc and ps say.

#include "vantile/sensors/cpu.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include "live/command.h"

namespace vantile {
namespace {

using testing::run;

using Parts = std::array<double, 3>;  // system, user, idle

/// The columns of every processor in /proc/stat, read without the library.
std::map<std::uint32_t, std::array<double, 8>> processorColumns() {
  std::map<std::uint32_t, std::array<double, 8>> all;
  std::ifstream file("/proc/stat");
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::string name;
    fields >> name;
    if (!name.starts_with("cpu") || name.size() == 3) continue;
    auto& columns = all[static_cast<std::uint32_t>(std::stoul(name.substr(3)))];
    for (auto& column : columns) fields >> column;
  }
  return all;
}

Parts partsBetween(const std::array<double, 8>& before, const std::array<double, 8>& after) {
  std::array<double, 8> grown;
  double total = 0;
  for (std::size_t at = 0; at < grown.size(); ++at) {
    grown[at] = after[at] - before[at];
    total += grown[at];
  }
  return {(grown[2] + grown[5] + grown[6] + grown[7]) / total, (grown[0] + grown[1]) / total,
          (grown[3] + grown[4]) / total};
}

/// Keeps a processor busy while it lives.
class BusyLoop {
 public:
  explicit BusyLoop(int processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<unsigned>(processor), &set);
    isPinned_ = ::pthread_setaffinity_np(thread_.native_handle(), sizeof set, &set) == 0;
  }
  ~BusyLoop() {
    stop_ = true;
    thread_.join();
  }
  bool isPinned() const { return isPinned_; }

 private:
  std::atomic<bool> stop_ = false;
  bool isPinned_ = false;
  std::thread thread_{[this] {
    while (!stop_) {
    }
  }};
};

/// The shared monitor, without its timer, with a delegate that keeps the last sample.
struct LiveCpu : ::testing::Test {
  void SetUp() override {
    ASSERT_TRUE(monitor);
    monitor->setFreshInterval(0);
    delegate->cpuUsedWithCoreWithSystemWithUserWithIdle = [this](std::uint32_t core, float system,
                                                                 float user, float idle) {
      cores[core] = {system, user, idle};
    };
    delegate->cpuUsedWithSystemWithUserWithIdle = [this](float system, float user, float idle) {
      all = {system, user, idle};
    };
    delegate->processorWithTaskCountWithThreadCount = [this](std::int32_t newTasks,
                                                             std::int32_t newThreads) {
      tasks = newTasks;
      threads = newThreads;
    };
    delegate->loadAverageWith1mWith5mWith15m = [this](float one, float five, float fifteen) {
      loads = {one, five, fifteen};
    };
    monitor->setDelegate(delegate);
  }
  void TearDown() override {
    if (monitor) monitor->setDelegate(nullptr);
  }

  /// Whether /proc shows the whole machine's processes.
  static bool seesAllProcesses() {
    char target[64] = {};
    return ::readlink("/proc/self/ns/pid", target, sizeof target - 1) > 0 &&
           std::string(target) == "pid:[4026531836]";
  }

  /// How many lines `ps` gives with these options, without those of the processes that it takes to
  /// run it: this one's children and theirs.
  static int countedByPs(const std::string& options) {
    std::istringstream lines(run("ps " + options + " -o pid=,ppid=").text);
    std::set<int> own = {::getpid()};
    int count = 0;
    for (int pid = 0, parent = 0; lines >> pid >> parent;) {
      if (own.contains(parent)) {
        own.insert(pid);
      } else {
        ++count;
      }
    }
    return count;
  }

  /// Whether `figure` agrees with ps in one of a few tries: others come and go meanwhile.
  template <class Figure>
  ::testing::AssertionResult agrees(const std::string& options, Figure figure) {
    std::string tries;
    for (int attempt = 0; attempt < 20; ++attempt) {
      monitor->updateInfo();
      const int before = figure();
      const int counted = countedByPs(options);
      monitor->updateInfo();
      const int after = figure();
      if (before == counted && after == counted) return ::testing::AssertionSuccess();
      tries += std::to_string(before) + ".." + std::to_string(after) + " and not " +
               std::to_string(counted) + "\n";
    }
    return ::testing::AssertionFailure() << tries;
  }

  const std::shared_ptr<CPUStatus> monitor = CPUStatus::singleton();
  const std::shared_ptr<CPUDelegate> delegate = std::make_shared<CPUDelegate>();
  std::map<std::uint32_t, Parts> cores;
  Parts all = {}, loads = {};
  int tasks = 0, threads = 0;
};

TEST_F(LiveCpu, UsageUnderLoadIsWithinFivePointsOfProc) {
  cpu_set_t allowed;
  ASSERT_EQ(::sched_getaffinity(0, sizeof allowed, &allowed), 0);
  int busy = 0;
  while (!CPU_ISSET(static_cast<unsigned>(busy), &allowed)) ++busy;

  const BusyLoop loop(busy);
  ASSERT_TRUE(loop.isPinned());
  monitor->updateInfo();
  const auto before = processorColumns();
  std::this_thread::sleep_for(std::chrono::seconds(2));
  const auto after = processorColumns();
  monitor->updateInfo();

  ASSERT_GE(cores.size(), before.size());
  for (const auto& [core, parts] : cores) {
    if (!before.contains(core)) continue;  // it is offline
    const auto truth = partsBetween(before.at(core), after.at(core));
    for (std::size_t part = 0; part < truth.size(); ++part)
      EXPECT_NEAR(parts[part], truth[part], 0.05) << "core " << core << ", part " << part;
  }
  EXPECT_LT(cores.at(static_cast<std::uint32_t>(busy))[2], 0.2);
  EXPECT_NEAR(all[0] + all[1] + all[2], 1, 0.001);
}

TEST_F(LiveCpu, AllProcessorsAreToldOfWhereThisThreadMayUseOne) {
  cpu_set_t allowed, one;
  ASSERT_EQ(::sched_getaffinity(0, sizeof allowed, &allowed), 0);
  CPU_ZERO(&one);
  CPU_SET(static_cast<unsigned>(::sched_getcpu()), &one);
  ASSERT_EQ(::sched_setaffinity(0, sizeof one, &one), 0);
  const auto limited = CPUStatus::init();
  limited->setDelegate(delegate);
  cores.clear();
  limited->updateInfo();
  ASSERT_EQ(::sched_setaffinity(0, sizeof allowed, &allowed), 0);
  EXPECT_GE(cores.size(), processorColumns().size());
  EXPECT_EQ(limited->getNumberOfCPUs(), static_cast<std::int32_t>(processorColumns().size()));
}

/// A group of processes that may use one processor's time in all, gone at the test's end.
class QuotaGroup {
 public:
  QuotaGroup() {
    const auto name = "/vantile-test-" + std::to_string(::getpid());
    for (const std::string hierarchy : {"", "/cpu", "/cpu,cpuacct"}) {
      path_ = "/sys/fs/cgroup" + hierarchy + name;
      if (::mkdir(path_.c_str(), 0755) != 0) continue;
      if (write("/cpu.max", "100000 100000") ||
          (write("/cpu.cfs_period_us", "100000") && write("/cpu.cfs_quota_us", "100000")))
        return;
      ::rmdir(path_.c_str());
    }
    path_.clear();
  }
  ~QuotaGroup() {
    if (!path_.empty()) ::rmdir(path_.c_str());
  }
  QuotaGroup(const QuotaGroup&) = delete;
  QuotaGroup& operator=(const QuotaGroup&) = delete;

  const std::string& path() const { return path_; }

 private:
  bool write(const char* file, const char* text) const {
    std::ofstream to(path_ + file);
    return to.is_open() && (to << text).flush().good();
  }
  std::string path_;
};

TEST_F(LiveCpu, AQuotaLeavesCountsAndUseThoseOfTheMachine) {
  const QuotaGroup group;
  if (group.path().empty()) GTEST_SKIP() << "no group with a quota can be made here";
  // The tests above, by a process within the quota.
  const auto inside = run("echo $$ > " + group.path() + "/cgroup.procs && exec /proc/" +
                          std::to_string(::getpid()) +
                          "/exe --gtest_filter='LiveCpu.AllProcessorsAre*:LiveCpu.UsageUnderLoad*:"
                          "LiveCpu.ProcessorsAreAsMany*'");
  EXPECT_EQ(inside.status, 0) << inside.text;
  EXPECT_NE(inside.text.find("3 tests from"), std::string::npos) << inside.text;
}

TEST_F(LiveCpu, TasksAreTheProcessesOfPs) {
  if (!seesAllProcesses()) GTEST_SKIP() << "ps shows this container's processes alone";
  EXPECT_TRUE(agrees("-e", [this] { return tasks; }));
}

TEST_F(LiveCpu, ThreadsAreThoseOfPs) {
  if (!seesAllProcesses()) GTEST_SKIP() << "ps shows this container's processes alone";
  EXPECT_TRUE(agrees("-eL", [this] { return threads; }));
}

TEST_F(LiveCpu, LoadAveragesAreThoseOfProc) {
  for (int attempt = 0; attempt < 3; ++attempt) {  // the kernel moves them on every five seconds
    Parts truth = {};
    monitor->updateInfo();
    std::ifstream("/proc/loadavg") >> truth[0] >> truth[1] >> truth[2];
    bool isSame = true;
    for (std::size_t at = 0; at < truth.size(); ++at)
      isSame = isSame && std::abs(loads[at] - truth[at]) <= 0.011;
    if (isSame) return;
  }
  FAIL() << loads[0] << " " << loads[1] << " " << loads[2];
}

TEST_F(LiveCpu, ProcessorsAreAsManyAsAreOnline) {
  const auto output = run("getconf _NPROCESSORS_ONLN");
  ASSERT_EQ(output.status, 0);
  EXPECT_EQ(monitor->getNumberOfCPUs(), std::stoi(output.text));
}

}  // namespace
}  // namespace vantile
