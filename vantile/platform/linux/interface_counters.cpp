#include "vantile/platform/linux/interface_counters.h"

#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <algorithm>

#include "vantile/platform/linux/link_requests.h"

namespace vantile {
namespace {

// A link may come between the look at the events and the counters, so that its name is not known
// yet: it is looked at once more.
constexpr int mostLooks = 2;

/// Room for one more reading, with the storage of an earlier one where there is any.
InterfaceReading& added(InterfaceReadings& into) {
  if (into.count == into.readings.size()) into.readings.emplace_back();
  return into.readings[into.count++];
}

}  // namespace

LinuxInterfaceCounters::LinuxInterfaceCounters(const OpenNetlink& open)
    : open_(open), lister_(NETLINK_ROUTE, open) {}

bool LinuxInterfaceCounters::read(InterfaceReadings& into) {
  into.width = CounterWidth::bits64;
  for (int look = 0; look < mostLooks && !countersHaveNames_; ++look) {
    if (!followLinks()) return false;
    switch (readCounters(into)) {
      case Counted::all:
        return true;
      case Counted::notAll:
        break;
      case Counted::unsupported:
        countersHaveNames_ = true;
        break;
      case Counted::refused:
        return false;
    }
  }
  return !countersHaveNames_ || readLinks(into);
}

/// Brings the links up to date with what was told of them. False when that can't be had.
bool LinuxInterfaceCounters::followLinks() {
  using Outcome = NetlinkChannel::Outcome;
  if (!events_) {
    linksAreKnown_ = false;
    if (!(events_ = open_(NETLINK_ROUTE, RTMGRP_LINK))) return false;
  }
  // To the end, before the links are listed: what is older than a list must not follow it.
  Outcome outcome;
  while ((outcome = events_->receive()) == Outcome::datagram || outcome == Outcome::overrun) {
    if (outcome == Outcome::overrun)
      linksAreKnown_ = false;
    else
      takeIn(events_->datagram());
  }
  if (outcome == Outcome::failed) {
    events_.reset();
    return false;
  }
  if (!linksAreKnown_) linksAreKnown_ = listLinks();
  return linksAreKnown_;
}

void LinuxInterfaceCounters::takeIn(std::string_view datagram) {
  NetlinkMessages messages(datagram);
  while (const auto message = messages.next()) {
    const bool came = message->type == RTM_NEWLINK;
    if (!came && message->type != RTM_DELLINK) continue;
    const auto link = parseLinkMessage(message->payload);
    if (!link) continue;
    came ? keep(*link) : forget(link->index);
  }
}

void LinuxInterfaceCounters::keep(const LinkMessage& link) {
  auto at = std::lower_bound(links_.begin(), links_.end(), link.index,
                             [](const Link& each, auto index) { return each.index < index; });
  if (at == links_.end() || at->index != link.index) at = links_.insert(at, Link{link.index, {}});
  at->name = link.name;
  at->loopback = link.flags & LinkFlags::loopback;
  at->up = link.flags & LinkFlags::up;
}

void LinuxInterfaceCounters::forget(std::uint32_t index) {
  std::erase_if(links_, [index](const Link& each) { return each.index == index; });
}

bool LinuxInterfaceCounters::listLinks() {
  LinkListRequest request;
  const auto outcome = lister_.list(
      request, [this] { links_.clear(); },
      [this](const NetlinkMessage& message) {
        const auto link = parseLinkMessage(message.payload);
        if (message.type == RTM_NEWLINK && link) keep(*link);
      });
  // Whatever changed meanwhile is told as well.
  return outcome == NetlinkLister::Outcome::whole || outcome == NetlinkLister::Outcome::interrupted;
}

const LinuxInterfaceCounters::Link* LinuxInterfaceCounters::linkOf(std::uint32_t index) {
  if (next_ >= links_.size() || links_[next_].index != index) {
    const auto at =
        std::lower_bound(links_.begin(), links_.end(), index,
                         [](const Link& each, auto wanted) { return each.index < wanted; });
    if (at == links_.end() || at->index != index) return nullptr;
    next_ = static_cast<std::size_t>(at - links_.begin());
  }
  return &links_[next_++];
}

LinuxInterfaceCounters::Counted LinuxInterfaceCounters::readCounters(InterfaceReadings& into) {
  using Outcome = NetlinkLister::Outcome;
  NetlinkRequest request(RTM_GETSTATS, NLM_F_DUMP);
  request.header<if_stats_msg>().filter_mask = IFLA_STATS_FILTER_BIT(IFLA_STATS_LINK_64);
  bool all = true;
  const auto outcome = lister_.list(
      request,
      [&] {
        into.count = next_ = 0;
        all = true;
      },
      [&](const NetlinkMessage& message) {
        const auto counters = parseCountersMessage(message.payload);
        if (message.type != RTM_NEWSTATS || !counters) return;
        const auto* const link = linkOf(counters->index);
        all &= link != nullptr;
        if (!link) return;
        auto& reading = added(into);
        reading.name = link->name;
        reading.index = link->index;
        reading.loopback = link->loopback;
        reading.up = link->up;
        reading.received = counters->received;
        reading.sent = counters->sent;
      });
  if (outcome == Outcome::unsupported) return Counted::unsupported;
  if (outcome == Outcome::failed) return Counted::refused;
  return all ? Counted::all : Counted::notAll;
}

bool LinuxInterfaceCounters::readLinks(InterfaceReadings& into) {
  LinkListRequest request;
  const auto outcome = lister_.list(
      request, [&] { into.count = 0; },
      [&](const NetlinkMessage& message) {
        const auto link = parseLinkMessage(message.payload);
        if (message.type != RTM_NEWLINK || !link || !link->received || !link->sent) return;
        auto& reading = added(into);
        reading.name = link->name;
        reading.index = link->index;
        reading.loopback = link->flags & LinkFlags::loopback;
        reading.up = link->flags & LinkFlags::up;
        reading.received = *link->received;
        reading.sent = *link->sent;
      });
  return outcome == NetlinkLister::Outcome::whole || outcome == NetlinkLister::Outcome::interrupted;
}

std::unique_ptr<InterfaceCounters> makeInterfaceCounters() {
  return std::make_unique<LinuxInterfaceCounters>(
      [](int bus, unsigned groups) { return openNetlink(bus, groups); });
}

}  // namespace vantile
