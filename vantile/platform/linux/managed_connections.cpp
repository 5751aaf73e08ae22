#include "vantile/platform/linux/managed_connections.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <tuple>

namespace vantile {
namespace {

bool onDevice(ActiveState state) {
  return state == ActiveState::activating || state == ActiveState::activated ||
         state == ActiveState::deactivating;
}

/// The use of each connection, by the object path of its settings. One that is in use several times
/// is taken where it is activated, else where NetworkManager names it first.
std::map<std::string_view, const ActiveConnection*> uses(const NetworkManagerObjects& objects) {
  std::map<std::string_view, const ActiveConnection*> found;
  for (const auto& path : objects.activePaths) {
    const auto active = objects.active.find(path);
    if (active == objects.active.end() || !onDevice(active->second.state)) continue;
    const auto& use = active->second;
    const auto [known, isNew] = found.try_emplace(use.connection, &use);
    if (!isNew && use.state == ActiveState::activated &&
        known->second->state != ActiveState::activated)
      known->second = &use;
  }
  return found;
}

using Saved = decltype(NetworkManagerObjects::connections)::value_type;

bool before(const Saved* one, const Saved* other) {
  const auto& [path, settings] = *one;
  const auto& [otherPath, otherSettings] = *other;
  return std::tie(otherSettings.autoconnectPriority, otherSettings.timestamp, settings.uuid, path) <
         std::tie(settings.autoconnectPriority, settings.timestamp, otherSettings.uuid, otherPath);
}

}  // namespace

std::vector<ManagedConnection> managedConnections(const NetworkManagerObjects& objects) {
  const auto used = uses(objects);
  std::vector<const Saved*> ordered;
  ordered.reserve(objects.connections.size());
  for (const auto& saved : objects.connections)
    if (!saved.second.uuid.empty()) ordered.push_back(&saved);
  std::sort(ordered.begin(), ordered.end(), before);

  std::vector<ManagedConnection> connections;
  connections.reserve(ordered.size());
  std::set<std::string_view> seen;
  for (const auto* const saved : ordered) {
    const auto& [path, settings] = *saved;
    if (!seen.insert(settings.uuid).second) continue;
    const auto found = used.find(path);
    const auto* const use = found == used.end() ? nullptr : found->second;
    const auto device = use ? objects.deviceNames.find(use->device) : objects.deviceNames.end();
    const bool named = device != objects.deviceNames.end() && !device->second.empty();
    connections.push_back({settings.uuid, settings.name,
                           named ? device->second : settings.interfaceName, settings.type,
                           use && use->state == ActiveState::activated});
  }
  return connections;
}

std::string deviceName(const std::string& interface, const std::string& ipInterface) {
  return ipInterface.empty() ? interface : ipInterface;
}

}  // namespace vantile
