#include "dashboard/battery_pane.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "dashboard/bar.h"
#include "dashboard/drawing.h"
#include "text.h"

namespace vantile::host {
namespace {

constexpr Style plain{};
constexpr Style faint{Colour::Grey};
constexpr int percentWidth = 6;

Colour colourOf(const BatteryFigures& now) {
  if (now.isCharging) return Colour::Teal;
  if (now.percent <= 20) return Colour::Red;
  return now.percent < 50 ? Colour::Yellow : Colour::Green;
}

std::string figuresLine(const BatteryFigures& now) {
  std::string line;
  const auto add = [&line](const std::string& text) { line += (line.empty() ? "" : "   ") + text; };
  if (now.health) add("health " + *now.health);
  if (now.cycles) add(std::to_string(*now.cycles) + (*now.cycles == 1 ? " cycle" : " cycles"));
  if (now.watts) add(formatFixed(std::abs(*now.watts), 1) + " W");
  if (now.celsius) add(formatFixed(*now.celsius, 1) + " °C");
  return line;
}

}  // namespace

void BatteryFigures::take(const Report& report) {
  const auto become = [this, &report](State state) {
    state_ = state;
    isCharging = state == State::charging;
    const auto* const time = report.text(0);
    // Without an estimate the library tells of no time at all.
    time_ = time && *time != "0:00" ? std::optional(*time) : std::nullopt;
  };
  if (report.operation == "batteryCalculating" || report.operation == "batteryWithRemaining") {
    become(State::onBattery);
  } else if (report.operation == "batteryChargingCalculating" ||
             report.operation == "batteryChargingWithRemaining") {
    become(State::charging);
  } else if (report.operation == "batteryCharged") {
    become(State::charged);
  } else if (report.operation == "updateCurrentStatus") {
    if (const auto* const properties = report.dictionary(0)) takeProperties(*properties);
  }
}

void BatteryFigures::takeProperties(const Dictionary& properties) {
  const auto textOf = [&properties](std::string_view key) {
    const auto* const text = properties.text(key);
    return text ? std::optional(*text) : std::nullopt;
  };
  hasBattery = properties.boolean("isHasBattery").value_or(false);
  isOnExternalPower_ = textOf("powerSourceState") == "AC Power";
  percent = properties.int64("currentPercent").value_or(0);
  health = textOf("batteryHealth");
  unplugged = textOf("timeSinceUnpluggedTranslated");
  cycles = properties.int64("batteryCycleCount");
  watts = properties.number("batteryWatt");
  celsius = properties.number("batteryTemperature");
}

std::string BatteryFigures::state() const {
  switch (state_) {
    case State::none:
      return {};
    case State::onBattery:
      // On external power there may be no estimate either, for a moment.
      return (isOnExternalPower_ ? "on external power" : "on battery") +
             (time_ ? ", " + *time_ + " left" : std::string());
    case State::charging:
      return "charging" + (time_ ? ", " + *time_ + " to full" : std::string());
    case State::charged:
      return percent >= 100 ? "full" : "on external power, not charging";
  }
  return {};
}

std::string BatteryPane::note() const {
  return figures_->hasBattery.value_or(false) ? std::to_string(figures_->percent) + " %" : "";
}

PaneRows BatteryPane::rows() const {
  const int wanted = figures_->hasBattery.value_or(false) ? 3 : 1;
  return {1, wanted, false};
}

void BatteryPane::draw(Region region, std::int32_t) const {
  const auto& now = *figures_;
  if (!now.known()) return drawWaiting(region);
  if (!*now.hasBattery) {
    region.text(0, 0, clipped("no battery", region.width()), faint);
    return;
  }
  const double share = std::clamp(static_cast<double>(now.percent) / 100, 0.0, 1.0);
  drawBar(region.part({0, 0, region.width() - percentWidth, 1}), {{share, {colourOf(now)}}}, U'─');
  region.textEndingAt(region.width(), 0, std::to_string(now.percent) + " %", plain);
  auto state = now.state();
  if (now.unplugged && state.starts_with("on battery"))
    state += ", unplugged for " + *now.unplugged;
  region.text(0, 1, clipped(state, region.width()), plain);
  region.text(0, 2, clipped(figuresLine(now), region.width()), plain);
}

}  // namespace vantile::host
