#include "vantile/platform/battery_records.h"

#include <cstdint>

#include "seam.h"

namespace vantile {
namespace {

using fakes::PropertyList;
using Entries = PropertyList::Dictionary;
using Items = PropertyList::Array;

using BatteryRecordsSeam = Seam;

auto records() {
  return systemBatteryRecords()->records();
}

PropertyList recordOf(std::int64_t charge) {
  return {Entries{{u"Current", {charge}},
                  {u"Amperage", {std::int64_t{-1200}}},
                  {u"Voltage", {std::int64_t{11987}}},
                  {u"Cycle Count", {std::int64_t{321}}}}};
}

TEST_F(BatteryRecordsSeam, AreThoseOfTheListInItsOrder) {
  fakes::machine.batteryInfo = PropertyList{Items{recordOf(4500), recordOf(300)}};
  const auto found = records();
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 2u);
  EXPECT_EQ(found->front()->int64("Current"), 4500);
  EXPECT_EQ(found->front()->int64("Amperage"), -1200);
  EXPECT_EQ(found->front()->int64("Voltage"), 11987);
  EXPECT_EQ(found->front()->int64("Cycle Count"), 321);
  EXPECT_EQ(found->back()->int64("Current"), 300);
}

TEST_F(BatteryRecordsSeam, AnEmptyListHasNone) {
  fakes::machine.batteryInfo = PropertyList{Items{}};
  ASSERT_TRUE(records());
  EXPECT_TRUE(records()->empty());
}

TEST_F(BatteryRecordsSeam, WhatIsNoRecordIsPassedOver) {
  fakes::machine.batteryInfo = PropertyList{Items{{std::int64_t{1}}, recordOf(300)}};
  EXPECT_EQ(records()->size(), 1u);
}

TEST_F(BatteryRecordsSeam, AnErrorIsNothing) {
  fakes::machine.batteryInfo = PropertyList{Items{recordOf(4500)}};
  fakes::machine.batteryInfoResult = -536870201;
  EXPECT_FALSE(records());
  fakes::machine.batteryInfoResult = 0;
  fakes::machine.mainPortResult = 5;
  EXPECT_FALSE(records());
}

TEST_F(BatteryRecordsSeam, ASuccessWithoutAListIsNothing) {
  EXPECT_FALSE(records());
}

}  // namespace
}  // namespace vantile
