#include "vantile/platform/linux/kind_desk.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "fakes/recorded_log.h"

namespace vantile {
namespace {

struct KindDeskTest : ::testing::Test {
  std::optional<UsageKind> look(const std::string& name) {
    (std::this_thread::get_id() == asker ? lookedUpHere : lookedUpThere) += 1;
    if (name == "bad") throw std::runtime_error("no database");
    return name == "x.mkv" ? std::optional(UsageKind::movies) : std::nullopt;
  }

  const std::thread::id asker = std::this_thread::get_id();
  std::atomic<int> lookedUpHere = 0, lookedUpThere = 0;
  KindDesk desk{[this](const std::string& name) { return look(name); }};
};

TEST_F(KindDeskTest, NamesAreLookedUpByTheThreadThatServes) {
  desk.open(true);
  std::thread server([this] { desk.serve(); });
  for (int round = 0; round < 100; ++round) {
    EXPECT_EQ(desk.of("x.mkv"), UsageKind::movies);
    EXPECT_EQ(desk.of("x.txt"), std::nullopt);
  }
  EXPECT_EQ(lookedUpThere, 200);
  EXPECT_EQ(lookedUpHere, 0);
  desk.close();
  server.join();
}

TEST_F(KindDeskTest, OnceItIsClosedNobodyWaits) {
  desk.open(true);
  std::thread server([this] { desk.serve(); });
  desk.close();
  EXPECT_EQ(desk.of("x.mkv"), UsageKind::movies);
  server.join();
  EXPECT_EQ(desk.of("x.mkv"), UsageKind::movies);
  EXPECT_GE(lookedUpHere, 1);
}

TEST_F(KindDeskTest, WithoutAThreadNamesAreLookedUpWhereTheyAreAsked) {
  desk.open(false);
  EXPECT_EQ(desk.of("x.mkv"), UsageKind::movies);
  EXPECT_EQ(lookedUpHere, 1);
}

TEST_F(KindDeskTest, AThreadThatFailsLeavesNobodyWaiting) {
  const testing::RecordedLog log;
  desk.open(true);
  std::thread server([this] { desk.serve(); });
  EXPECT_THROW(desk.of("bad"), std::runtime_error);
  server.join();
  EXPECT_EQ(desk.of("x.mkv"), UsageKind::movies);
  EXPECT_EQ(log.lines, std::vector<std::string>{"kinds of files threw: no database"});
}

}  // namespace
}  // namespace vantile
