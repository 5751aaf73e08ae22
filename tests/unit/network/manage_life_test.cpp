#include <sstream>
#include <thread>

#include "vantile/network/net_ppp.h"

#include "unit/network/net_manage_fixture.h"

namespace vantile::testing {
namespace {

class ManageLife : public Manage {};

TEST_F(ManageLife, ASessionAsksForTheChangesThatItsAnswersStandOn) {
  auto& made = manage();
  EXPECT_EQ(store.keys, (Names{"State:/Network/Global/IPv4", "Setup:/Network/Global/IPv4",
                               "State:/Network/Interface"}));
  EXPECT_EQ(store.patterns, Names{"State:/Network/Interface.*"});
  std::ostringstream name;
  name << "<NetManage: " << static_cast<const void*>(&made) << ">";
  EXPECT_EQ(store.sessionName, name.str());
}

TEST_F(ManageLife, WithoutAPppControllerThereIsNone) {
  ports.addDaemon();  // which refuses
  EXPECT_FALSE(NetManage::init());
  EXPECT_TRUE(store.sessionName.empty()) << "nothing else is tried";
}

TEST_F(ManageLife, WithoutASessionThereIsNone) {
  store.refuses = true;
  EXPECT_FALSE(NetManage::init());
  EXPECT_EQ(interfaces.counterReads, 0);
}

TEST_F(ManageLife, TheStartFillsTheCachesAndTakesASample) {
  order({"A"});
  add("A", "en0");
  primary("A", "en0");
  interfaces["en0"].received = 100;
  auto& made = manage();
  made.queryInterfaceLists();
  made.queryMainInterfaceName();
  made.queryMainServiceID();
  EXPECT_TRUE(store.reads.empty());
  EXPECT_EQ(interfaces.counterReads, 1);
}

TEST_F(ManageLife, TheSharedPppControllerIsTaken) {
  daemonAnswers("");
  manage();
  EXPECT_EQ(ports.ppp->connects, 1);
  NetPPP::singleton();
  EXPECT_EQ(ports.ppp->connects, 1);
}

TEST_F(ManageLife, OneThatGoesEndsItsSession) {
  manage();
  EXPECT_EQ(store.sessions, 1);
  manage_.reset();
  EXPECT_EQ(store.sessions, 0);
}

TEST_F(ManageLife, OneThatGoesOnAnotherThreadEndsItsSessionOnItsOwnLoop) {
  manage();
  std::thread([this] { manage_.reset(); }).join();
  EXPECT_EQ(store.sessions, 1);
  change();  // on its way meanwhile
  loop.settle();
  EXPECT_EQ(store.sessions, 0);
  EXPECT_EQ(store.endedOn, std::this_thread::get_id());
}

TEST_F(ManageLife, OneWhoseThreadIsGoneEndsItsSessionAtOnce) {
  std::thread([this] {
    const SteppedLoop own;
    manage();
  }).join();
  manage_.reset();
  EXPECT_EQ(store.sessions, 0);
}

TEST_F(ManageLife, AChangeThatIsToldToOneThatIsGoneDoesNothing) {
  manage();
  manage_.reset();
  change();
}

TEST_F(ManageLife, TheStoresValueComesAsItIs) {
  setup("A").set("UserDefinedName", "Office");
  EXPECT_EQ(*manage().sysconfigValueForKey("Setup:/Network/Service/A"), setup("A"));
  EXPECT_FALSE(manage().sysconfigValueForKey("Setup:/Network/Service/B"));
}

}  // namespace
}  // namespace vantile::testing
