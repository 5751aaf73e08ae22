#include "vantile/utility/folder_functions.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "vantile/foundation/guard.h"
#include "vantile/utility/folder_walk.h"
#include "vantile/utility/paths.h"
#include "vantile/utility/utility_ports.h"

namespace vantile {
namespace {

constexpr std::size_t longestDesktopEntry = 1 << 20;

struct IdentityHash {
  std::size_t operator()(const FileIdentity& file) const {
    return std::hash<std::uint64_t>()(file.inode ^ (file.device << 48));
  }
};

bool isApplication(const WalkedEntry& entry) {
  return UtilityPorts::installed().applications->isApplication(
      entry.name(), entry.kind(), [&entry] { return entry.text(longestDesktopEntry); });
}

bool isUnfinishedDownload(const WalkedEntry& entry) {
  static constexpr std::array<std::string_view, 4> unfinished = {"download", "crdownload", "part",
                                                                 "opdownload"};
  if (entry.kind() != FileKind::regular && entry.kind() != FileKind::folder) return false;
  return std::find(unfinished.begin(), unfinished.end(), pathExtension(entry.name())) !=
         unfinished.end();
}

/// Walks and keeps every exception inside. 0 when the walk was begun, else -1.
std::int32_t traverse(const char* path, std::int32_t* stop,
                      const std::function<Visit(const WalkedEntry&)>& visit) noexcept {
  bool begun = false;
  guarded("a folder traversal",
          [&] { begun = walkFolder(*UtilityPorts::installed().reader, path, stop, visit); });
  return begun ? 0 : -1;
}

}  // namespace
}  // namespace vantile

using vantile::FileIdentity;
using vantile::FileKind;
using vantile::Visit;
using vantile::WalkedEntry;

std::int32_t trv_all_app(const char* path, std::int32_t, folder_item_callback callback,
                         std::int32_t* stop) noexcept {
  if (!callback) return -1;
  return vantile::traverse(path, stop, [callback](const WalkedEntry& entry) {
    if (vantile::isApplication(entry)) {
      callback(entry.path(), vantile::applicationKind);
      return Visit::pass;
    }
    if (entry.kind() != FileKind::folder) return Visit::pass;
    callback(entry.path(), vantile::folderKind);
    return Visit::enter;
  });
}

std::int32_t trv_sub_app(const char* path, folder_item_callback callback,
                         std::int32_t* stop) noexcept {
  if (!callback) return -1;
  return vantile::traverse(path, stop, [callback](const WalkedEntry& entry) {
    if (vantile::isApplication(entry)) callback(entry.path(), vantile::applicationKind);
    return Visit::pass;
  });
}

std::int32_t trv_sub_download(const char* path, download_item_callback callback,
                              std::int32_t* stop) noexcept {
  if (!callback) return -1;
  return vantile::traverse(path, stop, [callback](const WalkedEntry& entry) {
    if (vantile::isUnfinishedDownload(entry)) callback(entry.path());
    return Visit::pass;
  });
}

std::uint64_t get_folder_size(const char* path) noexcept {
  std::uint64_t bytes = 0;
  std::unordered_set<FileIdentity, vantile::IdentityHash> counted;  // of those with several names
  vantile::traverse(path, nullptr, [&](const WalkedEntry& entry) {
    if (entry.kind() == FileKind::folder) return Visit::enter;
    if (entry.kind() != FileKind::regular) return Visit::pass;
    const auto facts = entry.facts();
    if (facts && facts->kind == FileKind::regular &&
        (facts->links < 2 || counted.insert(facts->identity).second))
      bytes += facts->bytes;
    return Visit::pass;
  });
  return bytes;
}
