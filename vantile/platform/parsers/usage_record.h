#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/platform/parsers/usage_index.h"

namespace vantile {

/// By what a volume is known again.
struct UsageVolume {
  std::uint64_t fileSystem = 0;  ///< what statfs identifies it by
  std::uint64_t root = 0;        ///< inode of the mounted folder
  /// What it was given when it was made, a UUID or a serial number; where nobody tells that, its
  /// device and size, if it has a device.
  std::string identifier = {};
  std::string mountPoint = {};
  friend bool operator==(const UsageVolume&, const UsageVolume&) = default;
};

/// The name of the file that a volume's record is kept in.
std::string usageRecordName(const UsageVolume& volume);

/// What is kept of a volume from one run to the next.
struct UsageRecord {
  bool complete = false;  ///< it was gone through as a whole once
  UsageIndex index;
};

/// Writes a record piece by piece to `sink`, all but what it begins with, which is known at the end
/// and returned: `usageRecordHead` bytes, for the file's beginning. It ends with all names, as
/// `UsageIndex::setKept` takes them. Nothing where the sink returned false, upon which it ends, and
/// where the names of a folder could not be read, which is to be listed then.
std::optional<std::string> writeUsageRecord(
    const UsageVolume& volume, bool complete, UsageIndex& index,
    const std::function<bool(std::string_view piece)>& sink);
constexpr std::size_t usageRecordHead = 24;

/// The next piece of a record, valid until the next is asked for; an empty one at its end.
using UsageRecordSource = std::function<std::string_view()>;

/// The record of `size` bytes that comes in pieces, or nothing where it is none of this volume's or
/// version, or damaged. It ends with the names, which are `keptSize` of its index; of what stands
/// before them it has no more than a folder at a time.
std::optional<UsageRecord> readUsageRecord(const UsageRecordSource& source, std::uint64_t size,
                                           const UsageVolume& volume);

}  // namespace vantile
