#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/watchers/watch_download.h"

#include "unit/watchers/watcher_fixture.h"

namespace vantile::testing {

inline constexpr const char* safariList = "com.apple.Safari.plist";
inline constexpr const char* chromeList = "com.google.Chrome.plist";
inline constexpr const char* firefoxList = "org.mozilla.firefox.plist";
inline constexpr const char* operaList = "com.operasoftware.Opera.plist";

// What things are watched for.
inline constexpr std::uint32_t asPreferences = 0x02, asDownloadFolder = 0x23, asUnfinished = 0x21;

/// The shared `WatchDownload` and what its delegate was told.
class Downloads : public Watchers {
 protected:
  using Paths = std::vector<std::optional<std::string>>;

  Downloads() {
    delegate->downloadFileCompleted = [this](const auto& path) { completed.push_back(path); };
  }

  void saves(const std::string& list, std::optional<std::string> to) {
    ports.browsers->settings[list] = {std::move(to)};
  }
  void lacks(const std::string& list) { ports.browsers->settings.erase(list); }
  void preferencesChange() { written(preferences); }

  /// The shared watcher, with the delegate set.
  std::shared_ptr<WatchDownload> watcher() {
    auto shared = WatchDownload::singleton();
    shared->setDelegate(delegate);
    return shared;
  }
  std::shared_ptr<WatchDownload> started() {
    auto shared = watcher();
    shared->startWatch(&stop);
    return shared;
  }
  /// Started, with Chrome saving to the folder `downloads`.
  std::shared_ptr<WatchDownload> startedWithChrome() {
    saves(chromeList, downloads);
    return started();
  }

  const std::string history = safari + "/Downloads.plist";
  std::shared_ptr<DownloadWatchDelegate> delegate = std::make_shared<DownloadWatchDelegate>();
  Paths completed;
};

}  // namespace vantile::testing
