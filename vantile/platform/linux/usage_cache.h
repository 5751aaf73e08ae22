#pragma once

#include <optional>
#include <string>

#include "vantile/platform/parsers/usage_record.h"

namespace vantile {

/// The records of volumes in a folder of the user's caches, which other processes of the user may
/// share: a record is there as a whole, the last one written. Not synchronised.
class UsageCache {
 public:
  /// Records stand in `folder`, which is made when the first one is kept.
  explicit UsageCache(std::string folder) : folder_(std::move(folder)) {}

  /// The record of the volume, or nothing. One that is damaged, or of another volume or version, is
  /// removed, with a log line.
  std::optional<UsageRecord> take(const UsageVolume& volume) const;

  /// Replaces the volume's record. The first time that it fails there is a log line.
  void keep(const UsageVolume& volume, bool complete, const UsageIndex& index);

 private:
  std::string pathOf(const UsageVolume& volume) const;
  /// 0, or what went wrong.
  int write(const UsageVolume& volume, bool complete, const UsageIndex& index) const;

  const std::string folder_;
  bool hasFailed_ = false;
};

}  // namespace vantile
