// How a session of the configuration follows what a kernel tells that a test plays.

#include "vantile/platform/linux/configuration_session.h"

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "vantile/platform/posix/descriptor.h"

#include "fakes/fake_netlink.h"
#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using testing::addressPayload;
using testing::defaultRoutePayload;
using testing::FakeNetlink;
using testing::linkPayload;
using testing::message;
using Outcome = NetlinkChannel::Outcome;
using Texts = std::vector<std::string>;

constexpr std::uint32_t running = 0x10001;
const auto address = "\x0A\x01\x00\x02"s, gateway = "\x0A\x01\x00\x01"s;

struct FakeManager final : NetworkManagerClient {
  explicit FakeManager(const std::vector<ManagedConnection>& all) : all_(all) {}
  const std::vector<ManagedConnection>& connections() const override { return all_; }
  const std::vector<ManagedConnection>& all_;
};

/// A session on the loop of a thread of its own.
struct Session {
  Session() {
    kernel.descriptor = counter.get();
    links({linkPayload(1, "lo", running | 8, 772), linkPayload(2, "eth0", running)});
    kernel.answers[RTM_GETADDR] = FakeNetlink::list(RTM_NEWADDR, {addressPayload(2, 24, address)});
    routes({defaultRoutePayload(2, 100, gateway)});
    sources.open = kernel.opener();
    sources.resolver = {folder.path("resolv.conf"), folder.path("stub")};
    sources.follow = [this](std::function<void()> changed) {
      managerChanged = std::move(changed);
      return std::make_unique<FakeManager>(connections);
    };
  }

  bool open() {
    session = LinuxConfigurationSession::open(sources, [this] {
      ++told;
      if (whenTold) whenTold();
    });
    return session != nullptr;
  }
  void links(std::vector<std::string> payloads) {
    kernel.answers[RTM_GETLINK] = FakeNetlink::list(RTM_NEWLINK, std::move(payloads));
  }
  void routes(std::vector<std::string> payloads) {
    kernel.answers[RTM_GETROUTE] = FakeNetlink::list(RTM_NEWROUTE, std::move(payloads));
  }
  void tell(const std::string& datagram) {
    kernel.tell(datagram);
    ::eventfd_write(counter.get(), 1);
  }
  void fail(Outcome outcome) {
    kernel.events.emplace_back(outcome, "");
    ::eventfd_write(counter.get(), 1);
  }
  /// Serves the loop for so long.
  void serve(std::chrono::milliseconds time = std::chrono::milliseconds(60)) {
    auto& loop = RunLoop::current();
    const auto readable = loop.after(std::chrono::milliseconds(2), [this] {
      eventfd_t ignored = 0;  // the fake kernel has no socket that would empty itself
      ::eventfd_read(counter.get(), &ignored);
    });
    const auto end = loop.after(time, [&loop] { loop.stop(); });
    loop.run();
  }

  Texts devices() {
    Texts names;
    for (const auto& service : textsOf("Setup:/Network/Global/IPv4", "ServiceOrder"))
      names.push_back(text("Setup:/Network/Service/" + service + "/Interface", "DeviceName"));
    return names;
  }
  Texts textsOf(const std::string& key, std::string_view name) {
    Texts texts;
    const auto dictionary = session->value(key);
    const auto* const value = dictionary ? dictionary->find(name) : nullptr;
    if (!value) return texts;
    for (const auto& each : **value->as<std::shared_ptr<Array>>())
      texts.push_back(*each.as<std::string>());
    return texts;
  }
  std::string text(const std::string& key, std::string_view name) {
    const auto dictionary = session->value(key);
    const auto* const found = dictionary ? dictionary->text(name) : nullptr;
    return found ? *found : std::string();
  }
  std::string primary() { return text("State:/Network/Global/IPv4", "PrimaryInterface"); }
  auto asked(std::uint16_t type) const {
    return std::count(kernel.requests.begin(), kernel.requests.end(), type);
  }

  Descriptor counter{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  FakeNetlink kernel;
  testing::TemporaryFolder folder;
  std::vector<ManagedConnection> connections;
  std::function<void()> managerChanged, whenTold;
  ConfigurationSources sources;
  int told = 0;
  std::unique_ptr<LinuxConfigurationSession> session;
};

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

TEST(ConfigurationSession, RoutesAreListedAnewWhenALinkChanges) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.routes({});
    it.tell(message(RTM_NEWLINK, linkPayload(2, "eth0", 0)));
    it.serve();
    EXPECT_EQ(it.primary(), "");
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

TEST(ConfigurationSession, AChannelThatCantBeOpenedYetIsTriedAgain) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    it.links({linkPayload(7, "wlan0", running)});
    it.kernel.opens = false;
    it.fail(Outcome::failed);
    it.serve();
    it.kernel.opens = true;
    it.kernel.descriptor = -1;  // which the loop refuses
    it.serve(std::chrono::milliseconds(400));
    EXPECT_EQ(it.told, 0);
    it.kernel.descriptor = it.counter.get();
    it.serve(std::chrono::milliseconds(400));
    EXPECT_EQ(it.devices(), Texts{"wlan0"});
    EXPECT_EQ(it.told, 1);
  });
}

TEST(ConfigurationSession, ServersAreLookedAtWithEveryChange) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    std::ofstream(it.folder.path("resolv.conf")) << "nameserver 10.0.0.1\n";
    it.managerChanged();
    it.serve();
    EXPECT_EQ(it.textsOf("State:/Network/Service/interface-eth0/DNS", "ServerAddresses"),
              Texts{"10.0.0.1"});
  });
}

TEST(ConfigurationSession, WhatIsRefusedIsAskedForAgain) {
  onNewThread([](Session& it) {
    ASSERT_TRUE(it.open());
    const auto answer = it.kernel.answers[RTM_GETADDR];
    it.kernel.answers[RTM_GETADDR] = FakeNetlink::refusal(ENOMEM);
    it.tell(message(RTM_NEWADDR, addressPayload(2, 24, gateway)));
    it.serve();
    EXPECT_EQ(it.told, 0);
    it.kernel.answers[RTM_GETADDR] =
        FakeNetlink::list(RTM_NEWADDR, {addressPayload(2, 24, gateway)});
    it.serve(std::chrono::milliseconds(400));
    EXPECT_EQ(it.told, 1);
    EXPECT_EQ(it.textsOf("State:/Network/Service/interface-eth0/IPv4", "Addresses"),
              Texts{"10.1.0.1"});
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
