#pragma once

#include <map>
#include <mutex>
#include <span>

#include "vantile/platform/browsers.h"
#include "vantile/platform/linux/chromium_preferences.h"
#include "vantile/platform/linux/preference_file.h"
#include "vantile/platform/linux/standard_folders.h"
#include "vantile/platform/parsers/firefox_prefs.h"

namespace vantile {

/// Google Chrome, Chromium, Opera and Firefox, from the files in which they keep their settings.
class LinuxBrowsers final : public Browsers {
 public:
  /// Gives the contents of a file, or nothing.
  using Read = std::function<std::optional<std::string>(const std::string& path)>;

  LinuxBrowsers();
  LinuxBrowsers(XdgFolders folders, Read read);

  std::optional<DownloadSetting> setting(const BrowserPreference& preference) override;
  std::vector<std::string> preferenceFolders() override;
  bool hasSafariFolder() override { return false; }
  bool renamesUnfinished() override { return true; }

 private:
  using Paths = std::vector<std::string>;
  template <class Said>
  using Files = std::map<std::string, PreferenceFile<Said>>;

  Paths inPreferences(std::span<const char* const> names);
  std::optional<DownloadSetting> chromiumSetting(const Paths& folders);
  std::optional<DownloadSetting> firefoxSetting();
  Paths firefoxProfiles();
  void addWithThoseAround(std::string folder, Paths& folders);

  XdgFolders folders_;
  const Read read_;
  std::mutex mutex_;  // over the files
  Files<ChromiumPreferences> chromium_;
  Files<FirefoxPrefs> firefox_;
  Files<Paths> profiles_;
};

}  // namespace vantile
