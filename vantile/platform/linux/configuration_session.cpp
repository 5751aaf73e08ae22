#include "vantile/platform/linux/configuration_session.h"

#include <linux/rtnetlink.h>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include "vantile/platform/linux/link_requests.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

// A burst of changes ends with a quiet millisecond; a long one is told in pieces.
constexpr auto quiet = 1ms, longestBurst = 3ms;
// The kernel tells that an address goes before it lets go of the routes that hang on it.
constexpr auto secondLook = 20ms;
constexpr auto untilRetry = 250ms;

constexpr int mostReads = 1024;  // before the loop's other work has its turn
constexpr unsigned groups =
    RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;

bool isUsable(NetlinkLister::Outcome outcome) {
  // What changed while it was listed is told as well.
  return outcome == NetlinkLister::Outcome::whole || outcome == NetlinkLister::Outcome::interrupted;
}

}  // namespace

LinuxConfigurationSession::LinuxConfigurationSession(const ConfigurationSources& sources,
                                                     std::function<void()> changed)
    : sources_(sources),
      changed_(std::move(changed)),
      lister_(NETLINK_ROUTE, sources.open),
      generic_(sources.open) {}

std::unique_ptr<LinuxConfigurationSession> LinuxConfigurationSession::open(
    const ConfigurationSources& sources, std::function<void()> changed) {
  std::unique_ptr<LinuxConfigurationSession> session(
      new LinuxConfigurationSession(sources, std::move(changed)));
  auto& self = *session;
  // Followed before it is listed: what comes in between is told.
  if (!self.follow()) return nullptr;
  self.resolver_ = std::make_unique<ResolverFiles>(sources.resolver, [&self] {
    self.stale_.servers = true;
    self.settleSoon();
  });
  self.manager_ = sources.follow([&self] {
    self.isNews_ = true;
    self.settleSoon();
  });
  if (!self.refresh()) return nullptr;
  self.isNews_ = false;
  return session;
}

std::shared_ptr<const Dictionary> LinuxConfigurationSession::value(std::string_view key) {
  if (!table_)
    table_ = networkDictionaries(
        network_, manager_ ? manager_->connections() : std::vector<ManagedConnection>());
  const auto found = table_->find(key);
  return found == table_->end() ? nullptr : found->second;
}

bool LinuxConfigurationSession::follow() {
  events_ = sources_.open(NETLINK_ROUTE, groups);
  if (!events_) return false;
  source_ = std::make_unique<DescriptorSource>(events_->descriptor(), [this] {
    drain();
    if (stale_.any() || isNews_) settleSoon();
  });
  return true;
}

bool LinuxConfigurationSession::followAnew() {
  source_.reset();
  events_.reset();
  try {
    return follow();
  } catch (const std::system_error&) {
    events_.reset();  // the loop takes no more descriptors for now
    return false;
  }
}

/// Takes in what the kernel told. False when there is more, or no channel any longer.
bool LinuxConfigurationSession::drain() {
  for (int reads = 0; reads < mostReads; ++reads) {
    switch (events_ ? events_->receive() : NetlinkChannel::Outcome::failed) {
      case NetlinkChannel::Outcome::datagram:
        takeIn(events_->datagram());
        break;
      case NetlinkChannel::Outcome::nothing:
        return true;
      case NetlinkChannel::Outcome::overrun:
        stale_ = Stale::everything();
        break;
      case NetlinkChannel::Outcome::failed:
        stale_ = Stale::everything();
        return followAnew();
    }
  }
  return false;
}

void LinuxConfigurationSession::takeIn(std::string_view datagram) {
  NetlinkMessages messages(datagram);
  while (const auto message = messages.next()) {
    switch (message->type) {
      case RTM_NEWLINK:
      case RTM_DELLINK:
        takeLink(message->type == RTM_NEWLINK, message->payload);
        break;
      case RTM_DELADDR:
        addressWent_ = true;
        [[fallthrough]];
      case RTM_NEWADDR:
        stale_.addresses = stale_.routes = true;
        break;
      case RTM_NEWROUTE:
      case RTM_DELROUTE:
        if (isAboutDefaultRoute(message->payload)) stale_.routes = true;
        break;
      default:
        break;
    }
  }
}

void LinuxConfigurationSession::takeLink(bool came, std::string_view payload) {
  const auto link = parseLinkMessage(payload);
  if (!link) return;
  if (came && link->kind.empty() && !network_.link(link->index)) stale_.wireless = true;
  const bool changed = came ? network_.keep(*link) : network_.forget(link->index);
  if (!changed) return;
  isNews_ = true;
  stale_.addresses = stale_.routes = true;
}

void LinuxConfigurationSession::settleSoon() {
  auto& loop = RunLoop::current();
  const auto now = loop.now();
  if (!burstBegan_) burstBegan_ = now;
  const auto due = std::min(now + quiet, *burstBegan_ + longestBurst);
  settling_ = loop.after(std::max<RunLoop::Duration>(due - now, 0ms), [this] { settle(); });
}

/// Asks for what is stale and tells of it where it is news.
void LinuxConfigurationSession::settle() {
  burstBegan_.reset();
  // A list must not be followed by what is older.
  if (!drain()) {
    settling_ = RunLoop::current().after(events_ ? RunLoop::Duration(quiet) : untilRetry,
                                         [this] { settle(); });
    return;
  }
  const bool allKnown = refresh();
  if (std::exchange(addressWent_, false)) stale_.routes = true;
  if (stale_.any())
    settling_ = RunLoop::current().after(allKnown ? secondLook : untilRetry, [this] { settle(); });
  if (!std::exchange(isNews_, false)) return;
  table_.reset();
  const auto changed = changed_;  // may end this
  if (changed) changed();
}

bool LinuxConfigurationSession::refresh() {
  stale_.links = stale_.links && !listLinks();
  stale_.addresses = stale_.addresses && !listAddresses();
  stale_.routes = stale_.routes && !listRoutes();
  if (std::exchange(stale_.wireless, false)) replace(network_.wireless, generic_.wirelessLinks());
  // In any case: their files may be out of inotify's reach.
  replace(network_.servers, resolver_->look());
  stale_.servers = false;
  return !stale_.any();
}

template <class Part>
void LinuxConfigurationSession::replace(Part& part, Part now) {
  if (part == now) return;
  part = std::move(now);
  isNews_ = true;
}

bool LinuxConfigurationSession::listLinks() {
  NetworkModel now;
  LinkListRequest request;
  const auto outcome = lister_.list(
      request, [&now] { now.links.clear(); },
      [&now](const NetlinkMessage& message) {
        const auto link = parseLinkMessage(message.payload);
        if (message.type == RTM_NEWLINK && link) now.keep(*link);
      });
  if (!isUsable(outcome)) return false;
  replace(network_.links, std::move(now.links));
  return true;
}

bool LinuxConfigurationSession::listAddresses() {
  std::vector<AddressMessage> now;
  NetlinkRequest request(RTM_GETADDR, NLM_F_DUMP);
  request.header<ifaddrmsg>();
  const auto outcome = lister_.list(
      request, [&now] { now.clear(); },
      [&now](const NetlinkMessage& message) {
        auto address = parseAddressMessage(message.payload);
        if (message.type == RTM_NEWADDR && address) now.push_back(std::move(*address));
      });
  if (!isUsable(outcome)) return false;
  replace(network_.addresses, std::move(now));
  return true;
}

bool LinuxConfigurationSession::listRoutes() {
  std::vector<DefaultRoute> now;
  for (const auto family : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    NetlinkRequest request(RTM_GETROUTE, NLM_F_DUMP);
    auto& route = request.header<rtmsg>();
    route.rtm_family = static_cast<unsigned char>(family);
    route.rtm_table = RT_TABLE_MAIN;
    const auto before = now.size();
    const auto outcome = lister_.list(
        request, [&] { now.resize(before); },
        [&now](const NetlinkMessage& message) {
          auto found = parseDefaultRoute(message.payload);
          if (message.type == RTM_NEWROUTE && found) now.push_back(std::move(*found));
        });
    if (!isUsable(outcome) && outcome != NetlinkLister::Outcome::missing) return false;
  }
  replace(network_.routes, std::move(now));
  return true;
}

}  // namespace vantile
