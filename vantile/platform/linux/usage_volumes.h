#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "vantile/platform/linux/kept_file.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/mounted_volumes.h"
#include "vantile/platform/parsers/usage_record.h"

namespace vantile {

/// What a volume is told by that has no identifier of its own: its device, and its size in blocks
/// of some size. Empty for one that has no device: the kernel gives it another number each time,
/// its size may follow others', and statfs identifies it by what it was given when it was made.
std::string deviceAndSize(const DeviceNumber& device, std::uint64_t blockSize,
                          std::uint64_t blocks);

/// The machine's volumes as the accounting tells them apart. Not synchronised.
class UsageVolumes {
 public:
  explicit UsageVolumes(const LinuxRoots& roots = {}) : table_(roots.proc + "/self/mountinfo") {}

  /// Whether what is mounted there may leave whoever asks it waiting. Asks the mount table alone.
  bool mayHang(const std::string& mountPoint);

  /// Where further parts of what is mounted there are. Asks the mount table alone.
  std::vector<std::string> othersOf(const std::string& mountPoint);

  /// The folder that is mounted there now, or nothing. Asks the volume.
  std::optional<UsageVolume> at(const std::string& mountPoint);

 private:
  const MountedVolume* mountedAt(const std::string& mountPoint);

  KeptFile table_;
  std::vector<MountedVolume> volumes_;              // as the table has them
  std::map<std::string, std::string> identifiers_;  // by mount point, as long as the table stands
};

}  // namespace vantile
