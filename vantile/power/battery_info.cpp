#include "vantile/power/battery_info.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <map>
#include <mutex>
#include <string_view>

#include "vantile/foundation/ending_on_loop.h"
#include "vantile/foundation/guard.h"
#include "vantile/power/power_ports.h"
#include "vantile/power/time_text.h"

namespace vantile {
namespace {

constexpr std::int64_t minute = 60, hour = 3600;
constexpr std::string_view onBattery = "Battery Power", onExternal = "AC Power";
constexpr std::int64_t lowPercent = 20, highPercent = 50;

/// The number without its fraction, or the nearest one that the integer can hold; 0 for none.
template <class Integer>
Integer truncated(double number) {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(number)) return 0;
  if (number <= static_cast<double>(Limits::min())) return Limits::min();
  // The greatest one may have no double of its own, but the one above it has.
  if (number >= -static_cast<double>(Limits::min())) return Limits::max();
  return static_cast<Integer>(number);
}

double realUnder(const Dictionary* dictionary, std::string_view key) {
  return dictionary ? dictionary->number(key).value_or(0) : 0;
}

/// A 32-bit integer has a double of its own, so that nothing is lost on the way.
std::int32_t integerUnder(const Dictionary* dictionary, std::string_view key) {
  return truncated<std::int32_t>(realUnder(dictionary, key));
}

float singleOf(double number) {
  constexpr double greatest = std::numeric_limits<float>::max();
  return static_cast<float>(std::clamp(number, -greatest, greatest));
}

std::optional<Value> valueUnder(const Dictionary* dictionary, std::string_view key) {
  const Value* const value = dictionary ? dictionary->find(key) : nullptr;
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::string> textUnder(const Dictionary& dictionary, std::string_view key) {
  const auto* const text = dictionary.text(key);
  return text ? std::optional(*text) : std::nullopt;
}

std::int64_t percentOf(const Dictionary& source) {
  const double greatest = realUnder(&source, "Max Capacity");
  if (greatest == 0) return 0;
  const auto held = truncated<std::int64_t>(realUnder(&source, "Current Capacity"));
  return truncated<std::int64_t>(static_cast<double>(held) / greatest * 100.0);
}

std::string percentText(std::int64_t percent) {
  return std::to_string(percent) + "%";
}

/// The objects that live, by their addresses. A change may come for one that another thread let go
/// of, until the loop ends its subscription.
class Living {
 public:
  void add(const std::shared_ptr<KVDBatteryInfo>& info) {
    const std::lock_guard lock(mutex_);
    all_[info.get()] = info;
  }
  void remove(const KVDBatteryInfo* info) {
    const std::lock_guard lock(mutex_);
    all_.erase(info);
  }
  std::shared_ptr<KVDBatteryInfo> at(const void* address) {
    const std::lock_guard lock(mutex_);
    const auto found = all_.find(address);
    return found == all_.end() ? nullptr : found->second.lock();
  }

 private:
  std::mutex mutex_;
  std::map<const void*, std::weak_ptr<KVDBatteryInfo>> all_;
};

Living& living() {
  static auto& objects = *new Living;
  return objects;
}

}  // namespace

/// The time left as the system estimates it, in seconds, and what is told of it.
struct KVDBatteryInfo::Estimate {
  explicit Estimate(double estimated)
      : isUnlimited(estimated == TimeRemaining::unlimited),
        isKnown(!isUnlimited && estimated != TimeRemaining::unknown) {
    const auto seconds = truncated<std::int32_t>(estimated);
    const auto hours = static_cast<std::int32_t>(seconds / hour);
    text = timeText(hours, (seconds - hours * hour) / minute);
  }

  const bool isUnlimited, isKnown;
  std::string text;
};

KVDBatteryInfo::KVDBatteryInfo(PowerPorts ports)
    : ports_(std::make_unique<const PowerPorts>(std::move(ports))) {}

KVDBatteryInfo::~KVDBatteryInfo() {
  living().remove(this);
}

std::shared_ptr<KVDBatteryInfo> KVDBatteryInfo::init() {
  const std::shared_ptr<KVDBatteryInfo> info(new KVDBatteryInfo(PowerPorts::installed()));
  living().add(info);
  info->follow();
  return info;
}

void KVDBatteryInfo::follow() {
  guarded("following the power sources", [this] {
    following_ = endingOnLoop(ports_->sources->subscribe(PowerSourceChanged, this));
  });
}

void KVDBatteryInfo::updateStatus() {
  const auto self = weak_from_this().lock();  // a delegate may let go of it
  guarded("an update of the battery", [this] { readSources(); });
  guarded("an update of the battery", [this] {
    readRecord();
    readTemperature();
    translateTimeSinceUnplugged();
  });
}

void KVDBatteryInfo::readSources() {
  const Estimate estimate(ports_->remaining->estimate());
  for (const auto& source : ports_->sources->descriptions())
    if (source) updateSource(*source, estimate);
}

void KVDBatteryInfo::updateSource(const Dictionary& source, const Estimate& estimate) {
  _health = textUnder(source, "BatteryHealth");
  if (source.boolean("Is Present") == false) return;
  _currentPercent = percentOf(source);
  followState(source);

  const auto charging = source.boolean("Is Charging");
  const bool isOnBattery = textUnder(source, "Power Source State") == onBattery;
  if (isOnBattery && charging == false && !estimate.isKnown) {
    tell(_delegate.get(), &BatteryDelegate::batteryCalculating,
         static_cast<double>(_currentPercent));
  } else if (!estimate.isUnlimited) {
    tellOfDischarging(estimate);
  } else if (charging != true) {
    tellOfCharged(source);
  } else {
    tellOfCharging(source);
  }
}

void KVDBatteryInfo::followState(const Dictionary& source) {
  auto state = textUnder(source, "Power Source State");
  if (state == _prevPowerSource) return;
  if (state == onBattery) {
    startUnpluggedTimer();
  } else if (state == onExternal) {
    stopUnpluggedTimer();
  }
  _prevPowerSource = std::move(state);
}

void KVDBatteryInfo::startUnpluggedTimer() {
  _unpluggedTimerCount = 0;
  guarded("the unplugged timer", [this] {
    _unpluggedTimer = std::make_shared<Timer>(
        RunLoop::current().every(std::chrono::seconds(minute), [weak = weak_from_this()] {
          if (const auto self = weak.lock()) self->unpluggedTimerTick();
        }));
    runningTimers_.push_back(_unpluggedTimer);
  });
}

void KVDBatteryInfo::stopUnpluggedTimer() {
  if (_unpluggedTimer) _unpluggedTimer->invalidate();
  _unpluggedTimer.reset();
  std::erase_if(runningTimers_, [](const auto& timer) { return !timer->isValid(); });
}

void KVDBatteryInfo::tellOfDischarging(const Estimate& estimate) {
  tell(_delegate.get(), &BatteryDelegate::batteryWithRemaining, estimate.text);
  tellOfPercent(_currentPercent <= lowPercent);
}

/// The only one that keeps a percentage for later that nobody was told of.
void KVDBatteryInfo::tellOfCharged(const Dictionary& source) {
  tell(_delegate.get(), &BatteryDelegate::batteryCharged);
  if (integerUnder(&source, "Current Capacity") != integerUnder(&source, "Max Capacity")) return;
  if (_previousPercent == _currentPercent) return;
  const auto delegate = _delegate.get();
  if (!implements(delegate, &BatteryDelegate::charged)) return;
  tell(delegate, &BatteryDelegate::charged);
  _previousPercent = _currentPercent;
}

void KVDBatteryInfo::tellOfCharging(const Dictionary& source) {
  const auto minutes = integerUnder(&source, "Time to Full Charge");
  if (minutes <= 0) {
    tell(_delegate.get(), &BatteryDelegate::batteryChargingCalculating);
    return;
  }
  tell(_delegate.get(), &BatteryDelegate::batteryChargingWithRemaining,
       timeText(minutes / minute, minutes % minute));
  tellOfPercent(_currentPercent >= highPercent);
}

void KVDBatteryInfo::tellOfPercent(bool isWanted) {
  if (_previousPercent == _currentPercent) return;
  if (isWanted)
    tell(_delegate.get(), &BatteryDelegate::batteryRemainingWithLeft, percentText(_currentPercent));
  _previousPercent = _currentPercent;
}

void KVDBatteryInfo::readRecord() {
  const auto record = getAdvancedBatteryInfo();
  _capacity = integerUnder(record.get(), "Current");
  _cycleCount = integerUnder(record.get(), "Cycle Count");
  _watt = (singleOf(realUnder(record.get(), "Amperage")) / 1000.0f) *
          (singleOf(realUnder(record.get(), "Voltage")) / 1000.0f);
}

void KVDBatteryInfo::readTemperature() {
  const auto degrees = realUnder(getMoreAdvancedBatteryInfo().get(), "Temperature") / 100.0;
  _celsius = singleOf(degrees);
  _fahrenheit = singleOf(convertCelsiusToFahrenheit(degrees));
}

void KVDBatteryInfo::translateTimeSinceUnplugged() {
  const auto hours = _unpluggedTimerCount / hour;
  const auto minutes = (_unpluggedTimerCount - hours * hour) / minute;
  const auto format = ports_->resources->localizedString("%1$ld:%2$02ld");
  _timeSinceUnpluggedTranslated =
      timeText(format, hours, minutes).value_or(timeText(hours, minutes));
}

void KVDBatteryInfo::updateCurrentStatus() {
  const auto self = weak_from_this().lock();
  updateStatus();
  guarded("an update of the battery", [this] { readEntry(); });
}

void KVDBatteryInfo::readEntry() {
  const auto properties = getMoreAdvancedBatteryInfo();
  const auto* const entry = properties.get();
  _batteryMaxCapacity = valueUnder(entry, "MaxCapacity");
  _batteryCurrentCapacity = valueUnder(entry, "CurrentCapacity");
  _batteryCycleCount = valueUnder(entry, "CycleCount");
  _batteryAmperage = valueUnder(entry, "Amperage");
  _batteryVoltage = valueUnder(entry, "Voltage");
  _batteryWatt = realUnder(entry, "Voltage") * (realUnder(entry, "Amperage") / 1000.0) / 1000.0;
  _batteryTemperature = realUnder(entry, "Temperature") / 100.0;
  _batteryHealth = _health;
}

void KVDBatteryInfo::unpluggedTimerTick() {
  constexpr auto greatest = std::numeric_limits<std::int64_t>::max();
  _unpluggedTimerCount =
      _unpluggedTimerCount > greatest - minute ? greatest : _unpluggedTimerCount + minute;
}

double KVDBatteryInfo::convertCelsiusToFahrenheit(double celsius) const {
  return celsius * 9.0 / 5.0 + 32.0;
}

std::shared_ptr<const Dictionary> KVDBatteryInfo::getAdvancedBatteryInfo() const {
  std::shared_ptr<const Dictionary> first;
  guarded("the battery's records", [&] {
    const auto records = ports_->records->records();
    if (records && !records->empty()) first = records->front();
  });
  return first;
}

std::shared_ptr<const Dictionary> KVDBatteryInfo::getMoreAdvancedBatteryInfo() const {
  std::shared_ptr<const Dictionary> properties;
  guarded("the battery's entry", [&] { properties = ports_->entry->properties(); });
  return properties;
}

bool KVDBatteryInfo::isHasBattery() const {
  return getAdvancedBatteryInfo() != nullptr;
}

}  // namespace vantile

void PowerSourceChanged(void* context) noexcept {
  vantile::guarded("a change of the power sources", [context] {
    if (const auto info = vantile::living().at(context)) info->updateCurrentStatus();
  });
}
