#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/platform/linux/content_kinds.h"
#include "vantile/platform/linux/file_stamp.h"
#include "vantile/platform/linux/linux_folder.h"
#include "vantile/platform/parsers/usage_index.h"

namespace vantile {

/// Whether a change of the folder from now on shows in its times. FAT keeps none of its outermost
/// folder: 1980, or 1970.
bool showsChanges(const struct statx& status, std::int64_t now);

/// One way through all folders of a volume, which brings its index up to date. Folders that did not
/// change are not listed; what was counted in them is asked for its present size. Goes on in parts,
/// between which it holds no descriptor and the volume can be unmounted; a part may end within a
/// folder, whose contents change in the index when all of it was counted. However deep the tree, it
/// takes a bounded number of descriptors and no recursion. Symbolic links are not followed, other
/// mounts not entered. Not synchronised.
class UsagePass {
 public:
  struct Means {
    const InstalledFolders* installed = nullptr;
    ContentKinds* kinds = nullptr;
    std::function<std::int64_t()> presentSecond = vantile::presentSecond;
    /// Files in folders that did not change are asked again. Not so where an interrupted pass is
    /// taken up, which asked them a while ago.
    bool asksAgain = true;
    /// How long a part may hold the volume, about; one that is slow may take as long for a file.
    std::chrono::nanoseconds hold = std::chrono::hours(1);
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
  };

  enum class Came : std::uint8_t {
    toTheEnd,
    some,  ///< of the way: as far as it was to go
    stopped,
    nowhere  ///< the volume can't be read
  };

  UsagePass(UsageIndex& index, std::string mountPoint, Means means)
      : index_(index), mountPoint_(std::move(mountPoint)), means_(std::move(means)) {}

  /// Goes on until about `most` files and folders were asked, or the volume was held for as long as
  /// may be. `isStopped` is asked at every entry. At the end it stays there.
  Came run(std::size_t most, const std::function<bool()>& isStopped);

  std::size_t listed() const { return listed_; }  ///< folders, so far
  std::size_t asked() const { return asked_; }    ///< files and folders, so far
  /// Files and folders that are there and could not be asked or listed, for the next pass.
  std::size_t missed() const { return missed_; }

 private:
  using Number = UsageIndex::Number;

  /// A folder on the way down. Its own files were counted, some of its folders are to be entered.
  struct Level {
    std::unique_ptr<LinuxFolder> folder;  // null while closed
    FileIdentity identity;
    Number number = UsageIndex::none, next = UsageIndex::none;
    Installed installed = Installed::none;
  };

  /// What is being counted in the innermost folder.
  struct Counting {
    enum class How : std::uint8_t { nothing, listing, asking } how = How::nothing;
    std::uint64_t stamp = 0;
    std::size_t entry = 0;   // of the batch, the next one
    long place = 0;          // in the folder, behind the batch
    std::uint64_t read = 0;  // of the list of names to ask, in bytes
    std::string names;       // of these, the last ones
    std::size_t name = 0;    // where the next one of those stands
    bool isUnsure = false;   // whether that was all
    FolderSums sums;
    NameList files;
    std::string folders;
  };

  bool open();
  void letGo();
  Came goOn();
  bool begin();
  void enter();
  void startCounting(Level& level, const struct statx& status);
  bool count();
  bool list(const Level& level);
  bool ask(const Level& level);
  bool readNames(const Level& level);
  void take(const Level& level, const FolderEntry& entry);
  bool add(const Level& level, const char* name, UsageKind kind);
  bool isCut();
  void push(Level level);
  void pop();
  bool isHere(const struct statx& status) const;
  Installed installedAt(const Level& around, const std::string& name) const;
  std::optional<UsageKind> kindOf(const Level& level, std::string_view name) const;

  UsageIndex& index_;
  const std::string mountPoint_;
  const Means means_;
  const std::function<bool()>* isStopped_ = nullptr;
  std::size_t end_ = 0;  // of this part
  std::chrono::steady_clock::time_point until_;
  unsigned looks_ = 0;
  Came cut_ = Came::some;
  std::uint64_t device_ = 0, mount_ = 0;
  bool begun_ = false;
  std::vector<Level> levels_;
  FolderBatch batch_;
  Counting counting_;
  std::size_t listed_ = 0, asked_ = 0, missed_ = 0;
};

}  // namespace vantile
