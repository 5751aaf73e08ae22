#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "vantile/platform/file_attributes.h"

#include "fakes/folder_tree.h"

namespace vantile::testing {

/// A disk in memory, its root at "/disk": folders as a `FolderTree` has them, and the attributes
/// of what stands in them.
class FakeDisk final : public FileSystem {
 public:
  FakeDisk() : tree(std::make_shared<FolderTree>("/disk")) {}

  std::optional<FileAttributes> attributes(const std::string& path, bool followLink) override {
    const auto facts = factsOf(path, followLink);
    if (!facts) return std::nullopt;
    FileAttributes attributes;
    attributes.facts = *facts;
    if (const auto found = modified.find(path); found != modified.end())
      attributes.modified = found->second;
    return attributes;
  }

  /// The file that opening the path would open.
  std::optional<FileIdentity> identityOf(const std::string& path) const {
    const auto facts = factsOf(path, true);
    return facts ? std::optional(facts->identity) : std::nullopt;
  }

  const std::shared_ptr<FolderTree> tree;
  /// Where symbolic links lead, by their path; both absolute.
  std::map<std::string, std::string> targets;
  std::map<std::string, std::chrono::sys_time<std::chrono::nanoseconds>> modified;

 private:
  std::optional<FileFacts> factsOf(const std::string& path, bool followLink) const {
    const auto facts = tree->factsAt(path);
    if (!facts || facts->kind != FileKind::symbolicLink || !followLink) return facts;
    const auto target = targets.find(path);
    return target == targets.end() ? std::nullopt : tree->factsAt(target->second);
  }
};

}  // namespace vantile::testing
