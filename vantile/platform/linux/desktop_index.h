#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vantile/platform/linux/file_stamp.h"

namespace vantile {

/// The desktop entries that are installed for the user: those in "applications" below
/// $XDG_DATA_HOME and each of $XDG_DATA_DIRS, and below the folders there. An entry hides those of
/// the same identifier in later folders, also when it is hidden itself. Not synchronised.
///
/// Read once, and again when a folder's modification time changed; an entry that is written in
/// place is seen when its turn comes, a few of them at each `refresh`.
class DesktopIndex {
 public:
  /// Gives a variable of the environment, or nothing.
  using Environment = std::function<std::optional<std::string>(const char* name)>;

  struct Entry {
    std::string path, name;
    bool isShown = false;  ///< by the menus of the user's desktop
  };

  DesktopIndex(std::string home, Environment environment);

  /// Takes up changes of the folders. True where there were any: what was looked up may have
  /// changed, and entries are numbered anew.
  bool refresh();

  const Entry& operator[](std::size_t number) const { return entries_[number]; }
  std::size_t size() const { return entries_.size(); }

  /// The entry of that identifier, the path below its folder with "-" for "/" and without
  /// ".desktop".
  std::optional<std::size_t> withIdentifier(const std::string& identifier) const;
  /// The entry in that file, which needs to be in none of the folders: such a one is read now and
  /// kept until the next change of the index.
  std::optional<std::size_t> at(const std::string& path);
  /// The entry that menus show and whose command line runs that executable, directly or through a
  /// script of the same name elsewhere.
  std::optional<std::size_t> running(std::string_view executable) const;

 private:
  struct Folder {
    std::string path;
    std::int64_t seconds = -1, nanoseconds = -1;  ///< modified; -1 for a missing one
    bool isSettled = true;  ///< nothing can have changed at that very time since
  };
  struct File {
    std::string path;
    std::optional<FileStamp> stamp;
  };

  std::vector<std::string> dataFolders() const;
  bool haveChanged();
  void build();
  void readFolder(const std::string& path, const std::string& identifierPrefix, int depth);
  void readEntry(const std::string& path, const std::string& identifier);
  std::optional<std::size_t> add(const std::string& path, bool isInstalled);
  void addProgram(const std::string& command, std::size_t number);
  std::optional<std::string> findProgram(const std::string& program) const;

  const std::string home_;
  const Environment environment_;
  std::vector<std::string> sources_;  ///< the data folders of the present index
  std::vector<std::string> desktops_;
  std::vector<Folder> folders_;
  std::vector<File> files_;
  std::size_t nextFile_ = 0;  ///< to be looked at for changes
  std::vector<Entry> entries_;
  std::map<std::string, std::optional<std::size_t>> byIdentifier_;
  std::unordered_map<std::string, std::optional<std::size_t>> byPath_;
  std::unordered_map<std::string, std::size_t> byProgram_, byScriptName_;
};

}  // namespace vantile
