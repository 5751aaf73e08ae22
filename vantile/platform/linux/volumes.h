#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "vantile/platform/linux/kept_file.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/linux/served_volumes.h"
#include "vantile/platform/linux/volume_icon.h"
#include "vantile/platform/linux/volume_identity.h"
#include "vantile/platform/linux/volume_label.h"
#include "vantile/platform/parsers/mounted_volumes.h"
#include "vantile/platform/system_facts.h"
#include "vantile/platform/volumes.h"

namespace vantile {

/// How full the volume at that mount point is, by statvfs; nothing where it can't be reached.
std::optional<VolumeFigures> figuresOf(const std::string& mountPoint);

/// The volumes of the kernel's mount table, which is read again only when the kernel says that it
/// changed; until then they keep the names and pictures that they had when first asked. One without
/// a label is asked for it a few times more, within its first minute: udev may be late.
class LinuxVolumes final : public Volumes {
 public:
  struct Means {
    std::function<bool(KeptFile& table)> changed = &KeptFile::changed;
    std::function<std::optional<VolumeFigures>(const std::string& mountPoint)> figures = figuresOf;
    std::function<std::string(const MountedVolume& volume)> identity =
        [identities = VolumeIdentities()](const auto& volume) { return identities.of(volume); };
    std::function<std::optional<std::string>(const MountedVolume& volume)> label = labelOf;
    std::function<std::shared_ptr<const Image>(const std::string& mountPoint)> icon = iconOfMount;
    std::function<std::optional<std::string>()> computerName = [] {
      return systemFacts()->computerName();
    };
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    std::shared_ptr<Threads> threads = systemThreads();
    std::chrono::milliseconds patience{200};  ///< with those that may not answer, all together
  };

  LinuxVolumes() : LinuxVolumes(LinuxRoots{}, Means{}) {}
  LinuxVolumes(const LinuxRoots& roots, Means means);
  ~LinuxVolumes() override;

  Types localTypes() const override;
  std::vector<MountRecord> mounts(const Types& types) override;
  std::optional<std::string> name(const std::string& mountPoint) override;
  std::shared_ptr<const Image> icon(const std::string& mountPoint) override;
  std::vector<std::string> localPaths(const Types& types) override;
  FileSystemSpace space(const std::string& path) override;

 private:
  struct Known;
  using Table = std::vector<std::shared_ptr<Known>>;

  std::shared_ptr<const Table> present(const Types& types);
  std::shared_ptr<Known> knownAt(const std::string& mountPoint);
  std::vector<std::optional<VolumeFigures>> figures(const Table& table);
  const std::string& identityOf(Known& known) const;
  std::string nameWithoutLabel(const std::string& mountPoint) const;

  const Means means_;
  ServedVolumes served_;
  std::mutex mutex_;  // over the three below; nothing but the mount table is asked under it
  KeptFile table_;
  Types types_;  // that the known volumes were picked by
  std::shared_ptr<const Table> known_ = std::make_shared<const Table>();
};

}  // namespace vantile
