#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/foundation/api.h"

namespace vantile {

/// Entries of the hardware's registry and the kernel's control table, under the names that macOS
/// gives them. Each is nothing where the system has none of that name. Any thread.
class SystemEntries {
 public:
  virtual ~SystemEntries() = default;

  /// A text property of the machine itself. macOS: of the IOPlatformExpertDevice.
  /// Linux: "IOPlatformSerialNumber" and "IOPlatformUUID", from the DMI table's product_serial and
  /// product_uuid, the former else from the device tree. The kernel shows the table's to root
  /// alone. What a maker left as the firmware's author put it is nothing.
  virtual std::optional<std::string> registryText(std::string_view key) = 0;

  /// The bytes of a text of the control table, zero bytes at its end included where the system has
  /// them. macOS: sysctlbyname.
  /// Linux: "hw.model", the product's name in the DMI table, else the device tree's model;
  /// "machdep.cpu.brand_string", the model name in /proc/cpuinfo; "kern.osrelease" and
  /// "kern.osversion", the release and the version that uname tells.
  virtual std::optional<std::string> controlText(std::string_view name) = 0;

  /// A number of the control table. macOS: sysctlbyname; a number of fewer than eight bytes fills
  /// the lower ones.
  /// Linux: "hw.cpufrequency", hertz, as `Processors::frequency`; "hw.physicalcpu", the processors
  /// that are the first of those that share a core, else the cores in /proc/cpuinfo.
  virtual std::optional<std::uint64_t> controlNumber(std::string_view name) = 0;
};

/// The running system's entries, shared by the process.
VANTILE_API std::shared_ptr<SystemEntries> systemEntries();

}  // namespace vantile
