#include "vantile/utility/folder_walk.h"

#include <cstring>
#include <utility>
#include <vector>

#include "vantile/foundation/stop_flag.h"

namespace vantile {
namespace {

// Folders held open at a time, the first one and the innermost ones.
constexpr std::size_t mostOpen = 32;

/// A folder on the way down: its own entries were all visited, some of its folders are still to be
/// entered.
struct Level {
  std::unique_ptr<OpenFolder> folder;    // null while closed to save its descriptor
  std::optional<FileIdentity> identity;  // known once it was closed
  std::string toEnter;                   // names, each with its NUL
  std::size_t next = 0;                  // in toEnter
  std::size_t pathLength = 0;            // of the folder's path, with a "/" at its end
};

class Walk {
 public:
  Walk(const char* path, std::int32_t* stop, const std::function<Visit(const WalkedEntry&)>& visit)
      : stop_(stop), visit_(visit), path_(path) {
    if (!path_.ends_with('/')) path_.push_back('/');
  }

  void run(std::unique_ptr<OpenFolder> folder) {
    push(std::move(folder));
    while (!levels_.empty() && !stopped()) {
      Level& level = levels_.back();
      if (level.next == level.toEnter.size()) {
        pop();
        continue;
      }
      const char* const name = level.toEnter.c_str() + level.next;
      const auto length = std::strlen(name);
      level.next += length + 1;
      auto child = level.folder->child(name);
      if (!child) continue;  // gone, closed to us, or a link by now
      path_.append(name, length).push_back('/');
      push(std::move(child));
    }
  }

 private:
  bool stopped() const { return readStopFlag(stop_) != 0; }

  void push(std::unique_ptr<OpenFolder> folder) {
    Level& level = levels_.emplace_back();
    level.folder = std::move(folder);
    level.pathLength = path_.size();
    visitEntries(level);
    closeOneFarther();
  }

  void visitEntries(Level& level) {
    while (!stopped() && level.folder->list(batch_) == Listed::some) {
      for (const FolderEntry& entry : batch_.entries) {
        if (stopped()) return;
        const WalkedEntry walked(*level.folder, entry, path_);
        if (visit_(walked) == Visit::enter && entry.kind == FileKind::folder)
          level.toEnter.append(entry.name, std::strlen(entry.name) + 1);
      }
    }
  }

  void closeOneFarther() {
    if (levels_.size() <= mostOpen) return;
    Level& farther = levels_[levels_.size() - mostOpen];
    if (!farther.folder) return;
    if (!farther.identity) farther.identity = farther.folder->identity();
    if (farther.identity) farther.folder.reset();
  }

  /// Leaves the innermost folder. The one around it, where closed, is found again as its parent;
  /// should the tree have been moved meanwhile, the walk goes on from the nearest one still open.
  void pop() {
    const auto left = std::move(levels_.back().folder);
    levels_.pop_back();
    if (levels_.empty()) return;
    Level& level = levels_.back();
    if (!level.folder) {
      level.folder = left->parent();
      if (!level.folder || level.folder->identity() != level.identity) {
        levels_.pop_back();
        while (!levels_.back().folder) levels_.pop_back();  // the first one is never closed
      }
    }
    path_.resize(levels_.back().pathLength);
  }

  std::int32_t* const stop_;
  const std::function<Visit(const WalkedEntry&)>& visit_;
  std::string path_;
  std::vector<Level> levels_;
  FolderBatch batch_;
};

}  // namespace

const char* WalkedEntry::path() const {
  if (path_.size() == folderLength_) path_.append(entry_.name);
  return path_.c_str();
}

bool walkFolder(FolderReader& reader, const char* path, std::int32_t* stop,
                const std::function<Visit(const WalkedEntry&)>& visit) {
  if (!path || readStopFlag(stop) != 0) return false;
  auto folder = reader.open(path);
  if (!folder) return false;
  Walk(path, stop, visit).run(std::move(folder));
  return true;
}

}  // namespace vantile
