// Volumes that a process serves which answers, hangs or dies.

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "vantile/platform/posix/files.h"

#include "live/disk_fixture.h"
#include "live/fuse_server.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::FuseServer;
using testing::LiveDisk;
using testing::Sampled;
using Clock = std::chrono::steady_clock;

struct LiveHungVolume : LiveDisk {
  /// Mounts a volume that the test serves; why not, where it is refused.
  std::string serve() {
    const auto device = loopDevice();
    return device.empty() ? "no loop device" : server.mountAt(device, at);
  }
  void TearDown() override {
    server.end();
    LiveDisk::TearDown();
  }

  static int volumeThreads() {
    int count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
      count += contentsOf(task.path().string() + "/comm") == "vantile-volume\n";
    return count;
  }

  const std::string at = folder.folder("served");
  testing::FuseServer server;
};

// What a tick may take beside its 0.2 seconds is for a busy machine.
constexpr auto limit = 700ms;

TEST_F(LiveHungVolume, OneThatAnswersIsToldOf) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(disk.at(at)->uint64("disk_totalsize"), 100u * 512);
  EXPECT_EQ(disk.at(at)->uint64("disk_freesize"), 40u * 512);
  EXPECT_EQ(*disk.at(at)->text("disk_name"), "served");
}

TEST_F(LiveHungVolume, DelaysOneTickByItsLimitAndKeepsItsFigures) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  server.answers = false;
  server.available = 10;
  EXPECT_LT(disk.tick(), limit);
  const auto rest = [&disk] {
    const auto begin = Clock::now();
    for (int i = 0; i < 10; ++i) disk.tick();
    return Clock::now() - begin;
  }();
  EXPECT_LT(rest, limit);  // ten that wait would take two seconds
  EXPECT_EQ(volumeThreads(), 1);
  EXPECT_LE(server.asked, 4);  // by the first two ticks, and by what counts kinds of files
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(disk.at(at)->uint64("disk_freesize"), 40u * 512);
}

TEST_F(LiveHungVolume, IsLeftOutUntilItAnswersAndIsThereThen) {
  server.answers = false;
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  EXPECT_LT(disk.tick(), limit);
  EXPECT_FALSE(disk.at(at));
  const auto before = disk.rows.size();
  server.answers = true;
  for (int tries = 0; tries < 100 && !disk.at(at); ++tries) {
    std::this_thread::sleep_for(20ms);
    disk.tick();
  }
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(disk.rows.size(), before + 1);
}

TEST_F(LiveHungVolume, WhoseServerDiesKeepsItsFiguresUntilItIsGone) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  server.answers = false;
  disk.tick();
  EXPECT_TRUE(disk.at(at));
  server.end();
  disk.tick();
  EXPECT_FALSE(disk.at(at));
}

TEST_F(LiveHungVolume, DoesNotHideTheOthers) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  const auto other = folder.folder("other");
  if (const auto refused = mountExt4(other); !refused.empty()) GTEST_SKIP() << refused;
  server.answers = false;
  Sampled disk;
  EXPECT_LT(disk.tick(), limit);
  EXPECT_TRUE(disk.at(other));
  EXPECT_FALSE(disk.at(at));
}

TEST_F(LiveHungVolume, ManyTogetherDelayOneTickByTheLimitOfOne) {
  std::array<FuseServer, 5> servers;  // five limits are more than the one that is allowed for
  std::array<std::string, 5> places;
  Sampled disk;
  for (std::size_t i = 0; i < servers.size(); ++i) {
    places[i] = folder.folder("served" + std::to_string(i));
    servers[i].answers = false;
    const auto device = loopDevice();
    if (device.empty()) GTEST_SKIP() << "no loop device";
    if (const auto refused = servers[i].mountAt(device, places[i]); !refused.empty())
      GTEST_SKIP() << refused;
  }
  EXPECT_LT(disk.tick(), limit);
  const auto begin = Clock::now();
  for (int i = 0; i < 10; ++i) disk.tick();
  EXPECT_LT(Clock::now() - begin, limit);
  for (const auto& place : places) EXPECT_FALSE(disk.at(place));
}

TEST_F(LiveHungVolume, ThatTellsItsSizeAloneIsAskedForNothingElse) {
  server.tellsSizeAlone = true;
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  auto tick = std::async(std::launch::async, [&disk] { return disk.tick(); });
  const bool isBack = tick.wait_for(20s) == std::future_status::ready;
  if (!isBack) server.end();
  ASSERT_TRUE(isBack) << "a name, a picture or what it is known by was asked of the volume";
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(*disk.at(at)->text("disk_name"), "served");
  EXPECT_NE(disk.at(at)->find("disk_icom"), nullptr);
}

TEST_F(LiveHungVolume, ThatIsDeadButMountedKeepsItsFigures) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  server.die();
  EXPECT_LT(disk.tick(), limit);
  EXPECT_LT(disk.tick(), limit);
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(disk.at(at)->uint64("disk_freesize"), 40u * 512);
}

TEST_F(LiveHungVolume, ThatDiedBeforeItAnsweredIsLeftOut) {
  server.answers = false;
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  server.die();
  Sampled disk;
  EXPECT_LT(disk.tick(), limit);
  EXPECT_FALSE(disk.at(at));
}

TEST_F(LiveHungVolume, AnotherOneAtItsPlaceDoesNotHaveItsFigures) {
  const auto device = loopDevice();
  if (device.empty()) GTEST_SKIP() << "no loop device";
  if (const auto refused = server.mountAt(device, at); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  EXPECT_TRUE(disk.at(at));
  server.end();
  FuseServer other;
  other.answers = false;
  ASSERT_EQ(other.mountAt(device, at), "");
  EXPECT_LT(disk.tick(), limit);
  EXPECT_FALSE(disk.at(at));
  other.end();
}

TEST_F(LiveHungVolume, HoldsUpNoQueryOfSpaceNorAnothersSample) {
  server.answers = false;
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  auto tick = std::async(std::launch::async, [&disk] { return disk.tick(); });
  while (server.asked == 0) std::this_thread::yield();
  const auto begin = Clock::now();
  for (int i = 0; i < 10; ++i) KVDDisk::totalBootCampDiskSpaceInBytes();
  // Behind a lock the first of them would take as long as the sample.
  const auto took = Clock::now() - begin;
  const bool isOver = tick.wait_for(0s) == std::future_status::ready;
  tick.wait();
  if (isOver && took > 150ms) GTEST_SKIP() << "this machine was too busy to tell";
  EXPECT_LT(took, 150ms);
}

}  // namespace
}  // namespace vantile
