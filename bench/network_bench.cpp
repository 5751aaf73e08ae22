#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/run_loop.h"
#include "vantile/platform/configuration_store.h"
#include "vantile/platform/interface_counters.h"

// The counters of fifty interfaces, in a network namespace of the program's own: the library's
// beside the one list of the kernel that it can't do without, and beside psutil. What an answer
// about the configuration takes. "network_bench change" measures how long a change takes to be
// told, with the list of services refreshed.

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

bool makeInterfaces() {
  if (::unshare(CLONE_NEWNET) != 0) return false;
  FILE* const ip = ::popen("ip -batch -", "w");
  if (!ip) return false;
  for (int pair = 0; pair < 25; ++pair)
    std::fprintf(ip, "link add a%d type veth peer name b%d\nlink set a%d up\nlink set b%d up\n",
                 pair, pair, pair, pair);
  return ::pclose(ip) == 0;
}

void counters(benchmark::State& state) {
  const auto reader = vantile::makeInterfaceCounters();
  vantile::InterfaceReadings readings;
  for (auto _ : state)
    if (!reader->read(readings)) return state.SkipWithError("no counters here");
  if (readings.count < 50) state.SkipWithError("not all interfaces were listed");
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
bool changeAddress(int socket, const std::string& name, int number) {
  ifreq request = {};
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(0x0A010000u + static_cast<unsigned>(number));
  std::memcpy(&request.ifr_addr, &address, sizeof address);
  return ::ioctl(socket, SIOCSIFADDR, &request) == 0;
}

/// The addresses of the services, as a list of them would have them.
std::size_t refreshedList(vantile::ConfigurationSession& session) {
  const auto order = session.value("Setup:/Network/Global/IPv4");
  const auto* const services = order ? order->find("ServiceOrder") : nullptr;
  std::size_t found = 0;
  if (!services) return found;
  for (const auto& each : **services->as<std::shared_ptr<vantile::Array>>()) {
    const auto& service = *each.as<std::string>();
    found += session.value("State:/Network/Service/" + service + "/IPv4") != nullptr;
    found += session.value("Setup:/Network/Service/" + service + "/Interface") != nullptr;
  }
  return found;
}

int measureChange() {
  constexpr int changes = 200;
  constexpr double target = 5;
  auto& loop = vantile::RunLoop::current();
  std::unique_ptr<vantile::ConfigurationSession> session;
  Clock::time_point told;
  session = vantile::systemConfigurationStore()->open("bench", {}, [&] {
    if (refreshedList(*session) == 0) return;
    told = Clock::now();
    loop.stop();
  });
  if (!session) return 1;
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  std::vector<double> times;
  for (int change = 1; change <= changes; ++change) {
    // What the last change brought along is over by then.
    const auto pause = loop.after(std::chrono::milliseconds(30), [&] { loop.stop(); });
    loop.run();
    const auto begin = Clock::now();
    if (!changeAddress(socket, "a7", change)) return 1;
    const auto tooLong = loop.after(std::chrono::seconds(1), [&] { loop.stop(); });
    loop.run();
    times.push_back(Milliseconds(told - begin).count());
  }
  ::close(socket);
  std::sort(times.begin(), times.end());
  const double median = times[changes / 2], late = times[changes * 95 / 100];
  const bool met = times.front() > 0 && median < target;
  std::printf("a change until it is told: %.2f ms, 95 of 100 within %.2f ms, < %.0f ms %s\n",
              median, late, target, met ? "met" : "MISSED");
  return met ? 0 : 1;
}

BENCHMARK(counters)->Name("network counters");
BENCHMARK(bareList)->Name("bare list of counters");
BENCHMARK(psutil)->Name("psutil counters")->UseManualTime()->Iterations(1);
BENCHMARK(answer)->Name("configuration answer");

}  // namespace

int main(int argc, char** argv) {
  if (!makeInterfaces()) {
    std::fprintf(stderr, "network_bench: no network namespace with interfaces can be made\n");
    return 1;
  }
  if (argc == 2 && std::string_view(argv[1]) == "change") return measureChange();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
