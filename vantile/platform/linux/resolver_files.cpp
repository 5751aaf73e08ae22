#include "vantile/platform/linux/resolver_files.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <list>
#include <set>
#include <system_error>
#include <utility>

#include "vantile/platform/parsers/resolv_conf.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

constexpr std::size_t mostOfFile = 64 << 10;
constexpr int mostReads = 64;

// In a folder: what it means that a file is there, gone or another one. Of the file itself: that it
// was written, which its folder does not tell where it is mounted from elsewhere.
constexpr std::uint32_t inFolder = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                   IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t ofFile = IN_CLOSE_WRITE | IN_MODIFY;

std::vector<std::string> serversIn(const std::string& path) {
  const auto text = contentsOf(path, mostOfFile);
  return text ? parseResolvConf(*text) : std::vector<std::string>();
}

/// Where a path leads, and through which folders: those that it would show up in if another item
/// came to stand for a link on its way, for its last part, or for the first that is missing.
struct Way {
  std::set<std::filesystem::path> folders;
  std::filesystem::path file;  ///< where links have led; empty where that is no file
};

Way wayTo(const std::filesystem::path& path) {
  constexpr int mostLinks = 40;  // as the kernel follows
  Way way;
  std::error_code failed;
  auto at = path.root_path();
  std::list<std::filesystem::path> parts(path.begin(), path.end());
  for (int links = 0; !parts.empty();) {
    const auto part = std::move(parts.front());
    parts.pop_front();
    if (part.has_root_directory() || part.empty() || part == ".") continue;
    if (part == "..") {
      at = at.parent_path();
      continue;
    }
    const auto status = std::filesystem::symlink_status(at / part, failed);
    const bool isOnTheWay = std::filesystem::is_directory(status) && !parts.empty();
    if (!isOnTheWay) way.folders.insert(at);
    if (isOnTheWay || (std::filesystem::is_regular_file(status) && parts.empty())) {
      at /= part;
      continue;
    }
    const auto target = std::filesystem::read_symlink(at / part, failed);
    if (failed || ++links > mostLinks) return way;
    if (target.is_absolute()) at = target.root_path();
    parts.insert(parts.begin(), target.begin(), target.end());
  }
  way.file = std::move(at);
  return way;
}

}  // namespace

ResolverFiles::ResolverFiles(ResolverPaths paths, std::function<void()> changed)
    : paths_(std::move(paths)),
      changed_(std::move(changed)),
      instance_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  if (!instance_) return;
  watch();
  source_ = std::make_unique<DescriptorSource>(instance_.get(), [this] { onEvents(); });
}

const std::vector<std::string>& ResolverFiles::look() {
  auto configuration = stampOf(paths_.configuration);
  auto stub = stampOf(paths_.behindStub);
  const bool same = configuration == configurationStamp_ && stub == stubStamp_;
  if (std::exchange(looked_, true) && same) return servers_;
  configurationStamp_ = configuration;
  stubStamp_ = stub;
  servers_ = serversIn(paths_.configuration);
  if (!areStubs(servers_)) return servers_;
  auto real = serversIn(paths_.behindStub);
  if (!real.empty()) servers_ = std::move(real);
  return servers_;
}

/// Watches the files and every step that leads to them, as they stand now.
void ResolverFiles::watch() {
  std::vector<int> watches;
  const auto add = [&](const std::filesystem::path& path, std::uint32_t events) {
    const int number = ::inotify_add_watch(instance_.get(), path.c_str(), events | IN_MASK_ADD);
    if (number >= 0) watches.push_back(number);
  };
  for (const auto& path : {paths_.configuration, paths_.behindStub}) {
    const auto way = wayTo(path);
    for (const auto& folder : way.folders) add(folder, inFolder);
    if (!way.file.empty()) add(way.file, ofFile);
  }
  std::sort(watches.begin(), watches.end());
  watches.erase(std::unique(watches.begin(), watches.end()), watches.end());
  std::vector<int> stale;
  std::set_difference(watches_.begin(), watches_.end(), watches.begin(), watches.end(),
                      std::back_inserter(stale));
  for (const int number : stale) ::inotify_rm_watch(instance_.get(), number);
  watches_ = std::move(watches);
}

void ResolverFiles::onEvents() {
  alignas(inotify_event) std::array<char, 16384> buffer;
  for (int reads = 0; reads < mostReads; ++reads) {
    const auto size = ::read(instance_.get(), buffer.data(), buffer.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) break;
  }
  // Two writings may have one stamp.
  looked_ = false;
  watch();
  changed_();
}

}  // namespace vantile
