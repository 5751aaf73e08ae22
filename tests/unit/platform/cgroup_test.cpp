#include "vantile/platform/parsers/cgroup.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

using Folders = std::vector<std::string>;

std::vector<MemoryGroup> groupsOf(const std::string& cgroup, const std::string& mounts) {
  return memoryGroups(cgroup, parseMountinfo(mounts));
}

TEST(MemoryGroups, OfTheSecondVersionGoUpToTheMountPoint) {
  const auto groups = groupsOf(fixture("cgroup-v2.txt"), fixture("mountinfo-v2.txt"));
  ASSERT_EQ(groups.size(), 1u);
  EXPECT_TRUE(groups[0].unified);
  EXPECT_EQ(groups[0].folders, (Folders{"/sys/fs/cgroup/user.slice/user-1000.slice/session-2.scope",
                                        "/sys/fs/cgroup/user.slice/user-1000.slice",
                                        "/sys/fs/cgroup/user.slice", "/sys/fs/cgroup"}));
}

TEST(MemoryGroups, OfAHybridMachineAreOneForEachVersion) {
  const auto groups = groupsOf(fixture("cgroup-hybrid.txt"), fixture("mountinfo-hybrid.txt"));
  ASSERT_EQ(groups.size(), 2u);
  EXPECT_FALSE(groups[0].unified);
  EXPECT_EQ(groups[0].folders, (Folders{"/sys/fs/cgroup/memory/session/run-1",
                                        "/sys/fs/cgroup/memory/session", "/sys/fs/cgroup/memory"}));
  EXPECT_TRUE(groups[1].unified);
  EXPECT_EQ(groups[1].folders, Folders{"/sys/fs/cgroup/unified"});
}

TEST(MemoryGroups, OfAContainerBeginWhereTheMountDoes) {
  const auto groups =
      groupsOf(fixture("cgroup-container-v1.txt"), fixture("mountinfo-container-v1.txt"));
  ASSERT_EQ(groups.size(), 1u);
  EXPECT_EQ(groups[0].folders, (Folders{"/sys/fs/cgroup/memory/inner", "/sys/fs/cgroup/memory"}));
}

TEST(MemoryGroups, OutsideTheMountedOneOnlyTheMountPointIsSeen) {
  const std::string mounts = "1 0 0:1 /docker/a /cg rw - cgroup cgroup rw,memory\n";
  EXPECT_EQ(groupsOf("4:memory:/docker/abc\n", mounts)[0].folders, Folders{"/cg"});
  EXPECT_EQ(groupsOf("4:memory:/\n", mounts)[0].folders, Folders{"/cg"});
  EXPECT_EQ(groupsOf("4:memory:/docker/a\n", mounts)[0].folders, Folders{"/cg"});
}

TEST(MemoryGroups, TheControllerMayBeOneOfSeveral) {
  const std::string mounts = "1 0 0:1 / /cg rw - cgroup cgroup rw,cpu,memory\n";
  EXPECT_EQ(groupsOf("4:cpu,memory:/g\n", mounts).size(), 1u);
  EXPECT_EQ(groupsOf("4:memory,cpu:/g\n", mounts).size(), 1u);
  EXPECT_TRUE(groupsOf("4:cpumemory:/g\n", mounts).empty());
}

TEST(MemoryGroups, ANameMayHoldColons) {
  const std::string mounts = "1 0 0:1 / /cg rw - cgroup2 cgroup2 rw\n";
  EXPECT_EQ(groupsOf("0::/a:b\n", mounts)[0].folders, (Folders{"/cg/a:b", "/cg"}));
}

TEST(MemoryGroups, AreNoneWithoutTheirMount) {
  EXPECT_TRUE(groupsOf("4:memory:/g\n0::/g\n", "").empty());
  EXPECT_TRUE(groupsOf("4:memory:/g\n", "1 0 0:1 / /cg rw - cgroup cgroup rw,cpu\n").empty());
}

TEST(MemoryGroups, LinesThatCantBeReadAreLeftOut) {
  const std::string mounts = "1 0 0:1 / /cg rw - cgroup2 cgroup2 rw\n";
  EXPECT_TRUE(groupsOf("", mounts).empty());
  EXPECT_TRUE(groupsOf("0\n0:\n0::\n0::g\n\xFF\n\n", mounts).empty());
  EXPECT_EQ(groupsOf("nonsense\n0::/g", mounts).size(), 1u);
}

TEST(GroupLimit, IsANumberOrNone) {
  EXPECT_EQ(parseGroupLimit("1610612736\n"), 1610612736u);
  EXPECT_EQ(parseGroupLimit("9223372036854771712\n"), 9223372036854771712u);
  EXPECT_EQ(parseGroupLimit("0\n"), 0u);
  EXPECT_EQ(parseGroupLimit("max\n"), std::nullopt);
  EXPECT_EQ(parseGroupLimit(""), std::nullopt);
  EXPECT_EQ(parseGroupLimit("18446744073709551616\n"), std::nullopt);
}

TEST(ReclaimableCache, OfTheSecondVersionIsCleanFileMemory) {
  const std::string stat =
      "anon 9\nfile 700\nfile_dirty 30\nfile_writeback 20\ninactive_file 400\nactive_file 300\n";
  EXPECT_EQ(reclaimableCache(stat, true), 650u);
}

TEST(ReclaimableCache, OfTheFirstVersionIsThatOfTheGroupsInsideToo) {
  const std::string stat =
      "cache 5\ninactive_file 1\nactive_file 1\ntotal_dirty 10\ntotal_writeback 5\n"
      "total_inactive_file 100\ntotal_active_file 50\n";
  EXPECT_EQ(reclaimableCache(stat, false), 135u);
}

TEST(ReclaimableCache, IsNeverBelowNothing) {
  EXPECT_EQ(reclaimableCache("inactive_file 10\nfile_dirty 30\n", true), 0u);
  EXPECT_EQ(reclaimableCache("", true), 0u);
  EXPECT_EQ(reclaimableCache("", false), 0u);
}

TEST(ReclaimableCache, ALineCutOffAtTheEndDoesNotCount) {
  EXPECT_EQ(reclaimableCache("inactive_file 10\nactive_file 9", true), 10u);
}

}  // namespace
}  // namespace vantile
