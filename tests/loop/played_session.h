#pragma once

#include <linux/genetlink.h>
#include <linux/rtnetlink.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/platform/linux/configuration_session.h"
#include "vantile/platform/posix/descriptor.h"

#include "fakes/fake_netlink.h"
#include "fakes/temporary_folder.h"

namespace vantile::testing {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

inline constexpr std::uint32_t running = 0x10001;
inline const auto address = "\x0A\x01\x00\x02"s, gateway = "\x0A\x01\x00\x01"s;
inline const auto gateway6 = "\xFE\x80"s + std::string(13, '\0') + "\x01";

struct FakeManager final : NetworkManagerClient {
  explicit FakeManager(const std::vector<ManagedConnection>& all) : all_(all) {}
  const std::vector<ManagedConnection>& connections() const override { return all_; }
  const std::vector<ManagedConnection>& all_;
};

/// A session, on the loop of its thread, with a kernel that a test plays.
struct PlayedSession {
  PlayedSession() {
    kernel.descriptor = counter.get();
    links({linkPayload(1, "lo", running | 8, 772), linkPayload(2, "eth0", running)});
    kernel.answers[RTM_GETADDR] = FakeNetlink::list(RTM_NEWADDR, {addressPayload(2, 24, address)});
    routes({defaultRoutePayload(2, 100, gateway)});
    kernel.answers[RTM_GETROUTE] = [this](std::uint32_t sequence, std::string_view request) {
      const auto family = static_cast<AddressFamily>(request[sizeof(nlmsghdr)]);
      routesAsked.push_back(family);
      const auto& table = family == AddressFamily::ipv4 ? ipv4Routes : ipv6Routes;
      return FakeNetlink::list(RTM_NEWROUTE, table)(sequence, request);
    };
    kernel.answers[GENL_ID_CTRL] = FakeNetlink::refusal(ENOENT);  // without nl80211
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
  void routes(std::vector<std::string> payloads) { ipv4Routes = std::move(payloads); }
  void tell(const std::string& datagram) {
    kernel.tell(datagram);
    ::eventfd_write(counter.get(), 1);
  }
  void fail(NetlinkChannel::Outcome outcome) {
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
  std::string hardware(const std::string& service) {
    return text("Setup:/Network/Service/" + service + "/Interface", "Hardware");
  }
  auto asked(std::uint16_t type) const {
    return std::count(kernel.requests.begin(), kernel.requests.end(), type);
  }

  Descriptor counter{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  FakeNetlink kernel;
  std::vector<std::string> ipv4Routes, ipv6Routes;
  std::vector<AddressFamily> routesAsked;
  TemporaryFolder folder;
  std::vector<ManagedConnection> connections;
  std::function<void()> managerChanged, whenTold;
  ConfigurationSources sources;
  int told = 0;
  std::unique_ptr<LinuxConfigurationSession> session;
};

}  // namespace vantile::testing
