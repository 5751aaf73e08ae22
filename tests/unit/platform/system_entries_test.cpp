#include "vantile/platform/linux/system_entries.h"

#include <gtest/gtest.h>

#include "fakes/temporary_folder.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using testing::fixture;
using testing::TemporaryFolder;

struct LinuxSystemEntriesTest : ::testing::Test {
  void dmi(const std::string& field, const std::string& text) {
    root.file("sys/class/dmi/id/" + field, text);
  }
  void deviceTree(const std::string& property, const std::string& text) {
    root.file("sys/firmware/devicetree/base/" + property, text);
  }
  /// A processor, with the ones that share its core.
  void processor(int number, const std::string& sharing,
                 const std::string& file = "core_cpus_list") {
    root.file("sys/devices/system/cpu/cpu" + std::to_string(number) + "/topology/" + file,
              sharing + "\n");
  }
  auto cores() { return entries.controlNumber("hw.physicalcpu"); }
  auto rate() { return entries.controlNumber("hw.cpufrequency"); }

  TemporaryFolder root;
  LinuxSystemEntries entries{LinuxRoots{root.path("proc"), root.path("sys"), root.path("sysctl")}};
};

TEST_F(LinuxSystemEntriesTest, TheDmiTableHasSerialNumberIdentifierAndModel) {
  dmi("product_serial", "PF0ABCDE\n");
  dmi("product_uuid", "4c4c4544-0042-3510-8054-b4c04f4e3232\n");
  dmi("product_name", "OptiPlex 7090 \n");
  EXPECT_EQ(entries.registryText("IOPlatformSerialNumber"), "PF0ABCDE");
  EXPECT_EQ(entries.registryText("IOPlatformUUID"), "4c4c4544-0042-3510-8054-b4c04f4e3232");
  EXPECT_EQ(entries.controlText("hw.model"), "OptiPlex 7090");
}

TEST_F(LinuxSystemEntriesTest, PlaceholdersInTheDmiTableAreNothing) {
  dmi("product_serial", "To Be Filled By O.E.M.\n");
  dmi("product_uuid", "00000000-0000-0000-0000-000000000000\n");
  dmi("product_name", "Default string\n");
  EXPECT_EQ(entries.registryText("IOPlatformSerialNumber"), std::nullopt);
  EXPECT_EQ(entries.registryText("IOPlatformUUID"), std::nullopt);
  EXPECT_EQ(entries.controlText("hw.model"), std::nullopt);
}

TEST_F(LinuxSystemEntriesTest, WhatCantBeReadIsNothing) {
  // As root reads everything, folders stand in for files that are root's alone.
  root.folder("sys/class/dmi/id/product_serial");
  root.folder("sys/class/dmi/id/product_uuid");
  EXPECT_EQ(entries.registryText("IOPlatformSerialNumber"), std::nullopt);
  EXPECT_EQ(entries.registryText("IOPlatformUUID"), std::nullopt);
  EXPECT_EQ(entries.controlText("hw.model"), std::nullopt);
  EXPECT_EQ(entries.controlText("machdep.cpu.brand_string"), std::nullopt);
  EXPECT_EQ(entries.controlText("kern.osrelease"), std::nullopt);
  EXPECT_EQ(entries.controlText("kern.osversion"), std::nullopt);
  EXPECT_EQ(cores(), std::nullopt);
  EXPECT_EQ(rate(), std::nullopt);
}

TEST_F(LinuxSystemEntriesTest, BoardsHaveADeviceTree) {
  deviceTree("serial-number", "10000000abcdef01\0"s);
  deviceTree("model", "Raspberry Pi 4 Model B Rev 1.4\0"s);
  EXPECT_EQ(entries.registryText("IOPlatformSerialNumber"), "10000000abcdef01");
  EXPECT_EQ(entries.controlText("hw.model"), "Raspberry Pi 4 Model B Rev 1.4");
  EXPECT_EQ(entries.registryText("IOPlatformUUID"), std::nullopt);
}

TEST_F(LinuxSystemEntriesTest, TheDeviceTreeStandsInForPlaceholders) {
  dmi("product_serial", "Not Specified\n");
  dmi("product_name", "Virtual Machine\n");
  deviceTree("serial-number", "10000000abcdef01\0"s);
  deviceTree("model", "A board\0"s);
  EXPECT_EQ(entries.registryText("IOPlatformSerialNumber"), "10000000abcdef01");
  EXPECT_EQ(entries.controlText("hw.model"), "Virtual Machine");
}

TEST_F(LinuxSystemEntriesTest, TheKernelsReleaseAndBuildAreThoseOfUname) {
  root.file("sysctl/kernel/osrelease", "6.1.0-18-amd64\n");
  root.file("sysctl/kernel/version", "#1 SMP PREEMPT_DYNAMIC Debian 6.1.76-1\n");
  EXPECT_EQ(entries.controlText("kern.osrelease"), "6.1.0-18-amd64");
  EXPECT_EQ(entries.controlText("kern.osversion"), "#1 SMP PREEMPT_DYNAMIC Debian 6.1.76-1");
}

TEST_F(LinuxSystemEntriesTest, OtherNamesAreUnknown) {
  dmi("product_name", "OptiPlex 7090\n");
  processor(0, "0");
  for (const char* const name :
       {"", "hw.model ", "HW.MODEL", "IOPlatformSerialNumber", "hw.ncpu"}) {
    EXPECT_EQ(entries.controlText(name), std::nullopt) << name;
    EXPECT_EQ(entries.controlNumber(name), std::nullopt) << name;
  }
  EXPECT_EQ(entries.registryText("hw.model"), std::nullopt);
}

TEST_F(LinuxSystemEntriesTest, ThreadsOfACoreAreOnePhysicalProcessor) {
  for (const int number : {0, 1, 2, 3}) {
    const auto core = std::to_string(number % 2);
    processor(number, core + "," + std::to_string(number % 2 + 2));
  }
  EXPECT_EQ(cores(), 2u);
}

TEST_F(LinuxSystemEntriesTest, CoresOfSeveralSocketsAreAllCounted) {
  for (const int number : {0, 1, 2, 3}) {
    const auto folder = "sys/devices/system/cpu/cpu" + std::to_string(number) + "/topology/";
    root.file(folder + "physical_package_id", std::to_string(number / 2) + "\n");
    root.file(folder + "core_id", std::to_string(number % 2) + "\n");
    processor(number, std::to_string(number));
  }
  EXPECT_EQ(cores(), 4u);
}

TEST_F(LinuxSystemEntriesTest, BigAndLittleCoresOfOneNumberAreDifferentCores) {
  // Two clusters in one package, whose cores are numbered from 0 each.
  for (int number = 0; number < 8; ++number) {
    const auto folder = "sys/devices/system/cpu/cpu" + std::to_string(number) + "/topology/";
    root.file(folder + "physical_package_id", "0\n");
    root.file(folder + "cluster_id", std::to_string(number / 4) + "\n");
    root.file(folder + "core_id", std::to_string(number % 4) + "\n");
    processor(number, std::to_string(number));
  }
  EXPECT_EQ(cores(), 8u);
}

TEST_F(LinuxSystemEntriesTest, OlderKernelsCallTheListOtherwise) {
  for (const int number : {0, 1, 2, 3})
    processor(number, number < 2 ? "0-1" : "2-3", "thread_siblings_list");
  EXPECT_EQ(cores(), 2u);
}

TEST_F(LinuxSystemEntriesTest, AProcessorThatIsOfflineIsNoCore) {
  // Its folder stays, without what it shares; its sibling is alone then.
  root.file("sys/devices/system/cpu/cpu0/online", "0\n");
  processor(1, "1");
  processor(2, "2-3");
  processor(3, "2-3");
  EXPECT_EQ(cores(), 2u);
}

TEST_F(LinuxSystemEntriesTest, OtherFoldersAreNoProcessors) {
  processor(0, "0");
  for (const char* const name : {"cpufreq", "cpuidle", "cpu", "cpu1x", "xcpu1", "cpu-1"})
    root.file("sys/devices/system/cpu/"s + name + "/topology/core_cpus_list", "1\n");
  root.file("sys/devices/system/cpu/cpu99999999999999999999/topology/core_cpus_list", "0\n");
  EXPECT_EQ(cores(), 1u);
}

TEST_F(LinuxSystemEntriesTest, AListThatIsNoneCountsNoCore) {
  processor(0, "\xFF");
  processor(1, "");
  processor(2, "2");
  EXPECT_EQ(cores(), 1u);
}

TEST_F(LinuxSystemEntriesTest, WithoutATopologyTheCoresAreThoseOfCpuinfo) {
  root.file("proc/cpuinfo", fixture("cpuinfo-xeon.txt"));
  const auto told = parseCpuinfo(fixture("cpuinfo-xeon.txt")).physicalCores;
  ASSERT_TRUE(told);
  EXPECT_EQ(cores(), told);
  processor(0, "0");
  EXPECT_EQ(cores(), 1u);
}

TEST_F(LinuxSystemEntriesTest, TheBrandIsTheModelNameInCpuinfo) {
  root.file("proc/cpuinfo", fixture("cpuinfo-xeon.txt"));
  EXPECT_EQ(entries.controlText("machdep.cpu.brand_string"),
            "Intel(R) Xeon(R) CPU E5-2665 0 @ 2.40GHz");
  root.file("proc/cpuinfo", fixture("cpuinfo-arm.txt"));
  EXPECT_EQ(entries.controlText("machdep.cpu.brand_string"), std::nullopt);
}

TEST_F(LinuxSystemEntriesTest, TheRateIsTheProcessorsBaseRateInHertz) {
  root.file("proc/cpuinfo", fixture("cpuinfo-xeon.txt"));
  EXPECT_EQ(rate(), 2400000000u);
  root.file("sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "3100000\n");
  EXPECT_EQ(rate(), 3100000000u);
  root.file("sys/devices/system/cpu/cpu0/cpufreq/base_frequency", "2400000\n");
  EXPECT_EQ(rate(), 2400000000u);
}

}  // namespace
}  // namespace vantile
