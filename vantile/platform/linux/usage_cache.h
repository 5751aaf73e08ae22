#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "vantile/platform/parsers/usage_record.h"

namespace vantile {

/// The records of volumes in a folder of the user's caches, which other processes of the user may
/// share: a record is there as a whole, the last one written. An index that was kept or taken up
/// reads names from its record, which it holds open, replaced or not. Not synchronised.
class UsageCache {
 public:
  /// Records stand in `folder`, which is made when the first one is kept.
  explicit UsageCache(std::string folder) : folder_(std::move(folder)) {}

  /// Asked before each 64 KiB that are read or written.
  using IsStopped = std::function<bool()>;
  enum class Came : std::uint8_t { toTheEnd, stopped };

  /// Puts the record of the volume into `record`, where there is one. One that is damaged, or of
  /// another volume or version, is removed, with a log line.
  Came take(const UsageVolume& volume, std::optional<UsageRecord>& record,
            const IsStopped& isStopped) const;

  /// Replaces the volume's record, upon which the index needs its names no longer in memory. Where
  /// that is stopped, the one before stays. The first time that it fails there is a log line.
  Came keep(const UsageVolume& volume, bool complete, UsageIndex& index,
            const IsStopped& isStopped);

 private:
  std::string pathOf(const UsageVolume& volume) const;
  /// 0, or what went wrong; ECANCELED where it was stopped.
  int write(const UsageVolume& volume, bool complete, UsageIndex& index,
            const IsStopped& isStopped) const;

  const std::string folder_;
  bool hasFailed_ = false;
};

}  // namespace vantile
