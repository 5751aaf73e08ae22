#pragma once

#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "vantile/platform/linux/roots.h"
#include "vantile/platform/linux/timed_read.h"
#include "vantile/platform/parsers/temperature_sensors.h"
#include "vantile/platform/smc_service.h"

namespace vantile {

/// Stands in for the controller with the temperatures of /sys.
class LinuxSmcService final : public SmcService {
 public:
  explicit LinuxSmcService(LinuxRoots roots = {}, TimedRead reader = TimedRead())
      : roots_(std::move(roots)), reader_(std::move(reader)) {}

  SmcOpening open() override;
  std::int32_t close(std::uint32_t connection) override;
  std::int32_t call(std::uint32_t connection, std::uint32_t index, const SMCRecord& in,
                    SMCRecord& out, std::size_t& size) override;

 private:
  bool hasSensor();
  void search();
  void addChip(const std::string& folder);
  void addZone(const std::string& folder);
  std::optional<std::int64_t> read(std::uint32_t key);
  void lose(const std::string& file);

  const LinuxRoots roots_;
  std::mutex mutex_;  // over all below
  TimedRead reader_;
  std::set<std::uint32_t> connections_;
  std::uint32_t lastConnection_ = 0;
  std::vector<TemperatureSensor> sensors_;
  bool answered_ = false;     // one of them did since they were found
  unsigned untilSearch_ = 0;  // times that it is opened
};

}  // namespace vantile
