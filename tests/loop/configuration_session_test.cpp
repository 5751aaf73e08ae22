// How a session of the configuration follows what a kernel tells that a test plays.

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <sys/eventfd.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>

#include "loop/played_session.h"

namespace vantile {
namespace {

using namespace testing;
using Outcome = NetlinkChannel::Outcome;
using Session = PlayedSession;

template <class Body>
void onNewThread(Body body) {
  std::thread([&body] {
    Session session;
    body(session);
    session.session.reset();
  }).join();
}

TEST(ConfigurationSession, KnowsEverythingOnceItIsOpen) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    EXPECT_EQ(it.devices(), Texts{"eth0"});
    EXPECT_EQ(it.primary(), "eth0");
    it.serve();
    EXPECT_EQ(it.told, 0);
  });
}

TEST(ConfigurationSession, NothingChangesUntilItIsTold) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    EXPECT_TRUE(it.session->tellsEveryChange());
    EXPECT_EQ(it.devices(), Texts{"eth0"});
    it.tell(message(RTM_NEWLINK, linkPayload(3, "eth1", running)));
    it.connections = {{"u-1", "Home", "eth0", "802-3-ethernet", true}};
    it.managerChanged();
    EXPECT_EQ(it.devices(), Texts{"eth0"});
    it.serve();
    EXPECT_GE(it.told, 1);
    EXPECT_EQ(it.devices(), (Texts{"eth0", "eth1"}));
  });
}

TEST(ConfigurationSession, IsNotOpenedWhereAStepFails) {
  onNewThread([](Session& it) {
    for (const std::uint16_t type : {RTM_GETLINK, RTM_GETADDR, RTM_GETROUTE}) {
      const auto answer = it.kernel.answers[type];
      it.kernel.answers[type] = FakeNetlink::refusal(EPERM);
      EXPECT_FALSE(it.open());
      it.kernel.answers[type] = answer;
    }
    it.kernel.opens = false;
    EXPECT_FALSE(it.open());
    it.kernel.opens = true;
    it.kernel.descriptor = -1;
    EXPECT_FALSE(LinuxConfigurationStore(it.sources).open("test", {}, [] {}));
    EXPECT_EQ(it.kernel.openNow, 0);
  });
}

TEST(ConfigurationSession, ANetworkWithoutATableOfRoutesHasNone) {
  onNewThread([](Session& it) {
    it.kernel.answers[RTM_GETROUTE] = FakeNetlink::refusal(ENOENT);
    ASSERT_TRUE(it.open());
    EXPECT_EQ(it.primary(), "");
  });
}

TEST(ConfigurationSession, ABurstIsToldOnceAndAllOfItIsTrueThen) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    for (std::uint32_t each = 3; each < 103; ++each)
      it.tell(message(RTM_NEWLINK, linkPayload(each, "v" + std::to_string(each), running)));
    it.tell(message(RTM_DELLINK, linkPayload(2, "eth0", 0)));
    std::size_t seen = 0;
    it.whenTold = [&] { seen = it.devices().size(); };
    it.serve();
    EXPECT_EQ(it.told, 1);
    EXPECT_EQ(seen, 100u);
  });
}

TEST(ConfigurationSession, WhatChangesNothingIsNotTold) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.tell(message(RTM_NEWLINK, linkPayload(2, "eth0", running)));
    it.tell(message(RTM_NEWADDR, addressPayload(2, 24, address)));
    it.tell(message(RTM_NEWROUTE, defaultRoutePayload(2, 100, gateway)));
    it.serve();
    EXPECT_EQ(it.told, 0);
  });
}

TEST(ConfigurationSession, AnEventOfAWirelessDriverLeavesTheLinkAsItIs) {
  onNewThread([](Session& it) {
    const auto hardware = attribute(54, "\x52\x54\x00\x00\x00\x07"s) + attribute(56, "pci\0"s);
    it.links(
        {linkPayload(1, "lo", running | 8, 772), linkPayload(2, "wlan0", running, 1, hardware)});
    ASSERT_TRUE(it.open());
    const Texts before = it.textsOf("Setup:/Network/Global/IPv4", "ServiceOrder");
    EXPECT_EQ(before, Texts{"hardware-525400000007"});
    const auto event = attribute(11, std::string(12, '\x19'));
    it.tell(message(RTM_NEWLINK, linkPayload(2, "wlan0", running, 1, event)));
    it.serve();
    EXPECT_EQ(it.told, 0);
    EXPECT_EQ(it.textsOf("Setup:/Network/Global/IPv4", "ServiceOrder"), before);
  });
}

TEST(ConfigurationSession, OnlyDefaultRoutesAreListedAnewForARoute) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.kernel.requests.clear();
    testing::RouteHeader header;
    header.destinationBits = 24;
    it.tell(message(RTM_NEWROUTE, testing::routePayload(header, "")));
    it.serve();
    EXPECT_EQ(it.asked(RTM_GETROUTE), 0);
    it.routes({});
    it.tell(message(RTM_DELROUTE, defaultRoutePayload(2, 100, gateway)));
    it.serve();
    EXPECT_EQ(it.primary(), "");
    EXPECT_EQ(it.told, 1);
  });
}

TEST(ConfigurationSession, ARouteThatGoesAfterItsAddressIsSeenToGo) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.kernel.answers[RTM_GETADDR] = FakeNetlink::list(RTM_NEWADDR, {});
    it.tell(message(RTM_DELADDR, addressPayload(2, 24, address)));
    it.whenTold = [&] { it.routes({}); };
    it.serve(std::chrono::milliseconds(200));
    EXPECT_EQ(it.told, 2);
    EXPECT_EQ(it.primary(), "");
  });
}

TEST(ConfigurationSession, AfterAnOverrunEverythingIsReadAnew) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.links({linkPayload(7, "wlan0", running)});
    it.routes({defaultRoutePayload(7, 1, gateway)});
    it.fail(Outcome::overrun);
    it.tell(message(RTM_NEWLINK, linkPayload(5, "older", running)));  // than the loss
    it.serve();
    EXPECT_EQ(it.devices(), Texts{"wlan0"});
    EXPECT_EQ(it.primary(), "wlan0");
    EXPECT_EQ(it.told, 1);
  });
}

TEST(ConfigurationSession, AChannelThatFailsIsOpenedAnew) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.links({linkPayload(7, "wlan0", running)});
    it.fail(Outcome::failed);
    it.serve();
    EXPECT_EQ(it.devices(), Texts{"wlan0"});
    it.tell(message(RTM_NEWLINK, linkPayload(8, "usb0", running)));
    it.serve();
    EXPECT_EQ(it.devices(), (Texts{"wlan0", "usb0"}));
  });
}

TEST(ConfigurationSession, NetworkManagersChangesAreTold) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.connections = {{"uuid-e", "Wired", "eth0", "802-3-ethernet", true}};
    it.managerChanged();
    it.managerChanged();
    it.serve();
    EXPECT_EQ(it.told, 1);
    EXPECT_EQ(it.text("Setup:/Network/Service/uuid-e", "UserDefinedName"), "Wired");
  });
}

TEST(ConfigurationSession, AnAnswerIsTheSameUntilAChangeIsTold) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    const auto before = it.session->value("Setup:/Network/Global/IPv4");
    EXPECT_EQ(it.session->value("Setup:/Network/Global/IPv4"), before);
    it.connections = {{"uuid-e", "Wired", "eth0", "802-3-ethernet", true}};
    it.managerChanged();
    EXPECT_EQ(it.session->value("Setup:/Network/Global/IPv4"), before);
    it.serve();
    EXPECT_NE(it.session->value("Setup:/Network/Global/IPv4"), before);
  });
}

TEST(ConfigurationSession, AnswersAskTheKernelNothing) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.kernel.requests.clear();
    it.kernel.receives = 0;
    it.devices();
    it.primary();
    EXPECT_FALSE(it.session->value("State:/Network/Service/none/IPv4"));
    EXPECT_FALSE(it.session->value(""));
    EXPECT_TRUE(it.kernel.requests.empty());
    EXPECT_EQ(it.kernel.receives, 0);
  });
}

TEST(ConfigurationSession, MayEndWhileItTells) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.whenTold = [&] { it.session.reset(); };
    it.tell(message(RTM_NEWLINK, linkPayload(9, "usb0", running)));
    it.serve();
    EXPECT_EQ(it.told, 1);
    EXPECT_EQ(it.kernel.openNow, 0);
  });
}

TEST(ConfigurationSession, NothingIsToldOnceItEnded) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.tell(message(RTM_NEWLINK, linkPayload(9, "usb0", running)));
    RunLoop::current().dispatch();
    it.session.reset();
    it.serve();
    EXPECT_EQ(it.told, 0);
  });
}

}  // namespace
}  // namespace vantile
