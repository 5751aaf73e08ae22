#include "vantile/platform/linux/pressure_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

constexpr std::uint64_t gibibyte = 1 << 30;
constexpr std::size_t mebibyte = 1 << 20;

/// A machine of 8 GiB, 6 GiB of it available, in a temporary folder.
struct LinuxPressureMemoryTest : ::testing::Test {
  LinuxPressureMemoryTest() { available(6 * gibibyte); }

  void available(std::uint64_t bytes) {
    folder.file("proc/meminfo", "MemTotal: 8388608 kB\nMemFree: 1 kB\nMemAvailable: " +
                                    std::to_string(bytes / 1024) + " kB\n");
  }
  void inGroup(const std::string& cgroup, const std::string& type, const std::string& options) {
    folder.file("proc/self/cgroup", cgroup);
    folder.file("proc/self/mountinfo",
                "1 0 0:1 / " + folder.path("cg") + " rw - " + type + " x rw" + options + "\n");
  }
  void unifiedGroup() { inGroup("0::/user/app\n", "cgroup2", ""); }
  void oldGroup() { inGroup("4:memory:/user/app\n", "cgroup", ",memory"); }
  void set(const std::string& file, std::uint64_t number) {
    folder.file("cg/" + file, std::to_string(number) + "\n");
  }
  bool givesChunk(std::size_t bytes) {
    void* const chunk = memory.chunk(bytes);
    memory.release(chunk);
    return chunk;
  }

  TemporaryFolder folder;
  LinuxPressureMemory memory{LinuxRoots{folder.path("proc"), folder.path("sys")}};
};

TEST_F(LinuxPressureMemoryTest, TheMachineIsARoom) {
  const auto rooms = memory.rooms();
  ASSERT_EQ(rooms.size(), 1u);
  EXPECT_EQ(rooms[0].total, 8 * gibibyte);
  EXPECT_EQ(rooms[0].available, 6 * gibibyte);
}

TEST_F(LinuxPressureMemoryTest, AMachineThatDoesNotTellHasNoRoomAndGivesNoChunk) {
  folder.file("proc/meminfo", "MemTotal: 8388608 kB\n");
  EXPECT_TRUE(memory.rooms().empty());
  EXPECT_FALSE(givesChunk(4096));
  folder.remove("proc/meminfo");
  EXPECT_TRUE(memory.rooms().empty());
  EXPECT_FALSE(givesChunk(4096));
}

TEST_F(LinuxPressureMemoryTest, EveryLimitedGroupUpToTheMountPointIsARoom) {
  unifiedGroup();
  folder.file("cg/user/app/memory.max", "max\n");
  set("user/app/memory.current", 5);
  set("user/memory.max", 4 * gibibyte);
  set("user/memory.current", gibibyte);
  set("memory.max", 7 * gibibyte);
  set("memory.current", 2 * gibibyte);
  const auto rooms = memory.rooms();
  ASSERT_EQ(rooms.size(), 3u);
  EXPECT_EQ(rooms[1].total, 4 * gibibyte);
  EXPECT_EQ(rooms[1].available, 3 * gibibyte);
  EXPECT_EQ(rooms[2].available, 5 * gibibyte);
}

TEST_F(LinuxPressureMemoryTest, CacheChargedToAGroupIsAvailable) {
  unifiedGroup();
  set("user/app/memory.max", 2 * gibibyte);
  set("user/app/memory.current", 2 * gibibyte);
  folder.file("cg/user/app/memory.stat", "file_dirty 0\nfile_writeback 0\ninactive_file " +
                                             std::to_string(gibibyte) + "\nactive_file 4096\n");
  ASSERT_EQ(memory.rooms().size(), 2u);
  EXPECT_EQ(memory.rooms()[1].available, gibibyte + 4096);
}

TEST_F(LinuxPressureMemoryTest, AGroupIsHeldToTheSmallerOfItsTwoLimits) {
  unifiedGroup();
  set("user/app/memory.max", 2 * gibibyte);
  set("user/app/memory.high", gibibyte);
  set("user/app/memory.current", 0);
  EXPECT_EQ(memory.rooms().at(1).total, gibibyte);
  set("user/app/memory.high", 3 * gibibyte);
  EXPECT_EQ(memory.rooms().at(1).total, 2 * gibibyte);
  folder.file("cg/user/app/memory.max", "max\n");
  EXPECT_EQ(memory.rooms().at(1).total, 3 * gibibyte);
}

TEST_F(LinuxPressureMemoryTest, GroupsOfTheFirstVersionAreRooms) {
  oldGroup();
  set("user/app/memory.limit_in_bytes", 2 * gibibyte);
  set("user/app/memory.usage_in_bytes", gibibyte);
  folder.file("cg/user/app/memory.stat",
              "inactive_file 0\ntotal_inactive_file 4096\ntotal_active_file 8192\n");
  set("user/memory.limit_in_bytes", 9223372036854771712u);
  set("user/memory.usage_in_bytes", 0);
  const auto rooms = memory.rooms();
  ASSERT_EQ(rooms.size(), 3u);
  EXPECT_EQ(rooms[1].total, 2 * gibibyte);
  EXPECT_EQ(rooms[1].available, gibibyte + 12288);
}

TEST_F(LinuxPressureMemoryTest, OnAHybridMachineOnlyTheGroupThatAccountsIsARoom) {
  inGroup("4:memory:/user\n0::/user\n", "cgroup", ",memory");
  folder.folder("unified/user");
  set("user/memory.limit_in_bytes", gibibyte);
  set("user/memory.usage_in_bytes", 0);
  EXPECT_EQ(memory.rooms().size(), 2u);
}

TEST_F(LinuxPressureMemoryTest, AGroupWhoseUseIsUnknownMayBeFull) {
  unifiedGroup();
  set("user/app/memory.max", gibibyte);
  ASSERT_EQ(memory.rooms().size(), 2u);
  EXPECT_EQ(memory.rooms().back().available, 0u);
  EXPECT_FALSE(memory.chunk(mebibyte));
}

TEST_F(LinuxPressureMemoryTest, AChunkIsPageAlignedAndWritable) {
  auto* const chunk = static_cast<char*>(memory.chunk(mebibyte));
  ASSERT_TRUE(chunk);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(chunk) %
                static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE)),
            0u);
  chunk[0] = chunk[mebibyte - 1] = 1;
  memory.release(chunk);
}

TEST_F(LinuxPressureMemoryTest, AChunkLeavesTheMachineItsReserve) {
  available(513 * mebibyte);
  EXPECT_TRUE(givesChunk(mebibyte));
  EXPECT_FALSE(givesChunk(mebibyte + 1));
}

TEST_F(LinuxPressureMemoryTest, AChunkLeavesEveryGroupItsReserve) {
  unifiedGroup();
  set("user/app/memory.max", 4 * gibibyte);
  set("user/app/memory.current", 0);
  set("user/memory.max", gibibyte);
  set("user/memory.current", 511 * mebibyte);
  EXPECT_TRUE(givesChunk(mebibyte));
  EXPECT_FALSE(givesChunk(mebibyte + 1));
}

TEST_F(LinuxPressureMemoryTest, ZeroedMemoryIsZeroedAndNotHeldToTheReserve) {
  available(0);
  auto* const block = static_cast<unsigned char*>(memory.zeroed(1024));
  ASSERT_TRUE(block);
  const unsigned char zeroes[1024] = {};
  EXPECT_EQ(std::memcmp(block, zeroes, 1024), 0);
  memory.release(block);
}

TEST_F(LinuxPressureMemoryTest, ReleasingNothingDoesNothing) {
  memory.release(nullptr);
}

}  // namespace
}  // namespace vantile
