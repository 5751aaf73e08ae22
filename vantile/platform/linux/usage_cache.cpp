#include "vantile/platform/linux/usage_cache.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "vantile/foundation/log.h"
#include "vantile/platform/linux/file_stamp.h"
#include "vantile/platform/linux/folder_entries.h"
#include "vantile/platform/linux/standard_folders.h"
#include "vantile/platform/posix/descriptor.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

constexpr std::size_t longestRecord = 256u << 20;

/// False, with errno, where not all could be written.
bool writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const auto count = ::write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

/// Removes what a process that ended while it wrote left of the record called `name`.
void removeLeftOvers(const std::string& folder, const std::string& name) {
  constexpr std::int64_t day = 86400;
  forEachEntry(folder, [&](const dirent& entry) {
    if (!std::string_view(entry.d_name).starts_with(name + ".")) return;
    const auto path = folder + "/" + entry.d_name;
    const auto stamp = stampOf(path);
    if (stamp && stamp->seconds < presentSecond() - day) ::unlink(path.c_str());
  });
}

}  // namespace

std::string UsageCache::pathOf(const UsageVolume& volume) const {
  return folder_ + "/" + usageRecordName(volume);
}

std::optional<UsageRecord> UsageCache::take(const UsageVolume& volume) const {
  const auto path = pathOf(volume);
  const auto text = contentsOf(path, longestRecord);
  if (!text) return std::nullopt;
  auto record = readUsageRecord(*text, volume);
  if (!record) {
    logLine("usage by category: " + path + " is damaged or another volume's, and begun anew");
    ::unlink(path.c_str());
  }
  return record;
}

void UsageCache::keep(const UsageVolume& volume, bool complete, const UsageIndex& index) {
  const int error = write(volume, complete, index);
  if (error != 0 && !std::exchange(hasFailed_, true))
    logLine("usage by category is not kept in " + folder_ + ": " + ::strerror(error));
}

int UsageCache::write(const UsageVolume& volume, bool complete, const UsageIndex& index) const {
  makeForUserAlone(folder_);
  removeLeftOvers(folder_, usageRecordName(volume));
  const auto path = pathOf(volume);
  auto temporary = path + ".XXXXXX";
  const Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
  if (!file) return errno;
  int error = 0;
  const auto sink = [&file, &error](std::string_view piece) {
    if (error == 0 && !writeAll(file.get(), piece)) error = errno;
  };
  sink(std::string(usageRecordHead, '\0'));
  const auto head = writeUsageRecord(volume, complete, index, sink);
  if (error == 0 && ::lseek(file.get(), 0, SEEK_SET) != 0) error = errno;
  sink(head);
  if (error == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) error = errno;
  if (error != 0) ::unlink(temporary.c_str());
  return error;
}

}  // namespace vantile
