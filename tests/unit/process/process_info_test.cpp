#include "vantile/process/process_info.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

TEST(ProcessRecord, BeginsWithItsThreeFieldsAndNothingElse) {
  const auto info = ProcessInfo::initWithPidWithAppNameWithAppPath(-7, "Mail", "/Mail.app");
  EXPECT_EQ(info->pid(), -7);
  EXPECT_EQ(info->appName(), "Mail");
  EXPECT_EQ(info->appPath(), "/Mail.app");
  EXPECT_EQ(info->cpu(), 0.0);
  EXPECT_EQ(info->memory(), 0.0);
  EXPECT_EQ(info->phyMemoryPages(), 0);
  EXPECT_EQ(info->virtMemoryPages(), 0);
  EXPECT_EQ(info->stats(), std::nullopt);
}

TEST(ProcessRecord, MayLackANameAndAPath) {
  const auto info = ProcessInfo::initWithPidWithAppNameWithAppPath(1, std::nullopt, std::nullopt);
  EXPECT_EQ(info->appName(), std::nullopt);
  EXPECT_EQ(info->appPath(), std::nullopt);
}

TEST(ProcessRecord, KeepsWhatIsSet) {
  const auto info = ProcessInfo::initWithPidWithAppNameWithAppPath(1, "a", "b");
  info->setPid(2);
  info->setAppName("Mail");
  info->setAppPath("/Mail.app");
  info->setCpu(12.5);
  info->setMemory(3.25);
  info->setPhyMemoryPages(100);
  info->setVirtMemoryPages(2000);
  info->setStats("Ss");
  EXPECT_EQ(info->pid(), 2);
  EXPECT_EQ(info->appName(), "Mail");
  EXPECT_EQ(info->appPath(), "/Mail.app");
  EXPECT_EQ(info->cpu(), 12.5);
  EXPECT_EQ(info->memory(), 3.25);
  EXPECT_EQ(info->phyMemoryPages(), 100);
  EXPECT_EQ(info->virtMemoryPages(), 2000);
  EXPECT_EQ(info->stats(), "Ss");
}

}  // namespace
}  // namespace vantile
