// When a session of the configuration lists default routes, and how far it reads their table.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "loop/stepped_session.h"

namespace vantile {
namespace {

using namespace testing;
using ConfigurationRoutes = SteppedSession;

TEST_F(ConfigurationRoutes, RoutesAreListedAnewWhenALinkGoesDownOrUpOrLosesItsCarrier) {
  open();
  for (const std::uint32_t flags : {0u, running, 1u, running}) {
    forget();
    tell(newLink(2, "eth0", flags));
    settle();
    EXPECT_EQ(routesAsked(AddressFamily::ipv4), 1) << flags;
    EXPECT_EQ(it.primary(), flags == 0 ? "" : "eth0") << flags;
  }
  it.routes({});  // without a word
  tell(newLink(2, "eth0", 1));
  settle();
  EXPECT_EQ(it.primary(), "");
}

TEST_F(ConfigurationRoutes, RoutesAreNotListedForALinkThatIsRenamed) {
  open();
  tell(newLink(2, "lan0"));
  settle();
  EXPECT_EQ(it.told, 1);
  EXPECT_EQ(it.asked(RTM_GETROUTE), 0);
}

TEST_F(ConfigurationRoutes, RoutesOfAHopThatIsRemovedAreSeenToGo) {
  open();
  it.routes({});
  tell(message(RTM_DELNEXTHOP, std::string(8, '\0')));
  settle();
  EXPECT_EQ(it.told, 1);
  EXPECT_EQ(it.primary(), "");
}

TEST_F(ConfigurationRoutes, TheTableOfIPv6IsReadWhereADefaultRouteChangesOrItsLinkDoes) {
  it.ipv6Routes = {defaultRoutePayload(2, 100, gateway6)};
  open();
  tell(routeTold(2, gateway));
  tell(newLink(3, "usb0"));
  tell(newLink(3, "usb0", 0));
  tell(message(RTM_DELADDR, addressPayload(2, 24, address)));
  settle();
  EXPECT_EQ(routesAsked(AddressFamily::ipv6), 0);
  tell(newLink(2, "eth0", 0));
  settle();
  EXPECT_EQ(routesAsked(AddressFamily::ipv6), 1);
  tell(routeTold(3, gateway6));
  settle();
  EXPECT_EQ(routesAsked(AddressFamily::ipv6), 2);
}

TEST_F(ConfigurationRoutes, RoutesOfOneFamilyReadAnewAreNoNewsWhereTheyAreTheSame) {
  it.ipv6Routes = {defaultRoutePayload(2, 100, gateway6)};
  open();
  tell(routeTold(2, gateway));
  settle();
  tell(routeTold(2, gateway6));
  settle();
  EXPECT_EQ(it.told, 0);
  EXPECT_EQ(it.asked(RTM_GETROUTE), 2);
}

TEST_F(ConfigurationRoutes, ALongTableOfRoutesIsNotReadToItsEnd) {
  open();
  RouteHeader header;
  header.destinationBits = 24;
  const auto elsewhere = routePayload(header, attribute(1, gateway));
  it.kernel.answers[RTM_GETROUTE] = [&](std::uint32_t sequence, std::string_view) {
    const auto first =
        message(RTM_NEWROUTE, defaultRoutePayload(2, 7, gateway), 2, sequence) +
        message(RTM_NEWROUTE, elsewhere, 2, sequence) +
        message(RTM_NEWROUTE, defaultRoutePayload(2, 1, address), 2, sequence);  // can't be
    const auto more = message(RTM_NEWROUTE, elsewhere, 2, sequence);
    std::vector<std::string> datagrams(1000, more);
    datagrams.front() = first;
    return datagrams;  // without an end, where it would be waited for
  };
  it.kernel.receives = 0;
  tell(routeTold(2, gateway));
  settle();
  EXPECT_EQ(it.text("State:/Network/Service/interface-eth0/IPv4", "Router"), "10.1.0.1");
  EXPECT_LT(it.kernel.receives, 12);
  // What is left of the answer is not in the way of the next.
  tell(message(RTM_NEWADDR, addressPayload(2, 24, address)));
  it.kernel.receives = 0;
  settle();
  EXPECT_EQ(it.asked(RTM_GETADDR), 1);
  EXPECT_LT(it.kernel.receives, 12);
}

TEST_F(ConfigurationRoutes, AShortTableOfRoutesKeepsItsChannel) {
  RouteHeader header;
  header.destinationBits = 24;
  it.routes({defaultRoutePayload(2, 7, gateway), routePayload(header, attribute(1, gateway))});
  open();
  const int before = it.kernel.opened;
  for (int time = 0; time < 2; ++time) {
    tell(routeTold(2, gateway));
    settle();
  }
  EXPECT_EQ(it.asked(RTM_GETROUTE), 2);
  EXPECT_EQ(it.kernel.opened, before);
}

}  // namespace
}  // namespace vantile
