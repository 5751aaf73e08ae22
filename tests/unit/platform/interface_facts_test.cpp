#include "vantile/platform/linux/interface_facts.h"

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>

#include <filesystem>
#include <fstream>

#include "fakes/fake_netlink.h"
#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using testing::attribute;
using testing::bytesOf;
using testing::FakeNetlink;
using testing::linkPayload;

constexpr std::uint16_t controller = 0x10, family = 33;
const std::string header(4, '\0');

struct FactsOfAFake : ::testing::Test {
  /// The one link, and a name that the kernel knows it by.
  void link(const std::string& name, std::uint16_t type, const std::string& more) {
    kernel.answers[RTM_GETLINK] =
        FakeNetlink::one(RTM_NEWLINK, linkPayload(4, name, 1, type, more));
  }
  void device(const std::string& name) { link(name, 1, attribute(56, "0000:00:1f.6\0"s)); }

  /// Generic netlink has that family alone, and answers it so.
  void generic(std::string_view wanted, FakeNetlink::Answer answer) {
    kernel.answers[controller] = [wanted = std::string(wanted)](std::uint32_t sequence,
                                                                std::string_view request) {
      const bool known = request.find(wanted + '\0') != request.npos;
      return known ? FakeNetlink::one(controller, header + attribute(1, bytesOf(family)))(sequence,
                                                                                          request)
                   : FakeNetlink::refusal(ENOENT)(sequence, request);
    };
    kernel.answers[family] = std::move(answer);
  }

  void file(const std::string& path, const std::string& text) {
    const auto whole = std::filesystem::path(folder.path()) / "class/net" / path;
    std::filesystem::create_directories(whole.parent_path());
    std::ofstream(whole) << text;
  }

  FakeNetlink kernel;
  testing::TemporaryFolder folder;
  LinuxRoots roots{.sys = folder.path()};
  LinuxInterfaceFacts facts{kernel.opener(), roots};
};

TEST_F(FactsOfAFake, ALinkOfEthernetTypeWithAParentIsADevice) {
  device("lan0");
  EXPECT_EQ(facts.isEthernetDevice("lan0"), true);
}

TEST_F(FactsOfAFake, ALinkOfAKindIsNoDevice) {
  for (const char* const kind : {"veth", "bridge", "tun", "macvlan"}) {
    link("lan0", 1, attribute(18, attribute(1, kind)) + attribute(56, "0000:00:1f.6\0"s));
    EXPECT_EQ(facts.isEthernetDevice("lan0"), false) << kind;
  }
}

TEST_F(FactsOfAFake, APortOfASwitchIsADevice) {
  link("lan1", 1, attribute(18, attribute(1, "dsa")) + attribute(56, "switch@0\0"s));
  EXPECT_EQ(facts.isEthernetDevice("lan1"), true);
}

TEST_F(FactsOfAFake, ALinkOfAnotherTypeIsNoDevice) {
  link("ib0", 32, attribute(56, "0000:00:1f.6\0"s));
  EXPECT_EQ(facts.isEthernetDevice("ib0"), false);
}

TEST_F(FactsOfAFake, OnAnOldKernelTheFolderTellsOfTheDevice) {
  link("eth0", 1, "");
  EXPECT_EQ(facts.isEthernetDevice("eth0"), false);
  file("eth0/ifindex", "4\n");
  EXPECT_EQ(facts.isEthernetDevice("eth0"), false);
  file("eth0/device/vendor", "0x8086\n");
  EXPECT_EQ(facts.isEthernetDevice("eth0"), true);
}

TEST_F(FactsOfAFake, AFolderOfAnotherNetworkIsNotBelieved) {
  link("eth0", 1, "");
  file("eth0/ifindex", "5\n");
  file("eth0/device/vendor", "0x8086\n");
  file("eth0/speed", "1000\n");
  EXPECT_EQ(facts.isEthernetDevice("eth0"), false);
  EXPECT_EQ(facts.linkSpeed("eth0"), std::nullopt);
}

TEST_F(FactsOfAFake, ANameThatNoLinkCanHaveIsNotAskedFor) {
  device("x");
  for (const auto& name : {""s, "."s, ".."s, "../eth0"s, "a/b"s, "eth0\0x"s, std::string(16, 'x'),
                           std::string(1 << 20, '\xFF')}) {
    EXPECT_EQ(facts.isEthernetDevice(name), false);
    EXPECT_EQ(facts.linkSpeed(name), std::nullopt);
  }
  EXPECT_TRUE(kernel.requests.empty());
}

TEST_F(FactsOfAFake, AnyOtherBytesMayBeAName) {
  const auto name = "\xFF %\n\x01"s;
  device(name);
  EXPECT_EQ(facts.isEthernetDevice(name), true);
  device("fifteen-letters");
  EXPECT_EQ(facts.isEthernetDevice("fifteen-letters"), true);
}

TEST_F(FactsOfAFake, AnAnswerAboutALinkOfAnotherNameIsNone) {
  device("enp0s31f6");
  EXPECT_EQ(facts.isEthernetDevice("eth0"), false);
}

TEST_F(FactsOfAFake, ALinkThatIsNotThereIsNoDevice) {
  kernel.answers[RTM_GETLINK] = FakeNetlink::refusal(ENODEV);
  EXPECT_EQ(facts.isEthernetDevice("eth0"), false);
  EXPECT_EQ(facts.linkSpeed("eth0"), std::nullopt);
}

TEST_F(FactsOfAFake, WithoutAnAnswerNothingIsKnown) {
  for (const int error : {ENOBUFS, EPERM}) {
    kernel.answers[RTM_GETLINK] = FakeNetlink::refusal(error);
    EXPECT_EQ(facts.isEthernetDevice("eth0"), std::nullopt) << error;
    EXPECT_EQ(facts.linkSpeed("eth0"), std::nullopt);
  }
  device("eth0");
  kernel.opens = false;  // no descriptor is left
  EXPECT_EQ(facts.isEthernetDevice("eth0"), std::nullopt);
  kernel.opens = true;
  EXPECT_EQ(facts.isEthernetDevice("eth0"), true);
}

TEST_F(FactsOfAFake, TheSpeedIsEthtools) {
  device("eth0");
  generic("ethtool", FakeNetlink::one(family, header + attribute(5, bytesOf(std::uint32_t{2500}))));
  file("eth0/ifindex", "4\n");
  file("eth0/speed", "1000\n");
  EXPECT_EQ(facts.linkSpeed("eth0"), 2'500'000'000u);
}

TEST_F(FactsOfAFake, AWirelessLinkHasItsPresentRate) {
  device("wlan0");
  const auto rate = attribute(8, attribute(5, bytesOf(std::uint32_t{8667})));
  generic("nl80211", FakeNetlink::list(family, {header + attribute(21, rate)}));
  EXPECT_EQ(facts.linkSpeed("wlan0"), 866'700'000u);
}

TEST_F(FactsOfAFake, OnAnOldKernelTheSpeedIsTheFiles) {
  device("eth0");
  file("eth0/ifindex", "4\n");
  EXPECT_EQ(facts.linkSpeed("eth0"), std::nullopt);
  file("eth0/speed", "1000\n");
  EXPECT_EQ(facts.linkSpeed("eth0"), 1'000'000'000u);
}

TEST_F(FactsOfAFake, ASpeedThatIsUnknownIsAbsent) {
  device("eth0");
  generic("ethtool",
          FakeNetlink::one(family, header + attribute(5, bytesOf(std::uint32_t{0xffffffff}))));
  file("eth0/ifindex", "4\n");
  file("eth0/speed", "-1\n");
  EXPECT_EQ(facts.linkSpeed("eth0"), std::nullopt);
}

TEST_F(FactsOfAFake, NoChannelIsKept) {
  device("eth0");
  facts.isEthernetDevice("eth0");
  facts.linkSpeed("eth0");
  EXPECT_EQ(kernel.openNow, 0);
}

}  // namespace
}  // namespace vantile
