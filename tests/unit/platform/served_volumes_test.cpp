#include "vantile/platform/linux/served_volumes.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <utility>

namespace vantile {
namespace {

using namespace std::chrono_literals;

/// Threads that run when the test says so.
class HeldThreads final : public Threads {
 public:
  bool detach(const char*, std::function<void()> body) override {
    ++asked;
    if (refuses) return false;
    if (holds) {
      held.push_back(std::move(body));
    } else {
      body();
    }
    return true;
  }

  void runOne() {
    const auto body = std::move(held.front());
    held.pop_front();
    body();
  }

  bool refuses = false, holds = false;
  int asked = 0;
  std::deque<std::function<void()>> held;
};

struct ServedVolumesTest : ::testing::Test {
  ServedVolumesTest() {
    ServedVolumes::Means means;
    means.ask = [this](const std::string& mountPoint) -> std::optional<VolumeFigures> {
      order.push_back(mountPoint);
      if (fails) return std::nullopt;
      return VolumeFigures{512, 100, available};
    };
    means.threads = threads;
    means.patience = 1ms;
    means.mostThreads = 3;
    served = std::make_unique<ServedVolumes>(std::move(means));
  }

  static Mount mountAt(std::string mountPoint, std::uint64_t id = 1) {
    Mount mount;
    mount.mountPoint = std::move(mountPoint);
    mount.id = id;
    return mount;
  }

  /// Blocks that are available by what the volumes told; -1 for one without figures.
  std::vector<int> told(const std::vector<const Mount*>& volumes) {
    std::vector<int> blocks;
    for (const auto& figures : served->figures(volumes))
      blocks.push_back(figures ? static_cast<int>(figures->availableBlocks) : -1);
    return blocks;
  }

  const std::shared_ptr<HeldThreads> threads = std::make_shared<HeldThreads>();
  std::uint64_t available = 40;
  bool fails = false;
  std::vector<std::string> order;
  std::unique_ptr<ServedVolumes> served;
  const Mount a = mountAt("/a"), b = mountAt("/b"), c = mountAt("/c"), d = mountAt("/d");
};

using Blocks = std::vector<int>;

TEST_F(ServedVolumesTest, ThoseThatAnswerAreAskedAnewEachTime) {
  EXPECT_EQ(told({&a}), Blocks{40});
  available = 39;
  EXPECT_EQ(told({&a}), Blocks{39});
  EXPECT_EQ(threads->asked, 2);
}

TEST_F(ServedVolumesTest, NoneTakeNoThread) {
  EXPECT_EQ(told({}), Blocks{});
  EXPECT_EQ(threads->asked, 0);
}

TEST_F(ServedVolumesTest, OneThatDoesNotAnswerHasNoFiguresUntilItDoes) {
  threads->holds = true;
  EXPECT_EQ(told({&a}), Blocks{-1});
  threads->runOne();
  EXPECT_EQ(told({&a}), Blocks{40});
}

TEST_F(ServedVolumesTest, OneThatAnswersNoMoreKeepsItsLastFigures) {
  told({&a});
  threads->holds = true;
  available = 39;
  EXPECT_EQ(told({&a}), Blocks{40});
  EXPECT_EQ(told({&a}), Blocks{40});
}

TEST_F(ServedVolumesTest, OneThatRefusesKeepsItsLastFiguresToo) {
  fails = true;
  EXPECT_EQ(told({&a}), Blocks{-1});
  fails = false;
  told({&a});
  fails = true;
  EXPECT_EQ(told({&a}), Blocks{40});
}

TEST_F(ServedVolumesTest, OneCallToAVolumeIsUnderWayAtATime) {
  threads->holds = true;
  told({&a});
  told({&a});
  told({&a});
  EXPECT_EQ(threads->asked, 1);
  threads->runOne();
  told({&a});
  EXPECT_EQ(threads->asked, 2);
}

TEST_F(ServedVolumesTest, ADeadOneDoesNotKeepOthersFromBeingAsked) {
  threads->holds = true;
  told({&a});
  threads->holds = false;
  EXPECT_EQ(told({&a, &b}), (Blocks{-1, 40}));
}

TEST_F(ServedVolumesTest, ThreadsAreBoundedWhateverDies) {
  threads->holds = true;
  told({&a, &b, &c, &d});
  told({&a, &b, &c, &d});
  EXPECT_EQ(threads->asked, 3);
  threads->runOne();
  told({&a, &b, &c, &d});
  EXPECT_EQ(threads->asked, 4);
}

TEST_F(ServedVolumesTest, ThreadsOfVolumesThatAreGoneCountUntilTheyEnd) {
  threads->holds = true;
  for (std::uint64_t id = 1; id <= 9; ++id) {
    const auto mount = mountAt("/a", id);
    told({&mount});
  }
  EXPECT_EQ(threads->asked, 3);
}

TEST_F(ServedVolumesTest, AnotherMountAtTheSamePlaceDoesNotInheritFigures) {
  told({&a});
  threads->holds = true;
  auto other = a;
  other.id = 2;
  EXPECT_EQ(told({&other}), Blocks{-1});
  auto device = a;
  device.device = {8, 1};
  EXPECT_EQ(told({&device}), Blocks{-1});
}

TEST_F(ServedVolumesTest, OneThatWasGoneBeginsAnew) {
  told({&a});
  told({});
  told({&b});
  threads->holds = true;
  EXPECT_EQ(told({&a}), Blocks{-1});
}

TEST_F(ServedVolumesTest, WithoutAThreadThereIsNoAnswerThisTime) {
  threads->refuses = true;
  for (int i = 0; i < 5; ++i) EXPECT_EQ(told({&a}), Blocks{-1});
  EXPECT_EQ(threads->asked, 5);
  EXPECT_TRUE(order.empty());
  threads->refuses = false;
  EXPECT_EQ(told({&a}), Blocks{40});
}

TEST_F(ServedVolumesTest, AnAnswerMayComeWhenNobodyIsThere) {
  threads->holds = true;
  told({&a});
  served.reset();
  threads->runOne();
}

TEST_F(ServedVolumesTest, AllAreAskedBeforeAnyIsWaitedFor) {
  threads->holds = true;
  told({&a, &b});
  EXPECT_EQ(threads->held.size(), 2u);
}

}  // namespace
}  // namespace vantile
