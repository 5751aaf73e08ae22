#include "vantile/platform/linux/smc_service.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "vantile/platform/linux/first_line.h"
#include "vantile/platform/linux/folder_entries.h"
#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

// Where there is no sensor, or the one that there was does not answer, a driver that is loaded
// later may bring one.
constexpr unsigned opensBetweenSearches = 64;

/// A line of text that a driver gives; empty where it gives none.
std::string attribute(const std::string& path) {
  return firstLineOf(path).value_or(std::string());
}

/// The paths in `folder` whose names begin so, in order.
std::vector<std::string> pathsIn(const std::string& folder, std::string_view beginning) {
  std::vector<std::string> paths;
  forEachEntry(folder, [&](const dirent& entry) {
    const std::string_view name = entry.d_name;
    if (name.starts_with(beginning)) paths.push_back(folder + "/" + entry.d_name);
  });
  std::sort(paths.begin(), paths.end());
  return paths;
}

/// The device's own folder. A name below /sys/class may be another device's by the next reading,
/// this one is gone with its device.
std::string withoutLinks(const std::string& path) {
  std::error_code error;
  const auto resolved = std::filesystem::canonical(path, error);
  return error ? path : resolved.string();
}

}  // namespace

void LinuxSmcService::addChip(const std::string& folder) {
  constexpr std::string_view input = "_input";
  for (const auto& place : {folder, folder + "/device"}) {  // where older drivers keep their files
    const auto chip = attribute(place + "/name");
    if (chip.empty()) continue;
    const auto home = withoutLinks(place);
    for (const auto& path : pathsIn(home, "temp")) {
      if (!path.ends_with(input)) continue;
      const auto stem = path.substr(0, path.size() - input.size());
      sensors_.push_back({.chip = chip, .label = attribute(stem + "_label"), .file = path});
    }
    return;
  }
}

void LinuxSmcService::addZone(const std::string& folder) {
  const auto home = withoutLinks(folder);
  sensors_.push_back(
      {.chip = attribute(home + "/type"), .label = {}, .file = home + "/temp", .isZone = true});
}

void LinuxSmcService::search() {
  sensors_.clear();
  answered_ = false;
  for (const auto& path : pathsIn(roots_.sys + "/class/hwmon", "hwmon")) addChip(path);
  for (const auto& path : pathsIn(roots_.sys + "/class/thermal", "thermal_zone")) addZone(path);
  const auto isUseful = [](const TemperatureSensor& sensor) {
    return sensorOfKey(keyOfLabel(sensor.label).value_or(0), {sensor}) ||
           sensorOfKey(packed("TC0P"), {sensor});
  };
  std::erase_if(sensors_, [&](const auto& sensor) { return !isUseful(sensor); });
}

bool LinuxSmcService::hasSensor() {
  if (!sensors_.empty()) return true;
  if (untilSearch_ > 0) {
    --untilSearch_;
    return false;
  }
  search();
  untilSearch_ = opensBetweenSearches;
  return !sensors_.empty();
}

SmcOpening LinuxSmcService::open() {
  const std::lock_guard lock(mutex_);
  if (!hasSensor()) return {};
  if (++lastConnection_ == 0) ++lastConnection_;
  connections_.insert(lastConnection_);
  return {.found = true, .connection = lastConnection_};
}

std::int32_t LinuxSmcService::close(std::uint32_t connection) {
  const std::lock_guard lock(mutex_);
  return connections_.erase(connection) > 0 ? 0 : smc::notOpen;
}

std::optional<std::int64_t> LinuxSmcService::read(std::uint32_t key) {
  while (const auto* const sensor = sensorOfKey(key, sensors_)) {
    const auto reading = reader_.read(sensor->file);
    if (reading.late) return std::nullopt;
    if (!reading.text) {
      lose(sensor->file);
      continue;  // with the next best
    }
    answered_ = true;
    const auto number = leadingNumber(*reading.text);  // below zero is none
    constexpr std::uint64_t hottest = 1'000'000;
    return number && *number <= hottest ? std::optional(static_cast<std::int64_t>(*number))
                                        : std::nullopt;
  }
  return std::nullopt;
}

/// The sensor is gone with its driver, or asleep. All are at once looked for again if one of them
/// did answer before; else there are the others.
void LinuxSmcService::lose(const std::string& file) {
  if (answered_) {
    untilSearch_ = 0;
    sensors_.clear();
  } else {
    std::erase_if(sensors_, [path = file](const auto& sensor) { return sensor.file == path; });
  }
}

std::int32_t LinuxSmcService::call(std::uint32_t connection, std::uint32_t index,
                                   const SMCRecord& in, SMCRecord& out, std::size_t& size) {
  const std::lock_guard lock(mutex_);
  if (!connections_.contains(connection)) return smc::notOpen;
  if (size < sizeof out) return smc::badArgument;
  size = sizeof out;
  return answerSmcCall(
      index, in, out,
      {.has = [this](std::uint32_t key) { return sensorOfKey(key, sensors_) != nullptr; },
       .millidegrees = [this](std::uint32_t key) { return read(key); }});
}

std::shared_ptr<SmcService> systemSmcService() {
  static auto& service = *new std::shared_ptr<SmcService>(std::make_shared<LinuxSmcService>());
  return service;
}

}  // namespace vantile
