#include "vantile/platform/linux/configuration_session.h"

#include <linux/rtnetlink.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <system_error>
#include <utility>

namespace vantile {
namespace {

using namespace std::chrono_literals;

// The kernel tells that an address goes before it lets go of the routes that hang on it.
constexpr auto secondLook = 20ms;

constexpr int mostReads = 1024;  // before the loop's other work has its turn
constexpr unsigned hopGroup = 1u << (RTNLGRP_NEXTHOP - 1);
constexpr unsigned groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR |
                            RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE | hopGroup;

}  // namespace

LinuxConfigurationSession::LinuxConfigurationSession(const ConfigurationSources& sources,
                                                     std::function<void()> changed)
    : sources_(sources),
      changed_(std::move(changed)),
      lists_(sources.open),
      generic_(sources.open) {}

std::unique_ptr<LinuxConfigurationSession> LinuxConfigurationSession::open(
    const ConfigurationSources& sources, std::function<void()> changed) {
  std::unique_ptr<LinuxConfigurationSession> session(
      new LinuxConfigurationSession(sources, std::move(changed)));
  auto& self = *session;
  // Followed before it is listed: what comes in between is told.
  if (!self.follow()) return nullptr;
  self.resolver_ =
      std::make_unique<ResolverFiles>(sources.resolver, [&self] { self.settleSoon(); });
  self.manager_ = sources.follow([&self] {
    self.isNews_ = true;
    self.settleSoon();
  });
  self.refresh(true);
  auto needed = self.stale_;
  needed.wireless = false;  // their kind may be told later
  if (needed.any()) return nullptr;
  self.tryAgain();
  self.takeConnections();
  self.isNews_ = false;
  return session;
}

std::shared_ptr<const Dictionary> LinuxConfigurationSession::value(std::string_view key) {
  const std::lock_guard lock(knownLock_);
  if (!table_) table_ = networkDictionaries(network_, connections_);
  const auto found = table_->find(key);
  return found == table_->end() ? nullptr : found->second;
}

bool LinuxConfigurationSession::follow() {
  events_ = sources_.open(NETLINK_ROUTE, groups);
  if (!events_) return false;
  source_ = std::make_unique<DescriptorSource>(events_->descriptor(), [this] {
    drain();
    if (std::exchange(isHeard_, false)) settleSoon();
    if (!events_) tryAgain();
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
        isHeard_ = true;
        break;
      case NetlinkChannel::Outcome::failed:
        stale_ = Stale::everything();
        isHeard_ = followAnew();
        return isHeard_;
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
        stale_.addresses = stale_.routes = isHeard_ = true;
        break;
      case RTM_NEWROUTE:
      case RTM_DELROUTE:
        takeRoute(familyOfDefaultRoute(message->payload));
        break;
      case RTM_DELNEXTHOP:
        takeRoute(AddressFamily::ipv4);  // those that led there go without a word
        break;
      default:
        break;
    }
  }
}

void LinuxConfigurationSession::takeLink(bool came, std::string_view payload) {
  const auto link = parseLinkMessage(payload);
  if (!link) return;
  const auto* const known = network_.link(link->index);
  if (came && link->kind.empty() && !known) stale_.wireless = true;
  const auto wasUp = known && known->up, wasActive = known && known->active;
  std::unique_lock lock(knownLock_);
  const bool changed = came ? network_.keep(*link) : network_.forget(link->index);
  lock.unlock();
  if (!changed) return;
  isNews_ = isHeard_ = stale_.addresses = true;
  const auto* const now = network_.link(link->index);
  if (now && now->up == wasUp && now->active == wasActive) return;
  // Routes over it went without a word, or are dead or alive again.
  stale_.routes = true;
  stale_.ipv6Routes |= network_.leadsOver(AddressFamily::ipv6, link->index);
}

void LinuxConfigurationSession::takeRoute(AddressFamily family) {
  if (family == AddressFamily::none) return;
  (family == AddressFamily::ipv4 ? stale_.routes : stale_.ipv6Routes) = isHeard_ = true;
}

void LinuxConfigurationSession::settleSoon() {
  auto& loop = RunLoop::current();
  const auto now = loop.now();
  const auto due = std::max(burst_.change(now), now);
  settling_ = loop.after(due - now, [this] { settle(); });
}

void LinuxConfigurationSession::settleUnlessInABurst() {
  if (!settling_.isValid()) settle();
}

/// Asks for what is stale and tells of it where it is news.
void LinuxConfigurationSession::settle() {
  const bool caughtUp = drain();
  // The burst goes on.
  if (std::exchange(isHeard_, false) && !burst_.isOverdue(RunLoop::current().now()))
    return settleSoon();
  refresh(caughtUp);
  if (std::exchange(addressWent_, false))
    secondLook_ = RunLoop::current().after(secondLook, [this] {
      stale_.routes = true;
      settleUnlessInABurst();
    });
  tryAgain();
  burst_.tell();
  if (!std::exchange(isNews_, false)) return;
  takeConnections();
  const auto changed = changed_;  // may end this
  if (changed) changed();
}

/// Those of the moment, and with them a new table.
void LinuxConfigurationSession::takeConnections() {
  auto connections = manager_ ? manager_->connections() : std::vector<ManagedConnection>();
  const std::lock_guard lock(knownLock_);
  connections_ = std::move(connections);
  table_.reset();
}

/// Asks for what is stale, but for links that what is told already would be older than.
void LinuxConfigurationSession::refresh(bool linksToo) {
  const auto ask = [this](bool& stale, auto& part, const auto& list) {
    if (stale) stale = !replace(part, list());
  };
  // What changes after a list has to be told.
  if (events_) {
    if (linksToo) ask(stale_.links, network_.links, [this] { return lists_.links(); });
    ask(stale_.addresses, network_.addresses, [this] { return lists_.addresses(); });
    if (stale_.routes) stale_.routes = !listRoutes(AddressFamily::ipv4);
    if (stale_.ipv6Routes) stale_.ipv6Routes = !listRoutes(AddressFamily::ipv6);
    ask(stale_.wireless, network_.wireless, [this] { return generic_.wirelessLinks(); });
  }
  // In any case: their files may be out of inotify's reach.
  replace(network_.servers, std::optional(resolver_->look()));
}

/// Sees to it that what is still stale is asked for again, whether or not anything happens.
void LinuxConfigurationSession::tryAgain() {
  if (!stale_.any()) {
    pace_.restart();
    retry_.invalidate();
  } else if (!retry_.isValid()) {
    retry_ = RunLoop::current().after(pace_.next(), [this] { settleUnlessInABurst(); });
  }
}

bool LinuxConfigurationSession::listRoutes(AddressFamily family) {
  auto listed = lists_.defaultRoutes(family);
  if (!listed) return false;
  auto now = network_.routes;
  std::erase_if(now, [family](const auto& route) { return route.family == family; });
  now.insert(family == AddressFamily::ipv4 ? now.begin() : now.end(),
             std::make_move_iterator(listed->begin()), std::make_move_iterator(listed->end()));
  return replace(network_.routes, std::optional(std::move(now)));
}

/// Whether there is one.
template <class Part>
bool LinuxConfigurationSession::replace(Part& part, std::optional<Part> now) {
  if (!now) return false;
  if (part == *now) return true;
  const std::lock_guard lock(knownLock_);
  part = std::move(*now);
  isNews_ = true;
  return true;
}

}  // namespace vantile
