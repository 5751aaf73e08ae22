#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "vantile/foundation/api.h"

namespace vantile {

struct SystemInfoPorts;

/// What the machine is: its names, its user, its system, memory and processor. Everything is
/// looked up once, when it is made, and not followed; what the system does not tell is nil.
/// Any thread makes one; as with any plain object, its setters are not for several threads at once.
class VANTILE_API KVDSystemInfo final {
 public:
  /// A new description of this machine.
  static std::shared_ptr<KVDSystemInfo> init();

  ~KVDSystemInfo();
  KVDSystemInfo(const KVDSystemInfo&) = delete;
  KVDSystemInfo& operator=(const KVDSystemInfo&) = delete;

  using Text = std::optional<std::string>;
  using Integer = std::optional<std::int64_t>;
  using Number = std::optional<std::uint64_t>;

  /// Looks up every property anew, in the order in which they stand below.
  void setupSystemInformation();

  /// The computer's name as the user set it, or nil.
  Text queryComputerName() const;
  /// A text property of the machine's entry in the hardware registry, such as "IOPlatformUUID".
  /// Linux: of the few names that the properties below ask for; so with the two below.
  Text _strIORegistryEntry(const std::string& key) const;
  /// A text of the kernel's control table, such as "hw.model", up to its first zero byte.
  Text _strControlEntry(const std::string& name) const;
  /// A number of the kernel's control table, such as "hw.physicalcpu".
  Number _numControlEntry(const std::string& name) const;
  /// A processor's brand text without marks, model numbers and clock rate: its alphanumeric
  /// pieces up to "CPU", but for "R", "TM" and those that begin with a digit, with single spaces
  /// in between. "Intel(R) Core(TM) i7-4770 CPU @ 3.40GHz" becomes "Intel Core i7"; newer brands
  /// come out odd, "13th Gen Intel(R) Core(TM) i7-1355U" as "Gen Intel Core i7".
  Text _parseBrandName(const Text& brand) const;
  /// The system's version. macOS: "10.9.4 (13E28)", from the kernel's release 13.4.0 and its build,
  /// the first number always 10 and the second 4 less than the kernel's. Linux: the distribution's
  /// own name and version, such as "Debian GNU/Linux 12 (bookworm)", else the kernel's.
  Text getOSVersionInfo() const;

  /// macOS: the name in the sharing settings. Linux: PRETTY_HOSTNAME of /etc/machine-info, else
  /// the host name.
  const Text& computerName() const { return _computerName; }
  void setComputerName(Text name) { _computerName = std::move(name); }

  /// macOS: NSHost. Linux: the host name.
  const Text& sysName() const { return _sysName; }
  void setSysName(Text name) { _sysName = std::move(name); }

  /// The login name of the user who started the process: a program that runs as another (set-uid)
  /// has its caller's.
  const Text& sysUserName() const { return _sysUserName; }
  void setSysUserName(Text name) { _sysUserName = std::move(name); }

  /// Linux: from the account's GECOS text, else the login name.
  const Text& sysFullUserName() const { return _sysFullUserName; }
  void setSysFullUserName(Text name) { _sysFullUserName = std::move(name); }

  /// macOS: NSProcessInfo's constant for the kind of system. Linux: nil.
  const Integer& sysOSName() const { return _sysOSName; }
  void setSysOSName(Integer name) { _sysOSName = name; }

  /// See `getOSVersionInfo`.
  const Text& sysOSVersion() const { return _sysOSVersion; }
  void setSysOSVersion(Text version) { _sysOSVersion = std::move(version); }

  /// Bytes of RAM, 0 when the system does not tell. Linux: without what the kernel keeps for
  /// itself; in a container, too, the machine's.
  std::uint64_t sysPhysicalMemory() const { return _sysPhysicalMemory; }
  void setSysPhysicalMemory(std::uint64_t bytes) { _sysPhysicalMemory = bytes; }

  /// Linux: the DMI table's, which the kernel shows to root alone, or the device tree's.
  const Text& sysSerialNumber() const { return _sysSerialNumber; }
  void setSysSerialNumber(Text number) { _sysSerialNumber = std::move(number); }

  /// Linux: the DMI table's, which the kernel shows to root alone.
  const Text& sysUUID() const { return _sysUUID; }
  void setSysUUID(Text uuid) { _sysUUID = std::move(uuid); }

  /// macOS: such as "MacBookPro11,1". Linux: the product's name in the DMI table, or the device
  /// tree's model.
  const Text& sysModelID() const { return _sysModelID; }
  void setSysModelID(Text model) { _sysModelID = std::move(model); }

  /// See `_parseBrandName`. Linux: from the model name in /proc/cpuinfo, which boards may lack.
  const Text& sysProcessorName() const { return _sysProcessorName; }
  void setSysProcessorName(Text name) { _sysProcessorName = std::move(name); }

  /// Hertz. Apple's own processors have none. Linux: cpufreq's base rate, else its highest, else
  /// the one in /proc/cpuinfo.
  const Number& sysProcessorSpeed() const { return _sysProcessorSpeed; }
  void setSysProcessorSpeed(Number hertz) { _sysProcessorSpeed = hertz; }

  /// Physical cores, of those that are online.
  const Number& sysProcessorCount() const { return _sysProcessorCount; }
  void setSysProcessorCount(Number cores) { _sysProcessorCount = cores; }

 private:
  explicit KVDSystemInfo(SystemInfoPorts ports);

  const std::unique_ptr<const SystemInfoPorts> ports_;
  Text _computerName, _sysName, _sysUserName, _sysFullUserName;
  Integer _sysOSName;
  Text _sysOSVersion;
  std::uint64_t _sysPhysicalMemory = 0;
  Text _sysSerialNumber, _sysUUID, _sysModelID, _sysProcessorName;
  Number _sysProcessorSpeed, _sysProcessorCount;
};

}  // namespace vantile
