#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "vantile/platform/linux/usage_accounting.h"
#include "vantile/platform/linux/usage_volumes.h"

#include "fakes/recorded_log.h"
#include "unit/platform/usage_fixture.h"

namespace vantile::testing {

/// An accounting of two volumes, folders of one tree, whose time is stepped.
struct UsageAccountingTest : UsageTest {
  using Rest = std::optional<std::chrono::nanoseconds>;

  UsageAccountingTest() { restart(); }

  /// As another run of the program begins.
  void restart() {
    UsageAccounting::Means means;
    means.cacheFolder = caches.path("vantile");
    means.installed = {tree.path("first/usr")};
    means.pace = pace;
    means.now = [this] { return now; };
    means.processorTime = [this] { return processor += cost; };
    means.presentSecond = muchLater;
    means.volumeAt = [this](const std::string& mountPoint) { return volumeAt(mountPoint); };
    means.othersOf = [this](const std::string& mountPoint) {
      return mountPoint == first ? others : std::vector<std::string>();
    };
    means.kindOf = [this](const std::string& name) {
      if (failsAt == name) throw std::runtime_error("short of memory");
      return kindByDatabase(name);
    };
    accounting = std::make_unique<UsageAccounting>(std::move(means));
  }

  std::optional<UsageVolume> volumeAt(const std::string& mountPoint) {
    if (mountPoint == closed) return UsageVolume{.root = 1, .mountPoint = closed};
    auto volume = volumes.at(mountPoint);
    if (volume && mountPoint == first) volume->identifier = identifier;
    return volume;
  }
  /// Folders in the volume's, each with a photo of a kibibyte.
  void makeFolders(const std::string& volume, int count) {
    for (int number = 0; number < count; ++number)
      tree.file(volume + "/f" + std::to_string(number) + "/a.jpg", contents(1));
  }
  void want(const std::vector<std::string>& list) { accounting->want(list, isStopped); }
  Rest turn() { return accounting->turn(isStopped); }
  /// Turns until there is some rest but those within a first pass.
  Rest work() {
    for (;;) {
      const auto rest = turn();
      if (rest != std::chrono::nanoseconds(0) && rest != pace.release) return rest;
      later(*rest);
    }
  }
  /// What is kept of all volumes, in bytes.
  std::uintmax_t kept() const {
    std::uintmax_t size = 0;
    if (!std::filesystem::exists(caches.path("vantile"))) return 0;
    for (const auto& file : std::filesystem::directory_iterator(caches.path("vantile")))
      size += file.file_size();
    return size;
  }
  /// A photo's folder whose record is of more than a mebibyte.
  void makeLarge(const std::string& folder) {
    for (int number = 0; number < 4500; ++number)
      tree.file(folder + "/" + std::string(240, 'x') + std::to_string(number) + ".jpg");
  }
  void later(std::chrono::nanoseconds duration) { now += duration; }
  UsageSums of(const std::string& mountPoint) const { return accounting->figures().at(mountPoint); }

  const TemporaryFolder caches;
  UsageVolumes volumes;
  std::string identifier = "1234-ABCD";  // of the first volume
  std::vector<std::string> others;       // parts of it
  std::string closed;                    // a mount point that nobody can open
  std::string failsAt;
  const std::string first = tree.folder("first"), second = tree.folder("second");
  UsagePace pace;
  UsageAccounting::Clock::time_point now{std::chrono::hours(1)};
  std::chrono::nanoseconds processor{0}, cost{0};
  const std::function<bool()> isStopped = [this] { return stopped; };
  bool stopped = false;
  RecordedLog log;
  std::unique_ptr<UsageAccounting> accounting;
};

}  // namespace vantile::testing
