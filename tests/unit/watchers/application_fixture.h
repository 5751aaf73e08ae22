#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vantile/watchers/watch_application.h"
#include "vantile/watchers/watch_trash.h"

#include "unit/watchers/watcher_fixture.h"

namespace vantile::testing {

/// The shared `WatchApplication` and what its delegate was told.
class Applications : public Watchers {
 protected:
  using Paths = std::vector<std::string>;

  Applications() {
    delegate->appAdded = [this](const std::string& path) { added.push_back(path); };
    delegate->movedToTrash = [this](const std::string& path) { trashed.push_back(path); };
  }

  std::shared_ptr<WatchApplication> watcher() {
    auto shared = WatchApplication::singleton();
    shared->setDelegate(delegate);
    return shared;
  }
  std::shared_ptr<WatchApplication> started() {
    auto shared = watcher();
    shared->startWatch(&stop);
    return shared;
  }
  /// Names the system's own applications, as the host's resource lists them.
  void systemHas(const std::vector<Value>& names) {
    auto list = std::make_shared<Dictionary>();
    for (const auto& name : names) list->set("key " + std::to_string(list->size()), name);
    ports.resources->paths[{"SystemApplication", "plist"}] = "/host/SystemApplication.plist";
    ports.lists->lists["/host/SystemApplication.plist"] = list;
  }
  /// An application or a folder comes into the applications folder.
  void install(const std::string& name) {
    folder(apps + name);
    written(apps);
  }
  void uninstall(const std::string& name) {
    remove(apps + name);
    written(apps);
  }
  Paths takeAdded() { return std::exchange(added, {}); }

  std::shared_ptr<ApplicationsWatchDelegate> delegate =
      std::make_shared<ApplicationsWatchDelegate>();
  Paths added, trashed;
};

}  // namespace vantile::testing
