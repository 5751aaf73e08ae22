#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/disk/disk_keys.h"
#include "vantile/foundation/api.h"
#include "vantile/foundation/monitor.h"
#include "vantile/foundation/value.h"

namespace vantile {

struct CategorySizes;
struct DiskPorts;
struct MountRecord;
struct VolumeKey;
class VolumeCategories;

/// Told of samples of the volumes. The operation may be left empty.
struct DiskDelegate {
  /// After every sample: a dictionary of disk_keys.h for each volume, in the order of the mount
  /// table; one without a name is left out. None where no volume is mounted. The array and what it
  /// holds are the callee's to keep. Called on the thread that samples.
  std::function<void(const Array& volumes)> diskDetails;
};

/// Samples the mounted local volumes once a refresh interval: what they are, how full they are and,
/// where that is known, with what. Beside that, answers how much space there is.
///
/// macOS: the mount table, the volume catalogue, NSWorkspace, Spotlight. Linux:
/// /proc/self/mountinfo, statvfs, udev's labels, GIO, and an accounting of the library's own.
class VANTILE_API KVDDisk final : public Monitor<DiskDelegate> {
 public:
  /// The instance that the process shares, made at the first call. It samples every second on the
  /// run loop of the thread that made it. Never destroyed. Any thread.
  static std::shared_ptr<KVDDisk> singleton();

  /// A new monitor that samples every second on the calling thread's run loop.
  static std::shared_ptr<KVDDisk> init();

  ~KVDDisk() override;
  KVDDisk(const KVDDisk&) = delete;
  KVDDisk& operator=(const KVDDisk&) = delete;

  /// Takes one sample. Samples on several threads may overlap, and none waits for another. Linux:
  /// volumes that a process or another machine serves may hold it up by 0.2 seconds in all, and by
  /// that once where they do not answer; only a disk of its own that does not answer holds it up
  /// for longer. macOS: each volume is waited for.
  void updateInfo(const Timer* firing = nullptr) override;

  // Of the volume that holds the user's home, in bytes. Every call asks anew, and what the system
  // does not tell is 0. What is used is the difference of two look-ups, and wraps where the volume
  // changed in between so that more is free than there is. A call waits for as long as the volume
  // takes to answer; that holds up neither samples nor other calls. Any thread.
  static std::uint64_t totalDiskSpaceInBytes();
  static std::uint64_t freeDiskSpaceInBytes();
  static std::uint64_t usedDiskSpaceInBytes();
  /// The same as `memoryFormatter` shows it.
  static std::string totalDiskSpace();
  static std::string freeDiskSpace();
  static std::string usedDiskSpace();

  // The same of the first volume whose mount point begins with "/Volumes/BOOTCAMP"; without one
  // the numbers are 0, two of the texts nil, and the third is "0.00 bytes".
  static std::uint64_t totalBootCampDiskSpaceInBytes();
  static std::uint64_t freeBootCampDiskSpaceInBytes();
  static std::uint64_t usedBootCampDiskSpaceInBytes();
  static std::optional<std::string> totalBootCampSpace();
  static std::optional<std::string> freeBootCampDiskSpace();
  static std::string usedBootCampDiskSpace();

  /// How many files and folders the home volume can hold; 0 where it does not tell, or has no
  /// limit of its own. macOS: NSFileSystemNodes. Linux: statvfs.
  static std::uint64_t numberOfNodes();

  /// "1.50 GB" from a billion bytes on, "1.50 MB" from a million on, else "1.00 bytes"; whatever
  /// the locale.
  static std::string memoryFormatter(std::uint64_t bytes);

 private:
  explicit KVDDisk(DiskPorts ports);
  void sample();
  std::shared_ptr<Dictionary> volumeAt(const MountRecord& mount, const VolumeKey& key);
  std::optional<CategorySizes> categoriesOf(const VolumeKey& volume);
  void want(std::vector<VolumeKey> volumes);

  const std::unique_ptr<const DiskPorts> ports_;
  const std::vector<std::string_view> types_;  // of volumes that are told of
  std::mutex categoriesLock_;                  // over the two below, for samples that overlap
  const std::unique_ptr<VolumeCategories> categories_;
  std::vector<VolumeKey> wanted_;  // as was last told
};

}  // namespace vantile
