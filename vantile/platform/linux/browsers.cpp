#include "vantile/platform/linux/browsers.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "vantile/platform/linux/statx.h"
#include "vantile/platform/parsers/firefox_profiles.h"
#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

using Paths = std::vector<std::string>;

constexpr std::size_t longestFile = 64u << 20;

// In the preferences folder.
constexpr std::array chromeFolders = {"google-chrome/Default", "chromium/Default"};
constexpr std::array operaFolders = {"opera", "opera/Default"};
constexpr const char* firefoxInPreferences = "mozilla/firefox";
constexpr const char* firefoxInHome = ".mozilla/firefox";

std::string in(const std::string& folder, std::string_view name) {
  return std::string(folder == "/" ? "" : folder).append("/").append(name);
}

std::string folderAround(const std::string& path) {
  const auto slash = path.rfind('/');
  return path.substr(0, slash == std::string::npos ? 0 : slash);
}

bool isBelow(const std::string& path, const std::string& folder) {
  const auto within = in(folder, "");
  return path.size() > within.size() && path.starts_with(within);
}

bool isFolder(const std::string& path) {
  const auto status = statusOf(AT_FDCWD, path.c_str(), 0, STATX_TYPE);
  return status && S_ISDIR(status->stx_mode);
}

/// The file called `name` in one of the folders that was modified last, the first of several;
/// nothing when none has it.
std::optional<std::string> newestIn(const Paths& folders, std::string_view name) {
  std::optional<std::string> newest;
  std::pair<std::int64_t, std::int64_t> modified;
  for (const auto& folder : folders) {
    auto file = in(folder, name);
    const auto stamp = stampOf(file);
    if (!stamp) continue;
    const std::pair mine(stamp->seconds, stamp->nanoseconds);
    if (newest && mine <= modified) continue;
    newest = std::move(file);
    modified = mine;
  }
  return newest;
}

/// The path without "." and the like, and without a "/" at its end.
std::string plain(const std::string& path) {
  auto plainPath = std::filesystem::path(path).lexically_normal().string();
  while (plainPath.size() > 1 && plainPath.ends_with('/')) plainPath.pop_back();
  return plainPath;
}

}  // namespace

LinuxBrowsers::LinuxBrowsers()
    : LinuxBrowsers(XdgFolders(),
                    [](const std::string& path) { return contentsOf(path, longestFile); }) {}

LinuxBrowsers::LinuxBrowsers(XdgFolders folders, Read read)
    : folders_(std::move(folders)), read_(std::move(read)) {}

std::optional<DownloadSetting> LinuxBrowsers::setting(const BrowserPreference& preference) {
  const std::lock_guard lock(mutex_);
  const auto list = lastComponent(preference.path);
  if (list == "com.google.Chrome.plist") return chromiumSetting(inPreferences(chromeFolders));
  if (list == "com.operasoftware.Opera.plist") return chromiumSetting(inPreferences(operaFolders));
  if (list == "org.mozilla.firefox.plist") return firefoxSetting();
  return std::nullopt;
}

Paths LinuxBrowsers::inPreferences(std::span<const char* const> names) {
  Paths folders;
  for (const auto* const name : names) folders.push_back(in(folders_.preferences(), name));
  return folders;
}

std::optional<DownloadSetting> LinuxBrowsers::chromiumSetting(const Paths& folders) {
  const auto file = newestIn(folders, "Preferences");
  const auto* const said =
      file ? chromium_[*file].read(*file, parseChromiumPreferences, read_) : nullptr;
  if (!said) return std::nullopt;
  return DownloadSetting{said->downloadFolder};
}

std::optional<DownloadSetting> LinuxBrowsers::firefoxSetting() {
  const auto file = newestIn(firefoxProfiles(), "prefs.js");
  const auto* const said = file ? firefox_[*file].read(*file, parseFirefoxPrefs, read_) : nullptr;
  if (!said) return std::nullopt;
  constexpr int desktop = 0, own = 2;  // what folderList may say; 1 is the system's own
  if (said->folderList == desktop) return DownloadSetting{folders_.desktop()};
  return DownloadSetting{said->folderList == own ? said->dir : std::nullopt};
}

/// The folders of the profiles that Firefox starts with.
Paths LinuxBrowsers::firefoxProfiles() {
  auto base = in(folders_.home(), firefoxInHome);
  if (!isFolder(base)) base = in(folders_.preferences(), firefoxInPreferences);
  const auto named = [&](const char* file, PreferenceFile<Paths>::Parse parse) {
    const auto path = in(base, file);
    const auto* const said = profiles_[path].read(path, parse, read_);
    return said ? *said : Paths();
  };
  auto profiles = named("installs.ini", parseFirefoxInstalls);
  if (profiles.empty()) profiles = named("profiles.ini", parseFirefoxProfiles);
  for (auto& profile : profiles)
    profile = plain(profile.starts_with('/') ? profile : in(base, profile));
  return profiles;
}

/// Adds the folder, where it stands in the preferences folder or the home with those in between.
void LinuxBrowsers::addWithThoseAround(std::string folder, Paths& folders) {
  const auto home = folders_.home(), preferences = folders_.preferences();
  do {
    if (folder == home || folder == preferences) return;
    if (std::find(folders.begin(), folders.end(), folder) == folders.end())
      folders.push_back(folder);
    folder = folderAround(folder);
  } while (isBelow(folder, home) || isBelow(folder, preferences));
}

Paths LinuxBrowsers::preferenceFolders() {
  const std::lock_guard lock(mutex_);
  Paths folders;
  const auto add = [this, &folders](const Paths& more) {
    for (const auto& folder : more) addWithThoseAround(folder, folders);
  };
  add(inPreferences(chromeFolders));
  add(inPreferences(operaFolders));
  add({in(folders_.home(), firefoxInHome), in(folders_.preferences(), firefoxInPreferences)});
  add(firefoxProfiles());
  return folders;
}

std::shared_ptr<Browsers> systemBrowsers() {
  static auto& browsers = *new std::shared_ptr<Browsers>(std::make_shared<LinuxBrowsers>());
  return browsers;
}

}  // namespace vantile
