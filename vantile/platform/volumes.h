#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// Which volume is meant: one may take another's place between two looks.
struct VolumeKey {
  VolumeKey(std::string place, std::string told = {})
      : mountPoint(std::move(place)), identity(std::move(told)) {}
  VolumeKey(const char* place) : VolumeKey(std::string(place)) {}
  friend auto operator<=>(const VolumeKey&, const VolumeKey&) = default;

  std::string mountPoint;
  std::string identity;  ///< as `MountRecord` has it
};

/// A mounted file system, as the mount table has it. Texts are bytes.
struct MountRecord {
  std::string type;        ///< of the file system: "hfs", "ext4"
  std::string device;      ///< what is mounted
  std::string mountPoint;  ///< where
  std::uint64_t blockSize = 0;
  std::uint64_t totalBlocks = 0;
  std::uint64_t availableBlocks = 0;  ///< to users without privileges
  /// Tells the volume from those that were mounted there before it; says nothing else.
  /// macOS: empty, for nothing is kept of a volume there. Linux: of the mount, or of what is
  /// mounted.
  std::string identity = {};
};

/// What a file system tells of its size; what it does not tell is absent.
struct FileSystemSpace {
  std::optional<std::uint64_t> size;   ///< bytes
  std::optional<std::uint64_t> free;   ///< bytes that users without privileges can have
  std::optional<std::uint64_t> nodes;  ///< files and folders that there can be; 0 without a limit
};

/// The machine's mounted volumes. Any thread; nobody waits for what another one is asking.
class Volumes {
 public:
  using Types = std::vector<std::string_view>;

  virtual ~Volumes() = default;

  /// Types of file systems on local media that this platform has besides those that all have; they
  /// stay valid. macOS: none. Linux: those of its own disks, sticks and discs.
  virtual Types localTypes() const = 0;

  /// The mount table in its order, with figures of this moment; empty when it can't be had. What is
  /// of none of `types` may be missing.
  /// macOS: getmntinfo with MNT_WAIT. Linux: /proc/self/mountinfo, a record a volume, and statvfs,
  /// which gets 0.2 seconds in all from those that may not answer: such a volume keeps its last
  /// figures, and is missing before it has some.
  virtual std::vector<MountRecord> mounts(const Types& types) = 0;

  /// What the user calls the volume mounted at `mountPoint`, or nothing when it can't be told.
  /// macOS: FSPathMakeRef, FSGetCatalogInfo and FSGetVolumeInfo; half a character becomes U+FFFD.
  /// Linux: the volume's label, else the last part of the mount point, and for "/" the computer's
  /// name; of a volume that `mounts` or `localPaths` told last. Served ones are not asked.
  virtual std::optional<std::string> name(const std::string& mountPoint) = 0;

  /// What the desktop shows for it; null when it has no picture.
  /// macOS: NSWorkspace iconForFile:. Linux: GIO's picture for the mount, of those that have names.
  virtual std::shared_ptr<const Image> icon(const std::string& mountPoint) = 0;

  /// The mount points of local volumes, none of which is asked.
  /// macOS: NSWorkspace mountedLocalVolumePaths. Linux: of the volumes of `types`, by the table.
  virtual std::vector<std::string> localPaths(const Types& types) = 0;

  /// The file system that holds `path`, asked anew and waited for: without end where whoever serves
  /// it does not answer.
  /// macOS: NSFileManager attributesOfFileSystemForPath:error:. Linux: statvfs.
  virtual FileSystemSpace space(const std::string& path) = 0;
};

/// The machine's volumes, shared by the process.
VANTILE_API std::shared_ptr<Volumes> systemVolumes();

}  // namespace vantile
