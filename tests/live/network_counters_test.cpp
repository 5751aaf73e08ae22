// Counters and facts of interfaces in namespaces that the tests make, against what was sent, ip(8)
// and the kernel's other interfaces.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/ethtool.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <linux/sockios.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "vantile/platform/interface_facts.h"
#include "vantile/platform/linux/interface_counters.h"

#include "fakes/open_descriptors.h"
#include "fakes/temporary_folder.h"
#include "live/network_namespace.h"

namespace vantile {
namespace {

using testing::addPair;
using testing::inNetworkNamespace;
using testing::ip;
using testing::ipTold;

/// A reader of this thread's namespace.
struct Counting {
  explicit Counting(int eventBuffer = 0)
      : reader([eventBuffer](int bus, unsigned groups) {
          return openNetlink(bus, groups, groups != 0 ? eventBuffer : 0);
        }) {}

  std::optional<InterfaceReading> of(const std::string& name) {
    EXPECT_TRUE(reader.read(into));
    const auto end = into.readings.begin() + static_cast<std::ptrdiff_t>(into.count);
    const auto found = std::find_if(into.readings.begin(), end,
                                    [&](const auto& each) { return each.name == name; });
    return found == end ? std::nullopt : std::optional(*found);
  }
  /// Whether the same links are listed as ip(8) lists, with the same indexes and states.
  bool agreesWithIp() {
    EXPECT_TRUE(reader.read(into));
    const auto links = ipTold("link");
    bool agree = links.size() == into.count;
    for (const auto& link : links) {
      const auto reading = of(link["ifname"]);
      const auto& flags = link["flags"];
      const auto has = [&flags](const char* flag) {
        return std::find(flags.begin(), flags.end(), flag) != flags.end();
      };
      agree &= reading && reading->index == link["ifindex"] && reading->up == has("UP") &&
               reading->loopback == has("LOOPBACK");
    }
    return agree;
  }

  LinuxInterfaceCounters reader;
  InterfaceReadings into;
};

/// Sends frames of `size` bytes over a link, so many that they come to `total`.
void send(const std::string& name, std::size_t total, std::size_t size) {
  const Descriptor socket(::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0));
  sockaddr_ll target = {};
  target.sll_family = AF_PACKET;
  target.sll_ifindex = static_cast<int>(::if_nametoindex(name.c_str()));
  target.sll_halen = ETH_ALEN;
  std::vector<char> frame(size, '\0');
  std::fill_n(frame.begin(), 6, '\xFF');  // to everybody
  frame[12] = '\x88';                     // of a protocol for experiments
  frame[13] = '\xB5';
  for (std::size_t sent = 0; sent < total;) {
    const auto count = ::sendto(socket.get(), frame.data(), frame.size(), 0,
                                reinterpret_cast<const sockaddr*>(&target), sizeof target);
    if (count < 0 && errno == ENOBUFS) continue;
    ASSERT_GT(count, 0) << std::strerror(errno);
    sent += static_cast<std::size_t>(count);
  }
}

/// Whether the link comes to have a carrier. Without one it drops what is sent.
bool hasCarrier(const std::string& name) {
  return testing::comesToHold([&name] {
    const auto flags = ipTold("link show " + name)[0]["flags"];
    return std::find(flags.begin(), flags.end(), "LOWER_UP") != flags.end();
  });
}

TEST(LiveCounters, TwoHundredMebibytesAreCountedWithinTwoPercent) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    ip("link set va mtu 60000");
    ip("link set vb mtu 60000");
    ASSERT_TRUE(hasCarrier("va"));
    Counting counting;
    const auto sender = counting.of("va"), receiver = counting.of("vb");
    ASSERT_TRUE(sender && receiver);
    constexpr std::size_t bytes = 200u << 20;
    send("va", bytes, 50000);
    const auto sent = counting.of("va")->sent - sender->sent;
    const auto received = counting.of("vb")->received - receiver->received;
    EXPECT_NEAR(static_cast<double>(sent), bytes, bytes * 0.02);
    EXPECT_NEAR(static_cast<double>(received), bytes, bytes * 0.02);
  });
}

TEST(LiveCounters, FollowALinkThatGoesDownIsRenamedRemovedAndAdded) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    Counting counting;
    EXPECT_TRUE(counting.agreesWithIp());
    ip("link set va down");
    EXPECT_FALSE(counting.of("va")->up);
    ip("link set va name vc");
    ip("link set vc up");
    EXPECT_FALSE(counting.of("va"));
    ASSERT_TRUE(counting.of("vc"));
    EXPECT_TRUE(counting.of("vc")->up);
    const auto index = counting.of("vc")->index;
    ip("link del vc");
    EXPECT_FALSE(counting.of("vc"));
    addPair("vc", "vb");
    ASSERT_TRUE(counting.of("vc"));
    EXPECT_NE(counting.of("vc")->index, index);
    EXPECT_TRUE(counting.agreesWithIp());
  });
}

TEST(LiveCounters, AfterAnOverrunTheNamesAreReadAnew) {
  inNetworkNamespace([] {
    const testing::TemporaryFolder folder;
    Counting counting(2048);
    EXPECT_TRUE(counting.agreesWithIp());
    std::ofstream batch(folder.path("batch"));
    for (int each = 0; each < 100; ++each)
      batch << "link add m" << each << " type veth peer name n" << each << "\n";
    batch.close();
    ip("-batch " + folder.path("batch"));
    EXPECT_TRUE(counting.agreesWithIp());
    EXPECT_GE(counting.into.count, 200u);
    const auto descriptors = testing::openDescriptors();
    for (int each = 0; each < 1000; ++each) counting.of("m0");
    EXPECT_EQ(testing::openDescriptors(), descriptors);
  });
}

TEST(LiveCounters, AgreeWithTheKernelsTable) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    ASSERT_TRUE(hasCarrier("va") && hasCarrier("vb"));
    send("va", 1 << 20, 1000);
    Counting counting;
    // The link has its own traffic, too: it must stand still around the look.
    std::optional<InterfaceReading> before, after;
    std::uint64_t received = 0, sent = 0;
    do {
      before = counting.of("vb");
      std::ifstream table("/proc/thread-self/net/dev");
      for (std::string line; std::getline(table, line);)
        if (line.find("vb:") != line.npos)
          std::sscanf(line.c_str() + line.find(':') + 1, "%lu %*u %*u %*u %*u %*u %*u %*u %lu",
                      &received, &sent);
      after = counting.of("vb");
    } while (before != after);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->received, received);
    EXPECT_EQ(after->sent, sent);
    EXPECT_GE(received, 1u << 20);
  });
}

TEST(LiveInterfaceFacts, VirtualLinksAreNoDevices) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    ip("link add br9 type bridge");
    ip("link add mv9 link va type macvlan");
    ip("tuntap add tap9 mode tap");
    const auto facts = systemInterfaceFacts();
    for (const char* const name : {"va", "br9", "mv9", "tap9", "lo", "none"})
      EXPECT_EQ(facts->isEthernetDevice(name), false) << name;
  });
}

TEST(LiveInterfaceFacts, AnEthernetLinkWithAParentIsADevice) {
  bool any = false;
  const auto facts = systemInterfaceFacts();
  for (const auto& link : ipTold("-d link")) {
    const bool device =
        link["link_type"] == "ether" && link.contains("parentdev") && !link.contains("linkinfo");
    any |= device;
    EXPECT_EQ(facts->isEthernetDevice(link["ifname"].get<std::string>()), device) << link;
  }
  if (!any) GTEST_SKIP() << "no Ethernet device here";
}

/// What the older interface of ethtool tells, in megabits.
std::optional<std::uint32_t> olderSpeed(const std::string& name) {
  const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ethtool_cmd command = {};
  command.cmd = ETHTOOL_GSET;
  ifreq request = {};
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  request.ifr_data = reinterpret_cast<char*>(&command);
  if (::ioctl(socket.get(), SIOCETHTOOL, &request) != 0) return std::nullopt;
  const auto speed = ethtool_cmd_speed(&command);
  return speed == 0 || speed == 0xffffffff ? std::nullopt : std::optional(speed);
}

TEST(LiveInterfaceFacts, SpeedsAgreeWithTheOlderInterface) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    const auto megabits = olderSpeed("va");
    ASSERT_TRUE(megabits);
    EXPECT_EQ(systemInterfaceFacts()->linkSpeed("va"), *megabits * std::uint64_t{1000000});
    EXPECT_EQ(systemInterfaceFacts()->linkSpeed("lo"), std::nullopt);
    EXPECT_EQ(systemInterfaceFacts()->linkSpeed("none"), std::nullopt);
  });
  for (const auto& link : ipTold("link")) {
    const auto name = link["ifname"].get<std::string>();
    const auto megabits = olderSpeed(name);
    const auto speed = systemInterfaceFacts()->linkSpeed(name);
    EXPECT_EQ(speed.has_value(), megabits.has_value()) << name;
    if (speed && megabits) {
      EXPECT_EQ(*speed, *megabits * std::uint64_t{1000000}) << name;
    }
  }
}

}  // namespace
}  // namespace vantile
