#include "vantile/platform/linux/served_volumes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <utility>

#include "vantile/platform/linux/volumes.h"

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
    means.patience = 200ms;
    means.mostThreads = 3;
    means.now = [this] { return now; };
    means.wait = [this](auto&, auto& lock, auto until) {
      ++waits;
      lock.unlock();
      if (meanwhile) {
        std::exchange(meanwhile, nullptr)();
      } else {
        now = until;
      }
      lock.lock();
    };
    served = std::make_unique<ServedVolumes>(std::move(means));
  }

  /// Blocks that are available by what the volumes told; -1 for one without figures.
  std::vector<int> told(const std::vector<VolumeKey>& volumes) {
    const auto begin = now;
    std::vector<int> blocks;
    for (const auto& figures : served->figures(volumes))
      blocks.push_back(figures ? static_cast<int>(figures->availableBlocks) : -1);
    waited = now - begin;
    return blocks;
  }

  const std::shared_ptr<HeldThreads> threads = std::make_shared<HeldThreads>();
  std::uint64_t available = 40;
  bool fails = false;
  std::vector<std::string> order;
  ServedVolumes::Clock::time_point now;
  int waits = 0;
  std::function<void()> meanwhile;        ///< once, in place of the time that passes
  ServedVolumes::Clock::duration waited;  ///< by the latest `told`
  std::unique_ptr<ServedVolumes> served;
  const VolumeKey a{"/a"}, b{"/b"}, c{"/c"}, d{"/d"}, e{"/e"};
};

using Blocks = std::vector<int>;

TEST_F(ServedVolumesTest, ThoseThatAnswerAreAskedAnewEachTime) {
  EXPECT_EQ(told({a}), Blocks{40});
  available = 39;
  EXPECT_EQ(told({a}), Blocks{39});
  EXPECT_EQ(threads->asked, 2);
}

TEST_F(ServedVolumesTest, NoneTakeNoThread) {
  EXPECT_EQ(told({}), Blocks{});
  EXPECT_EQ(threads->asked, 0);
}

TEST_F(ServedVolumesTest, OneThatDoesNotAnswerHasNoFiguresUntilItDoes) {
  threads->holds = true;
  EXPECT_EQ(told({a}), Blocks{-1});
  threads->runOne();
  EXPECT_EQ(told({a}), Blocks{40});
}

TEST_F(ServedVolumesTest, OneThatAnswersNoMoreKeepsItsLastFigures) {
  told({a});
  threads->holds = true;
  available = 39;
  EXPECT_EQ(told({a}), Blocks{40});
  EXPECT_EQ(told({a}), Blocks{40});
}

TEST_F(ServedVolumesTest, OneThatRefusesKeepsItsLastFiguresToo) {
  fails = true;
  EXPECT_EQ(told({a}), Blocks{-1});
  fails = false;
  told({a});
  fails = true;
  EXPECT_EQ(told({a}), Blocks{40});
}

TEST_F(ServedVolumesTest, OneCallToAVolumeIsUnderWayAtATime) {
  threads->holds = true;
  told({a});
  told({a});
  told({a});
  EXPECT_EQ(threads->asked, 1);
  threads->runOne();
  told({a});
  EXPECT_EQ(threads->asked, 2);
}

TEST_F(ServedVolumesTest, ADeadOneDoesNotKeepOthersFromBeingAsked) {
  threads->holds = true;
  told({a});
  threads->holds = false;
  EXPECT_EQ(told({a, b}), (Blocks{-1, 40}));
}

TEST_F(ServedVolumesTest, ThreadsAreBoundedWhateverDies) {
  threads->holds = true;
  told({a, b, c, d});
  told({a, b, c, d});
  EXPECT_EQ(threads->asked, 3);
  threads->runOne();
  told({a, b, c, d});
  EXPECT_EQ(threads->asked, 4);
}

TEST_F(ServedVolumesTest, ThreadsOfVolumesThatAreGoneCountUntilTheyEnd) {
  threads->holds = true;
  for (int mount = 1; mount <= 9; ++mount) told({VolumeKey("/a", std::to_string(mount))});
  EXPECT_EQ(threads->asked, 3);
}

TEST_F(ServedVolumesTest, AnotherVolumeAtTheSamePlaceDoesNotInheritFigures) {
  told({VolumeKey("/a", "1")});
  threads->holds = true;
  EXPECT_EQ(told({VolumeKey("/a", "2")}), Blocks{-1});
}

TEST_F(ServedVolumesTest, OneThatWasGoneBeginsAnew) {
  told({a});
  told({});
  told({b});
  threads->holds = true;
  EXPECT_EQ(told({a}), Blocks{-1});
}

TEST_F(ServedVolumesTest, WithoutAThreadThereIsNoAnswerThisTime) {
  threads->refuses = true;
  for (int i = 0; i < 5; ++i) EXPECT_EQ(told({a}), Blocks{-1});
  EXPECT_EQ(threads->asked, 5);
  EXPECT_TRUE(order.empty());
  threads->refuses = false;
  EXPECT_EQ(told({a}), Blocks{40});
}

TEST_F(ServedVolumesTest, AnAnswerMayComeWhenNobodyIsThere) {
  threads->holds = true;
  told({a});
  served.reset();
  threads->runOne();
}

TEST_F(ServedVolumesTest, AllAreAskedBeforeAnyIsWaitedFor) {
  threads->holds = true;
  meanwhile = [this] { EXPECT_EQ(threads->held.size(), 2u); };
  told({a, b});
  EXPECT_EQ(waits, 2);
}

TEST_F(ServedVolumesTest, ThoseThatAnswerAreNotWaitedForAnyLonger) {
  threads->holds = true;
  meanwhile = [this] {
    now += 3ms;
    threads->runOne();
    threads->runOne();
  };
  EXPECT_EQ(told({a, b}), (Blocks{40, 40}));
  EXPECT_EQ(waited, 3ms);
}

TEST_F(ServedVolumesTest, OneThatAnswersIsToldOfThoughAnotherDoesNot) {
  threads->holds = true;
  meanwhile = [this] { threads->runOne(); };
  EXPECT_EQ(told({a, b}), (Blocks{40, -1}));
  EXPECT_EQ(waited, 200ms);
}

TEST_F(ServedVolumesTest, TwoThatDoNotAnswerCostThePatienceOnceAndNothingAfterwards) {
  threads->holds = true;
  told({a, b});
  EXPECT_EQ(waited, 200ms);
  for (int tick = 0; tick < 5; ++tick) {
    told({a, b});
    EXPECT_EQ(waited, 0ms);
    now += tick * 1s;
  }
}

TEST_F(ServedVolumesTest, ANewOneIsWaitedForBesideThoseThatDoNotAnswer) {
  threads->holds = true;
  told({a, b});
  meanwhile = [this] {
    EXPECT_EQ(threads->held.size(), 3u);
    now += 50ms;
    threads->held.back()();
    threads->held.pop_back();
  };
  EXPECT_EQ(told({a, b, c}), (Blocks{-1, -1, 40}));
  EXPECT_EQ(waited, 50ms);
}

TEST_F(ServedVolumesTest, OneThatIsAlwaysLateIsWaitedForOnce) {
  threads->holds = true;
  told({a});
  for (std::uint64_t tick = 1; tick < 4; ++tick) {
    now += 1s;
    available = tick;
    threads->runOne();
    EXPECT_EQ(told({a}), Blocks{static_cast<int>(tick)});
    EXPECT_EQ(waited, 0ms);
    EXPECT_EQ(threads->held.size(), 1u);  // it is asked all the same
  }
}

TEST_F(ServedVolumesTest, OneThatIsInTimeAgainIsWaitedForAgain) {
  threads->holds = true;
  told({a});
  now += 1s;
  threads->runOne();
  told({a});
  now += 200ms;
  threads->runOne();
  told({a});
  EXPECT_EQ(waited, 200ms);
}

TEST_F(ServedVolumesTest, ASecondCallerWaitsForTheFirstOnesCallAndAsksNothing) {
  threads->holds = true;
  Blocks others;
  meanwhile = [&] {
    meanwhile = [&] { threads->runOne(); };
    others = told({a});
  };
  EXPECT_EQ(told({a}), Blocks{40});
  EXPECT_EQ(others, Blocks{40});
  EXPECT_EQ(threads->asked, 1);
}

TEST_F(ServedVolumesTest, MoreThanThereAreThreadsForAreAskedAsThreadsComeFree) {
  EXPECT_EQ(told({a, b, c, d, e}), (Blocks{40, 40, 40, 40, 40}));
  threads->holds = true;
  available = 39;
  meanwhile = [this] {
    for (int i = 0; i < 3; ++i) threads->runOne();
    threads->holds = false;
  };
  EXPECT_EQ(told({a, b, c, d, e}), (Blocks{39, 39, 39, 39, 39}));
}

TEST_F(ServedVolumesTest, ThoseThatGotNoThreadAreAskedFirstTheNextTime) {
  threads->holds = true;
  told({a, b, c, d, e});
  now += 1s;
  for (int i = 0; i < 3; ++i) threads->runOne();
  order.clear();
  threads->holds = false;
  told({a, b, c, d, e});
  EXPECT_EQ(order, (std::vector<std::string>{"/d", "/e", "/a", "/b", "/c"}));
}

TEST_F(ServedVolumesTest, WhereAllThreadsAreHeldUpNobodyIsWaitedFor) {
  threads->holds = true;
  told({a, b, c});
  EXPECT_EQ(told({a, b, c, d}), (Blocks{-1, -1, -1, -1}));
  EXPECT_EQ(waited, 0ms);
}

TEST_F(ServedVolumesTest, OneThatIsNamedTwiceIsAskedOnce) {
  EXPECT_EQ(told({a, a}), (Blocks{40, 40}));
  EXPECT_EQ(threads->asked, 1);
}

TEST(ServedVolumesClock, IsPatientForAFifthOfASecondWithSixteenAtATime) {
  EXPECT_EQ(ServedVolumes::Means().patience, 200ms);
  EXPECT_EQ(ServedVolumes::Means().mostThreads, 16);
  EXPECT_EQ(LinuxVolumes::Means().patience, 200ms);
}

TEST(ServedVolumesClock, WaitsForWhoAnswersOnAThread) {
  ServedVolumes served({.ask =
                            [](const std::string&) {
                              return VolumeFigures{1, 2, 3};
                            },
                        .patience = std::chrono::minutes(1)});
  const auto figures = served.figures({VolumeKey("/a")});
  ASSERT_TRUE(figures[0]);
  EXPECT_EQ(figures[0]->availableBlocks, 3u);
}

}  // namespace
}  // namespace vantile
