// When a session of the configuration asks and tells, on a loop whose time a test moves on.

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "loop/stepped_session.h"

namespace vantile {
namespace {

using namespace testing;
using Outcome = NetlinkChannel::Outcome;
using ConfigurationPace = SteppedSession;

TEST_F(ConfigurationPace, AChangeIsToldAfterTwoQuietMilliseconds) {
  open();
  tell(newLink(9, "usb0"));
  loop.advance(1999us);
  EXPECT_EQ(it.told, 0);
  loop.advance(1us);
  EXPECT_EQ(it.told, 1);
}

TEST_F(ConfigurationPace, ABurstThatIsDrawnOutIsListedAndToldOnceItIsOver) {
  open();
  for (std::uint32_t each = 10; each < 110; ++each) {
    tell(newLink(each, "v" + std::to_string(each)));
    loop.advance(1500us);
    EXPECT_EQ(it.told, 0);
  }
  EXPECT_TRUE(it.kernel.requests.empty());
  settle();
  EXPECT_EQ(it.told, 1);
  EXPECT_EQ(it.asked(RTM_GETADDR), 1);
  EXPECT_EQ(it.devices().size(), 101u);
}

TEST_F(ConfigurationPace, AStormThatDoesNotEndIsToldFiveTimesASecond) {
  open();
  for (std::uint32_t each = 0; each < 1000; ++each) {
    tell(newLink(9, "usb0", each % 2 ? running : 0));
    loop.advance(1ms);
  }
  EXPECT_GE(it.told, 4);
  EXPECT_LE(it.told, 5);
}

TEST_F(ConfigurationPace, AStormThatGoesOnAtEveryLookIsToldToo) {
  open();
  std::uint32_t storm = 0;
  it.kernel.onNothing = [&] {
    if (++storm < 2000) it.kernel.tell(newLink(9, "usb0", storm % 2 ? 0 : running));
  };
  tell(newLink(9, "usb0"));
  loop.advance(199ms);
  EXPECT_EQ(it.told, 0);
  loop.advance(1ms);
  EXPECT_EQ(it.told, 1);
  EXPECT_LT(storm, 200u);
}

TEST_F(ConfigurationPace, WhatIsFoundWhenABurstIsToBeToldBelongsToIt) {
  open();
  tell(newLink(9, "usb0"));
  it.kernel.tell(newLink(10, "usb1"));
  loop.advance(2ms);
  EXPECT_EQ(it.told, 0);
  loop.advance(2ms);
  EXPECT_EQ(it.told, 1);
  EXPECT_EQ(it.devices().size(), 3u);
}

TEST_F(ConfigurationPace, WhatIsRefusedIsAskedForAgainAtABoundedPace) {
  open();
  it.kernel.answers[RTM_GETADDR] = FakeNetlink::refusal(ENOMEM);
  tell(message(RTM_NEWADDR, addressPayload(2, 24, gateway)));
  settle();
  EXPECT_EQ(it.asked(RTM_GETADDR), 1);
  loop.advance(900ms);
  EXPECT_EQ(it.asked(RTM_GETADDR), 1);
  loop.advance(62s);  // after 1, 2, 4, 8, 16 and nearly 32 s more
  EXPECT_EQ(it.asked(RTM_GETADDR), 6);
  EXPECT_EQ(it.told, 0);
  it.kernel.answers[RTM_GETADDR] = FakeNetlink::list(RTM_NEWADDR, {addressPayload(2, 24, gateway)});
  loop.advance(60s);
  EXPECT_EQ(it.asked(RTM_GETADDR), 7);
  EXPECT_EQ(it.told, 1);
  EXPECT_EQ(it.textsOf("State:/Network/Service/interface-eth0/IPv4", "Addresses"),
            Texts{"10.1.0.1"});
  loop.advance(1h);
  EXPECT_EQ(it.asked(RTM_GETADDR), 7);
}

TEST_F(ConfigurationPace, ALookThatFallsDueInABurstWaitsForItsEnd) {
  open();
  tell(message(RTM_DELADDR, addressPayload(2, 24, address)));
  it.kernel.answers[RTM_GETADDR] = FakeNetlink::refusal(ENOMEM);  // to be asked for in a second
  loop.advance(2ms);
  it.routes({});
  for (const auto before : {10ms, 900ms}) {
    loop.advance(before);
    forget();
    for (std::uint32_t each = 0; each < 40; ++each) {
      tell(newLink(9, "usb0", each % 2 ? running : 0));
      loop.advance(1500us);
    }
    EXPECT_TRUE(it.kernel.requests.empty());
    settle();
    EXPECT_EQ(it.told, 1);
    EXPECT_EQ(it.primary(), "");
  }
}

TEST_F(ConfigurationPace, APaceBeginsAnewOnceAllIsKnown) {
  open();
  const auto answer = it.kernel.answers[RTM_GETADDR];
  for (int time = 0; time < 2; ++time) {
    it.kernel.answers[RTM_GETADDR] = FakeNetlink::refusal(ENOMEM);
    tell(message(RTM_NEWADDR, addressPayload(2, 24, gateway)));
    loop.advance(2500ms);
    it.kernel.answers[RTM_GETADDR] = answer;
    loop.advance(1min);
    forget();
  }
  it.kernel.answers[RTM_GETADDR] = FakeNetlink::refusal(ENOMEM);
  tell(message(RTM_NEWADDR, addressPayload(2, 24, gateway)));
  loop.advance(1100ms);
  EXPECT_EQ(it.asked(RTM_GETADDR), 2);
}

TEST_F(ConfigurationPace, AChannelThatCantBeOpenedYetIsTriedAgain) {
  open();
  it.links({linkPayload(7, "wlan0", running)});
  it.kernel.opens = false;
  it.fail(Outcome::failed);
  hear();
  loop.advance(1100ms);
  it.kernel.opens = true;
  it.kernel.descriptor = -1;  // which the loop refuses
  loop.advance(2s);
  EXPECT_EQ(it.told, 0);
  it.kernel.descriptor = it.counter.get();
  loop.advance(5s);
  EXPECT_EQ(it.devices(), Texts{"wlan0"});
  EXPECT_EQ(it.told, 1);
}

TEST_F(ConfigurationPace, WithoutAChannelToFollowTheOthersAreStillHeard) {
  open();
  it.kernel.opens = false;
  it.fail(Outcome::failed);
  hear();
  it.connections = {{"uuid-e", "Wired", "eth0", "802-3-ethernet", true}};
  it.managerChanged();
  settle();
  EXPECT_EQ(it.told, 1);
  EXPECT_TRUE(it.kernel.requests.empty());
}

TEST_F(ConfigurationPace, ServersAreLookedAtWithEveryChange) {
  open();
  std::ofstream(it.folder.path("resolv.conf")) << "nameserver 10.0.0.1\n";
  // Nothing of the file is heard here, as where it is out of inotify's reach.
  it.managerChanged();
  settle();
  EXPECT_EQ(it.textsOf("State:/Network/Service/interface-eth0/DNS", "ServerAddresses"),
            Texts{"10.0.0.1"});
}

TEST_F(ConfigurationPace, AnOverrunReadsServersAndWirelessLinksToo) {
  open();
  std::ofstream(it.folder.path("resolv.conf")) << "nameserver 10.0.0.1\n";
  it.kernel.events.emplace_back(Outcome::overrun, "");
  it.managerChanged();
  settle();
  for (const int type : {int{RTM_GETLINK}, int{RTM_GETADDR}, int{GENL_ID_CTRL}})
    EXPECT_EQ(it.asked(static_cast<std::uint16_t>(type)), 1);
  EXPECT_EQ(it.asked(RTM_GETROUTE), 2);
  EXPECT_EQ(it.textsOf("State:/Network/Service/interface-eth0/DNS", "ServerAddresses"),
            Texts{"10.0.0.1"});
}

/// The answers of nl80211, whose number is 30, that these links are wireless.
void haveWireless(FakeNetlink& kernel, const std::vector<std::uint32_t>& links) {
  const std::string header(4, '\0');
  kernel.answers[GENL_ID_CTRL] =
      FakeNetlink::one(GENL_ID_CTRL, header + attribute(1, bytesOf(std::uint16_t{30})));
  std::vector<std::string> payloads;
  for (const auto link : links) payloads.push_back(header + attribute(3, bytesOf(link)));
  kernel.answers[30] = FakeNetlink::list(30, payloads);
}

TEST_F(ConfigurationPace, WirelessLinksThatAreRefusedStayAsTheyWereUntilTheyAreTold) {
  for (const auto refused : {std::uint16_t{30}, std::uint16_t{GENL_ID_CTRL}}) {
    haveWireless(it.kernel, {2});
    open();
    ASSERT_EQ(it.hardware("interface-eth0"), "Wi-Fi");
    it.kernel.answers[refused] = FakeNetlink::refusal(ENOMEM);
    tell(newLink(3, "wlan1"));
    settle();
    EXPECT_EQ(it.told, 1);
    EXPECT_EQ(it.hardware("interface-eth0"), "Wi-Fi");
    EXPECT_EQ(it.hardware("interface-wlan1"), "Ethernet");
    haveWireless(it.kernel, {2, 3});
    loop.advance(1s);
    EXPECT_EQ(it.told, 2);
    EXPECT_EQ(it.hardware("interface-wlan1"), "Wi-Fi");
  }
}

TEST_F(ConfigurationPace, WhichLinksAreWirelessMayBeToldLater) {
  it.kernel.answers[GENL_ID_CTRL] = FakeNetlink::refusal(ENOMEM);
  open();
  haveWireless(it.kernel, {2});
  loop.advance(1s);
  EXPECT_EQ(it.told, 1);
  EXPECT_EQ(it.hardware("interface-eth0"), "Wi-Fi");
}

TEST_F(ConfigurationPace, AListThatChangedMeanwhileIsTakenAgain) {
  open();
  int lists = 0;
  it.kernel.answers[RTM_GETADDR] = [&](std::uint32_t sequence, std::string_view request) {
    const bool cut = ++lists < 3;
    return FakeNetlink::list(RTM_NEWADDR, {addressPayload(2, 24, cut ? address : gateway)},
                             cut ? NetlinkMessage::interrupted : 0)(sequence, request);
  };
  tell(message(RTM_NEWADDR, addressPayload(2, 24, gateway)));
  settle();
  EXPECT_EQ(lists, 3);
  EXPECT_EQ(it.textsOf("State:/Network/Service/interface-eth0/IPv4", "Addresses"),
            Texts{"10.1.0.1"});
}

TEST_F(ConfigurationPace, WhatFollowsAMessageWhoseLengthLiesIsLeftAlone) {
  open();
  for (const std::uint32_t length : {0u, 15u, 4096u, 0xffffffffu}) {
    forget();
    const auto lying = bytesOf(length) + newLink(9, "usb9").substr(4);
    tell(newLink(8, "usb" + std::to_string(length)) + lying + newLink(10, "usb10"));
    settle();
    EXPECT_EQ(it.told, 1);
    EXPECT_EQ(it.devices().size(), 2u);
  }
}

}  // namespace
}  // namespace vantile
