#include "vantile/platform/linux/standard_folders.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <utility>

#include "vantile/platform/parsers/user_dirs.h"
#include "vantile/platform/posix/account.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

std::optional<std::string> environmentVariable(const char* name) {
  const char* const value = ::getenv(name);
  return value ? std::optional<std::string>(value) : std::nullopt;
}

std::string withoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

void makeForUserAlone(const std::string& path) {
  constexpr mode_t userAlone = 0700;
  for (auto end = path.find('/', 1); true; end = path.find('/', end + 1)) {
    const auto level = path.substr(0, end);
    // The process's umask may have taken bits away.
    if (::mkdir(level.c_str(), userAlone) == 0) ::chmod(level.c_str(), userAlone);
    if (end == std::string::npos) return;
  }
}

XdgFolders::XdgFolders() : XdgFolders(homeOfAccount(), environmentVariable) {}

XdgFolders::XdgFolders(std::string home, Environment environment)
    : home_(withoutTrailingSlash(std::move(home))), environment_(std::move(environment)) {}

std::string XdgFolders::belowHome(const char* relative) const {
  return (home_ == "/" ? home_ : home_ + "/") + relative;
}

std::string XdgFolders::baseFolder(const char* variable, const char* below) const {
  auto named = environment_(variable);
  // A relative path is to be ignored.
  if (named && named->starts_with('/')) return withoutTrailingSlash(std::move(*named));
  return belowHome(below);
}

std::string XdgFolders::userFolder(const char* variable, const char* below) {
  const auto text = contentsOf(preferences() + "/user-dirs.dirs");
  auto named = text ? parseUserDirs(*text, variable, home_) : std::nullopt;
  return named ? std::move(*named) : belowHome(below);
}

std::string XdgFolders::downloads() {
  return userFolder("XDG_DOWNLOAD_DIR", "Downloads");
}

std::string XdgFolders::desktop() {
  return userFolder("XDG_DESKTOP_DIR", "Desktop");
}

std::string XdgFolders::library() {
  return baseFolder("XDG_DATA_HOME", ".local/share");
}

std::string XdgFolders::preferences() {
  return baseFolder("XDG_CONFIG_HOME", ".config");
}

std::string XdgFolders::caches() {
  return baseFolder("XDG_CACHE_HOME", ".cache");
}

std::string XdgFolders::applications() {
  return "/usr/share/applications";
}

std::string XdgFolders::trashCan() {
  const auto data = library();
  return (data == "/" ? "" : data) + "/Trash";
}

std::string XdgFolders::trash() {
  return trashCan() + "/files";
}

void XdgFolders::makeTrash() {
  makeForUserAlone(trash());
  makeForUserAlone(trashCan() + "/info");  // a file manager takes either for damaged without both
}

std::shared_ptr<StandardFolders> systemStandardFolders() {
  static auto& folders = *new std::shared_ptr<StandardFolders>(std::make_shared<XdgFolders>());
  return folders;
}

}  // namespace vantile
