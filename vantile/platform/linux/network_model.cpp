#include "vantile/platform/linux/network_model.h"

#include <algorithm>
#include <utility>

namespace vantile {
namespace {

bool comesBefore(const NetworkLink& link, std::uint32_t index) {
  return link.index < index;
}

}  // namespace

NetworkLink::NetworkLink(const LinkMessage& message)
    : index(message.index),
      type(message.type),
      up(message.flags & LinkFlags::up),
      loopback(message.flags & LinkFlags::loopback),
      active(up && (message.flags & LinkFlags::lowerUp)),
      name(message.name),
      kind(message.kind),
      parentDevice(message.parentDevice),
      permanentAddress(message.permanentAddress) {}

bool NetworkModel::keep(const LinkMessage& link) {
  NetworkLink now(link);
  const auto at = std::lower_bound(links.begin(), links.end(), link.index, comesBefore);
  if (at == links.end() || at->index != link.index) {
    links.insert(at, std::move(now));
    return true;
  }
  if (*at == now) return false;
  *at = std::move(now);
  return true;
}

bool NetworkModel::forget(std::uint32_t index) {
  return std::erase_if(links, [index](const auto& link) { return link.index == index; }) > 0;
}

const NetworkLink* NetworkModel::link(std::uint32_t index) const {
  const auto at = std::lower_bound(links.begin(), links.end(), index, comesBefore);
  return at != links.end() && at->index == index ? &*at : nullptr;
}

bool NetworkModel::isWireless(std::uint32_t index) const {
  return std::find(wireless.begin(), wireless.end(), index) != wireless.end();
}

const DefaultRoute* NetworkModel::bestRoute(AddressFamily family, std::uint32_t over) const {
  const DefaultRoute* best = nullptr;
  for (const auto& route : routes) {
    const auto* const way = link(route.index);
    const bool asked = route.family == family && (over == 0 || route.index == over);
    if (!asked || route.dead || !way || way->loopback || !way->up) continue;
    // The first of equals is the one that the kernel takes.
    if (!best || route.metric < best->metric) best = &route;
  }
  return best;
}

bool NetworkModel::leadsOver(AddressFamily family, std::uint32_t index) const {
  return std::any_of(routes.begin(), routes.end(), [&](const auto& route) {
    return route.family == family && route.index == index;
  });
}

}  // namespace vantile
