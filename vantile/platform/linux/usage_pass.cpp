#include "vantile/platform/linux/usage_pass.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace vantile {
namespace {

// Folders held open at a time: the innermost ones and the first.
constexpr std::size_t mostOpen = 32;
constexpr unsigned folderMask = STATX_TYPE | STATX_INO | STATX_MTIME | STATX_CTIME | STATX_MNT_ID;

/// Whether what was refused is not there for us, rather than the system short of something.
bool isAway(int error) {
  for (const int each : {ENOENT, ENOTDIR, ELOOP, EACCES, EPERM, ENAMETOOLONG})
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
  if (begun_ && levels_.empty()) return Came::toTheEnd;
  isStopped_ = &isStopped;
  end_ = asked_ + most;
  until_ = means_.now() + means_.hold;
  looks_ = 0;
  const auto came = open() && (begun_ || begin()) ? goOn() : Came::nowhere;
  letGo();
  return came;
}

UsagePass::Came UsagePass::goOn() {
  while (!levels_.empty()) {
    if (isCut()) return cut_;
    if (counting_.how != Counting::How::nothing) {
      if (!count()) return cut_;
    } else if (levels_.back().next == UsageIndex::none) {
      pop();
    } else {
      enter();
    }
  }
  return Came::toTheEnd;
}

/// Whether the part ends here. A look at the clock now and then: it costs a tenth of one at a file.
bool UsagePass::isCut() {
  constexpr unsigned often = 8;
  if ((*isStopped_)()) {
    cut_ = Came::stopped;
    return true;
  }
  cut_ = Came::some;
  return asked_ >= end_ || (++looks_ % often == 0 && means_.now() >= until_);
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
    const bool isGone = !level.folder && isAway(errno);
    if (!level.folder || level.folder->identity() != level.identity) {
      missed_ += !isGone;
      levels_.resize(depth);
      counting_.how = Counting::How::nothing;
      break;
    }
    if (depth >= 2) around.folder.reset();
  }
  if (counting_.how == Counting::How::listing)
    ::lseek(levels_.back().folder->descriptor(), counting_.place, SEEK_SET);
  return true;
}

void UsagePass::letGo() {
  if (!levels_.empty() && levels_.back().folder && counting_.how == Counting::How::listing)
    counting_.place = ::lseek(levels_.back().folder->descriptor(), 0, SEEK_CUR);
  for (Level& level : levels_) level.folder.reset();
}

bool UsagePass::begin() {
  Level& first = levels_.front();
  const auto status = statusOf(first.folder->descriptor(), "", AT_EMPTY_PATH, folderMask);
  if (!status) return false;
  startCounting(first, *status);
  begun_ = true;
  return true;
}

/// Goes into the next folder of the innermost one.
void UsagePass::enter() {
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
    const bool hasNothingToAsk = !means_.asksAgain || index_.namesSize(level.number) == 0;
    if (stands && hasNothingToAsk && index_.first(level.number) == UsageIndex::none) {
      around.next = next;
      return;
    }
    level.folder = around.folder->folder(name.c_str());
  } else if (there) {
    errno = ENOENT;
  }
  const bool isGone = !level.folder && isAway(errno);
  const auto status = level.folder
                          ? statusOf(level.folder->descriptor(), "", AT_EMPTY_PATH, folderMask)
                          : std::nullopt;
  around.next = next;
  if (status && isHere(*status)) {
    level.identity = identityOf(*status);
    level.installed = installedAt(around, name);
    push(std::move(level));
    startCounting(levels_.back(), *status);
  } else if (isGone || status) {
    index_.clear(level.number);
  } else {
    ++missed_;
  }
}

void UsagePass::startCounting(Level& level, const struct statx& status) {
  using How = Counting::How;
  const auto stamp = stampOf(status);
  const bool stands = index_.stamp(level.number) == stamp;
  counting_ = Counting();
  batch_.entries.clear();
  if (!stands) {
    ++listed_;
    counting_.how = How::listing;
    counting_.stamp = showsChanges(status, means_.presentSecond()) ? stamp : 0;
  } else if (means_.asksAgain && index_.namesSize(level.number) > 0) {
    counting_.how = How::asking;
  } else {
    level.next = index_.first(level.number);
  }
}

/// Counts the innermost folder. False where the part ended before that did.
bool UsagePass::count() {
  Level& level = levels_.back();
  if (counting_.how == Counting::How::listing ? !list(level) : !ask(level)) return false;
  counting_.how = Counting::How::nothing;
  level.next = index_.first(level.number);
  return true;
}

/// Counts all that is in the folder anew.
bool UsagePass::list(const Level& level) {
  auto listed = Listed::some;
  while (listed == Listed::some) {
    while (counting_.entry < batch_.entries.size()) {
      take(level, batch_.entries[counting_.entry++]);
      if (isCut()) return false;
    }
    listed = level.folder->list(batch_);
    counting_.entry = 0;
  }
  if (listed == Listed::failed) {
    missed_ += !isAway(errno);
    index_.setStamp(level.number, 0);  // with what was known before
    return true;
  }
  index_.setFolders(level.number, counting_.folders);
  index_.setContents(level.number, counting_.isUnsure ? 0 : counting_.stamp, counting_.sums,
                     std::move(counting_.files));
  return true;
}

void UsagePass::take(const Level& level, const FolderEntry& entry) {
  if (entry.kind == FileKind::folder) {
    counting_.folders.append(entry.name).push_back('\0');
  } else if (entry.kind == FileKind::regular) {
    const auto kind = kindOf(level, entry.name);
    if (kind && add(level, entry.name, *kind)) counting_.files.append(entry.name);
  }
}

/// Counts anew what was counted in the folder before.
bool UsagePass::ask(const Level& level) {
  while (readNames(level)) {
    while (counting_.name < counting_.names.size()) {
      const char* const name = counting_.names.data() + counting_.name;  // a NUL follows each
      counting_.name += std::strlen(name) + 1;
      // A file that goes changes its folder's time: otherwise the name was never there.
      const auto kind = kindOf(level, name);
      counting_.isUnsure |= !kind || !add(level, name, *kind);
      if (isCut()) return false;
    }
  }
  if (counting_.isUnsure) {
    index_.setStamp(level.number, 0);  // with what was known before
  } else if (counting_.sums != index_.sums(level.number)) {
    index_.setSums(level.number, counting_.sums);
  }
  return true;
}

/// Whether there are names left to ask. Where they can't be had the folder is to be listed again.
bool UsagePass::readNames(const Level& level) {
  if (counting_.name < counting_.names.size()) return true;
  counting_.name = 0;
  const bool areGivenUp = index_.stamp(level.number) == 0;  // meanwhile
  if (!areGivenUp && counting_.read == index_.namesSize(level.number)) return false;
  if (areGivenUp || !index_.readNames(level.number, counting_.read, counting_.names)) {
    counting_.names.clear();
    counting_.isUnsure = true;
    return false;
  }
  counting_.read += counting_.names.size();
  return true;
}

/// Whether it is a file. Where that can't be told the folder is to be listed again.
bool UsagePass::add(const Level& level, const char* name, UsageKind kind) {
  ++asked_;
  struct stat status;  // of every file that counts: the smallest record that the kernel gives
  if (::fstatat(level.folder->descriptor(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    counting_.isUnsure |= errno != ENOENT;
    missed_ += !isAway(errno);
    return false;
  }
  if (!S_ISREG(status.st_mode)) return false;
  const auto blocks = static_cast<std::uint64_t>(status.st_blocks);
  if (status.st_nlink > 1) {
    counting_.sums.linked.push_back({status.st_ino, blocks, kind});
  } else {
    counting_.sums.blocks[static_cast<std::size_t>(kind)] += blocks;
  }
  return true;
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
  ++missed_;
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
  if (!path.ends_with('/')) path += '/';  // as the one of "/" does
  for (std::size_t depth = 1; depth < levels_.size(); ++depth)
    path.append(index_.name(levels_[depth].number)).append("/");
  return means_.installed->at(path.append(name));
}

std::optional<UsageKind> UsagePass::kindOf(const Level& level, std::string_view name) const {
  return level.installed == Installed::here ? UsageKind::applications : means_.kinds->of(name);
}

}  // namespace vantile
