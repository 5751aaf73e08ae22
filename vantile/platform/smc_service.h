#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "vantile/foundation/api.h"
#include "vantile/platform/smc_record.h"

namespace vantile {

/// How far opening the service came. What comes after the first failure is not tried.
struct SmcOpening {
  std::int32_t matching = 0;     ///< result of looking for the service, 0 for success
  bool found = false;            ///< whether there is one
  std::int32_t opened = 0;       ///< result of opening it, 0 for success
  std::uint32_t connection = 0;  ///< of the open service
};

/// The System Management Controller's kernel service, or what stands in for it. Results are the
/// kernel's, 0 for success. Any thread.
class SmcService {
 public:
  virtual ~SmcService() = default;

  /// Finds the first service and opens it.
  /// macOS: IOServiceGetMatchingServices for "AppleSMC", IOServiceOpen with type 0.
  /// Linux: there is a service where a sensor of the processor's temperature is found: of coretemp,
  /// k10temp, zenpower or cpu_thermal below /sys/class/hwmon, else the processor's thermal zone, or
  /// any temperature of applesmc.
  virtual SmcOpening open() = 0;

  /// Closes a connection. macOS: IOServiceClose.
  virtual std::int32_t close(std::uint32_t connection) = 0;

  /// One call of method `index`. `size` is the room of `out` in bytes, and what came back.
  /// macOS: IOConnectCallStructMethod. Linux: method 2 tells of "TC0P", and of the temperatures
  /// that applesmc has, as values of the type "sp78". A sensor that is gone, out of 0 to 127
  /// degrees Celsius or slow to answer can't be read; a key that is not there has size 0.
  virtual std::int32_t call(std::uint32_t connection, std::uint32_t index, const SMCRecord& in,
                            SMCRecord& out, std::size_t& size) = 0;
};

/// The machine's service, shared by the process.
VANTILE_API std::shared_ptr<SmcService> systemSmcService();

}  // namespace vantile
