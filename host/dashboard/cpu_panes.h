#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dashboard/history.h"
#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// What the processor monitor told so far.
class CpuFigures {
 public:
  /// Shares of one processor's time, 0 to 1.
  struct Core {
    double system = 0, user = 0;
    double busy() const { return system + user; }
  };

  explicit CpuFigures(std::optional<std::string> clock = {}) : speed(std::move(clock)) {}

  void take(const Report& report);

  bool known() const { return busyShare.size() > 0; }

  const std::optional<std::string> speed;
  std::vector<Core> cores;
  Core all;
  History busyShare;
  std::optional<std::uint64_t> tasks, threads;
  std::optional<std::array<double, 3>> load;  ///< of 1, 5 and 15 minutes
  std::optional<double> celsius;              ///< where the latest sample told of it
  bool hasSensor = false;                     ///< one of them did

 private:
  void takeCore(const Report& report);
};

/// A pane that draws the processor figures.
class CpuFiguresPane : public Pane {
 public:
  explicit CpuFiguresPane(std::shared_ptr<const CpuFigures> figures)
      : figures_(std::move(figures)) {}

 protected:
  const CpuFigures& figures() const { return *figures_; }

 private:
  std::shared_ptr<const CpuFigures> figures_;
};

/// Load, tasks and temperature, and a bar a processor; where there are too many, a column each.
class CpuPane final : public CpuFiguresPane {
 public:
  using CpuFiguresPane::CpuFiguresPane;
  std::string title() const override { return "Processors"; }
  std::string note() const override;
  PaneRows rows() const override;
  void draw(Region region, std::int32_t interval) const override;
};

/// How busy the processors were lately.
class CpuHistoryPane final : public CpuFiguresPane {
 public:
  using CpuFiguresPane::CpuFiguresPane;
  std::string title() const override { return "Processor time used"; }
  std::string note() const override;
  PaneRows rows() const override { return {2, 5, true}; }
  void draw(Region region, std::int32_t interval) const override;
};

}  // namespace vantile::host
