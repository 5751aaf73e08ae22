#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/platform/folder_reader.h"

namespace vantile::testing {

/// A tree of folders in memory, its root at a path of its own. Whatever stands in it can be made to
/// fail, vanish or move, also while it is being read. Not synchronised.
class FolderTree final : public FolderReader {
 public:
  explicit FolderTree(std::string rootPath = "/root");

  // Building. Paths are relative to the root, folders around them are made.
  void folder(std::string_view path) { at(path, FileKind::folder); }
  void file(std::string_view path, std::uint64_t bytes = 0);
  void text(std::string_view path, std::string contents);
  void link(std::string_view path) { at(path, FileKind::symbolicLink); }
  void other(std::string_view path) { at(path, FileKind::other); }
  void hardLink(std::string_view existing, std::string_view path);
  /// A chain of `depth` folders called `name`, each in the one before; the path of the innermost.
  std::string chain(std::size_t depth, std::string_view name = "d");

  // Changing, also from inside a call of the reader.
  void remove(std::string_view path);
  void move(std::string_view path, std::string_view to);
  /// Puts a link of 10 bytes into the place of whatever goes by the name.
  void replaceByLink(std::string_view path);

  // Failures.
  void refuse(std::string_view path) { node(path)->refused = true; }
  void refuseIdentityOnce(std::string_view path) { node(path)->identityRefusals = 1; }
  void refuseFacts(std::string_view path) { node(path)->hasFacts = false; }
  void refuseParentOf(std::string_view path) { node(path)->hasParent = false; }
  void failListingAfter(std::string_view path, std::size_t entries) {
    node(path)->listable = entries;
  }

  /// Called before a folder is entered, and before facts are told, with the name.
  std::function<void(const std::string&name)> beforeChild, beforeFacts;
  /// How many entries come in one batch.
  std::size_t batch = 3;

  /// What was asked: "open PATH", "child NAME", "parent", "text NAME", "facts NAME".
  std::vector<std::string> log;
  std::size_t openFolders = 0, mostOpenFolders = 0;

  std::unique_ptr<OpenFolder> open(const char* path) override;
  /// Facts of what stands at an absolute path, the root included; nothing where nothing does.
  std::optional<FileFacts> factsAt(std::string_view path);

 private:
  friend class OpenTreeFolder;

  struct Node {
    FileKind kind = FileKind::folder;
    std::uint64_t inode = 0, bytes = 0, links = 1;
    std::string contents;
    std::vector<std::pair<std::string, Node*>> entries;
    Node* parent = nullptr;
    bool refused = false, hasFacts = true, hasParent = true;
    int identityRefusals = 0;
    std::size_t listable = std::numeric_limits<std::size_t>::max();
  };

  Node* make(FileKind kind);
  Node* at(std::string_view path, FileKind kind);
  Node* node(std::string_view path);
  /// The folder around a path, and the name in it.
  std::pair<Node*, std::string> place(std::string_view path);
  static Node* find(Node* folder, std::string_view name);
  Node* nodeAt(std::string_view path);
  std::unique_ptr<OpenFolder> opened(Node* folder);

  const std::string rootPath_;
  std::deque<Node>
      nodes_;  // of all that ever was: nothing dangles, and nothing recurses at the end
  Node* const root_;
};

}  // namespace vantile::testing
