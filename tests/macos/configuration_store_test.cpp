#include "vantile/platform/configuration_store.h"

#include <thread>

#include "vantile/foundation/ending_on_loop.h"

#include "seam.h"

namespace vantile {
namespace {

using List = fakes::PropertyList;
using Names = std::vector<std::string>;

class ConfigurationStoreSeam : public Seam {
 protected:
  std::unique_ptr<ConfigurationSession> open(std::function<void()> changed = [] {}) {
    return systemConfigurationStore()->open("<NetManage: 0x10>", {{"a", "b"}, {"c.*"}},
                                            std::move(changed));
  }
};

TEST_F(ConfigurationStoreSeam, OpensASessionOfTheNameForTheKeysAndPatterns) {
  EXPECT_TRUE(open());
  EXPECT_EQ(fakes::machine.storeName, "<NetManage: 0x10>");
  EXPECT_EQ(fakes::machine.storeKeys, (Names{"a", "b"}));
  EXPECT_EQ(fakes::machine.storePatterns, Names{"c.*"});
}

TEST_F(ConfigurationStoreSeam, AnyStepThatFailsOpensNone) {
  for (const char* const step : {"SCDynamicStoreCreate", "SCDynamicStoreSetNotificationKeys",
                                 "SCDynamicStoreCreateRunLoopSource", "CFArrayCreate"}) {
    fakes::machine.refuses = {step};
    EXPECT_FALSE(open()) << step;
    fakes::machine.refuses.clear();
    EXPECT_EQ(fakes::live().sources, 0) << step;
  }
}

TEST_F(ConfigurationStoreSeam, GivesTheDictionaryUnderAKey) {
  fakes::machine.store["State:/Network/Global/IPv4"] = {
      List::Dictionary{{u"PrimaryInterface", {u"en0"}},
                       {u"Status", {std::int64_t{8}}},
                       {u"Active", {true}},
                       {u"Order", {List::Array{{u"A"}, {u"B"}}}}}};
  const auto session = open();
  Dictionary expected;
  expected.set("PrimaryInterface", "en0");
  expected.set("Status", std::int64_t{8});
  expected.set("Active", true);
  expected.set("Order", std::make_shared<Array>(Array{Value("A"), Value("B")}));
  EXPECT_EQ(*session->value("State:/Network/Global/IPv4"), expected);
  EXPECT_EQ(fakes::machine.storeReads, Names{"State:/Network/Global/IPv4"});
}

TEST_F(ConfigurationStoreSeam, GivesNothingForAKeyThatIsNotThere) {
  EXPECT_FALSE(open()->value("State:/Network/Global/IPv4"));
}

TEST_F(ConfigurationStoreSeam, GivesNothingForWhatIsNoDictionary) {
  fakes::machine.store["a"] = {List::Array()};
  EXPECT_FALSE(open()->value("a"));
}

TEST_F(ConfigurationStoreSeam, GivesNothingForAKeyThatIsNoText) {
  EXPECT_FALSE(open()->value("\xFF"));
  EXPECT_TRUE(fakes::machine.storeReads.empty());
}

TEST_F(ConfigurationStoreSeam, TellsOfChangesOnTheRunLoopInItsDefaultMode) {
  int changes = 0;
  const auto session = open([&changes] { ++changes; });
  EXPECT_EQ(fakes::machine.sourcesInDefaultMode, 1);
  EXPECT_EQ(changes, 0);
  fakes::changeStore();
  fakes::changeStore();
  EXPECT_EQ(changes, 2);
}

TEST_F(ConfigurationStoreSeam, ASessionMayEndInItsOwnCall) {
  std::unique_ptr<ConfigurationSession> session;
  int changes = 0;
  session = open([&] {
    session.reset();
    ++changes;
  });
  fakes::changeStore();
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(fakes::live().sources, 0);
}

TEST_F(ConfigurationStoreSeam, ASessionLetGoOfOnAnotherThreadLeavesTheRunLoopWhenThatIsServed) {
  const auto loop = RunLoop::on(makeLoopDriver());
  const RunLoop::Override current(loop);
  const auto before = fakes::live().sources;
  auto session = endingOnLoop(open());
  std::thread([&session] { session.reset(); }).join();
  EXPECT_EQ(fakes::live().sources, before + 1);
  fakes::changeStore();  // on its way meanwhile
  loop->dispatch();
  EXPECT_EQ(fakes::live().sources, before);
}

TEST_F(ConfigurationStoreSeam, ASessionThatEndsLeavesTheRunLoop) {
  open();
  EXPECT_EQ(fakes::live().sources, 0);
  EXPECT_EQ(fakes::live().loopReferences, 0);
}

}  // namespace
}  // namespace vantile
