#include "vantile/platform/volumes.h"

#include <CoreServices/CoreServices.h>
#include <sys/mount.h>

#include <algorithm>
#include <iterator>
#include <mutex>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/objective_c.h"
#include "vantile/platform/parsers/utf16.h"

namespace vantile {
namespace {

id workspace() {
  return message<id>(classNamed("NSWorkspace"), "sharedWorkspace");
}

/// The number of the volume that the path is on, or nothing.
std::optional<FSVolumeRefNum> volumeAt(const std::string& path) {
  FSRef place = {};
  FSCatalogInfo information = {};
  const auto* const bytes = reinterpret_cast<const UInt8*>(path.c_str());
  if (::FSPathMakeRef(bytes, &place, nullptr) != 0) return std::nullopt;
  if (::FSGetCatalogInfo(&place, kFSCatInfoVolume, &information, nullptr, nullptr, nullptr) != 0)
    return std::nullopt;
  return information.volume;
}

std::optional<std::uint64_t> numberUnder(CFDictionaryRef dictionary, const char* key) {
  const auto name = stringOf(key);
  const auto number =
      name ? as<CFNumberRef>(CFNumberGetTypeID(), CFDictionaryGetValue(dictionary, name.get()))
           : nullptr;
  if (!number) return std::nullopt;
  return message<unsigned long long>(bridged(number), "unsignedLongLongValue");
}

class MacosVolumes final : public Volumes {
 public:
  Types localTypes() const override { return {}; }

  std::vector<MountRecord> mounts(const Types&) override {
    const std::lock_guard lock(tableLock_);
    struct statfs* table = nullptr;
    const int count = ::getmntinfo(&table, MNT_WAIT);
    std::vector<MountRecord> records;
    for (int i = 0; i < count; ++i) {
      const auto& each = table[i];
      records.push_back({each.f_fstypename, each.f_mntfromname, each.f_mntonname, each.f_bsize,
                         each.f_blocks, each.f_bavail});
    }
    return records;
  }

  std::optional<std::string> name(const std::string& mountPoint) override {
    const auto volume = volumeAt(mountPoint);
    HFSUniStr255 name = {};
    if (!volume ||
        ::FSGetVolumeInfo(*volume, 0, nullptr, kFSVolInfoNone, nullptr, &name, nullptr) != 0)
      return std::nullopt;
    const auto length = std::min<std::size_t>(name.length, std::size(name.unicode));
    return utf8Of(std::u16string(name.unicode, name.unicode + length));
  }

  std::shared_ptr<const Image> icon(const std::string& mountPoint) override {
    return unlessRaised([&mountPoint]() -> std::shared_ptr<const Image> {
      const auto where = pathString(mountPoint);
      if (!where) return nullptr;
      const id picture = message<id>(workspace(), "iconForFile:", bridged(where.get()));
      if (!picture) return nullptr;
      std::shared_ptr<void> held(const_cast<void*>(CFRetain(picture)), ReleaseObject());
      return std::make_shared<const Image>(Image{{}, {}, std::move(held)});
    });
  }

  std::vector<std::string> localPaths(const Types&) override {
    return unlessRaised([] {
      std::vector<std::string> paths;
      const void* const answer = message<id>(workspace(), "mountedLocalVolumePaths");
      const auto array = as<CFArrayRef>(CFArrayGetTypeID(), answer);
      for (CFIndex i = 0; array && i < CFArrayGetCount(array); ++i) {
        auto path = textOf(as<CFStringRef>(CFStringGetTypeID(), CFArrayGetValueAtIndex(array, i)));
        if (path) paths.push_back(std::move(*path));
      }
      return paths;
    });
  }

  FileSystemSpace space(const std::string& path) override {
    return unlessRaised([&path]() -> FileSystemSpace {
      const auto where = pathString(path);
      if (!where) return {};
      const id files = message<id>(classNamed("NSFileManager"), "defaultManager");
      const void* const answer =
          message<id>(files, "attributesOfFileSystemForPath:error:", bridged(where.get()),
                      static_cast<id*>(nullptr));
      const auto attributes = as<CFDictionaryRef>(CFDictionaryGetTypeID(), answer);
      if (!attributes) return {};
      return {numberUnder(attributes, "NSFileSystemSize"),
              numberUnder(attributes, "NSFileSystemFreeSize"),
              numberUnder(attributes, "NSFileSystemNodes")};
    });
  }

 private:
  std::mutex tableLock_;  // the system hands out one table to all of the process
};

}  // namespace

std::shared_ptr<Volumes> systemVolumes() {
  static auto& volumes = *new std::shared_ptr<Volumes>(std::make_shared<MacosVolumes>());
  return volumes;
}

}  // namespace vantile
