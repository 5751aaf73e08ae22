#include "vantile/platform/parsers/cpuinfo.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

std::optional<std::uint64_t> rateOf(const std::string& model, const std::string& megahertz) {
  return parseCpuinfo("processor\t: 0\nmodel name\t: " + model + "\ncpu MHz\t\t: " + megahertz +
                      "\n\n")
      .nominalRate;
}

TEST(Cpuinfo, ReadsARecordedMachine) {
  const auto info = parseCpuinfo(fixture("cpuinfo-amd.txt"));
  EXPECT_EQ(info.modelName, "AMD EPYC");
  EXPECT_EQ(info.physicalCores, 2u);
  EXPECT_EQ(info.nominalRate, 2'596'132'000u);
}

TEST(Cpuinfo, CountsThreadsOfACoreOnceAndCoresOfEachPackage) {
  const auto info = parseCpuinfo(fixture("cpuinfo-xeon.txt"));
  EXPECT_EQ(info.modelName, "Intel(R) Xeon(R) CPU E5-2665 0 @ 2.40GHz");
  EXPECT_EQ(info.physicalCores, 4u);
  EXPECT_EQ(info.nominalRate, 2'400'000'000u);
}

TEST(Cpuinfo, ABoardTellsNeitherCoresNorRate) {
  const auto info = parseCpuinfo(fixture("cpuinfo-arm.txt"));
  EXPECT_EQ(info.modelName, std::nullopt);
  EXPECT_EQ(info.physicalCores, std::nullopt);
  EXPECT_EQ(info.nominalRate, std::nullopt);
}

TEST(Cpuinfo, TheRateOfTheNameComesBeforeThePresentOne) {
  EXPECT_EQ(rateOf("A @ 2.40GHz", "800.000"), 2'400'000'000u);
  EXPECT_EQ(rateOf("A @ 733 MHz", "800.000"), 733'000'000u);
  EXPECT_EQ(rateOf("A @B @ 3GHz", "800.000"), 3'000'000'000u);
  EXPECT_EQ(rateOf("A 2.40GHz", "800.000"), 800'000'000u);
}

TEST(Cpuinfo, ARateInTheNameThatCantBeReadIsNone) {
  for (const char* name :
       {"A @", "A @ GHz", "A @ x.yGHz", "A @ 2.4", "A @ 2.4THz", "A @ -2GHz", "A @ 2.4.0GHz",
        "A @ 99999999999999999999GHz", "A @ 18446744073GHz", "A @ 2,40GHz", "A @ Hz", "A @ .5GHz"})
    EXPECT_EQ(rateOf(name, "800.5"), 800'500'000u) << name;
}

TEST(Cpuinfo, APresentRateThatCantBeReadIsAbsent) {
  for (const char* rate : {"", "x", "-800.000", "800,000", "99999999999999999999.0", "0.000", "."})
    EXPECT_EQ(rateOf("A", rate), std::nullopt) << rate;
  EXPECT_EQ(rateOf("A", "0.0000001"), std::nullopt);
  EXPECT_EQ(rateOf("A", "1.12345678"), 1'123'456u);
}

TEST(Cpuinfo, TheFirstProcessorThatTellsCounts) {
  const auto info = parseCpuinfo(
      "processor : 0\n\nprocessor : 1\nmodel name : B\ncpu MHz : 900.0\n\n"
      "processor : 2\nmodel name : C\ncpu MHz : 100.0\n");
  EXPECT_EQ(info.modelName, "B");
  EXPECT_EQ(info.nominalRate, 900'000'000u);
}

TEST(Cpuinfo, CoresAreUnknownWhereAProcessorDoesNotTellItsOwn) {
  EXPECT_EQ(parseCpuinfo("processor : 0\nphysical id : 0\ncore id : 0\n\n"
                         "processor : 1\nphysical id : 0\n")
                .physicalCores,
            std::nullopt);
  EXPECT_EQ(parseCpuinfo("processor : 0\nphysical id : 0\n\n"
                         "processor : 1\nphysical id : 0\ncore id : 0\n")
                .physicalCores,
            std::nullopt);
  EXPECT_EQ(parseCpuinfo("processor : 0\nphysical id : x\ncore id : 0\n").physicalCores,
            std::nullopt);
}

TEST(Cpuinfo, ABlockWithoutAProcessorDoesNotCount) {
  const auto info = parseCpuinfo(
      "processor : 0\nphysical id : 0\ncore id : 0\n\n"
      "Hardware : board\nmodel name : board\ncpu MHz : 1.0\n");
  EXPECT_EQ(info.physicalCores, 1u);
  EXPECT_EQ(info.modelName, std::nullopt);
  EXPECT_EQ(info.nominalRate, std::nullopt);
}

TEST(Cpuinfo, OddTextIsReadAsFarAsItGoes) {
  EXPECT_EQ(parseCpuinfo("").modelName, std::nullopt);
  EXPECT_EQ(parseCpuinfo("\n\n\n:\n: x\nno colon\n").modelName, std::nullopt);
  EXPECT_EQ(parseCpuinfo("processor:0\nmodel name:  a:\xFF b \r\n").modelName, "a:\xFF b");
  EXPECT_EQ(parseCpuinfo("processor : 0\nmodel name :\n").modelName, std::nullopt);
}

}  // namespace
}  // namespace vantile
