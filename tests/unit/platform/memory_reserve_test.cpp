#include "vantile/platform/parsers/memory_reserve.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantile {
namespace {

constexpr std::uint64_t mebibyte = 1 << 20;
constexpr std::uint64_t gibibyte = 1 << 30;
constexpr std::uint64_t chunk = 256 * mebibyte;

TEST(MemoryReserve, OfASmallMachineIs512Mebibytes) {
  EXPECT_TRUE(leavesReserve({gibibyte, chunk + 512 * mebibyte}, chunk));
  EXPECT_FALSE(leavesReserve({gibibyte, chunk + 512 * mebibyte - 1}, chunk));
}

TEST(MemoryReserve, OfALargeMachineIsATwentiethOfItsMemory) {
  constexpr auto total = 40 * gibibyte;  // a twentieth of which is 2 GiB
  EXPECT_TRUE(leavesReserve({total, chunk + 2 * gibibyte}, chunk));
  EXPECT_FALSE(leavesReserve({total, chunk + 2 * gibibyte - 1}, chunk));
}

TEST(MemoryReserve, TurnsFromOneRuleToTheOtherWhereTheyMeet) {
  constexpr auto total = 20 * 512 * mebibyte;
  EXPECT_TRUE(leavesReserve({total, 512 * mebibyte}, 0));
  EXPECT_FALSE(leavesReserve({total + 20, 512 * mebibyte}, 0));
}

TEST(MemoryReserve, MoreThanIsAvailableIsNeverLeft) {
  EXPECT_FALSE(leavesReserve({gibibyte, chunk - 1}, chunk));
  EXPECT_FALSE(leavesReserve({gibibyte, 0}, 1));
  EXPECT_FALSE(leavesReserve({gibibyte, gibibyte}, std::numeric_limits<std::uint64_t>::max()));
}

TEST(GroupRoom, IsWhatTheLimitLeavesOverTheUsage) {
  const auto room = groupRoom(1000, 400, 0);
  EXPECT_EQ(room.total, 1000u);
  EXPECT_EQ(room.available, 600u);
}

TEST(GroupRoom, CountsReclaimableCacheAsAvailable) {
  EXPECT_EQ(groupRoom(1000, 1000, 300).available, 300u);
}

TEST(GroupRoom, MoreCacheThanUsageIsAllOfIt) {
  EXPECT_EQ(groupRoom(1000, 200, 300).available, 1000u);
}

TEST(GroupRoom, AUsageBeyondTheLimitLeavesNothing) {
  EXPECT_EQ(groupRoom(1000, 1200, 100).available, 0u);
}

}  // namespace
}  // namespace vantile
