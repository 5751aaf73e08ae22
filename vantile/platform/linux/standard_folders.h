#pragma once

#include <functional>
#include <optional>
#include <string>

#include "vantile/platform/standard_folders.h"

namespace vantile {

/// The folders that the XDG base directories and user directories name. The environment and
/// user-dirs.dirs are read anew at each question, since both may change.
class XdgFolders final : public StandardFolders {
 public:
  /// Gives a variable of the environment, or nothing.
  using Environment = std::function<std::optional<std::string>(const char* name)>;

  XdgFolders();
  XdgFolders(std::string home, Environment environment);

  std::string home() override { return home_; }
  std::string downloads() override;
  std::string library() override;
  std::string preferences() override;
  std::string applications() override;
  std::string trash() override;
  void makeTrash() override;

  /// What the desktop shows: XDG_DESKTOP_DIR of the user's user-dirs.dirs, else Desktop in the
  /// home.
  std::string desktop();

  /// Where what can be made anew is kept: $XDG_CACHE_HOME, else .cache in the home.
  std::string caches();

 private:
  std::string userFolder(const char* variable, const char* belowHome);
  std::string trashCan();
  std::string baseFolder(const char* variable, const char* belowHome) const;
  std::string belowHome(const char* relative) const;

  const std::string home_;
  const Environment environment_;
};

/// Makes the folder and those that lead to it, where they are missing. What can't be made is found
/// missing later.
void makeForUserAlone(const std::string& path);

}  // namespace vantile
