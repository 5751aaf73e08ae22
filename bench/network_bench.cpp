#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/run_loop.h"
#include "vantile/network/net_manage.h"
#include "vantile/network/network.h"
#include "vantile/platform/configuration_store.h"
#include "vantile/platform/interface_counters.h"

#include "live/counted_queries.h"
#include "live/private_links.h"

// A tick over fifty interfaces, in a network namespace of the program's own: the library's beside
// the one list of the kernel that it can't do without, and beside psutil. What an answer about the
// configuration takes.
//
//   network_bench change     how long a change takes to be in the list of services; 1 where that
//                            is too long
//   network_bench calls      how many system calls answers make that are kept; 1 where any

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using vantile::Array;
using vantile::Dictionary;
namespace keys = vantile::keys;

constexpr int pairs = 25;

void counters(benchmark::State& state) {
  const auto reader = vantile::makeInterfaceCounters();
  vantile::InterfaceReadings readings;
  for (auto _ : state)
    if (!reader->read(readings)) return state.SkipWithError("no counters here");
  if (readings.count < 2 * pairs) state.SkipWithError("not all interfaces were listed");
}

/// The monitor without its timer, past its first samples.
void networkTick(benchmark::State& state) {
  const auto network = vantile::Network::init();
  std::int64_t told = 0;
  auto delegate = std::make_shared<vantile::NetworkDelegate>();
  delegate->networkStatus = [&told](const vantile::Array& services) {
    told += std::ssize(services);
  };
  network->setFreshInterval(0);
  network->setDelegate(std::move(delegate));
  for (int sample = 0; sample < 3; ++sample) network->updateInfo();
  told = 0;
  for (auto _ : state) network->updateInfo();
  // Every service once for every service.
  if (told < 4 * pairs * pairs * state.iterations())
    state.SkipWithError("not all interfaces were told of");
  network->setDelegate(nullptr);
}

/// A list of the counters, taken up to its end without a look at what it says.
void bareList(benchmark::State& state) {
  struct {
    nlmsghdr header;
    if_stats_msg body;
  } request = {};
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = RTM_GETSTATS;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.body.filter_mask = IFLA_STATS_FILTER_BIT(IFLA_STATS_LINK_64);
  std::vector<char> buffer(32768);
  const int socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  const auto isLast = [&buffer](std::size_t size) {
    nlmsghdr header = {};
    for (std::size_t at = 0; at + sizeof header <= size; at += NLMSG_ALIGN(header.nlmsg_len)) {
      std::memcpy(&header, buffer.data() + at, sizeof header);
      if (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR) return true;
    }
    return false;
  };
  for (auto _ : state) {
    ::send(socket, &request, sizeof request, 0);
    ssize_t size = 0;
    do size = ::recv(socket, buffer.data(), buffer.size(), 0);
    while (size > 0 && !isLast(static_cast<std::size_t>(size)));
  }
  ::close(socket);
}

/// psutil tells itself how long a call takes it, without its start.
void psutil(benchmark::State& state) {
  constexpr auto program =
      "/usr/bin/python3 -c 'import psutil, time\n"
      "call = lambda: psutil.net_io_counters(pernic=True)\n"
      "call(); calls = 200; used, wall = time.process_time(), time.perf_counter()\n"
      "for _ in range(calls): call()\n"
      "used, wall = time.process_time() - used, time.perf_counter() - wall\n"
      "print(used / calls, wall / calls)'";
  double used = 0, elapsed = 0;
  for (auto _ : state) {
    FILE* const output = ::popen(program, "r");
    const bool told = output && std::fscanf(output, "%lf %lf", &used, &elapsed) == 2;
    if (output) ::pclose(output);
    if (!told) return state.SkipWithError("psutil does not run");
    state.SetIterationTime(elapsed);
  }
  state.counters["processor"] = used * 1000;  // milliseconds
}

void answer(benchmark::State& state) {
  const auto session = vantile::systemConfigurationStore()->open("bench", {}, [] {});
  if (!session) return state.SkipWithError("no configuration here");
  std::size_t entries = 0;
  for (auto _ : state) {
    const auto value = session->value("State:/Network/Interface/a7/Link");
    entries += value ? value->size() : 0;
  }
  if (entries == 0) state.SkipWithError("the configuration is not known");
}

/// Gives an interface another address.
bool changeAddress(int socket, std::string_view name, std::uint32_t address) {
  ifreq request = {};
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  sockaddr_in internet = {};
  internet.sin_family = AF_INET;
  internet.sin_addr.s_addr = htonl(address);
  std::memcpy(&request.ifr_addr, &internet, sizeof internet);
  return ::ioctl(socket, SIOCSIFADDR, &request) == 0;
}

bool takeDown(int socket, std::string_view name) {
  ifreq request = {};
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  if (::ioctl(socket, SIOCGIFFLAGS, &request) != 0) return false;
  request.ifr_flags = static_cast<short>(request.ifr_flags & ~IFF_UP);
  return ::ioctl(socket, SIOCSIFFLAGS, &request) == 0;
}

/// The service of the interface.
const Dictionary* serviceOf(const Array& services, std::string_view interface) {
  for (const auto& each : services) {
    const auto& entry = **each.as<std::shared_ptr<Dictionary>>();
    if (const auto* const name = entry.text(keys::device_name); name && *name == interface)
      return &entry;
  }
  return nullptr;
}

bool hasAddress(const Dictionary& service, const std::string& address) {
  const auto* const held = service.find(keys::ipv4_addresses);
  if (!held) return false;
  const auto& all = **held->as<std::shared_ptr<Array>>();
  return std::find(all.begin(), all.end(), vantile::Value(address)) != all.end();
}

class Changes {
 public:
  ~Changes() { ::close(socket_); }
  Changes(const Changes&) = delete;
  Changes& operator=(const Changes&) = delete;
  Changes() = default;

  /// Whether the times until a new address is listed were short enough.
  bool addresses() {
    const std::string name = "a7";
    for (std::uint32_t change = 1; change <= 200; ++change) {
      const auto text = "10.1.0." + std::to_string(change);
      const bool listed = time([&] { return changeAddress(socket_, name, 0x0A010000 + change); },
                               [&](const Array& list) {
                                 const auto* const service = serviceOf(list, name);
                                 return service && hasAddress(*service, text);
                               });
      if (!listed) return false;
    }
    return report("a new address");
  }

  /// The same of a link that goes down.
  bool links() {
    for (int pair = 10; pair < pairs; ++pair) {
      const auto name = "a" + std::to_string(pair);
      const bool listed =
          time([&] { return takeDown(socket_, name); },
               [&](const Array& list) {
                 const auto* const service = serviceOf(list, name);
                 return service && service->boolean(keys::linkactive_status) == false;
               });
      if (!listed) return false;
    }
    return report("a link that goes down");
  }

 private:
  /// Makes a change and serves the loop until a list of services shows it.
  bool time(const std::function<bool()>& make, const std::function<bool(const Array&)>& isShown) {
    auto& loop = vantile::RunLoop::current();
    // What the last change brought along is over by then.
    const auto pause = loop.after(std::chrono::milliseconds(50), [&loop] { loop.stop(); });
    loop.run();
    auto list = manage_ ? manage_->queryInterfaceLists() : nullptr;
    if (!list || isShown(*list)) return false;
    const auto begin = Clock::now();
    if (!make()) return false;
    while (!list || !isShown(*list)) {
      if (Clock::now() - begin > std::chrono::seconds(2)) return false;
      pollfd readable = {loop.fd(), POLLIN, 0};
      ::poll(&readable, 1, 1000);
      loop.dispatch();
      list = manage_->queryInterfaceLists();
    }
    times_.push_back(Milliseconds(Clock::now() - begin).count());
    return true;
  }

  bool report(const char* what) {
    constexpr double target = 5;
    std::sort(times_.begin(), times_.end());
    const auto count = times_.size();
    const double median = times_[count / 2], late = times_[count * 95 / 100];
    std::printf("%s: in the list after %.2f ms, 95 of 100 within %.2f ms, < %.0f ms %s\n", what,
                median, late, target, median < target ? "met" : "MISSED");
    times_.clear();
    return median < target;
  }

  const int socket_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const std::shared_ptr<vantile::NetManage> manage_ = vantile::NetManage::init();
  std::vector<double> times_;
};

int measureChanges() {
  Changes changes;
  bool met = changes.addresses();
  met &= changes.links();
  if (!met) std::fputs("network_bench: not every change was listed in time\n", stderr);
  return met ? 0 : 1;
}

BENCHMARK(networkTick)->Name("network tick");
BENCHMARK(counters)->Name("network counters");
BENCHMARK(bareList)->Name("bare list of counters");
BENCHMARK(psutil)->Name("psutil counters")->UseManualTime()->Iterations(1);
BENCHMARK(answer)->Name("configuration answer");

}  // namespace

int main(int argc, char** argv) {
  const std::string_view part = argc == 2 ? argv[1] : "";
  if (part == "calls") vantile::testing::runCountedQueries();
  if (!vantile::testing::moveToPrivateLinks(pairs)) {
    std::fprintf(stderr, "network_bench: no network namespace with interfaces can be made\n");
    return 1;
  }
  if (part == "change") return measureChanges();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
