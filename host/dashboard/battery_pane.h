#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// What the battery monitor told so far.
class BatteryFigures {
 public:
  void take(const Report& report);

  bool known() const { return hasBattery.has_value(); }
  /// "on battery, 3:24 left"; empty while nothing was told.
  std::string state() const;

  std::optional<bool> hasBattery;
  bool isCharging = false;
  std::int64_t percent = 0;
  std::optional<std::string> health, unplugged;
  std::optional<std::int64_t> cycles;
  std::optional<double> watts, celsius;

 private:
  void takeProperties(const Dictionary& properties);

  enum class State { none, onBattery, charging, charged };
  State state_ = State::none;
  std::optional<std::string> time_;  ///< left, or until it is full
  bool isOnExternalPower_ = false;
};

/// The charge as a bar, what becomes of it, and the battery's readings.
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
