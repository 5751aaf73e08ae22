#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// One volume, in bytes.
struct VolumeRow {
  std::string name, path;
  bool isNameRepeated = false;  ///< by another volume
  std::uint64_t total = 0, used = 0;
  /// What is known of the used ones; all 0 where nothing is.
  std::uint64_t movies = 0, apps = 0, audio = 0, photos = 0;
  bool isSplit = false;    ///< these kinds leave a rest of the used ones
  bool isCounted = false;  ///< the kinds are known
};

/// What the disk monitor told last.
class DiskFigures {
 public:
  void take(const Report& report);

  bool known() const { return known_; }
  const std::vector<VolumeRow>& rows() const { return rows_; }

 private:
  bool known_ = false;
  std::vector<VolumeRow> rows_;
};

/// The mounted volumes, a bar each of what fills them.
class DiskPane final : public Pane {
 public:
  explicit DiskPane(std::shared_ptr<const DiskFigures> figures) : figures_(std::move(figures)) {}
  std::string title() const override { return "Volumes"; }
  std::string note() const override;
  PaneRows rows() const override;
  void draw(Region region, std::int32_t interval) const override;

 private:
  std::shared_ptr<const DiskFigures> figures_;
};

}  // namespace vantile::host
