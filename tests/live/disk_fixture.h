#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "vantile/disk/disk.h"

#include "fakes/temporary_folder.h"
#include "live/command.h"

namespace vantile::testing {

/// A monitor whose samples a test asks for.
class Sampled {
 public:
  using Clock = std::chrono::steady_clock;
  using Row = std::shared_ptr<Dictionary>;

  Sampled() {
    delegate_->diskDetails = [this](const Array& volumes) {
      rows.clear();
      for (const auto& volume : volumes) rows.push_back(*volume.as<Row>());
    };
    monitor_->setDelegate(delegate_);
    monitor_->setFreshInterval(0);
  }
  ~Sampled() { monitor_->setDelegate(nullptr); }
  Sampled(const Sampled&) = delete;
  Sampled& operator=(const Sampled&) = delete;

  Clock::duration tick() {
    const auto begin = Clock::now();
    monitor_->updateInfo();
    return Clock::now() - begin;
  }
  /// The volume at that mount point, as the last sample told of it; null for none.
  Row at(const std::string& path) const {
    for (const auto& row : rows)
      if (*row->text("disk_path") == path) return row;
    return nullptr;
  }

  std::vector<Row> rows;

 private:
  std::shared_ptr<KVDDisk> monitor_ = KVDDisk::init();
  std::shared_ptr<DiskDelegate> delegate_ = std::make_shared<DiskDelegate>();
};

/// Why this process has no mounts of its own; empty where it has.
inline const std::string& refusedNamespace() {
  static const std::string refused = [] {
    if (::geteuid() != 0) return std::string("only root mounts");
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr))
      return std::string("no mount namespace: ") + std::strerror(errno);
    return std::string();
  }();
  return refused;
}

/// Mounts volumes in a mount namespace of the tests' own, which nobody else sees.
struct LiveDisk : ::testing::Test {
  void SetUp() override {
    if (!refusedNamespace().empty()) GTEST_SKIP() << refusedNamespace();
  }
  void TearDown() override {
    for (auto step = undo.rbegin(); step != undo.rend(); ++step) (*step)();
  }

  /// Makes a file system in a file; why not, where it can't.
  std::string make(const std::string& image, const std::string& command) {
    const auto made =
        run("truncate -s 64M " + quoted(image) + " && " + command + " " + quoted(image));
    return made.status == 0 ? "" : made.text;
  }
  /// Mounts what `arguments` say at the folder; why not, where it is refused.
  std::string mount(const std::string& arguments, const std::string& at) {
    const auto done = run("mount " + arguments + " " + quoted(at));
    if (done.status != 0) return done.text;
    undo.push_back([at] { ::umount2(at.c_str(), MNT_DETACH); });
    return {};
  }
  /// Mounts an ext4 file system of that label; why not, where it is refused.
  std::string mountExt4(const std::string& at, const std::string& label = {}) {
    const auto image = folder.path("image" + std::to_string(++images));
    const auto refused = make(image, "mkfs.ext4 -q -F -L " + quoted(label));
    return refused.empty() ? mount("-o loop " + quoted(image), at) : refused;
  }
  /// The path of a loop device over a new file of 64 MiB; nothing where there is none.
  std::string loopDevice() {
    const auto image = folder.file("image" + std::to_string(++images));
    const auto done =
        run("truncate -s 64M " + quoted(image) + " && losetup -f --show " + quoted(image));
    if (done.status != 0) return {};
    const auto device = done.text.substr(0, done.text.find('\n'));
    undo.push_back([device] { run("losetup -d " + device); });
    return device;
  }

  const TemporaryFolder folder;
  std::vector<std::function<void()>> undo;
  int images = 0;
};

inline std::vector<std::uint64_t> numbersOf(const std::string& command) {
  std::istringstream text(run(command).text);
  std::vector<std::uint64_t> numbers;
  for (std::uint64_t number = 0; text >> number;) numbers.push_back(number);
  return numbers;
}

}  // namespace vantile::testing
