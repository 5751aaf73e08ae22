#include "vantile/platform/linux/standard_folders.h"

#include <stdlib.h>

#include <utility>

#include "vantile/platform/linux/kept_file.h"
#include "vantile/platform/parsers/user_dirs.h"
#include "vantile/platform/posix/account.h"

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

std::string XdgFolders::downloads() {
  const auto text = readFile(preferences() + "/user-dirs.dirs");
  auto named = text ? parseUserDirs(*text, "XDG_DOWNLOAD_DIR", home_) : std::nullopt;
  return named ? std::move(*named) : belowHome("Downloads");
}

std::string XdgFolders::library() {
  return baseFolder("XDG_DATA_HOME", ".local/share");
}

std::string XdgFolders::preferences() {
  return baseFolder("XDG_CONFIG_HOME", ".config");
}

std::string XdgFolders::applications() {
  return "/usr/share/applications";
}

std::string XdgFolders::trash() {
  const auto data = library();
  return (data == "/" ? "" : data) + "/Trash/files";
}

std::shared_ptr<StandardFolders> systemStandardFolders() {
  static auto& folders = *new std::shared_ptr<StandardFolders>(std::make_shared<XdgFolders>());
  return folders;
}

}  // namespace vantile
