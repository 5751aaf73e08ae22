#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/utility/utility_ports.h"

#include "fakes/folder_tree.h"

namespace vantile::testing {

/// Folders that no machine has.
class FakeStandardFolders final : public StandardFolders {
 public:
  std::string home() override { return "/users/ada"; }
  std::string downloads() override { return "/users/ada/Down"; }
  std::string library() override { return "/users/ada/Lib"; }
  std::string preferences() override { return "/users/ada/Prefs"; }
  std::string applications() override { return "/apps"; }
  std::string trash() override { return "/users/ada/Bin"; }
};

class FakeSystemVersion final : public SystemVersion {
 public:
  std::optional<std::string> version() override { return told; }

  std::optional<std::string> told = "10.9";
};

/// Files with whatever attributes a test gives them.
class FakeFileSystem final : public FileSystem {
 public:
  std::optional<FileAttributes> attributes(const std::string& path, bool followLink) override {
    log.emplace_back(path, followLink);
    const auto found = files.find(path);
    return found == files.end() ? std::nullopt : std::optional(found->second);
  }

  std::map<std::string, FileAttributes> files;
  std::vector<std::pair<std::string, bool>> log;  ///< the paths asked for, and whether followed
};

/// Folders whose extension is "app" are applications, and so are text files that say so.
class FakeApplications final : public Applications {
 public:
  bool isApplication(std::string_view name, FileKind kind, const Contents& contents) override {
    asked.emplace_back(name);
    if (kind == FileKind::folder) return name.ends_with(".app");
    return kind == FileKind::regular && name.ends_with(".desktop") && contents() == "application";
  }

  std::vector<std::string> asked;
};

/// While it lives, the utility layer stands on fakes.
class FakeUtilityPorts {
 public:
  FakeUtilityPorts()
      : before_(std::exchange(UtilityPorts::installed(),
                              UtilityPorts{folders, version, files, tree, applications})) {}
  ~FakeUtilityPorts() { UtilityPorts::installed() = std::move(before_); }
  FakeUtilityPorts(const FakeUtilityPorts&) = delete;
  FakeUtilityPorts& operator=(const FakeUtilityPorts&) = delete;

  std::shared_ptr<FakeStandardFolders> folders = std::make_shared<FakeStandardFolders>();
  std::shared_ptr<FakeSystemVersion> version = std::make_shared<FakeSystemVersion>();
  std::shared_ptr<FakeFileSystem> files = std::make_shared<FakeFileSystem>();
  std::shared_ptr<FolderTree> tree = std::make_shared<FolderTree>();
  std::shared_ptr<FakeApplications> applications = std::make_shared<FakeApplications>();

 private:
  UtilityPorts before_;
};

}  // namespace vantile::testing
