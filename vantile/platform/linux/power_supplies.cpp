#include "vantile/platform/linux/power_supplies.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>
#include <vector>

#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/descriptor.h"
#include "vantile/platform/posix/files.h"
#include "vantile/platform/posix/folder_listing.h"

namespace vantile {
namespace {

std::vector<std::string> namesIn(DIR* folder) {
  std::vector<std::string> names;
  while (const dirent* const entry = ::readdir(folder))
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  std::sort(names.begin(), names.end());
  return names;
}

/// Whether the name in `folder` is still that of what was opened by it.
bool leadsTo(int folder, const std::string& name, int opened) {
  struct stat named = {}, known = {};
  return ::fstatat(folder, name.c_str(), &named, 0) == 0 && ::fstat(opened, &known) == 0 &&
         named.st_dev == known.st_dev && named.st_ino == known.st_ino;
}

}  // namespace

std::optional<std::string> supplyAttribute(int folder, const std::string& file) {
  const Descriptor opened(
      ::openat(folder, file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!opened) return std::nullopt;
  std::array<char, 4096> page;  // no attribute is longer, and the kernel gives each in one piece
  ssize_t size = 0;
  do {
    size = ::read(opened.get(), page.data(), page.size());
  } while (size < 0 && errno == EINTR);
  if (size <= 0) return std::nullopt;
  std::string_view rest(page.data(), static_cast<std::size_t>(size));
  const auto line = takeLine(rest);
  return line.empty() ? std::nullopt : std::optional<std::string>(line);
}

void PowerSupplies::take(PowerSupply& supply, int folder, SupplyUse use) const {
  for (const auto file : supplyFiles(use))
    if (const auto text = attribute_(folder, std::string(file)))
      takeSupplyFile(supply, file, *text);
}

PowerSupplies::Found PowerSupplies::read(SupplyUse use, bool withMains) const {
  Found found;
  const FolderListing listing(::opendir(folder_.c_str()));
  if (!listing) return found;
  for (auto& name : namesIn(listing.get())) {
    // All is asked of the supply that is there now, not of another that may come by its name.
    const Descriptor folder(::openat(::dirfd(listing.get()), name.c_str(), folderFlags));
    if (!folder) continue;
    PowerSupply supply;
    supply.name = std::move(name);
    take(supply, folder.get(), SupplyUse::kind);
    if (supply.isDevices) continue;
    if (supply.kind == PowerSupply::Kind::battery) {
      take(supply, folder.get(), use);
      // One that went meanwhile told only a part: the kernel removes its name, then its attributes.
      if (!leadsTo(::dirfd(listing.get()), supply.name, folder.get())) continue;
      found.batteries.push_back(std::move(supply));
    } else if (supply.kind == PowerSupply::Kind::mains && withMains) {
      take(supply, folder.get(), SupplyUse::mains);
      found.mains.push_back(std::move(supply));
    }
  }
  return found;
}

}  // namespace vantile
