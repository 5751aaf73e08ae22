#include "battery_monitor.h"

#include <vantile/foundation/run_loop.h>
#include <vantile/power/battery_info.h>

#include <chrono>
#include <string>
#include <utility>

#include "dashboard/battery_pane.h"

namespace vantile::host {
namespace {

constexpr std::chrono::minutes betweenLooks(1);

std::shared_ptr<Dictionary> propertiesOf(const KVDBatteryInfo& info) {
  auto properties = std::make_shared<Dictionary>();
  const bool hasBattery = info.isHasBattery();
  properties->set("isHasBattery", hasBattery);
  if (!hasBattery) return properties;
  properties->set("powerSourceState", info.prevPowerSource());
  properties->set("currentPercent", info.currentPercent());
  properties->set("batteryHealth", info.batteryHealth());
  properties->set("batteryMaxCapacity", info.batteryMaxCapacity());
  properties->set("batteryCurrentCapacity", info.batteryCurrentCapacity());
  properties->set("batteryCycleCount", info.batteryCycleCount());
  properties->set("batteryAmperage", info.batteryAmperage());
  properties->set("batteryVoltage", info.batteryVoltage());
  // The class gives 0 for both where there is no reading.
  if (info.batteryAmperage() && info.batteryVoltage())
    properties->set("batteryWatt", info.batteryWatt());
  const auto entry = info.getMoreAdvancedBatteryInfo();
  if (entry && entry->contains("Temperature"))
    properties->set("batteryTemperature", info.batteryTemperature());
  properties->set("timeSinceUnpluggedTranslated", info.timeSinceUnpluggedTranslated());
  properties->set("unpluggedTimerCount", info.unpluggedTimerCount());
  return properties;
}

class RunningBattery final : public RunningMonitor {
 public:
  explicit RunningBattery(ReportSink sink) : sink_(std::move(sink)) {
    info_->setDelegate(delegate());
    update();
    timer_ = RunLoop::current().every(betweenLooks, [this] { update(); });
  }
  ~RunningBattery() override { info_->setDelegate(nullptr); }
  RunningBattery(const RunningBattery&) = delete;
  RunningBattery& operator=(const RunningBattery&) = delete;

  /// Also where a change was told to nobody, as the removal of the only battery is.
  void afterRound() override {
    if (isUpdated()) tellProperties();
  }

 private:
  std::shared_ptr<BatteryDelegate> delegate() {
    auto delegate = std::make_shared<BatteryDelegate>();
    delegate->batteryCalculating = [this](double percent) {
      take("batteryCalculating");
      tell("batteryCalculating", {percent});
    };
    delegate->batteryWithRemaining = [this](const std::string& time) {
      take("batteryWithRemaining", time);
      tell("batteryWithRemaining", {time});
    };
    delegate->batteryRemainingWithLeft = [this](const std::string& percent) {
      tell("batteryRemainingWithLeft", {percent});
    };
    delegate->batteryChargingCalculating = [this] {
      take("batteryChargingCalculating");
      tell("batteryChargingCalculating", {});
    };
    delegate->batteryChargingWithRemaining = [this](const std::string& time) {
      take("batteryChargingWithRemaining", time);
      tell("batteryChargingWithRemaining", {time});
    };
    delegate->batteryCharged = [this] {
      take("batteryCharged");
      tell("batteryCharged", {});
    };
    delegate->charged = [this] { tell("charged", {}); };
    return delegate;
  }

  /// Each update sets the time at its end, which is nil from one report of ours to the next update.
  bool isUpdated() const { return info_->timeSinceUnpluggedTranslated().has_value(); }
  void beginUpdate() {
    info_->setTimeSinceUnpluggedTranslated({});
    sources_->clear();
  }

  /// Each power source has one of these calls an update, during which the properties are its own.
  void take(std::string_view operation, const std::optional<std::string>& time = {}) {
    if (isUpdated()) beginUpdate();
    auto source = std::make_shared<Dictionary>();
    source->set("operation", std::string(operation));
    source->set("time", time);
    source->set("powerSourceState", info_->prevPowerSource());
    source->set("currentPercent", info_->currentPercent());
    source->set("batteryHealth", info_->health());
    sources_->emplace_back(std::move(source));
  }
  void tell(std::string_view operation, std::vector<std::optional<Value>> arguments) {
    sink_({"battery", operation, std::move(arguments)});
  }
  void tellProperties() {
    const auto properties = propertiesOf(*info_);
    if (!sources_->empty()) properties->set("sources", sources_);
    sources_ = std::make_shared<Array>();
    beginUpdate();
    tell("updateCurrentStatus", {Value(properties)});
  }
  void update() {
    beginUpdate();
    info_->updateCurrentStatus();
    tellProperties();
  }

  const ReportSink sink_;
  const std::shared_ptr<KVDBatteryInfo> info_ = KVDBatteryInfo::init();
  std::shared_ptr<Array> sources_ = std::make_shared<Array>();
  Timer timer_;
};

}  // namespace

std::unique_ptr<RunningMonitor> startBattery(const Sampling&, ReportSink sink) {
  return std::make_unique<RunningBattery>(std::move(sink));
}

PaneGroup batteryPanes() {
  const auto figures = std::make_shared<BatteryFigures>();
  PaneGroup group;
  group.panes.push_back(std::make_unique<BatteryPane>(figures));
  group.take = [figures](const Report& report) { figures->take(report); };
  return group;
}

}  // namespace vantile::host
