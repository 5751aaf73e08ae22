#include <gtest/gtest.h>

#include "vantile/platform/child_tasks.h"
#include "vantile/platform/host_memory.h"
#include "vantile/platform/pressure_memory.h"
#include "vantile/platform/swap_areas.h"
#include "vantile/platform/system_version.h"
#include "vantile/platform/workspace.h"

namespace vantile {
namespace {

TEST(SystemVersion, IsTheInterfaceLevelThatLinuxProvides) {
  EXPECT_EQ(systemVersion()->version(), "10.9");
}

TEST(ChildTasks, AreNeverStarted) {
  EXPECT_FALSE(systemChildTasks()->launch("/bin/true", {}));
}

TEST(ChildTasks, APauseIsNone) {
  const auto before = std::chrono::steady_clock::now();
  systemChildTasks()->pause(std::chrono::hours(1));
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::minutes(1));
}

TEST(Workspace, HasNobodyToTell) {
  systemWorkspace()->noteFileSystemChanged("/gone");
  systemWorkspace()->post("name", nullptr, "");
}

TEST(SystemPorts, AreSharedByTheProcess) {
  EXPECT_EQ(systemVersion(), systemVersion());
  EXPECT_EQ(systemChildTasks(), systemChildTasks());
  EXPECT_EQ(systemHostMemory(), systemHostMemory());
  EXPECT_EQ(systemSwapAreas(), systemSwapAreas());
  EXPECT_EQ(systemPressureMemory(), systemPressureMemory());
  EXPECT_EQ(systemWorkspace(), systemWorkspace());
}

}  // namespace
}  // namespace vantile
