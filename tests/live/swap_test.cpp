// Swap areas that come and go on this machine, against swapon.

#include <gtest/gtest.h>
#include <sys/swap.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "vantile/memory/memory.h"

#include "live/command.h"
#include "live/real_disk.h"

namespace vantile {
namespace {

using testing::quoted;
using testing::run;

/// A swap area as swapon lists it.
struct Listed {
  std::string name;
  std::uint64_t bytes = 0, used = 0;
};

std::vector<Listed> listed() {
  std::vector<Listed> areas;
  std::istringstream lines(run("swapon --show=SIZE,USED,NAME --bytes --noheadings --raw").text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    Listed area;
    if (fields >> area.bytes >> area.used >> area.name) areas.push_back(area);
  }
  return areas;
}

/// Undoes what a test did to the machine, last things first, however it ends.
class Undo {
 public:
  ~Undo() {
    for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) (*step)();
  }
  void add(std::function<void()> step) { steps_.push_back(std::move(step)); }

 private:
  std::vector<std::function<void()>> steps_;
};

struct LiveSwap : ::testing::Test {
  void SetUp() override { ASSERT_TRUE(KVDMemory::singleton()); }

  /// What a new monitor says of the machine's swap.
  static Dictionary statistics() { return *KVDMemory::init()->swapStats(); }

  static void expectAgreement() {
    const auto areas = listed();
    const auto swap = statistics();
    std::uint64_t bytes = 0, used = 0;
    for (const auto& area : areas) {
      bytes += area.bytes;
      used += area.used;
    }
    EXPECT_EQ(swap.uint64("swap_count"), areas.size());
    EXPECT_EQ(swap.uint64("swap_countpeak"), areas.size());
    EXPECT_EQ(swap.uint64("swap_size"), bytes);
    // What is in use may change between the two looks.
    EXPECT_NEAR(swap.number("swap_used").value(), static_cast<double>(used), 16 << 20);
  }
};

TEST_F(LiveSwap, OfTheMachineAsItIsAgreesWithSwapon) {
  expectAgreement();
}

TEST_F(LiveSwap, AMonitorTellsOnce) {
  const auto monitor = KVDMemory::init();
  EXPECT_TRUE(monitor->swapStats());
  EXPECT_FALSE(monitor->swapStats());
}

struct LiveSwapFile : LiveSwap {
  void SetUp() override {
    LiveSwap::SetUp();
    if (::geteuid() != 0) GTEST_SKIP() << "only root switches swap on";
  }

  /// Makes a swap file of 64 MiB and switches it on; why not, where the system refuses.
  std::string switchOn(const std::string& path) {
    if (!testing::writeToDisk(path, 64)) return "can't write " + path;
    const auto made = run("mkswap " + quoted(path));
    if (made.status != 0) return made.text;
    const auto on = run("swapon " + quoted(path));
    if (on.status != 0) return on.text;
    undo.add([path] { ::swapoff(path.c_str()); });
    return {};
  }

  const testing::TemporaryFolder folder{testing::buildFolder()};
  Undo undo;  // before the folder goes
};

TEST_F(LiveSwapFile, AFileIsCountedWhileItIsSwitchedOn) {
  const auto before = statistics();
  const auto path = folder.path("area");
  if (const auto refused = switchOn(path); !refused.empty()) GTEST_SKIP() << refused;
  expectAgreement();
  const auto during = statistics();
  EXPECT_EQ(during.uint64("swap_count"), *before.uint64("swap_count") + 1);
  EXPECT_EQ(*during.uint64("swap_size") - *before.uint64("swap_size"), (64u << 20) - 4096);
  EXPECT_EQ(during.boolean("swap_encrypted"), false);
  ASSERT_EQ(::swapoff(path.c_str()), 0);
  expectAgreement();
  EXPECT_EQ(statistics().uint64("swap_count"), before.uint64("swap_count"));
}

TEST_F(LiveSwapFile, TheFirstFileNamesTheFolder) {
  for (const auto& area : listed()) {
    if (!area.name.starts_with("/dev/")) GTEST_SKIP() << "there is a swap file already";
  }
  if (const auto refused = switchOn(folder.path("area")); !refused.empty()) GTEST_SKIP() << refused;
  EXPECT_EQ(*statistics().text("swap_path"), folder.path());
}

TEST_F(LiveSwapFile, AFileWithASpaceInItsNameIsCounted) {
  if (const auto refused = switchOn(folder.folder("a folder") + "/swap area"); !refused.empty())
    GTEST_SKIP() << refused;
  expectAgreement();
}

struct LiveSwapZram : LiveSwap {
  void SetUp() override {
    LiveSwap::SetUp();
    if (::geteuid() != 0) GTEST_SKIP() << "only root switches swap on";
    if (!std::filesystem::exists("/dev/zram0")) GTEST_SKIP() << "there is no /dev/zram0";
    if (run("cat /sys/block/zram0/disksize").text != "0\n")
      GTEST_SKIP() << "/dev/zram0 is in use already";
    undo.add([] { run("echo 1 > /sys/block/zram0/reset"); });
    for (const char* step : {"echo 256M > /sys/block/zram0/disksize", "mkswap /dev/zram0",
                             "swapon -p 100 /dev/zram0"}) {
      const auto done = run(step);
      if (done.status != 0) GTEST_SKIP() << step << ": " << done.text;
    }
    undo.add([] { ::swapoff("/dev/zram0"); });
  }

  Undo undo;
};

TEST_F(LiveSwapZram, IsCountedButNamesNoFolder) {
  expectAgreement();
  const auto files = run("grep -c file /proc/swaps").text;
  if (files != "0\n") GTEST_SKIP() << "there is a swap file besides";
  EXPECT_EQ(*statistics().text("swap_path"), "/private/var/vm/");
}

TEST_F(LiveSwapZram, IsTheCompressor) {
  Dictionary memory;
  const auto delegate = std::make_shared<MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict =
      [&memory](const Dictionary& taken, const Dictionary&, const Dictionary*) { memory = taken; };
  const auto monitor = KVDMemory::init();
  monitor->setDelegate(delegate);
  monitor->updateInfo();
  std::istringstream fields(run("cat /sys/block/zram0/mm_stat").text);
  double held = 0, compressed = 0, occupied = 0;
  ASSERT_TRUE(fields >> held >> compressed >> occupied);
  EXPECT_GE(memory.number("memory_uncompressed").value(), held - 65536);
  EXPECT_GE(memory.number("memory_compressed").value(), occupied - 65536);
  EXPECT_GT(held, 0);  // the swap's own header
}

}  // namespace
}  // namespace vantile
