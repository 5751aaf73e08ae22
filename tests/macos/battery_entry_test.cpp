#include "vantile/platform/battery_entry.h"

#include <cstdint>

#include "seam.h"

namespace vantile {
namespace {

using fakes::PropertyList;
using Calls = std::vector<std::string>;

class BatteryEntrySeam : public Seam {
 protected:
  BatteryEntrySeam() {
    fakes::machine.batteryEntry =
        PropertyList{PropertyList::Dictionary{{u"MaxCapacity", {std::int64_t{5000}}},
                                              {u"CurrentCapacity", {std::int64_t{4500}}},
                                              {u"CycleCount", {std::int64_t{321}}},
                                              {u"Amperage", {std::int64_t{-1234}}},
                                              {u"Voltage", {std::int64_t{12345}}},
                                              {u"Temperature", {std::int64_t{3012}}},
                                              {u"Serial", {PropertyList::Data()}}}};
  }
};

TEST_F(BatteryEntrySeam, IsTheServicesPropertiesAndReleasesIt) {
  const auto properties = systemBatteryEntry()->properties();
  ASSERT_TRUE(properties);
  EXPECT_EQ(properties->int64("MaxCapacity"), 5000);
  EXPECT_EQ(properties->int64("CurrentCapacity"), 4500);
  EXPECT_EQ(properties->int64("CycleCount"), 321);
  EXPECT_EQ(properties->int64("Amperage"), -1234);
  EXPECT_EQ(properties->int64("Voltage"), 12345);
  EXPECT_EQ(properties->int64("Temperature"), 3012);
  EXPECT_EQ(properties->size(), 6u);
  EXPECT_EQ(fakes::machine.calls, (Calls{"match", "properties", "release service"}));
}

TEST_F(BatteryEntrySeam, WithoutTheServiceThereIsNone) {
  fakes::machine.batteryEntry.reset();
  EXPECT_EQ(systemBatteryEntry()->properties(), nullptr);
  EXPECT_EQ(fakes::machine.calls, Calls{"match"});
}

TEST_F(BatteryEntrySeam, AnErrorIsNone) {
  fakes::machine.propertiesResult = 5;
  EXPECT_EQ(systemBatteryEntry()->properties(), nullptr);
  EXPECT_EQ(fakes::live().kernelObjects, 0);
}

TEST_F(BatteryEntrySeam, ADictionaryThatCantBeMadeFindsNone) {
  fakes::machine.refuses = {"IOServiceNameMatching"};
  EXPECT_EQ(systemBatteryEntry()->properties(), nullptr);
}

}  // namespace
}  // namespace vantile
