// Samples of this machine against what its own tools say.

#include "vantile/memory/memory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "live/command.h"
#include "live/real_disk.h"

namespace vantile {
namespace {

using testing::run;

/// The numbers of /proc/meminfo, in bytes.
std::map<std::string, double> meminfo() {
  std::map<std::string, double> numbers;
  std::istringstream lines(run("cat /proc/meminfo").text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string name;
    double kibibytes = 0;
    if (fields >> name >> kibibytes) numbers[name.substr(0, name.size() - 1)] = kibibytes * 1024;
  }
  return numbers;
}

/// The shared monitor with a delegate that keeps the last sample.
struct LiveMemory : ::testing::Test {
  LiveMemory() {
    if (!monitor) return;
    delegate->updateMemoryStatusWithVMStatusWithSwapDict =
        [this](const Dictionary& newMemory, const Dictionary& newVm, const Dictionary*) {
          memory = newMemory;
          vm = newVm;
          ++samples;
        };
    monitor->setDelegate(delegate);
  }
  ~LiveMemory() override {
    if (monitor) monitor->setDelegate(nullptr);
  }

  void SetUp() override { ASSERT_TRUE(monitor); }
  void sample() {
    const auto before = samples;
    monitor->updateInfo();
    ASSERT_EQ(samples, before + 1);
  }
  double bytes(std::string_view key) const { return memory.number(key).value(); }

  const std::shared_ptr<KVDMemory> monitor = KVDMemory::singleton();
  const std::shared_ptr<MemoryDelegate> delegate = std::make_shared<MemoryDelegate>();
  Dictionary memory, vm;
  int samples = 0;
};

TEST_F(LiveMemory, TotalsAreWithinOnePercentOfFree) {
  const auto output = run("free -b");
  if (output.status != 0) GTEST_SKIP() << "no free(1): " << output.text;
  sample();
  std::istringstream words(output.text.substr(output.text.find("Mem:") + 4));
  double total = 0, used = 0, free = 0;
  ASSERT_TRUE(words >> total >> used >> free);
  EXPECT_NEAR(bytes("memory_total"), total, total / 100);
  EXPECT_NEAR(bytes("memory_freepage"), free, total / 100);
  EXPECT_NEAR(static_cast<double>(monitor->physicalMemory()), total, total / 100);
}

TEST_F(LiveMemory, PartsAreWithinOnePercentOfTheKernelsCounts) {
  sample();
  auto kernel = meminfo();
  const auto tolerance = kernel["MemTotal"] / 100;
  EXPECT_NEAR(bytes("memory_active"), kernel["Active"], tolerance);
  EXPECT_NEAR(bytes("memory_inactive"), kernel["Inactive"], tolerance);
  EXPECT_NEAR(bytes("memory_freepage"), kernel["MemFree"], tolerance);
  EXPECT_NEAR(bytes("memory_free"), kernel["MemFree"] + kernel["Inactive"], tolerance);
  EXPECT_NEAR(bytes("memory_used"), kernel["MemTotal"] - kernel["MemFree"] - kernel["Inactive"],
              tolerance);
}

TEST_F(LiveMemory, MemoryThatIsTakenIsUsed) {
  constexpr std::size_t size = 1 << 30;
  if (meminfo()["MemAvailable"] < 4.0 * size) GTEST_SKIP() << "less than 4 GiB are available";
  // Others take memory and give it back meanwhile, and what was free may have been counted as used
  // in the processors' own lists: a quarter of it must show, in one of ten tries.
  double most = 0;
  for (int attempt = 0; attempt < 10 && most <= size / 4.0; ++attempt) {
    sample();
    const auto before = bytes("memory_used");
    void* const taken = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_LOCKED | MAP_POPULATE, -1, 0);
    if (taken == MAP_FAILED) GTEST_SKIP() << "so much memory may not be locked here";
    sample();
    ::munmap(taken, size);
    most = std::max(most, bytes("memory_used") - before);
  }
  EXPECT_GT(most, size / 4.0);
}

TEST_F(LiveMemory, FaultsGrowAsPagesAreTouched) {
  constexpr std::size_t pages = 10000;
  sample();
  const auto before = vm.uint64("vm_faults").value();
  void* const touched =
      ::mmap(nullptr, pages * 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(touched, MAP_FAILED);
  ::madvise(touched, pages * 4096, MADV_NOHUGEPAGE);
  for (std::size_t page = 0; page < pages; ++page)
    static_cast<volatile char*>(touched)[page * 4096] = 1;
  sample();
  ::munmap(touched, pages * 4096);
  EXPECT_GE(vm.uint64("vm_faults").value(), before + pages);
}

TEST_F(LiveMemory, PageOutsAreThePagesWritten) {
  const testing::TemporaryFolder folder(testing::buildFolder());
  if (!testing::isOnDisk(folder.path())) GTEST_SKIP() << folder.path() << " is on no disk";
  run("sync");
  sample();
  ASSERT_TRUE(testing::writeToDisk(folder.path("written"), 200));
  sample();
  const auto delta = vm.uint64("vm_deltapageouts").value();
  // 200 MiB are 51,200 pages of 4 KiB. All of them were written, and at most 2 GiB by others.
  EXPECT_GE(delta, 51200u * 98 / 100);
  EXPECT_LE(delta, 51200u + (2048u << 8));
}

TEST_F(LiveMemory, PageInsAreThePagesRead) {
  const testing::TemporaryFolder folder(testing::buildFolder());
  if (!testing::isOnDisk(folder.path())) GTEST_SKIP() << folder.path() << " is on no disk";
  const auto path = folder.path("read");
  ASSERT_TRUE(testing::writeToDisk(path, 100));
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED), 0);
  ::close(file);
  sample();
  EXPECT_EQ(run("cat " + path + " >/dev/null").status, 0);
  sample();
  EXPECT_GE(vm.uint64("vm_deltapageins").value(), 25600u * 98 / 100);
  EXPECT_LE(vm.uint64("vm_deltapageins").value(), 25600u + (2048u << 8));
}

TEST_F(LiveMemory, NothingThatLinuxDoesNotCountIsReported) {
  sample();
  for (const char* key : {"vm_hits", "vm_lookups", "vm_cowfaults", "vm_speculativecount"})
    EXPECT_FALSE(vm.contains(key)) << key;
}

}  // namespace
}  // namespace vantile
