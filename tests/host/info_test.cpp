#include "info.h"

#include <gtest/gtest.h>

namespace vantile::host {
namespace {

/// A description of no machine: nothing is told.
std::shared_ptr<KVDSystemInfo> nothingTold() {
  auto info = KVDSystemInfo::init();
  info->setComputerName({});
  info->setSysName({});
  info->setSysUserName({});
  info->setSysFullUserName({});
  info->setSysOSName({});
  info->setSysOSVersion({});
  info->setSysPhysicalMemory(0);
  info->setSysSerialNumber({});
  info->setSysUUID({});
  info->setSysModelID({});
  info->setSysProcessorName({});
  info->setSysProcessorSpeed({});
  info->setSysProcessorCount({});
  return info;
}

std::shared_ptr<KVDSystemInfo> everythingTold() {
  auto info = KVDSystemInfo::init();
  info->setComputerName("Ada's Desk");
  info->setSysName("ada-desk");
  info->setSysUserName("ada");
  info->setSysFullUserName("Ada Lovelace");
  info->setSysOSName(5);
  info->setSysOSVersion("10.9.4 (13E28)");
  info->setSysPhysicalMemory(17179869184);
  info->setSysSerialNumber("C02ABC");
  info->setSysUUID("564D-1");
  info->setSysModelID("MacBookPro11,1");
  info->setSysProcessorName("Intel Core i5");
  info->setSysProcessorSpeed(2596132000);
  info->setSysProcessorCount(2);
  return info;
}

TEST(HostInfo, TheTableHasALineAPropertyAndAlignedValues) {
  EXPECT_EQ(systemTable(*everythingTold(), {}),
            "computer name:      Ada's Desk\n"
            "host name:          ada-desk\n"
            "user:               ada\n"
            "full user name:     Ada Lovelace\n"
            "system identifier:  5\n"
            "system version:     10.9.4 (13E28)\n"
            "memory:             16.0 GiB\n"
            "serial number:      C02ABC\n"
            "hardware UUID:      564D-1\n"
            "model:              MacBookPro11,1\n"
            "processor:          Intel Core i5\n"
            "processor speed:    2.60 GHz\n"
            "processor cores:    2\n");
}

TEST(HostInfo, WhatIsNotToldIsADashInTheTable) {
  EXPECT_EQ(systemTable(*nothingTold(), {}),
            "computer name:      -\n"
            "host name:          -\n"
            "user:               -\n"
            "full user name:     -\n"
            "system identifier:  -\n"
            "system version:     -\n"
            "memory:             -\n"
            "serial number:      -\n"
            "hardware UUID:      -\n"
            "model:              -\n"
            "processor:          -\n"
            "processor speed:    -\n"
            "processor cores:    -\n");
}

TEST(HostInfo, TheTableIsSafeToPrint) {
  const auto info = nothingTold();
  info->setComputerName("a\n\x1b[2Jb\xff");
  EXPECT_TRUE(
      systemTable(*info, {}).starts_with("computer name:      a\uFFFD\uFFFD[2Jb\uFFFD\nhost"));
}

TEST(HostInfo, JsonIsOneObjectUnderThePropertiesNames) {
  EXPECT_EQ(systemJson(*everythingTold(), {}),
            R"({"computerName":"Ada's Desk","sysName":"ada-desk","sysUserName":"ada",)"
            R"x("sysFullUserName":"Ada Lovelace","sysOSName":5,"sysOSVersion":"10.9.4 (13E28)",)x"
            R"("sysPhysicalMemory":17179869184,"sysSerialNumber":"C02ABC","sysUUID":"564D-1",)"
            R"("sysModelID":"MacBookPro11,1","sysProcessorName":"Intel Core i5",)"
            R"("sysProcessorSpeed":2596132000,"sysProcessorCount":2,"volumes":[]})"
            "\n");
}

TEST(HostInfo, NilIsNullInJson) {
  EXPECT_EQ(
      systemJson(*nothingTold(), {}),
      R"({"computerName":null,"sysName":null,"sysUserName":null,"sysFullUserName":null,)"
      R"("sysOSName":null,"sysOSVersion":null,"sysPhysicalMemory":null,"sysSerialNumber":null,)"
      R"("sysUUID":null,"sysModelID":null,"sysProcessorName":null,"sysProcessorSpeed":null,)"
      R"("sysProcessorCount":null,"volumes":[]})"
      "\n");
}

std::shared_ptr<Dictionary> stick() {
  auto volume = std::make_shared<Dictionary>();
  volume->set("disk_format", "vfat");
  volume->set("disk_mntfromname", "/dev/sdb1");
  volume->set("disk_path", "/media/a\nb");
  volume->set("disk_name", "Stick");
  volume->set("disk_totalsize", std::uint64_t{4} << 30);
  volume->set("disk_usedsize", std::uint64_t{1} << 30);
  return volume;
}

TEST(HostInfo, TheTableEndsWithTheVolumes) {
  EXPECT_TRUE(systemTable(*nothingTold(), {stick(), stick()})
                  .ends_with("processor cores:    -\n"
                             "volume:             Stick at /media/a\uFFFDb (vfat of /dev/sdb1): "
                             "1.00 GiB of 4.00 GiB used\n"
                             "  used for:         not counted yet\n"
                             "volume:             Stick at /media/a\uFFFDb (vfat of /dev/sdb1): "
                             "1.00 GiB of 4.00 GiB used\n"
                             "  used for:         not counted yet\n"));
}

TEST(HostInfo, TheTableTellsWhatAVolumeIsUsedFor) {
  const auto volume = stick();
  volume->set("disk_movies", std::uint64_t{512} << 20);
  volume->set("disk_apps", std::uint64_t{0});
  volume->set("disk_audio", std::uint64_t{4096});
  volume->set("disk_photos", std::uint64_t{0});
  EXPECT_TRUE(systemTable(*nothingTold(), {volume})
                  .ends_with("  used for:         movies 512 MiB, apps 0 B, audio 4.00 KiB, "
                             "photos 0 B\n"));
  volume->set("disk_other", std::uint64_t{256} << 20);
  EXPECT_TRUE(systemTable(*nothingTold(), {volume}).ends_with(", photos 0 B, other 256 MiB\n"));
}

TEST(HostInfo, JsonHasTheVolumesAsTheyAreTold) {
  EXPECT_TRUE(systemJson(*nothingTold(), {stick()})
                  .ends_with(R"("volumes":[{"disk_format":"vfat","disk_mntfromname":"/dev/sdb1",)"
                             R"("disk_path":"/media/a\nb","disk_name":"Stick",)"
                             R"("disk_totalsize":4294967296,"disk_usedsize":1073741824}]})"
                             "\n"));
}

}  // namespace
}  // namespace vantile::host
