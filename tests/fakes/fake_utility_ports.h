#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/utility/utility_ports.h"

#include "fakes/fake_disk.h"
#include "fakes/folder_tree.h"

namespace vantile::testing {

/// Folders that no machine has.
class FakeStandardFolders final : public StandardFolders {
 public:
  std::string home() override { return homeFolder; }
  std::string downloads() override { return homeFolder + "/Down"; }
  std::string library() override { return homeFolder + "/Lib"; }
  std::string preferences() override { return homeFolder + "/Prefs"; }
  std::string applications() override { return applicationsFolder; }
  std::string trash() override { return trashFolder; }
  void makeTrash() override {
    ++trashesMade;
    if (onMakeTrash) onMakeTrash();
  }

  std::string homeFolder = "/users/ada", applicationsFolder = "/apps";
  std::string trashFolder = "/users/ada/Bin";
  int trashesMade = 0;
  std::function<void()> onMakeTrash;
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
    if (onAsked) onAsked(name);
    if (kind == FileKind::folder) return name.ends_with(".app");
    return kind == FileKind::regular && name.ends_with(".desktop") && contents() == "application";
  }

  bool isApplicationExtension(std::string_view extension) override {
    return extension == "app" || extension == "desktop";
  }
  std::optional<std::string> displayName(const std::string& path) override {
    const auto found = names.find(path);
    return found == names.end() ? std::nullopt : found->second;
  }

  std::vector<std::string> asked;
  std::function<void(std::string_view name)> onAsked;
  std::map<std::string, std::optional<std::string>> names;  ///< that users see, by path
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

  /// Puts the folders on a disk, and looks at files and folders there.
  void standOn(const std::shared_ptr<FakeDisk>& disk) {
    folders->homeFolder = "/disk/home";
    folders->applicationsFolder = "/disk/apps";
    folders->trashFolder = "/disk/home/Bin";
    UtilityPorts::installed().files = disk;
    UtilityPorts::installed().reader = disk->tree;
  }

  std::shared_ptr<FakeStandardFolders> folders = std::make_shared<FakeStandardFolders>();
  std::shared_ptr<FakeSystemVersion> version = std::make_shared<FakeSystemVersion>();
  std::shared_ptr<FakeFileSystem> files = std::make_shared<FakeFileSystem>();
  std::shared_ptr<FolderTree> tree = std::make_shared<FolderTree>();
  std::shared_ptr<FakeApplications> applications = std::make_shared<FakeApplications>();

 private:
  UtilityPorts before_;
};

}  // namespace vantile::testing
