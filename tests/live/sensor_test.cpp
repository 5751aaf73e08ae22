// Sensors of devices that umockdev puts before a program of its own.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "vantile/sensors/smc.h"

#include "fakes/temporary_folder.h"
#include "live/command.h"
#include "live/sanitized.h"
#include "live/sensor_helper.h"

namespace vantile {

int testing::runSensorHelper(int count, char** arguments) {
  const auto print = [] {
    if (SMCOpen() != 0) return;
    std::printf("%g\n", SMCGetTemperature("TC0P"));
    SMCClose();
  };
  print();
  for (int at = 0; at + 1 < count; at += 2) {
    std::ofstream(arguments[at]) << arguments[at + 1] << "\n";
    print();
  }
  return 0;
}

namespace {

using testing::run;

struct LiveSensor : ::testing::Test {
  void SetUp() override {
    if (testing::sanitized) GTEST_SKIP() << "what umockdev preloads comes before the sanitizer";
    if (run("umockdev-run --version").status != 0) GTEST_SKIP() << "no umockdev";
  }

  /// What the helper prints on a machine of these devices.
  std::string onMachine(const std::string& devices, const std::string& changes = "") const {
    const auto description = folder.file("machine.umockdev", devices);
    char self[4096] = {};
    const auto length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    EXPECT_GT(length, 0);
    return run("umockdev-run --device=" + testing::quoted(description) + " -- " +
               testing::quoted(self) + " " + testing::readTemperature + " " + changes)
        .text;
  }

  const testing::TemporaryFolder folder;
};

constexpr const char* disk =
    "P: /devices/pci0/nvme/nvme0/hwmon0\nE: SUBSYSTEM=hwmon\nA: name=nvme\\n\n"
    "A: temp1_label=Composite\\n\nA: temp1_input=20850\\n\n\n";
constexpr const char* processor =
    "P: /devices/platform/coretemp.0/hwmon/hwmon1\nE: SUBSYSTEM=hwmon\nA: name=coretemp\\n\n"
    "A: temp1_label=Package id 0\\n\nA: temp1_input=57500\\n\n"
    "A: temp2_label=Core 0\\n\nA: temp2_input=31000\\n\n\n";
constexpr const char* zones =
    "P: /devices/virtual/thermal/thermal_zone0\nE: SUBSYSTEM=thermal\nA: type=acpitz\\n\n"
    "A: temp=27800\\n\n\n"
    "P: /devices/virtual/thermal/thermal_zone1\nE: SUBSYSTEM=thermal\nA: type=x86_pkg_temp\\n\n"
    "A: temp=61250\\n\n\n";

TEST_F(LiveSensor, TheProcessorsPackageIsReadAnewEachTime) {
  EXPECT_EQ(onMachine(std::string(disk) + processor,
                      "/sys/devices/platform/coretemp.0/hwmon/hwmon1/temp1_input 58250"),
            "57.5\n58.25\n");
}

TEST_F(LiveSensor, AThermalZoneIsReadWhereThereIsNoChip) {
  EXPECT_EQ(onMachine(std::string(disk) + zones), "61.25\n");
}

TEST_F(LiveSensor, ATemperatureOutOfRangeIsNone) {
  EXPECT_EQ(onMachine(processor,
                      "/sys/devices/platform/coretemp.0/hwmon/hwmon1/temp1_input -5000 "
                      "/sys/devices/platform/coretemp.0/hwmon/hwmon1/temp1_input 48000"),
            "57.5\n0\n48\n");
}

TEST_F(LiveSensor, AMachineWithoutASensorSaysSo) {
  EXPECT_EQ(onMachine(disk), "Error: no SMC found\n");
}

}  // namespace
}  // namespace vantile
