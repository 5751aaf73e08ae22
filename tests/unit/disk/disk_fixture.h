#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "vantile/disk/disk.h"

#include "fakes/fake_disk_ports.h"
#include "fakes/stepped_loop.h"

namespace vantile::testing {

/// A `KVDDisk` on fakes, with a loop that runs when the test says so.
class Disk : public ::testing::Test {
 protected:
  Disk() {
    delegate->diskDetails = [this](const Array& told) {
      ++reports;
      rows.clear();
      for (const auto& volume : told) rows.push_back(*volume.as<std::shared_ptr<Dictionary>>());
    };
  }

  std::shared_ptr<KVDDisk> monitor() {
    auto disk = KVDDisk::init();
    disk->setDelegate(delegate);
    return disk;
  }

  /// Mounts a volume of 1000 blocks of 512 bytes, 400 of them to be had.
  MountRecord& mount(std::string mountPoint, std::string type = "hfs") {
    return volumes.table.emplace_back(
        MountRecord{std::move(type), "/dev/disk1", std::move(mountPoint), 512, 1000, 400});
  }

  /// The mount points that one sample tells of.
  std::vector<std::string> toldOf() {
    monitor()->updateInfo();
    std::vector<std::string> paths;
    for (const auto& row : rows) paths.push_back(*row->text("disk_path"));
    return paths;
  }

  /// The first row of one sample.
  const Dictionary& row() {
    monitor()->updateInfo();
    if (rows.empty()) throw std::runtime_error("no volume was told of");
    return *rows.front();
  }

  FakeDiskPorts ports;
  FakeVolumes& volumes = *ports.volumes;
  KeptCategories& categories = *ports.categories;
  SteppedLoop loop;
  std::shared_ptr<DiskDelegate> delegate = std::make_shared<DiskDelegate>();
  int reports = 0;
  std::vector<std::shared_ptr<Dictionary>> rows;  ///< of the last report
};

}  // namespace vantile::testing
