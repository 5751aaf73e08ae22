#include "vantile/platform/linux/launched_applications.h"

#include <dirent.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

#include "vantile/platform/linux/process_folder.h"
#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/account.h"
#include "vantile/platform/posix/folder_listing.h"

namespace vantile {
namespace {

constexpr unsigned firstLooks = 8;
constexpr std::uint64_t turns = 16;
constexpr std::size_t mostKept = 128;
constexpr std::size_t longestEnvironment = 256u << 10;
constexpr std::size_t longestPath = 4096;

/// A process that ended is there until its parent asks how.
bool hasEnded(const PidStat& stat) {
  return stat.state == 'Z' || stat.state == 'X' || stat.state == 'x';
}

std::string linkIn(int folder, const char* name) {
  char path[longestPath];
  const auto size = ::readlinkat(folder, name, path, sizeof path);
  if (size <= 0) return {};
  return std::string(executableOf({path, static_cast<std::size_t>(size)}));
}

/// The environment's file comes a page at a time.
std::string_view environmentIn(int folder, std::span<char> buffer) {
  const Descriptor file(::openat(folder, "environ", O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  std::size_t size = 0;
  while (file && size < buffer.size()) {
    const auto count = ::read(file.get(), buffer.data() + size, buffer.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    size += static_cast<std::size_t>(count);
  }
  return {buffer.data(), size};
}

std::optional<std::string> environmentVariable(const char* name) {
  const char* const value = ::getenv(name);
  return value ? std::optional<std::string>(value) : std::nullopt;
}

}  // namespace

LinuxLaunchedApplications::LinuxLaunchedApplications(const LinuxRoots& roots, std::string home,
                                                     DesktopIndex::Environment environment,
                                                     RecentStats& recent)
    : proc_(roots.proc),
      recent_(recent),
      index_(std::move(home), std::move(environment)),
      buffer_(std::make_unique_for_overwrite<char[]>(longestEnvironment)) {}

std::optional<std::vector<LaunchedApplication>> LinuxLaunchedApplications::list() {
  const std::lock_guard lock(mutex_);
  if (index_.refresh())
    for (auto& [pid, known] : known_) resolve(pid, known);
  // Open until the end: what it lists is opened by way of it.
  const FolderListing listing(::opendir(proc_.c_str()));
  if (!listing) return std::nullopt;
  folder_ = ::dirfd(listing.get());
  takeListing(listing.get());
  renewParents();

  const auto processes = candidates();
  kept_ = 0;
  for (auto& [pid, known] : known_) {
    if (!known.isLeader) known.file = {};
    if (known.file) ++kept_;
    known.isLeader = false;
  }
  std::vector<LaunchedApplication> applications;
  for (const auto& leader : applicationLeaders(processes)) {
    const auto pid = processes[leader.process].pid;
    known_.at(pid).isLeader = true;
    const auto& entry = index_[leader.entry];
    applications.push_back({entry.name, entry.path, pid});
  }
  return applications;
}

void LinuxLaunchedApplications::rest() {
  const std::lock_guard lock(mutex_);
  for (auto& [pid, known] : known_) known.file = {};
  kept_ = 0;
}

void LinuxLaunchedApplications::takeListing(DIR* listing) {
  ++looks_;
  recent_.begin();
  while (const dirent* const entry = ::readdir(listing)) {
    const char* const name = entry->d_name;
    if (name[0] < '1' || name[0] > '9') continue;
    if (const auto pid = wholeNumber<std::int32_t>(name)) see(*pid, name, entry->d_ino);
  }
  std::erase_if(known_, [this](const auto& each) { return each.second.listed != looks_; });
}

void LinuxLaunchedApplications::see(std::int32_t pid, const char* name, std::uint64_t inode) {
  const auto [place, isNew] = known_.try_emplace(pid);
  Known& known = place->second;
  known.listed = looks_;
  if (isNew || known.looks < firstLooks) {
    known.inode = inode;
    lookAt(pid, name, known);
  } else if (known.inode != inode || known.isLeader) {
    if (known.inode != inode) known.file = {};
    known.inode = inode;
    check(pid, name, known);
  } else if (static_cast<std::uint64_t>(pid) % turns == looks_ % turns &&
             linkIn(folder_, (std::string(name) + "/exe").c_str()) != known.executable) {
    lookAt(pid, name, known);
  }
}

/// Looks at the process as a whole. One that is gone, or whose facts can't be read, is nobody's.
void LinuxLaunchedApplications::lookAt(std::int32_t pid, const char* name, Known& known) {
  Known now;
  now.inode = known.inode;
  now.listed = known.listed;
  const Descriptor folder = openProcessFolder(folder_, name);
  struct stat owner = {};
  const bool isOwn = folder && ::fstat(folder.get(), &owner) == 0 && owner.st_uid == ::getuid();
  const auto text =
      isOwn ? readOnce(folder.get(), "stat", {buffer_.get(), allOfPidStat}) : std::nullopt;
  if (const auto stat = text ? parsePidStat(*text) : std::nullopt) {
    now.startTicks = stat->startTicks;
    now.parent = stat->parent;
    now.image = {std::string(stat->name), stat->codeStart, stat->stackStart};
    now.isMine = !hasEnded(*stat);
  }
  // Another process of this number begins anew.
  const bool isSame = now.startTicks == known.startTicks;
  now.looks = (isSame ? known.looks : 0) + 1;
  now.isLeader = isSame && known.isLeader;
  if (now.isMine) readEvidence(folder.get(), now);
  known = std::move(now);
  resolve(pid, known);
}

void LinuxLaunchedApplications::readEvidence(int folder, Known& known) {
  if (const auto groups = readOnce(folder, "cgroup", {buffer_.get(), longestPath * 4}))
    known.unit = applicationUnitOf(*groups);
  known.launch = desktopLaunchOf(environmentIn(folder, {buffer_.get(), longestEnvironment}));
  known.executable = linkIn(folder, "exe");
}

/// Leaders are read at each look, so theirs are kept open, some of them: a host needs descriptors,
/// too.
std::optional<std::string_view> LinuxLaunchedApplications::readStat(const char* name,
                                                                    Known& known) {
  const std::span<char> buffer(buffer_.get(), allOfPidStat);
  const auto path = std::string(name) + "/stat";
  if (!known.file && known.isLeader && kept_ < mostKept) {
    known.file = Descriptor(::openat(folder_, path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (known.file) ++kept_;
  }
  if (!known.file) return readOnce(folder_, path.c_str(), buffer);
  return readAgain(known.file.get(), buffer);
}

/// Looks whether the process is what it was, and at it as a whole where it is not.
void LinuxLaunchedApplications::check(std::int32_t pid, const char* name, Known& known) {
  const auto now = sinceBoot();
  const auto text = readStat(name, known);
  const auto stat = text ? parsePidStat(*text) : std::nullopt;
  if (!known.isMine || !stat || hasEnded(*stat) || stat->startTicks != known.startTicks ||
      stat->name != known.image.name || stat->codeStart != known.image.codeStart ||
      stat->stackStart != known.image.stackStart)
    return lookAt(pid, name, known);
  known.parent = stat->parent;
  if (known.isLeader) recent_.put({*stat, now});
}

/// A process whose parent ended has another one.
void LinuxLaunchedApplications::renewParents() {
  for (auto& [pid, known] : known_) {
    if (!known.isMine || known.programEntry == LaunchedProcess::none || known.parent <= 1) continue;
    const auto parent = known_.find(known.parent);
    if (parent == known_.end() || parent->second.startTicks > known.startTicks)
      check(pid, std::to_string(pid).c_str(), known);
  }
}

/// Which entries the process's facts stand for at present.
void LinuxLaunchedApplications::resolve(std::int32_t pid, Known& known) {
  constexpr auto none = LaunchedProcess::none;
  known.unitEntry = known.launchEntry = known.programEntry = none;
  if (!known.isMine) return;
  if (known.unit) {
    for (const auto& identifier : known.unit->identifiers) {
      const auto entry = index_.withIdentifier(identifier);
      // The session's own parts are services, too.
      if (!entry || (known.unit->isService && !index_[*entry].isShown)) continue;
      known.unitEntry = *entry;
      break;
    }
  }
  if (known.launch && known.launch->pid == pid)
    known.launchEntry = index_.at(known.launch->entry).value_or(none);
  if (!known.executable.empty())
    known.programEntry = index_.running(known.executable).value_or(none);
}

/// The processes that are known to be of an application, by pid.
std::vector<LaunchedProcess> LinuxLaunchedApplications::candidates() const {
  constexpr auto none = LaunchedProcess::none;
  std::vector<LaunchedProcess> found;
  found.reserve(known_.size());
  for (const auto& [pid, known] : known_) {
    if (known.unitEntry == none && known.launchEntry == none && known.programEntry == none)
      continue;
    found.push_back({pid, known.parent, known.startTicks, known.unit ? &known.unit->group : nullptr,
                     known.unitEntry, known.launchEntry, known.programEntry,
                     known.executable.empty() ? nullptr : &known.executable});
  }
  return found;
}

std::shared_ptr<LaunchedApplications> systemLaunchedApplications() {
  static auto& applications =
      *new std::shared_ptr<LaunchedApplications>(std::make_shared<LinuxLaunchedApplications>(
          LinuxRoots(), homeOfAccount(), environmentVariable, RecentStats::shared()));
  return applications;
}

}  // namespace vantile
