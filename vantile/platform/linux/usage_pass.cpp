#include "vantile/platform/linux/usage_pass.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace vantile {
namespace {

// Folders held open at a time: the innermost ones and the first.
constexpr std::size_t mostOpen = 32;
constexpr unsigned folderMask = STATX_TYPE | STATX_INO | STATX_MTIME | STATX_CTIME | STATX_MNT_ID;

/// Whether what was refused is not there for us, rather than the system short of something.
bool isAway(int error) {
  for (const int each : {ENOENT, ENOTDIR, ELOOP, EACCES, EPERM, ESTALE, ENAMETOOLONG})
    if (error == each) return true;
  return false;
}

/// By what a folder is seen to have changed: both of its times, since a program that unpacks sets
/// one back, and some file systems do not keep the other.
std::uint64_t stampOf(const struct statx& status) {
  std::uint64_t stamp = 0;
  for (const auto& time : {status.stx_mtime, status.stx_ctime})
    for (const auto number :
         {static_cast<std::uint64_t>(time.tv_sec), static_cast<std::uint64_t>(time.tv_nsec)})
      stamp = (stamp ^ number) * 0x9e3779b97f4a7c15 + (stamp >> 29);
  return stamp == 0 ? 1 : stamp;
}

}  // namespace

bool showsChanges(const struct statx& status, std::int64_t now) {
  constexpr std::int64_t endOf1980 = 347155200;
  return std::max(status.stx_mtime.tv_sec, status.stx_ctime.tv_sec) > endOf1980 &&
         isSettled(status.stx_mtime.tv_sec, now) && isSettled(status.stx_ctime.tv_sec, now);
}

UsagePass::Came UsagePass::run(std::size_t most, const std::function<bool()>& isStopped) {
  isStopped_ = &isStopped;
  const auto end = asked_ + most;
  if (!open()) {
    letGo();
    return Came::nowhere;
  }
  auto came = begun_ || begin() ? Came::toTheEnd : Came::stopped;
  while (came == Came::toTheEnd && !levels_.empty()) {
    if (isStopped()) {
      came = Came::stopped;
    } else if (asked_ >= end) {
      came = Came::some;
    } else if (levels_.back().next == UsageIndex::none) {
      pop();
    } else if (!enter()) {
      came = Came::stopped;
    }
  }
  letGo();
  return came;
}

/// Opens the volume and the way to where the pass is, as far as it is still there.
bool UsagePass::open() {
  auto folder = LinuxFolder::at(mountPoint_.c_str(), O_NOFOLLOW);
  const auto status =
      folder ? statusOf(folder->descriptor(), "", AT_EMPTY_PATH, folderMask) : std::nullopt;
  if (!status) return false;
  if (!begun_ && levels_.empty())
    levels_.push_back({nullptr, identityOf(*status), UsageIndex::root, UsageIndex::none,
                       means_.installed->at(mountPoint_)});
  if (levels_.front().identity != identityOf(*status)) return false;
  device_ = identityOf(*status).device;
  mount_ = status->stx_mask & STATX_MNT_ID ? status->stx_mnt_id : 0;
  levels_.front().folder = std::move(folder);
  for (std::size_t depth = 1; depth < levels_.size(); ++depth) {
    Level& level = levels_[depth];
    Level& around = levels_[depth - 1];
    level.folder = around.folder->folder(std::string(index_.name(level.number)).c_str());
    if (!level.folder || level.folder->identity() != level.identity) {
      levels_.resize(depth);
      break;
    }
    if (depth >= 2) around.folder.reset();
  }
  return true;
}

void UsagePass::letGo() {
  for (Level& level : levels_) level.folder.reset();
}

bool UsagePass::begin() {
  Level& first = levels_.front();
  const auto status = statusOf(first.folder->descriptor(), "", AT_EMPTY_PATH, folderMask);
  if (!status || !count(first, *status)) return false;
  first.next = index_.first(first.number);
  begun_ = true;
  return true;
}

/// Goes into the next folder of the innermost one. False where the pass was stopped meanwhile; then
/// the folder is still the next one.
bool UsagePass::enter() {
  Level& around = levels_.back();
  Level level;
  level.number = around.next;
  const std::string name(index_.name(level.number));
  const auto next = index_.next(level.number);
  ++asked_;
  // Asks no other file system's server, which may not answer, and mounts nothing.
  const auto there = statusOf(around.folder->descriptor(), name.c_str(),
                              AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, folderMask);
  if (there && S_ISDIR(there->stx_mode) && isHere(*there)) {
    const bool stands = index_.stamp(level.number) == stampOf(*there);
    const bool hasNothingToAsk = !means_.asksAgain || index_.files(level.number).empty();
    if (stands && hasNothingToAsk && index_.first(level.number) == UsageIndex::none) {
      around.next = next;
      return true;
    }
    level.folder = around.folder->folder(name.c_str());
  } else if (there) {
    errno = ENOENT;
  }
  const bool isGone = !level.folder && isAway(errno);
  const auto status = level.folder
                          ? statusOf(level.folder->descriptor(), "", AT_EMPTY_PATH, folderMask)
                          : std::nullopt;
  const bool isEntered = status && isHere(*status);
  if (isEntered) {
    level.identity = identityOf(*status);
    level.installed = installedAt(around, name);
    if (!count(level, *status)) return false;
    level.next = index_.first(level.number);
  } else if (isGone || status) {
    index_.clear(level.number);
  }
  around.next = next;
  if (isEntered) push(std::move(level));
  return true;
}

bool UsagePass::count(Level& level, const struct statx& status) {
  const auto stamp = stampOf(status);
  if (index_.stamp(level.number) == stamp) return !means_.asksAgain || ask(level);
  return list(level, showsChanges(status, means_.presentSecond()) ? stamp : 0);
}

/// Counts all that is in the folder anew. False where that did not come to an end: then nothing
/// changed.
bool UsagePass::list(Level& level, std::uint64_t stamp) {
  FolderContents contents;
  std::string folders;
  auto listed = Listed::some;
  ++listed_;
  while ((listed = level.folder->list(batch_)) == Listed::some) {
    for (const FolderEntry& entry : batch_.entries) {
      if ((*isStopped_)()) return false;
      if (entry.kind == FileKind::folder) {
        folders.append(entry.name).push_back('\0');
      } else if (entry.kind == FileKind::regular) {
        if (const auto kind = kindOf(level, entry.name)) add(level, entry.name, *kind, contents);
      }
    }
  }
  if (listed == Listed::failed) {
    index_.setStamp(level.number, 0);  // with what was known before
    return true;
  }
  index_.setFolders(level.number, folders);
  index_.setContents(level.number, stamp, contents);
  return true;
}

/// Counts anew what was counted in the folder before.
bool UsagePass::ask(Level& level) {
  const auto before = index_.contents(level.number);
  FolderContents contents;
  bool isWhole = true;
  forEachName(before.files, [&](std::string_view name) {
    if (!isWhole || (*isStopped_)()) {
      isWhole = false;
    } else if (const auto kind = kindOf(level, name)) {
      add(level, name.data(), *kind, contents);  // a NUL follows each name
    }
  });
  if (isWhole && contents != before)
    index_.setContents(level.number, index_.stamp(level.number), contents);
  return isWhole;
}

void UsagePass::add(const Level& level, const char* name, UsageKind kind,
                    FolderContents& contents) {
  ++asked_;
  struct stat status;  // of every file that counts: the smallest record that the kernel gives
  if (::fstatat(level.folder->descriptor(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (!S_ISREG(status.st_mode)) return;
  const auto blocks = static_cast<std::uint64_t>(status.st_blocks);
  contents.files.append(name).push_back('\0');
  if (status.st_nlink > 1) {
    contents.linked.push_back({status.st_ino, blocks, kind});
  } else {
    contents.blocks[static_cast<std::size_t>(kind)] += blocks;
  }
}

void UsagePass::push(Level level) {
  levels_.push_back(std::move(level));
  if (levels_.size() > mostOpen) levels_[levels_.size() - mostOpen].folder.reset();
}

/// Leaves the innermost folder. The one around it, where closed, is found again as its parent;
/// should the tree have been moved meanwhile, the pass goes on from the nearest one still open.
void UsagePass::pop() {
  const auto left = std::move(levels_.back().folder);
  levels_.pop_back();
  if (levels_.empty() || levels_.back().folder) return;
  levels_.back().folder = left->around();
  if (levels_.back().folder && levels_.back().folder->identity() == levels_.back().identity) return;
  levels_.pop_back();
  while (!levels_.back().folder) levels_.pop_back();  // the first one is never closed
}

/// Whether that is a part of the volume: not of another file system or subvolume, nor mounted here
/// from elsewhere in the same one.
bool UsagePass::isHere(const struct statx& status) const {
  if (identityOf(status).device != device_) return false;
  return mount_ == 0 || (status.stx_mask & STATX_MNT_ID) == 0 || status.stx_mnt_id == mount_;
}

Installed UsagePass::installedAt(const Level& around, const std::string& name) const {
  if (around.installed != Installed::below) return around.installed;
  std::string path = mountPoint_;
  for (std::size_t depth = 1; depth < levels_.size(); ++depth)
    path.append("/").append(index_.name(levels_[depth].number));
  return means_.installed->at(path.append("/").append(name));
}

std::optional<UsageKind> UsagePass::kindOf(const Level& level, std::string_view name) const {
  return level.installed == Installed::here ? UsageKind::applications : means_.kinds->of(name);
}

}  // namespace vantile
