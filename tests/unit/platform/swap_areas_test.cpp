#include "vantile/platform/linux/swap_areas.h"

#include <gtest/gtest.h>

#include "fakes/temporary_folder.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;
using testing::TemporaryFolder;

struct LinuxSwapAreasTest : ::testing::Test {
  TemporaryFolder folder;
  LinuxSwapAreas swap{LinuxRoots{folder.path("proc"), folder.path("sys")}};
};

TEST_F(LinuxSwapAreasTest, AreThoseOfTheKernelsList) {
  folder.file("proc/swaps", fixture("swaps.txt"));
  const auto areas = swap.areas();
  ASSERT_TRUE(areas);
  ASSERT_EQ(areas->size(), 5u);
  EXPECT_EQ((*areas)[0].path, "/swapfile");
  EXPECT_TRUE((*areas)[0].isFile);
  EXPECT_EQ((*areas)[3].bytes, 8388604ull * 1024);
}

TEST_F(LinuxSwapAreasTest, UseAddsUp) {
  folder.file("proc/swaps", fixture("swaps.txt"));
  const auto usage = swap.usage();
  ASSERT_TRUE(usage);
  EXPECT_EQ(usage->usedBytes, (524288ull + 1024 + 301504) * 1024);
  EXPECT_FALSE(usage->encrypted);
}

TEST_F(LinuxSwapAreasTest, AMachineWithoutSwapHasAnEmptyList) {
  folder.file("proc/swaps", "Filename Type Size Used Priority\n");
  EXPECT_TRUE(swap.areas().value().empty());
  EXPECT_EQ(swap.usage().value().usedBytes, 0u);
  EXPECT_FALSE(swap.usage().value().encrypted);
}

TEST_F(LinuxSwapAreasTest, AListThatCantBeReadIsEmpty) {
  EXPECT_TRUE(swap.areas().value().empty());
}

TEST_F(LinuxSwapAreasTest, UseIsUnknownWhenTheListCantBeRead) {
  EXPECT_FALSE(swap.usage());
}

TEST_F(LinuxSwapAreasTest, AFileIsNotEncrypted) {
  folder.file("proc/swaps", folder.file("swapfile") + " file 8 0 -2\n");
  EXPECT_FALSE(swap.usage().value().encrypted);
}

TEST_F(LinuxSwapAreasTest, AreReadAnewEachTime) {
  folder.file("proc/swaps", "/a file 8 4 -2\n");
  EXPECT_EQ(swap.areas()->size(), 1u);
  folder.file("proc/swaps", "/a file 8 4 -2\n/b file 8 2 -2\n");
  EXPECT_EQ(swap.areas()->size(), 2u);
  EXPECT_EQ(swap.usage()->usedBytes, 6u * 1024);
}

}  // namespace
}  // namespace vantile
