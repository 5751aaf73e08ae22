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
  std::uint64_t fileSystem = 0;  ///< its identifier
  std::uint64_t root = 0;        ///< inode of the mounted folder
  std::string mountPoint;
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
/// and returned: `usageRecordHead` bytes, for the file's beginning.
std::string writeUsageRecord(const UsageVolume& volume, bool complete, const UsageIndex& index,
                             const std::function<void(std::string_view piece)>& sink);
constexpr std::size_t usageRecordHead = 24;

/// The record in a text, or nothing where it is none of this volume's or version, or damaged.
std::optional<UsageRecord> readUsageRecord(std::string_view text, const UsageVolume& volume);

}  // namespace vantile
