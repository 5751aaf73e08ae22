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

 private:
  std::shared_ptr<BatteryDelegate> delegate() {
    auto delegate = std::make_shared<BatteryDelegate>();
    delegate->batteryCalculating = [this](double percent) {
      tell("batteryCalculating", {percent});
    };
    delegate->batteryWithRemaining = [this](const std::string& time) {
      tell("batteryWithRemaining", {time});
    };
    delegate->batteryRemainingWithLeft = [this](const std::string& percent) {
      tell("batteryRemainingWithLeft", {percent});
    };
    delegate->batteryChargingCalculating = [this] { tell("batteryChargingCalculating", {}); };
    delegate->batteryChargingWithRemaining = [this](const std::string& time) {
      tell("batteryChargingWithRemaining", {time});
    };
    delegate->batteryCharged = [this] { tell("batteryCharged", {}); };
    delegate->charged = [this] { tell("charged", {}); };
    return delegate;
  }

  /// Each call comes in the midst of an update: the properties are whole once that is over.
  void tell(std::string_view operation, std::vector<std::optional<Value>> arguments) {
    sink_({"battery", operation, std::move(arguments)});
    if (!look_.isValid())
      look_ = RunLoop::current().after(RunLoop::Duration(1), [this] { tellProperties(); });
  }
  void tellProperties() {
    look_.invalidate();
    sink_({"battery", "updateCurrentStatus", {Value(propertiesOf(*info_))}});
  }
  void update() {
    info_->updateCurrentStatus();
    tellProperties();
  }

  const ReportSink sink_;
  const std::shared_ptr<KVDBatteryInfo> info_ = KVDBatteryInfo::init();
  Timer timer_, look_;
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
