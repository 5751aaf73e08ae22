#include "vantile/platform/interface_counters.h"

#include <algorithm>
#include <limits>

#include "../fakes/routing_messages.h"
#include "../live/sanitized.h"
#include "seam.h"

namespace vantile {
namespace {

using testing::routingMessage;

class InterfaceCountersSeam : public Seam {
 protected:
  /// A list of so many interfaces.
  static std::string listOf(int interfaces) {
    std::string list;
    for (int i = 0; i < interfaces; ++i)
      list += routingMessage({.name = "en" + std::to_string(i), .received = 100u, .sent = 50u});
    return list;
  }

  const std::unique_ptr<InterfaceCounters> counters = makeInterfaceCounters();
  InterfaceReadings readings;
};

TEST_F(InterfaceCountersSeam, ReadsEachInterfaceWithNarrowCounters) {
  fakes::machine.routingList = listOf(2);
  ASSERT_TRUE(counters->read(readings));
  EXPECT_EQ(readings.count, 2u);
  EXPECT_EQ(readings.width, CounterWidth::bits32);
  EXPECT_EQ(
      readings.readings.at(1),
      (InterfaceReading{
          .name = "en1", .index = 1, .loopback = false, .up = true, .received = 100, .sent = 50}));
}

TEST_F(InterfaceCountersSeam, ARefusedSizeGivesNothing) {
  EXPECT_FALSE(counters->read(readings));
  EXPECT_TRUE(fakes::machine.routingBuffers.empty());
}

TEST_F(InterfaceCountersSeam, AListThatGrewSinceItsSizeWasToldGivesNothing) {
  fakes::machine.routingList = listOf(1);
  fakes::machine.routingListLater = listOf(2);
  EXPECT_FALSE(counters->read(readings));
  fakes::machine.routingListLater.reset();
  EXPECT_TRUE(counters->read(readings));
  EXPECT_EQ(readings.count, 2u);
}

TEST_F(InterfaceCountersSeam, AListThatShrankIsReadToItsEnd) {
  fakes::machine.routingList = listOf(3);
  fakes::machine.routingListLater = listOf(1);
  EXPECT_TRUE(counters->read(readings));
  EXPECT_EQ(readings.count, 1u);
}

TEST_F(InterfaceCountersSeam, ASmallerListKeepsTheLargerBuffer) {
  for (const int interfaces : {3, 1, 3}) {
    fakes::machine.routingList = listOf(interfaces);
    EXPECT_TRUE(counters->read(readings));
  }
  const auto& buffers = fakes::machine.routingBuffers;
  EXPECT_EQ(std::count(buffers.begin(), buffers.end(), buffers.front()), 3);
  EXPECT_EQ(fakes::machine.routingRooms.at(1), listOf(1).size()) << "the size that was told";
}

TEST_F(InterfaceCountersSeam, WithoutMemoryThereIsNothingAndNoBuffer) {
  if (testing::sanitized) GTEST_SKIP() << "the sanitizer ends the process";
  fakes::machine.routingList = listOf(3);
  EXPECT_TRUE(counters->read(readings));
  fakes::machine.routingSize = std::numeric_limits<std::size_t>::max() / 4;
  EXPECT_FALSE(counters->read(readings));
  EXPECT_EQ(fakes::machine.routingBuffers.size(), 1u) << "nothing is read into it";
  fakes::machine.routingSize.reset();
  fakes::machine.routingList = listOf(1);
  EXPECT_TRUE(counters->read(readings));
  EXPECT_EQ(readings.count, 1u);
}

TEST_F(InterfaceCountersSeam, ALargerListGetsALargerBuffer) {
  fakes::machine.routingList = listOf(1);
  EXPECT_TRUE(counters->read(readings));
  fakes::machine.routingList = listOf(2000);
  EXPECT_TRUE(counters->read(readings));
  EXPECT_EQ(readings.count, 2000u);
  EXPECT_NE(fakes::machine.routingBuffers.at(0), fakes::machine.routingBuffers.at(1));
}

}  // namespace
}  // namespace vantile
