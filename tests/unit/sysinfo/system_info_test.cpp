#include "vantile/sysinfo/system_info.h"

#include <gtest/gtest.h>

#include "fakes/fake_system_info_ports.h"

namespace vantile {
namespace {

using namespace std::string_literals;

struct SystemInfo : ::testing::Test {
  /// A machine that tells everything.
  void tellEverything() {
    auto& facts = *ports.facts;
    facts.computer = "Ada's Desk";
    facts.host = "ada-desk";
    facts.user = "ada";
    facts.fullUser = "Ada Lovelace";
    facts.system = 5;
    facts.memory = 17179869184;
    auto& entries = *ports.entries;
    entries.registry = {{"IOPlatformSerialNumber", "C02ABC"}, {"IOPlatformUUID", "564D-1"}};
    entries.texts = {{"hw.model", "MacBookPro11,1\0"s},
                     {"machdep.cpu.brand_string", "Intel(R) Core(TM) i5-4278U CPU @ 2.60GHz\0"s},
                     {"kern.osrelease", "13.4.0\0"s},
                     {"kern.osversion", "13E28\0"s}};
    entries.numbers = {{"hw.cpufrequency", 2600000000}, {"hw.physicalcpu", 2}};
  }

  testing::FakeSystemInfoPorts ports;
};

TEST_F(SystemInfo, EveryPropertyHasItsSource) {
  tellEverything();
  const auto info = KVDSystemInfo::init();
  EXPECT_EQ(info->computerName(), "Ada's Desk");
  EXPECT_EQ(info->sysName(), "ada-desk");
  EXPECT_EQ(info->sysUserName(), "ada");
  EXPECT_EQ(info->sysFullUserName(), "Ada Lovelace");
  EXPECT_EQ(info->sysOSName(), 5);
  EXPECT_EQ(info->sysOSVersion(), "10.9.4 (13E28)");
  EXPECT_EQ(info->sysPhysicalMemory(), 17179869184u);
  EXPECT_EQ(info->sysSerialNumber(), "C02ABC");
  EXPECT_EQ(info->sysUUID(), "564D-1");
  EXPECT_EQ(info->sysModelID(), "MacBookPro11,1");
  EXPECT_EQ(info->sysProcessorName(), "Intel Core i5");
  EXPECT_EQ(info->sysProcessorSpeed(), 2600000000u);
  EXPECT_EQ(info->sysProcessorCount(), 2u);
}

TEST_F(SystemInfo, TheSourcesAreAskedInTheOrderOfTheProperties) {
  tellEverything();
  KVDSystemInfo::init();
  EXPECT_EQ(ports.log, (std::vector<std::string>{
                           "computerName", "hostName", "userName", "fullUserName",
                           "operatingSystem", "versionText", "kern.osrelease", "kern.osversion",
                           "physicalMemory", "IOPlatformSerialNumber", "IOPlatformUUID", "hw.model",
                           "machdep.cpu.brand_string", "hw.cpufrequency", "hw.physicalcpu"}));
}

TEST_F(SystemInfo, AMachineThatTellsNothingLeavesEveryPropertyNil) {
  const auto info = KVDSystemInfo::init();
  ASSERT_TRUE(info);
  for (const auto* const text :
       {&info->computerName(), &info->sysName(), &info->sysUserName(), &info->sysFullUserName(),
        &info->sysOSVersion(), &info->sysSerialNumber(), &info->sysUUID(), &info->sysModelID(),
        &info->sysProcessorName()})
    EXPECT_EQ(*text, std::nullopt);
  EXPECT_EQ(info->sysOSName(), std::nullopt);
  EXPECT_EQ(info->sysProcessorSpeed(), std::nullopt);
  EXPECT_EQ(info->sysProcessorCount(), std::nullopt);
}

TEST_F(SystemInfo, MemoryThatIsNotToldIsZeroSinceItCantBeNil) {
  EXPECT_EQ(KVDSystemInfo::init()->sysPhysicalMemory(), 0u);
}

TEST_F(SystemInfo, EachSourceFailsOnItsOwn) {
  tellEverything();
  ports.entries->texts.erase("hw.model");
  ports.entries->registry.erase("IOPlatformSerialNumber");
  ports.entries->numbers.erase("hw.cpufrequency");
  ports.facts->computer = std::nullopt;
  const auto info = KVDSystemInfo::init();
  EXPECT_EQ(info->computerName(), std::nullopt);
  EXPECT_EQ(info->sysName(), "ada-desk");
  EXPECT_EQ(info->sysSerialNumber(), std::nullopt);
  EXPECT_EQ(info->sysUUID(), "564D-1");
  EXPECT_EQ(info->sysModelID(), std::nullopt);
  EXPECT_EQ(info->sysProcessorName(), "Intel Core i5");
  EXPECT_EQ(info->sysProcessorSpeed(), std::nullopt);
  EXPECT_EQ(info->sysProcessorCount(), 2u);
}

TEST_F(SystemInfo, ValuesAreTakenOnceAndNeverRefreshed) {
  tellEverything();
  const auto info = KVDSystemInfo::init();
  const auto asked = ports.log.size();
  ports.facts->host = "another";
  EXPECT_EQ(info->sysName(), "ada-desk");
  EXPECT_EQ(ports.log.size(), asked);
  EXPECT_EQ(KVDSystemInfo::init()->sysName(), "another");
}

TEST_F(SystemInfo, EachInstanceIsItsOwn) {
  EXPECT_NE(KVDSystemInfo::init(), KVDSystemInfo::init());
}

TEST_F(SystemInfo, SettingItUpAgainFillsEveryPropertyAnew) {
  tellEverything();
  const auto info = KVDSystemInfo::init();
  // Set to something else, each comes back from its source.
  const auto fresh = KVDSystemInfo::init();
  info->setComputerName("x");
  info->setSysName("x");
  info->setSysUserName("x");
  info->setSysFullUserName("x");
  info->setSysOSName(99);
  info->setSysOSVersion("x");
  info->setSysPhysicalMemory(99);
  info->setSysSerialNumber("x");
  info->setSysUUID("x");
  info->setSysModelID("x");
  info->setSysProcessorName("x");
  info->setSysProcessorSpeed(99);
  info->setSysProcessorCount(99);
  info->setupSystemInformation();
  EXPECT_EQ(info->computerName(), fresh->computerName());
  EXPECT_EQ(info->sysName(), fresh->sysName());
  EXPECT_EQ(info->sysUserName(), fresh->sysUserName());
  EXPECT_EQ(info->sysFullUserName(), fresh->sysFullUserName());
  EXPECT_EQ(info->sysOSName(), fresh->sysOSName());
  EXPECT_EQ(info->sysOSVersion(), fresh->sysOSVersion());
  EXPECT_EQ(info->sysPhysicalMemory(), fresh->sysPhysicalMemory());
  EXPECT_EQ(info->sysSerialNumber(), fresh->sysSerialNumber());
  EXPECT_EQ(info->sysUUID(), fresh->sysUUID());
  EXPECT_EQ(info->sysModelID(), fresh->sysModelID());
  EXPECT_EQ(info->sysProcessorName(), fresh->sysProcessorName());
  EXPECT_EQ(info->sysProcessorSpeed(), fresh->sysProcessorSpeed());
  EXPECT_EQ(info->sysProcessorCount(), fresh->sysProcessorCount());

  ports.facts->host = std::nullopt;
  info->setupSystemInformation();
  EXPECT_EQ(info->sysName(), std::nullopt);
}

TEST_F(SystemInfo, EverySetterSetsItsOwnProperty) {
  const auto info = KVDSystemInfo::init();
  info->setComputerName("1");
  info->setSysName("2");
  info->setSysUserName("3");
  info->setSysFullUserName("4");
  info->setSysOSName(-5);
  info->setSysOSVersion("6");
  info->setSysPhysicalMemory(7);
  info->setSysSerialNumber("8");
  info->setSysUUID("9");
  info->setSysModelID("10");
  info->setSysProcessorName("11");
  info->setSysProcessorSpeed(12);
  info->setSysProcessorCount(13);
  EXPECT_EQ(info->computerName(), "1");
  EXPECT_EQ(info->sysName(), "2");
  EXPECT_EQ(info->sysUserName(), "3");
  EXPECT_EQ(info->sysFullUserName(), "4");
  EXPECT_EQ(info->sysOSName(), -5);
  EXPECT_EQ(info->sysOSVersion(), "6");
  EXPECT_EQ(info->sysPhysicalMemory(), 7u);
  EXPECT_EQ(info->sysSerialNumber(), "8");
  EXPECT_EQ(info->sysUUID(), "9");
  EXPECT_EQ(info->sysModelID(), "10");
  EXPECT_EQ(info->sysProcessorName(), "11");
  EXPECT_EQ(info->sysProcessorSpeed(), 12u);
  EXPECT_EQ(info->sysProcessorCount(), 13u);
}

TEST_F(SystemInfo, AnInstanceKeepsThePortsThatItWasMadeWith) {
  tellEverything();
  const auto info = KVDSystemInfo::init();
  {
    testing::FakeSystemInfoPorts others;
    others.facts->computer = "Another";
    EXPECT_EQ(info->queryComputerName(), "Ada's Desk");
  }
}

TEST_F(SystemInfo, AControlTextEndsAtItsFirstZeroByte) {
  const auto info = KVDSystemInfo::init();
  ports.entries->texts = {{"a", "x\0y\0"s}, {"b", "\0"s}, {"c", ""}, {"d", "xy"}};
  EXPECT_EQ(info->_strControlEntry("a"), "x");
  EXPECT_EQ(info->_strControlEntry("b"), "");
  EXPECT_EQ(info->_strControlEntry("c"), "");
  EXPECT_EQ(info->_strControlEntry("d"), "xy");
  EXPECT_EQ(info->_strControlEntry("e"), std::nullopt);
}

TEST_F(SystemInfo, EntriesAreFoundByName) {
  const auto info = KVDSystemInfo::init();
  ports.entries->registry = {{"key", "a"}};
  ports.entries->numbers = {{"key", UINT64_MAX}};
  EXPECT_EQ(info->_strIORegistryEntry("key"), "a");
  EXPECT_EQ(info->_numControlEntry("key"), UINT64_MAX);
  EXPECT_EQ(info->_strIORegistryEntry("other"), std::nullopt);
  EXPECT_EQ(info->_numControlEntry("other"), std::nullopt);
}

TEST_F(SystemInfo, TextsAreBytes) {
  ports.facts->computer = "\xFF";
  ports.entries->registry = {{"IOPlatformSerialNumber", "\xC3"}};
  const auto info = KVDSystemInfo::init();
  EXPECT_EQ(info->computerName(), "\xFF");
  EXPECT_EQ(info->sysSerialNumber(), "\xC3");
}

}  // namespace
}  // namespace vantile
