#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "vantile/sensors/sensors_ports.h"
#include "vantile/sensors/shared_cpu_monitor.h"

namespace vantile::testing {

/// Processors whose counters a test sets.
class FakeProcessors final : public Processors {
 public:
  std::optional<std::vector<ProcessorTicks>> ticks() override {
    ++tickReads;
    if (onTicks) onTicks();
    return refuses ? std::nullopt : std::optional(cores);
  }
  std::optional<TaskCounts> tasks() override {
    ++otherReads;
    return counts;
  }
  std::vector<double> loadAverages() override {
    ++otherReads;
    return averages;
  }
  std::optional<std::uint64_t> frequency() override { return hertz; }
  std::optional<std::uint32_t> count() override { return number; }

  bool refuses = false;
  std::vector<ProcessorTicks> cores = std::vector<ProcessorTicks>(2);
  std::function<void()> onTicks;  ///< called in the midst of a reading
  std::atomic<int> tickReads = 0, otherReads = 0;
  std::optional<TaskCounts> counts;
  std::vector<double> averages;
  std::optional<std::uint64_t> hertz;
  std::optional<std::uint32_t> number;
};

/// A controller with one key, and every call to it noted.
class FakeSmcService final : public SmcService {
 public:
  SmcOpening open() override {
    if (++connections > 1) overlapped = true;
    log.push_back("open");
    if (throws) throw std::runtime_error("out of order");
    return opening;
  }
  std::int32_t close(std::uint32_t connection) override {
    log.push_back("close " + std::to_string(connection));
    --connections;
    return closeResult;
  }
  std::int32_t call(std::uint32_t connection, std::uint32_t index, const SMCRecord& in,
                    SMCRecord& out, std::size_t& size) override {
    log.push_back("call " + std::to_string(index) + " on " + std::to_string(connection));
    requests.push_back(in);
    given.push_back(out);
    rooms.push_back(size);
    const bool info = in.command == 9;
    if (const auto result = info ? infoResult : readResult; result != 0) {
      std::memset(&out, 0x55, sizeof out);  // what a failed call leaves counts for nothing
      return result;
    }
    if (info) {
      out.dataSize = dataSize;
      out.dataType = dataType;
    } else {
      std::copy(bytes.begin(), bytes.end(), out.bytes);
    }
    return 0;
  }

  SmcOpening opening = {.found = true, .connection = 41};
  bool throws = false;
  std::atomic<int> connections = 0;
  std::atomic<bool> overlapped = false;  ///< one was opened while another one was open
  std::int32_t closeResult = 0, infoResult = 0, readResult = 0;
  std::uint32_t dataSize = 2, dataType = 0x73703738;  // "sp78"
  std::vector<std::uint8_t> bytes;                    ///< at most 32
  std::vector<std::string> log;
  std::vector<SMCRecord> requests;
  std::vector<SMCRecord> given;  ///< for the answers, as they came
  std::vector<std::size_t> rooms;
};

/// While it lives, the sensors subsystem stands on fakes and begins without a shared instance.
class FakeSensorsPorts {
 public:
  FakeSensorsPorts() : before_(SensorsPorts::installed()) {
    SensorsPorts::installed() = {processors, smc};
    sharedCpuMonitor().forget();
  }
  ~FakeSensorsPorts() {
    sharedCpuMonitor().forget();
    SensorsPorts::installed() = before_;
  }
  FakeSensorsPorts(const FakeSensorsPorts&) = delete;
  FakeSensorsPorts& operator=(const FakeSensorsPorts&) = delete;

  const std::shared_ptr<FakeProcessors> processors = std::make_shared<FakeProcessors>();
  const std::shared_ptr<FakeSmcService> smc = std::make_shared<FakeSmcService>();

 private:
  const SensorsPorts before_;
};

}  // namespace vantile::testing
