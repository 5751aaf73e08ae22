#include "fakes/folder_tree.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace vantile::testing {

class OpenTreeFolder final : public OpenFolder {
 public:
  OpenTreeFolder(FolderTree& tree, FolderTree::Node& folder) : tree_(tree), folder_(folder) {
    tree_.mostOpenFolders = std::max(tree_.mostOpenFolders, ++tree_.openFolders);
    for (const auto& [name, node] : folder_.entries) listing_.push_back({name, node->kind});
  }
  ~OpenTreeFolder() override { --tree_.openFolders; }

  Listed list(FolderBatch& batch) override {
    batch.entries.clear();
    // Names of the batch before are gone, as they are on a real system.
    std::memset(batch.memory.get(), '?', batch.capacity);
    char* to = reinterpret_cast<char*>(batch.memory.get());
    while (next_ < listing_.size() && batch.entries.size() < tree_.batch) {
      if (next_ == folder_.listable) break;
      const auto& [name, kind] = listing_[next_++];
      std::memcpy(to, name.c_str(), name.size() + 1);
      batch.entries.push_back({to, kind});
      to += name.size() + 1;
    }
    if (!batch.entries.empty()) return Listed::some;
    return next_ == folder_.listable && next_ < listing_.size() ? Listed::failed : Listed::end;
  }

  std::unique_ptr<OpenFolder> child(const char* name) override {
    tree_.log.push_back("child " + std::string(name));
    if (tree_.beforeChild) tree_.beforeChild(name);
    return tree_.opened(FolderTree::find(&folder_, name));
  }

  std::unique_ptr<OpenFolder> parent() override {
    tree_.log.emplace_back("parent");
    return folder_.hasParent ? tree_.opened(folder_.parent) : nullptr;
  }

  std::optional<FileIdentity> identity() override {
    if (folder_.identityRefusals > 0) {
      --folder_.identityRefusals;
      return std::nullopt;
    }
    return FileIdentity{1, folder_.inode};
  }

  std::optional<FileFacts> facts(const char* name) override {
    tree_.log.push_back("facts " + std::string(name));
    if (tree_.beforeFacts) tree_.beforeFacts(name);
    const auto* const file = FolderTree::find(&folder_, name);
    if (!file || !file->hasFacts) return std::nullopt;
    return FileFacts{file->kind, file->bytes, file->links, {1, file->inode}};
  }

  std::optional<std::string> text(const char* name, std::size_t most) override {
    tree_.log.push_back("text " + std::string(name));
    const auto* const file = FolderTree::find(&folder_, name);
    if (!file || file->refused || file->kind != FileKind::regular) return std::nullopt;
    return file->contents.substr(0, most);
  }

 private:
  FolderTree& tree_;
  FolderTree::Node& folder_;
  std::vector<std::pair<std::string, FileKind>> listing_;  // as it was when opened
  std::size_t next_ = 0;
};

FolderTree::FolderTree(std::string rootPath)
    : rootPath_(std::move(rootPath)), root_(make(FileKind::folder)) {}

FolderTree::Node* FolderTree::make(FileKind kind) {
  Node& made = nodes_.emplace_back();
  made.kind = kind;
  made.inode = nodes_.size();
  return &made;
}

FolderTree::Node* FolderTree::find(Node* folder, std::string_view name) {
  for (const auto& [entry, node] : folder->entries)
    if (entry == name) return node;
  return nullptr;
}

std::pair<FolderTree::Node*, std::string> FolderTree::place(std::string_view path) {
  Node* folder = root_;
  for (auto slash = path.find('/'); slash != path.npos; slash = path.find('/')) {
    const auto name = path.substr(0, slash);
    path.remove_prefix(slash + 1);
    Node* inner = find(folder, name);
    if (!inner) {
      inner = make(FileKind::folder);
      inner->parent = folder;
      folder->entries.emplace_back(name, inner);
    }
    folder = inner;
  }
  return {folder, std::string(path)};
}

FolderTree::Node* FolderTree::at(std::string_view path, FileKind kind) {
  const auto [folder, name] = place(path);
  if (Node* const there = find(folder, name)) return there;
  Node* const made = make(kind);
  made->parent = folder;
  folder->entries.emplace_back(name, made);
  return made;
}

FolderTree::Node* FolderTree::node(std::string_view path) {
  if (path.empty()) return root_;
  const auto [folder, name] = place(path);
  Node* const found = find(folder, name);
  if (!found) throw std::logic_error("the tree has no " + std::string(path));
  return found;
}

void FolderTree::file(std::string_view path, std::uint64_t bytes) {
  at(path, FileKind::regular)->bytes = bytes;
}

void FolderTree::text(std::string_view path, std::string contents) {
  Node* const made = at(path, FileKind::regular);
  made->bytes = contents.size();
  made->contents = std::move(contents);
}

void FolderTree::hardLink(std::string_view existing, std::string_view path) {
  Node* const file = node(existing);
  const auto [folder, name] = place(path);
  folder->entries.emplace_back(name, file);
  ++file->links;
}

std::string FolderTree::chain(std::size_t depth, std::string_view name) {
  std::string path;
  Node* folder = root_;
  for (std::size_t level = 0; level < depth; ++level) {
    Node* const inner = make(FileKind::folder);
    inner->parent = folder;
    folder->entries.emplace_back(name, inner);
    folder = inner;
    path.append(path.empty() ? "" : "/").append(name);
  }
  return path;
}

void FolderTree::remove(std::string_view path) {
  const auto [folder, name] = place(path);
  std::erase_if(folder->entries, [&name](const auto& entry) { return entry.first == name; });
}

void FolderTree::move(std::string_view path, std::string_view to) {
  Node* const moved = node(path);
  remove(path);
  const auto [folder, name] = place(to);
  moved->parent = folder;
  folder->entries.emplace_back(name, moved);
}

void FolderTree::replaceByLink(std::string_view path) {
  const auto [folder, name] = place(path);
  for (auto& [entry, node] : folder->entries) {
    if (entry != name) continue;
    node = make(FileKind::symbolicLink);
    node->bytes = 10;
  }
}

std::unique_ptr<OpenFolder> FolderTree::opened(Node* folder) {
  if (!folder || folder->kind != FileKind::folder || folder->refused) return nullptr;
  return std::make_unique<OpenTreeFolder>(*this, *folder);
}

FolderTree::Node* FolderTree::nodeAt(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  if (path == rootPath_) return root_;
  if (!path.starts_with(rootPath_ + "/")) return nullptr;
  Node* node = root_;
  path.remove_prefix(rootPath_.size() + 1);
  while (node && !path.empty()) {
    const auto slash = path.find('/');
    node = find(node, path.substr(0, slash));
    path.remove_prefix(slash == path.npos ? path.size() : slash + 1);
  }
  return node;
}

std::unique_ptr<OpenFolder> FolderTree::open(const char* path) {
  log.push_back("open " + std::string(path));
  return opened(nodeAt(path));
}

std::optional<FileFacts> FolderTree::factsAt(std::string_view path) {
  const auto* const node = nodeAt(path);
  if (!node) return std::nullopt;
  return FileFacts{node->kind, node->bytes, node->links, {1, node->inode}};
}

}  // namespace vantile::testing
