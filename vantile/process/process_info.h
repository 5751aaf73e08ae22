#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "vantile/foundation/api.h"

namespace vantile {

/// One running application and what its process takes, as of one sample. Not synchronised; a sample
/// writes only records that it made itself.
class VANTILE_API ProcessInfo final {
 public:
  /// A record with these three fields. The numbers are 0 and the state is nil until a sample finds
  /// the process.
  static std::shared_ptr<ProcessInfo> initWithPidWithAppNameWithAppPath(
      std::int32_t pid, std::optional<std::string> appName, std::optional<std::string> appPath);

  std::int32_t pid() const { return _pid; }
  void setPid(std::int32_t pid) { _pid = pid; }
  /// macOS: "NSApplicationName". Linux: the desktop entry's name in the user's language.
  const std::optional<std::string>& appName() const { return _appName; }
  void setAppName(std::optional<std::string> name) { _appName = std::move(name); }
  /// macOS: the path of the bundle. Linux: of the desktop entry.
  const std::optional<std::string>& appPath() const { return _appPath; }
  void setAppPath(std::optional<std::string> path) { _appPath = std::move(path); }

  /// Percent of one processor, so 250 for two and a half. macOS: as ps counts it. Linux: over the
  /// time since the process was last sampled, by whichever monitor, at its first sample over its
  /// life. Within a tenth of a second of the last sample that one's share is repeated.
  double cpu() const { return _cpu; }
  void setCpu(double percent) { _cpu = percent; }
  /// Percent of the physical memory.
  double memory() const { return _memory; }
  void setMemory(double percent) { _memory = percent; }
  /// Resident size in KiB, not in pages.
  std::int32_t phyMemoryPages() const { return _phyMemoryPages; }
  void setPhyMemoryPages(std::int32_t kibibytes) { _phyMemoryPages = kibibytes; }
  /// Size of the address space in KiB, not in pages; 2,147,483,647 for what is larger.
  std::int32_t virtMemoryPages() const { return _virtMemoryPages; }
  void setVirtMemoryPages(std::int32_t kibibytes) { _virtMemoryPages = kibibytes; }
  /// The letters of the process's state, "S" or "Ss" for instance, as ps gives them.
  const std::optional<std::string>& stats() const { return _stats; }
  void setStats(std::optional<std::string> letters) { _stats = std::move(letters); }

 private:
  ProcessInfo() = default;

  std::int32_t _pid = 0;
  std::optional<std::string> _appName, _appPath;
  double _cpu = 0, _memory = 0;
  std::int32_t _phyMemoryPages = 0, _virtMemoryPages = 0;
  std::optional<std::string> _stats;
};

}  // namespace vantile
