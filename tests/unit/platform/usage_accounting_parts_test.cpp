// Volumes of which several parts are mounted.

#include "unit/platform/usage_accounting_fixture.h"

namespace vantile {
namespace {

struct UsageAccountingPartsTest : testing::UsageAccountingTest {
  UsageAccountingPartsTest() {
    tree.file("first/a.mkv", contents(10));
    tree.file("home/b.mkv", contents(20));
    tree.file("data/c.mkv", contents(40));
  }
  UsageSums movies(std::vector<std::string> names) const {
    std::uint64_t all = 0;
    for (const auto& name : names) all += bytes(name);
    return sums(0, all, 0, 0);
  }
  const std::string home = tree.path("home"), data = tree.path("data");
};

TEST_F(UsageAccountingPartsTest, AllCountWithTheirVolumeOnceAllWereGoneThrough) {
  others = {home, data};
  want({first});
  for (; accounting->listed() < 3; later(*turn())) EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_EQ(of(first), movies({"first/a.mkv", "home/b.mkv", "data/c.mkv"}));
  EXPECT_EQ(accounting->figures().size(), 1u);
}

TEST_F(UsageAccountingPartsTest, OnesThatCannotBeReachedOrOpenedAreLeftOut) {
  closed = tree.path("closed");
  others = {tree.path("missing"), closed, data};
  want({first});
  work();
  EXPECT_EQ(of(first), movies({"first/a.mkv", "data/c.mkv"}));
}

TEST_F(UsageAccountingPartsTest, TheyComeAndGoWithTheMounts) {
  want({first});
  work();
  EXPECT_EQ(of(first), movies({"first/a.mkv"}));
  others = {home};
  accounting->lookAgain();
  turn();
  EXPECT_TRUE(accounting->figures().empty());
  work();
  EXPECT_EQ(of(first), movies({"first/a.mkv", "home/b.mkv"}));
  others.clear();
  accounting->lookAgain();
  turn();
  EXPECT_EQ(of(first), movies({"first/a.mkv"}));
}

TEST_F(UsageAccountingPartsTest, TheyAreKeptAndTakenUp) {
  others = {home};
  want({first});
  work();
  const auto counted = of(first);
  restart();
  want({first});
  work();
  EXPECT_EQ(accounting->listed(), 0u);
  EXPECT_EQ(of(first), counted);
}

}  // namespace
}  // namespace vantile
