#pragma once

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
#include "vantile/platform/linux/volume_label.h"
#include "vantile/platform/parsers/mounted_volumes.h"
#include "vantile/platform/system_facts.h"
#include "vantile/platform/volumes.h"

namespace vantile {

/// How full the volume at that mount point is, by statvfs; nothing where it can't be reached.
std::optional<VolumeFigures> figuresOf(const std::string& mountPoint);

/// The volumes of the kernel's mount table, which is read again only when the kernel says that it
/// changed; until then they keep the names and pictures that they had when first asked.
class LinuxVolumes final : public Volumes {
 public:
  struct Means {
    std::function<bool(KeptFile& table)> changed = &KeptFile::changed;
    std::function<std::optional<VolumeFigures>(const std::string& mountPoint)> figures = figuresOf;
    std::function<std::optional<std::string>(const MountedVolume& volume)> label = labelOf;
    std::function<std::shared_ptr<const Image>(const std::string& mountPoint)> icon = iconOfMount;
    std::function<std::optional<std::string>()> computerName = [] {
      return systemFacts()->computerName();
    };
    std::shared_ptr<Threads> threads = systemThreads();
  };

  LinuxVolumes() : LinuxVolumes(LinuxRoots{}, Means{}) {}
  LinuxVolumes(const LinuxRoots& roots, Means means);

  Types localTypes() const override;
  std::vector<MountRecord> mounts(const Types& types) override;
  std::optional<std::string> name(const std::string& mountPoint) override;
  std::shared_ptr<const Image> icon(const std::string& mountPoint) override;
  std::vector<std::string> localPaths(const Types& types) override;
  FileSystemSpace space(const std::string& path) override;

 private:
  struct Known {
    MountedVolume volume;
    std::optional<std::string> name;
    std::optional<std::shared_ptr<const Image>> icon;
  };

  void refresh(const Types& types);
  Known* knownAt(const std::string& mountPoint);
  std::vector<std::optional<VolumeFigures>> figures();
  std::optional<std::string> nameOf(const MountedVolume& volume) const;

  std::mutex mutex_;  // over all below
  const Means means_;
  KeptFile table_;
  Types types_;  // that the known volumes were picked by
  std::vector<Known> known_;
  ServedVolumes served_;
};

}  // namespace vantile
