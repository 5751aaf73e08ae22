#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "vantile/disk/disk_ports.h"
#include "vantile/disk/shared_disk_monitor.h"

#include "fakes/fake_utility_ports.h"

namespace vantile::testing {

/// A mount table, names and pictures that a test sets.
class FakeVolumes final : public Volumes {
 public:
  Types localTypes() const override { return local; }
  std::vector<MountRecord> mounts(const Types& types) override {
    const std::lock_guard lock(mutex_);
    ++tableReads;
    askedTypes = types;
    return table;
  }
  std::optional<std::string> name(const std::string& mountPoint) override {
    if (nameless.contains(mountPoint)) return std::nullopt;
    return "Name of " + mountPoint;
  }
  std::shared_ptr<const Image> icon(const std::string& mountPoint) override {
    const std::lock_guard lock(mutex_);
    iconsAsked.push_back(mountPoint);
    const auto found = icons.find(mountPoint);
    return found == icons.end() ? nullptr : found->second;
  }
  std::vector<std::string> localPaths(const Types& types) override {
    askedTypes = types;
    if (onPaths) onPaths();
    return paths;
  }
  FileSystemSpace space(const std::string& path) override {
    spaceAsked.push_back(path);
    const auto answer = spaces[path];
    if (onSpace) onSpace();
    return answer;
  }

  Types local, askedTypes;
  std::vector<MountRecord> table;
  int tableReads = 0;
  std::set<std::string> nameless;
  std::map<std::string, std::shared_ptr<const Image>> icons;
  std::vector<std::string> iconsAsked;
  std::vector<std::string> paths;
  std::map<std::string, FileSystemSpace> spaces;
  std::vector<std::string> spaceAsked;
  std::function<void()> onSpace;  ///< after an answer was taken
  std::function<void()> onPaths;  ///< before the paths are told

 private:
  std::mutex mutex_;  // over what samples note, which several threads may take
};

/// What the metadata of the volumes holds, and what was asked of it.
struct KeptCategories {
  std::map<VolumeKey, CategorySizes> items;    ///< no item for the others
  std::vector<std::vector<VolumeKey>> wanted;  ///< each call of `want`
  int stores = 0, storesMade = 0;              ///< that live, and that ever did
  std::function<void()> onLook;                ///< in the midst of a look-up
};

class FakeCategories final : public VolumeCategories {
 public:
  explicit FakeCategories(std::shared_ptr<KeptCategories> kept) : kept_(std::move(kept)) {
    ++kept_->stores;
    ++kept_->storesMade;
  }
  ~FakeCategories() override { --kept_->stores; }
  FakeCategories(const FakeCategories&) = delete;
  FakeCategories& operator=(const FakeCategories&) = delete;

  std::optional<CategorySizes> of(const VolumeKey& volume) override {
    if (kept_->onLook) kept_->onLook();
    const auto found = kept_->items.find(volume);
    return found == kept_->items.end() ? std::nullopt : std::optional(found->second);
  }
  void want(const std::vector<VolumeKey>& volumes) override { kept_->wanted.push_back(volumes); }

 private:
  const std::shared_ptr<KeptCategories> kept_;
};

/// While it lives, the disk subsystem stands on fakes and begins without a shared instance.
class FakeDiskPorts {
 public:
  FakeDiskPorts() : before_(DiskPorts::installed()) {
    DiskPorts::installed() = {
        volumes, std::make_shared<FakeStandardFolders>(),
        [kept = categories] { return std::make_unique<FakeCategories>(kept); }};
    sharedDiskMonitor().forget();
  }
  ~FakeDiskPorts() {
    sharedDiskMonitor().forget();
    DiskPorts::installed() = before_;
  }
  FakeDiskPorts(const FakeDiskPorts&) = delete;
  FakeDiskPorts& operator=(const FakeDiskPorts&) = delete;

  const std::shared_ptr<FakeVolumes> volumes = std::make_shared<FakeVolumes>();
  const std::shared_ptr<KeptCategories> categories = std::make_shared<KeptCategories>();

 private:
  const DiskPorts before_;
};

}  // namespace vantile::testing
