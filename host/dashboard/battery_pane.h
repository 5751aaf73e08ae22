#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// One power source, which is a battery but for a UPS.
struct BatterySource {
  enum class State { onBattery, onExternalPower, charging, charged };

  State state = State::charged;
  std::int64_t percent = 0;
  std::optional<std::string> health;
  std::optional<std::string> time;  ///< until it is full; while it gives out, that of all together
};

/// What the battery monitor told last.
class BatteryFigures {
 public:
  void take(const Report& report);

  bool known() const { return known_; }
  const std::vector<BatterySource>& sources() const { return sources_; }
  /// "3:24 left, unplugged for 0:12", while a battery gives out and as much of it as is known.
  std::string timeOnBattery() const;
  /// Cycles, power and temperature, which the first battery alone tells.
  std::string readings() const;

 private:
  bool known_ = false;
  bool sawExternalPower_ = false;
  std::vector<BatterySource> sources_;
  std::optional<std::string> unplugged_;
  std::optional<std::int64_t> cycles_;
  std::optional<double> watts_, celsius_;
};

/// The charge of each battery as a bar, what becomes of it, and the readings.
class BatteryPane final : public Pane {
 public:
  explicit BatteryPane(std::shared_ptr<const BatteryFigures> figures)
      : figures_(std::move(figures)) {}

  std::string title() const override { return "Battery"; }
  std::string note() const override;
  PaneRows rows() const override;
  void draw(Region region, std::int32_t interval) const override;

 private:
  const std::shared_ptr<const BatteryFigures> figures_;
};

}  // namespace vantile::host
