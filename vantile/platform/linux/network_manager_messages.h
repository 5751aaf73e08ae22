#pragma once

#include <systemd/sd-bus.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/linux/managed_connections.h"

namespace vantile {

// What NetworkManager's messages hold. A value of another type than it should have is absent, and
// so is a text of more than 4096 bytes; nothing when the message as a whole is not what it should
// be, or is an error.

/// `o`: the object path that a signal is about.
std::optional<std::string> readPath(sd_bus_message* message);
/// `ao`: of Settings.ListConnections.
std::optional<std::vector<std::string>> readPaths(sd_bus_message* message);
/// `v` of `ao`: the property ActiveConnections.
std::optional<std::vector<std::string>> readPathsProperty(sd_bus_message* message);
/// `a{sa{sv}}`: of Settings.Connection.GetSettings.
std::optional<ConnectionSettings> readSettings(sd_bus_message* message);
/// `a{sv}`: all properties of a Connection.Active.
std::optional<ActiveConnection> readActive(sd_bus_message* message);
/// `a{sv}`: of all properties of a Device, its name.
std::optional<std::string> readDeviceName(sd_bus_message* message);
/// `sa{sv}as`: whether a PropertiesChanged is about one of these properties.
bool tellsOf(sd_bus_message* message, const std::vector<std::string_view>& properties);

}  // namespace vantile
