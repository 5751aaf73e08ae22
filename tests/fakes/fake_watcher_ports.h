#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/utility/paths.h"
#include "vantile/watchers/shared_watchers.h"
#include "vantile/watchers/watch_application.h"
#include "vantile/watchers/watch_download.h"
#include "vantile/watchers/watch_trash.h"
#include "vantile/watchers/watcher_ports.h"

#include "fakes/fake_disk.h"
#include "fakes/fake_utility_ports.h"

namespace vantile::testing {

/// Browsers that save where the test says.
class FakeBrowsers final : public Browsers {
 public:
  std::optional<DownloadSetting> setting(const BrowserPreference& preference) override {
    asked.emplace_back(preference.path, preference.key);
    const auto found = settings.find(lastPathComponent(preference.path));
    return found == settings.end() ? std::nullopt : std::optional(found->second);
  }
  std::vector<std::string> preferenceFolders() override { return folders; }
  bool hasSafariFolder() override { return hasSafari; }
  bool renamesUnfinished() override { return renames; }

  std::map<std::string, DownloadSetting> settings;         ///< by the property list's name
  std::vector<std::pair<std::string, std::string>> asked;  ///< paths and keys
  std::vector<std::string> folders;
  bool hasSafari = true;
  bool renames = false;  ///< downloads that go on
};

class FakePropertyLists final : public PropertyLists {
 public:
  std::shared_ptr<Dictionary> read(const std::string& path) override {
    const auto found = lists.find(path);
    return found == lists.end() ? nullptr : found->second;
  }

  std::map<std::string, std::shared_ptr<Dictionary>> lists;  ///< by path
};

class FakeHostResources final : public HostResources {
 public:
  std::optional<std::string> path(std::string_view name, std::string_view type) override {
    const auto found = paths.find({std::string(name), std::string(type)});
    return found == paths.end() ? std::nullopt : std::optional(found->second);
  }
  void setFolder(std::optional<std::string> folder) override {
    folders.push_back(std::move(folder));
  }

  std::string localizedString(std::string_view key) override {
    const auto found = translations.find(std::string(key));
    return found == translations.end() ? std::string(key) : found->second;
  }

  std::map<std::pair<std::string, std::string>, std::string> paths;  ///< by name and type
  std::map<std::string, std::string> translations;
  std::vector<std::optional<std::string>> folders;  ///< that were set
};

/// ASCII in lower case; the only accented letters are "é" and "É".
class FakeTextFolding final : public TextFolding {
 public:
  std::string lowerCased(std::string_view text) override {
    std::string lower(text);
    for (char& letter : lower)
      if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return lower;
  }
  std::string folded(std::string_view text) override {
    std::string plain = lowerCased(text);
    for (const std::string_view accented : {"\u00e9", "\u00c9"})
      for (auto at = plain.find(accented); at != plain.npos; at = plain.find(accented))
        plain.replace(at, accented.size(), "e");
    return plain;
  }
};

/// While it lives, the watchers stand on fakes and begin without shared instances.
class FakeWatcherPorts {
 public:
  FakeWatcherPorts(const std::shared_ptr<FakeDisk>& disk, const FakeUtilityPorts& utility)
      : before_(std::exchange(WatcherPorts::installed(),
                              WatcherPorts{disk, utility.folders, utility.applications, browsers,
                                           lists, resources, folding})) {
    forgetShared();
  }
  ~FakeWatcherPorts() {
    forgetShared();
    WatcherPorts::installed() = std::move(before_);
  }
  FakeWatcherPorts(const FakeWatcherPorts&) = delete;
  FakeWatcherPorts& operator=(const FakeWatcherPorts&) = delete;

  const std::shared_ptr<FakeBrowsers> browsers = std::make_shared<FakeBrowsers>();
  const std::shared_ptr<FakePropertyLists> lists = std::make_shared<FakePropertyLists>();
  const std::shared_ptr<FakeHostResources> resources = std::make_shared<FakeHostResources>();
  const std::shared_ptr<FakeTextFolding> folding = std::make_shared<FakeTextFolding>();

 private:
  static void forgetShared() {
    sharedDownloadWatch().forget();
    sharedApplicationWatch().forget();
    sharedTrashWatch().forget();
  }

  WatcherPorts before_;
};

}  // namespace vantile::testing
