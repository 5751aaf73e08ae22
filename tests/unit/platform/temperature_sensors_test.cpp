#include "vantile/platform/parsers/temperature_sensors.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vantile {
namespace {

constexpr auto tc0p = packed("TC0P");

TemperatureSensor chip(const std::string& name, const std::string& label) {
  return {.chip = name, .label = label, .file = name + "/" + label};
}
TemperatureSensor zone(const std::string& type) {
  return {.chip = type, .label = {}, .file = type, .isZone = true};
}

std::string chosen(const std::vector<TemperatureSensor>& sensors, std::uint32_t key = tc0p) {
  const auto* const sensor = sensorOfKey(key, sensors);
  return sensor ? sensor->file : "none";
}

TEST(TemperatureSensors, ThePackageOfCoretempIsTheProcessors) {
  EXPECT_EQ(chosen({chip("nvme", "Composite"), chip("coretemp", "Core 0"),
                    chip("coretemp", "Package id 1"), chip("coretemp", "Package id 0")}),
            "coretemp/Package id 0");
}

TEST(TemperatureSensors, TdieIsTheTruthOfK10tempAndZenpower) {
  for (const std::string name : {"k10temp", "zenpower"}) {
    EXPECT_EQ(chosen({chip(name, "Tctl"), chip(name, "Tccd1"), chip(name, "Tdie")}),
              name + "/Tdie");
    EXPECT_EQ(chosen({chip(name, "Tccd1"), chip(name, "Tctl")}), name + "/Tctl");
    EXPECT_EQ(chosen({chip(name, "")}), name + "/");
    EXPECT_EQ(chosen({chip(name, "Tccd1")}), "none");
  }
}

TEST(TemperatureSensors, ABoardHasCpuThermal) {
  EXPECT_EQ(chosen({chip("gpu_thermal", ""), chip("cpu_thermal", "")}), "cpu_thermal/");
}

TEST(TemperatureSensors, AZoneComesAfterTheChips) {
  EXPECT_EQ(chosen({zone("x86_pkg_temp"), chip("k10temp", "Tctl")}), "k10temp/Tctl");
  EXPECT_EQ(chosen({zone("acpitz"), zone("x86_pkg_temp"), chip("nvme", "")}), "x86_pkg_temp");
  EXPECT_EQ(chosen({zone("gpu-thermal"), zone("cpu-thermal")}), "cpu-thermal");
  EXPECT_EQ(chosen({zone("cpu0-thermal")}), "cpu0-thermal");
  EXPECT_EQ(chosen({zone("cpu_thermal")}), "cpu_thermal");
}

TEST(TemperatureSensors, OtherSensorsAreNotTheProcessors) {
  EXPECT_EQ(chosen({}), "none");
  EXPECT_EQ(chosen({zone("acpitz"), zone("k10temp"), zone("cpu"), chip("acpitz", ""),
                    chip("x86_pkg_temp", ""), chip("coretemp", "Core 0")}),
            "none");
}

TEST(TemperatureSensors, ApplesmcAnswersForItsOwnKeys) {
  const std::vector sensors = {chip("coretemp", "Package id 0"), chip("applesmc", "TA0P"),
                               chip("applesmc", "TC0P")};
  EXPECT_EQ(chosen(sensors), "applesmc/TC0P");
  EXPECT_EQ(chosen(sensors, packed("TA0P")), "applesmc/TA0P");
  EXPECT_EQ(chosen(sensors, packed("TB0T")), "none");
  EXPECT_EQ(chosen({chip("applesmc", "TA0P"), chip("coretemp", "Package id 0")}),
            "coretemp/Package id 0");
}

TEST(TemperatureSensors, OnlyTheProcessorsKeyIsThePackages) {
  EXPECT_EQ(chosen({chip("coretemp", "Package id 0")}, packed("TC0D")), "none");
  EXPECT_EQ(chosen({chip("coretemp", "TC0D")}, packed("TC0D")), "none");
}

TEST(TemperatureSensors, ALabelOfAnotherLengthIsNoKey) {
  EXPECT_EQ(keyOfLabel("TC0P"), tc0p);
  EXPECT_EQ(keyOfLabel("\xFF\xFF\xFF\xFF"), 0xffffffffu);
  EXPECT_FALSE(keyOfLabel("TC0"));
  EXPECT_FALSE(keyOfLabel("TC0PX"));
}

/// As `SMCGetTemperature` reads the two bytes.
double decoded(const std::array<std::uint8_t, 2>& bytes) {
  const int raw = static_cast<std::int8_t>(bytes[0]) * 256 + static_cast<std::int8_t>(bytes[1]);
  return (raw >> 2) * 0.015625;
}

TEST(Sp78, ComesOutAsItWasForEveryMillidegree) {
  for (std::int64_t millidegrees = 0; millidegrees <= 127'000; ++millidegrees) {
    const auto bytes = sp78OfMillidegrees(millidegrees);
    ASSERT_TRUE(bytes) << millidegrees;
    ASSERT_LE(std::abs(decoded(*bytes) - static_cast<double>(millidegrees) / 1000), 1.0 / 64)
        << millidegrees;
  }
}

TEST(Sp78, TheHighByteMakesUpForALowOneThatCountsAsNegative) {
  EXPECT_EQ(sp78OfMillidegrees(58'250), (std::array<std::uint8_t, 2>{0x3a, 0x40}));
  EXPECT_EQ(sp78OfMillidegrees(57'500), (std::array<std::uint8_t, 2>{0x3a, 0x80}));
  EXPECT_EQ(sp78OfMillidegrees(57'000), (std::array<std::uint8_t, 2>{0x39, 0x00}));
}

TEST(Sp78, HoldsZeroTo127Degrees) {
  EXPECT_EQ(decoded(*sp78OfMillidegrees(0)), 0);
  EXPECT_EQ(decoded(*sp78OfMillidegrees(127'000)), 127);
  EXPECT_FALSE(sp78OfMillidegrees(-1));
  EXPECT_FALSE(sp78OfMillidegrees(127'001));
  EXPECT_FALSE(sp78OfMillidegrees(INT64_MAX));
  EXPECT_FALSE(sp78OfMillidegrees(INT64_MIN));
}

struct SmcAnswer : ::testing::Test {
  std::int32_t ask(std::uint32_t index, std::uint8_t command, std::uint32_t key = tc0p) {
    in.key = key;
    in.command = command;
    return answerSmcCall(index, in, out,
                         {.has = [](std::uint32_t each) { return each == tc0p; },
                          .millidegrees = [this](std::uint32_t) { return millidegrees; }});
  }

  std::optional<std::int64_t> millidegrees = 58'250;
  SMCRecord in = {}, out = {};
};

TEST_F(SmcAnswer, AKeyIsTwoBytesOfSp78) {
  EXPECT_EQ(ask(2, 9), 0);
  EXPECT_EQ(out.key, tc0p);
  EXPECT_EQ(out.dataSize, 2u);
  EXPECT_EQ(out.dataType, 0x73703738u);
}

TEST_F(SmcAnswer, ItsBytesStandHighestFirst) {
  EXPECT_EQ(ask(2, 5), 0);
  EXPECT_EQ(out.dataSize, 2u);
  EXPECT_EQ(out.bytes[0], 0x3a);
  EXPECT_EQ(out.bytes[1], 0x40);
  EXPECT_EQ(out.bytes[2], 0);
}

TEST_F(SmcAnswer, AKeyThatIsNotThereIsOfSize0) {
  out.dataSize = 7;
  EXPECT_EQ(ask(2, 9, packed("TB0T")), 0);
  EXPECT_EQ(out.dataSize, 0u);
  EXPECT_EQ(ask(2, 5, packed("TB0T")), 0);
}

TEST_F(SmcAnswer, WhatCantBeReadOrHeldIsNotReadable) {
  millidegrees = std::nullopt;
  EXPECT_EQ(ask(2, 9), 0);
  EXPECT_EQ(ask(2, 5), smc::notReadable);
  millidegrees = 128'000;
  EXPECT_EQ(ask(2, 5), smc::notReadable);
}

TEST_F(SmcAnswer, OtherMethodsAndCommandsAreRefused) {
  EXPECT_EQ(ask(0, 9), smc::unsupported);
  EXPECT_EQ(ask(2, 6), smc::badArgument);
}

}  // namespace
}  // namespace vantile
