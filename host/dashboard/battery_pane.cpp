#include "dashboard/battery_pane.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "dashboard/bar.h"
#include "dashboard/drawing.h"
#include "text.h"

namespace vantile::host {
namespace {

using State = BatterySource::State;

constexpr Style plain{};
constexpr Style faint{Colour::Grey};
constexpr int percentWidth = 6;
constexpr int numberWidth = 2;

Colour colourOf(const BatterySource& source) {
  if (source.state == State::charging) return Colour::Teal;
  if (source.percent <= 20) return Colour::Red;
  return source.percent < 50 ? Colour::Yellow : Colour::Green;
}

std::string percentText(const BatterySource& source) {
  return std::to_string(source.percent) + " %";
}

std::optional<std::string> textOf(const Dictionary& dictionary, std::string_view key) {
  const auto* const text = dictionary.text(key);
  return text ? std::optional(*text) : std::nullopt;
}

BatterySource sourceOf(const Dictionary& told) {
  BatterySource source;
  source.percent = told.int64("currentPercent").value_or(0);
  source.health = textOf(told, "batteryHealth");
  source.time = textOf(told, "time");
  // Without an estimate the library tells of no time at all.
  if (source.time == "0:00") source.time.reset();
  const auto operation = textOf(told, "operation").value_or("");
  if (operation == "batteryChargingCalculating" || operation == "batteryChargingWithRemaining") {
    source.state = State::charging;
  } else if (operation != "batteryCharged") {
    // On external power there may be no estimate either, for a moment.
    const bool isExternal = textOf(told, "powerSourceState") == "AC Power";
    source.state = isExternal ? State::onExternalPower : State::onBattery;
  }
  return source;
}

std::vector<BatterySource> sourcesOf(const Dictionary& properties) {
  std::vector<BatterySource> sources;
  const auto* const value = properties.find("sources");
  const auto* const told = value ? value->as<std::shared_ptr<Array>>() : nullptr;
  if (!told || !*told) return sources;
  for (const auto& source : **told) {
    const auto* const held = source.as<std::shared_ptr<Dictionary>>();
    if (held && *held) sources.push_back(sourceOf(**held));
  }
  return sources;
}

void append(std::string& line, std::string_view separator, const std::string& text) {
  if (text.empty()) return;
  if (!line.empty()) line += separator;
  line += text;
}

std::string stateText(const BatterySource& source) {
  switch (source.state) {
    case State::onBattery:
      return "on battery";
    case State::onExternalPower:
      return "on external power";
    case State::charging:
      return "charging" + (source.time ? ", " + *source.time + " to full" : std::string());
    case State::charged:
      return source.percent >= 100 ? "full" : "on external power, not charging";
  }
  return {};
}

std::string healthText(const BatterySource& source) {
  return source.health ? "health " + *source.health : "";
}

void drawCharge(Region row, const BatterySource& source) {
  const double share = std::clamp(static_cast<double>(source.percent) / 100, 0.0, 1.0);
  drawBar(row.part({0, 0, row.width() - percentWidth, 1}), {{share, {colourOf(source)}}}, U'─');
  row.textEndingAt(row.width(), 0, percentText(source), plain);
}

/// What stands below the bar of the only battery.
std::vector<std::string> linesOfOne(const BatteryFigures& now) {
  const auto& battery = now.sources().front();
  std::string state = stateText(battery);
  append(state, ", ", now.timeOnBattery());
  std::string readings = healthText(battery);
  append(readings, "   ", now.readings());
  return {state, readings};
}

/// What stands below all batteries: times are of all of them, readings of the first.
std::vector<std::string> linesOfAll(const BatteryFigures& now) {
  std::vector<std::string> lines;
  if (const auto time = now.timeOnBattery(); !time.empty()) lines.push_back("together " + time);
  if (const auto readings = now.readings(); !readings.empty())
    lines.push_back("battery 1   " + readings);
  return lines;
}

void drawSeveral(Region region, const BatteryFigures& now) {
  const auto& sources = now.sources();
  const auto lines = linesOfAll(now);
  const int count = static_cast<int>(sources.size());
  const bool withStates = region.height() >= 2 * count;
  const int shown =
      std::min(count, region.height() >= count ? count : std::max(region.height() - 1, 1));
  int y = 0;
  for (int at = 0; at < shown; ++at) {
    const auto& source = sources[static_cast<std::size_t>(at)];
    region.text(0, y, std::to_string(at + 1), plain);
    drawCharge(region.row(y++).part({numberWidth, 0, region.width() - numberWidth, 1}), source);
    if (!withStates) continue;
    std::string state = stateText(source);
    append(state, "   ", healthText(source));
    region.text(numberWidth, y++, clipped(state, region.width() - numberWidth), plain);
  }
  if (shown < count) return drawMore(region.row(y), count - shown);
  for (const auto& line : lines) region.text(0, y++, clipped(line, region.width()), plain);
}

}  // namespace

void BatteryFigures::take(const Report& report) {
  if (report.operation != "updateCurrentStatus") return;
  const auto* const properties = report.dictionary(0);
  if (!properties) return;
  known_ = true;
  sources_ = sourcesOf(*properties);
  sawExternalPower_ |= textOf(*properties, "powerSourceState") == "AC Power";
  // It counts whole minutes: before the first is over there is nothing to tell.
  unplugged_.reset();
  if (properties->int64("unpluggedTimerCount").value_or(0) > 0)
    unplugged_ = textOf(*properties, "timeSinceUnpluggedTranslated");
  cycles_ = properties->int64("batteryCycleCount");
  watts_ = properties->number("batteryWatt");
  celsius_ = properties->number("batteryTemperature");
}

std::string BatteryFigures::timeOnBattery() const {
  const auto source = std::ranges::find(sources_, State::onBattery, &BatterySource::state);
  if (source == sources_.end()) return {};
  std::string text = source->time ? *source->time + " left" : "";
  // A battery that ran already when we began may have done so for long.
  if (unplugged_)
    append(text, ", ",
           (sawExternalPower_ ? "unplugged for " : "unplugged for at least ") + *unplugged_);
  return text;
}

std::string BatteryFigures::readings() const {
  std::string line;
  if (cycles_)
    append(line, "   ", std::to_string(*cycles_) + (*cycles_ == 1 ? " cycle" : " cycles"));
  if (watts_) append(line, "   ", formatFixed(std::abs(*watts_), 1) + " W");
  if (celsius_) append(line, "   ", formatFixed(*celsius_, 1) + " °C");
  return line;
}

std::string BatteryPane::note() const {
  std::string note;
  for (const auto& source : figures_->sources()) append(note, ", ", percentText(source));
  return note;
}

PaneRows BatteryPane::rows() const {
  const auto count = figures_->sources().size();
  if (count == 0) return {1, 1, false};
  const auto wanted = count == 1 ? 3 : 2 * count + linesOfAll(*figures_).size();
  // Several go without their states before they go without a bar.
  return {static_cast<int>(std::clamp<std::size_t>(count, 3, 6)),
          static_cast<int>(std::min<std::size_t>(wanted, 20)), false};
}

void BatteryPane::draw(Region region, std::int32_t) const {
  const auto& now = *figures_;
  if (!now.known()) return drawWaiting(region);
  if (now.sources().empty()) {
    region.text(0, 0, clipped("no battery", region.width()), faint);
    return;
  }
  if (now.sources().size() > 1) return drawSeveral(region, now);
  drawCharge(region.row(0), now.sources().front());
  int y = 1;
  for (const auto& line : linesOfOne(now))
    region.text(0, y++, clipped(line, region.width()), plain);
}

}  // namespace vantile::host
