#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <exception>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <thread>

#include "vantile/foundation/run_loop.h"
#include "vantile/platform/posix/descriptor.h"

#include "live/command.h"

namespace vantile::testing {

/// Calls `body` on a thread of its own in a network namespace of its own, which programs that it
/// runs share. Skips where the system refuses.
inline void inNetworkNamespace(const std::function<void()>& body) {
  std::string refusal;
  std::thread([&] {
    if (::unshare(CLONE_NEWNET) != 0) {
      refusal = std::strerror(errno);
    } else {
      try {
        body();
      } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
      }
    }
  }).join();
  if (!refusal.empty()) GTEST_SKIP() << "no network namespace: " << refusal;
}

/// Runs ip(8), which is to succeed.
inline std::string ip(const std::string& arguments) {
  const auto output = run("ip " + arguments);
  EXPECT_EQ(output.status, 0) << "ip " << arguments << ": " << output.text;
  return output.text;
}

/// What ip(8) tells.
inline nlohmann::json ipTold(const std::string& arguments) {
  return nlohmann::json::parse(ip("-j " + arguments));
}

inline void addPair(const std::string& one, const std::string& other) {
  ip("link add " + one + " type veth peer name " + other);
  ip("link set " + one + " up");
  ip("link set " + other + " up");
}

/// The links but the loopback, as ip(8) lists them.
inline std::set<std::string> listedLinks() {
  std::set<std::string> names;
  for (const auto& link : ipTold("link"))
    if (link["link_type"] != "loopback") names.insert(link["ifname"].get<std::string>());
  return names;
}

/// Makes two hundred links in one go, "m0" to "n99", by commands that it leaves in the folder.
inline void makeMany(const std::string& folder) {
  std::ofstream batch(folder + "/make");
  for (int each = 0; each < 100; ++each)
    batch << "link add m" << each << " type veth peer name n" << each << "\n";
  batch.close();
  ip("-batch " + folder + "/make");
}

inline void removeMany(const std::string& folder) {
  std::ofstream batch(folder + "/remove");
  for (int each = 0; each < 100; ++each) batch << "link del m" << each << "\n";
  batch.close();
  ip("-batch " + folder + "/remove");
}

/// Serves the thread's loop until `holds`, for so long at most. Whether it came to hold. The
/// kernel tells of carriers up to 1.4 s late.
inline bool comesToHold(const std::function<bool()>& holds,
                        std::chrono::milliseconds within = std::chrono::seconds(10)) {
  auto& loop = RunLoop::current();
  const auto until = std::chrono::steady_clock::now() + within;
  while (!holds()) {
    if (std::chrono::steady_clock::now() >= until) return false;
    const auto wake = loop.after(std::chrono::milliseconds(5), [&loop] { loop.stop(); });
    loop.run();
  }
  return true;
}

/// A tun device of that name, whose links are of that type, as long as the descriptor is open.
inline Descriptor tunDevice(const std::string& name, int linkType) {
  Descriptor tun(::open("/dev/net/tun", O_RDWR | O_CLOEXEC));
  ifreq request = {};
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  request.ifr_flags = IFF_TUN | IFF_NO_PI;
  if (!tun || ::ioctl(tun.get(), TUNSETIFF, &request) != 0) return {};
  if (::ioctl(tun.get(), TUNSETLINK, linkType) != 0) return {};
  return tun;
}

}  // namespace vantile::testing
