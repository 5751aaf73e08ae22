#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vantile/watchers/watch_trash.h"

#include "unit/watchers/watcher_fixture.h"

namespace vantile::testing {

/// The shared `WatchTrash` and what its delegate was told.
class Trash : public Watchers {
 protected:
  using Paths = std::vector<std::string>;
  using Sizes = std::vector<std::uint64_t>;

  Trash() {
    delegate->trashAddedApp = [this](const std::string& path) {
      added.push_back(path);
      told.push_back(path);
    };
    delegate->trashUsedSizeChanged = [this](std::uint64_t bytes) {
      sizes.push_back(bytes);
      told.push_back(std::to_string(bytes));
    };
  }

  std::shared_ptr<WatchTrash> watcher() {
    auto shared = WatchTrash::singleton();
    shared->setDelegate(delegate);
    return shared;
  }
  /// Started, and the first size forgotten.
  std::shared_ptr<WatchTrash> started() {
    auto shared = watcher();
    shared->startWatch(&stop);
    sizes.clear();
    told.clear();
    return shared;
  }
  /// An application of so many bytes is thrown away.
  void throwAway(const std::string& name, std::uint64_t bytes = 0) {
    file(trash + name + "/data", bytes);
    written(trash);
  }
  Paths takeAdded() { return std::exchange(added, {}); }

  std::shared_ptr<TrashWatchDelegate> delegate = std::make_shared<TrashWatchDelegate>();
  Paths added, told;
  Sizes sizes;
};

}  // namespace vantile::testing
