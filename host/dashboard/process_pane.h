#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// One application of the table.
struct ApplicationRow {
  std::int64_t pid = 0;
  std::string name;
  double cpu = 0, memory = 0;                 ///< percent
  std::uint64_t resident = 0, addresses = 0;  ///< bytes
  std::string state;
};

/// What the process monitor told last.
class ApplicationFigures {
 public:
  void take(const Report& report);

  bool known() const { return known_; }
  const std::vector<ApplicationRow>& rows() const { return rows_; }

 private:
  bool known_ = false;
  std::vector<ApplicationRow> rows_;
};

/// The running applications as a table, in the order of one of its columns.
class ApplicationsPane final : public Pane {
 public:
  explicit ApplicationsPane(std::shared_ptr<const ApplicationFigures> figures)
      : figures_(std::move(figures)) {}
  std::string title() const override { return "Running applications"; }
  std::string note() const override;
  PaneRows rows() const override { return {2, 8, true}; }
  void draw(Region region, std::int32_t interval) const override;
  bool sorts() const override { return true; }
  void sort(Sorting change) override;

 private:
  std::vector<const ApplicationRow*> ordered() const;

  std::shared_ptr<const ApplicationFigures> figures_;
  std::size_t column_ = 0;  // of the order's columns
  bool reversed_ = false;
};

}  // namespace vantile::host
