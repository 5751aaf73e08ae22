#include "info.h"

#include <vantile/disk/disk_keys.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "json.h"
#include "text.h"

namespace vantile::host {
namespace {

struct Property {
  std::string_view name, label;
  std::optional<Value> value;
  std::string shown;  ///< empty: nil
};

Property text(std::string_view name, std::string_view label,
              const std::optional<std::string>& value) {
  return {name, label, argument(value), printable(value.value_or(""))};
}

template <class Number>
Property number(std::string_view name, std::string_view label, const std::optional<Number>& value,
                std::string (*show)(Number)) {
  return {name, label, value ? std::optional<Value>(*value) : std::nullopt,
          value ? show(*value) : ""};
}

std::string formatHertz(std::uint64_t hertz) {
  return formatFixed(static_cast<double>(hertz) / 1e9, 2) + " GHz";
}

template <class Number>
std::string formatWhole(Number value) {
  return std::to_string(value);
}

/// It has 0 for nil.
std::optional<std::uint64_t> memoryOf(const KVDSystemInfo& info) {
  const auto bytes = info.sysPhysicalMemory();
  return bytes == 0 ? std::nullopt : std::optional(bytes);
}

/// In the order in which the class declares them.
std::vector<Property> propertiesOf(const KVDSystemInfo& info) {
  return {
      text("computerName", "computer name", info.computerName()),
      text("sysName", "host name", info.sysName()),
      text("sysUserName", "user", info.sysUserName()),
      text("sysFullUserName", "full user name", info.sysFullUserName()),
      number("sysOSName", "system identifier", info.sysOSName(), formatWhole),
      text("sysOSVersion", "system version", info.sysOSVersion()),
      number("sysPhysicalMemory", "memory", memoryOf(info), formatBytes),
      text("sysSerialNumber", "serial number", info.sysSerialNumber()),
      text("sysUUID", "hardware UUID", info.sysUUID()),
      text("sysModelID", "model", info.sysModelID()),
      text("sysProcessorName", "processor", info.sysProcessorName()),
      number("sysProcessorSpeed", "processor speed", info.sysProcessorSpeed(), formatHertz),
      number("sysProcessorCount", "processor cores", info.sysProcessorCount(), formatWhole),
  };
}

/// "Name at /mount/point (type of device): 1.00 GiB of 4.00 GiB used".
Property volumeLine(const Dictionary& volume) {
  const auto part = [&volume](Key key) {
    const auto* const text = volume.text(key);
    return printable(text ? *text : "");
  };
  const auto size = [&volume](Key key) { return formatBytes(volume.uint64(key).value_or(0)); };
  return {"volumes", "volume", std::nullopt,
          part(keys::disk_name) + " at " + part(keys::disk_path) + " (" + part(keys::disk_format) +
              " of " + part(keys::disk_mntfromname) + "): " + size(keys::disk_usedsize) + " of " +
              size(keys::disk_totalsize) + " used"};
}

/// "movies 1.00 GiB, apps 20.0 GiB, ...", of the kinds that the volume's dictionary has.
Property kindsLine(const Dictionary& volume) {
  constexpr std::array<std::pair<Key, std::string_view>, 5> kinds = {{{keys::disk_movies, "movies"},
                                                                      {keys::disk_apps, "apps"},
                                                                      {keys::disk_audio, "audio"},
                                                                      {keys::disk_photos, "photos"},
                                                                      {keys::disk_other, "other"}}};
  std::string shown;
  for (const auto& [key, name] : kinds) {
    const auto bytes = volume.uint64(key);
    if (!bytes) continue;
    if (!shown.empty()) shown += ", ";
    shown.append(name).append(" ").append(formatBytes(*bytes));
  }
  return {"volumes", "  used for", std::nullopt, shown.empty() ? "not counted yet" : shown};
}

}  // namespace

std::string systemTable(const KVDSystemInfo& info, const Array& volumes) {
  auto properties = propertiesOf(info);
  for (const auto& volume : volumes) {
    const auto* const held = volume.as<std::shared_ptr<Dictionary>>();
    if (!held || !*held) continue;
    properties.push_back(volumeLine(**held));
    properties.push_back(kindsLine(**held));
  }
  std::size_t widest = 0;
  for (const auto& property : properties) widest = std::max(widest, property.label.size());
  std::string table;
  for (const auto& property : properties) {
    table.append(property.label).append(":");
    table.append(widest - property.label.size() + 2, ' ');
    table.append(property.shown.empty() ? "-" : property.shown).append("\n");
  }
  return table;
}

std::string systemJson(const KVDSystemInfo& info, const Array& volumes) {
  NamedValues values;
  for (const auto& property : propertiesOf(info))
    values.emplace_back(property.name, property.value);
  values.emplace_back("volumes", Value(std::make_shared<Array>(volumes)));
  return jsonText(values) + '\n';
}

}  // namespace vantile::host
