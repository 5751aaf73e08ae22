#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/delegate_slot.h"
#include "vantile/foundation/run_loop.h"
#include "vantile/foundation/value.h"

namespace vantile {

class PowerSourceSubscription;
struct PowerPorts;

/// Told of the battery at each update, of each power source that is present in turn: the state, and
/// the percentage where that changed to one that matters. Each operation may be left empty. Called
/// on the thread that updates.
struct BatteryDelegate {
  /// On battery, and how long it lasts is not known yet: the charge in percent.
  std::function<void(double percent)> batteryCalculating;
  /// On battery: the time left, "1:05".
  std::function<void(const std::string& time)> batteryWithRemaining;
  /// The charge has changed, "15%": told at 20 and below on battery, at 50 and above while
  /// charging.
  std::function<void(const std::string& percent)> batteryRemainingWithLeft;
  /// Charging, and how long that takes is not known yet.
  std::function<void()> batteryChargingCalculating;
  /// Charging: the time until the battery is full, "0:45".
  std::function<void(const std::string& time)> batteryChargingWithRemaining;
  /// On external power and not charging.
  std::function<void()> batteryCharged;
  /// The same and full, when the charge has changed since it was last told of.
  std::function<void()> charged;
};

/// The state of the machine's power sources and its battery. It takes a reading whenever the system
/// tells of a change of the power sources, and whenever the host asks for one.
///
/// Everything runs on the thread that made it, which is meant to be the main thread: the system's
/// changes come on its run loop, the setters are not synchronised. The last reference to it may go
/// on any thread. What the system does not tell is nil, or 0 where a property is a plain number.
/// Several batteries are several power sources: each is told of, the properties are those of the
/// last one, and of the first one where they come from the electrical readings. Where there are
/// none any more, `currentPercent` and `health` stay what the last one told.
///
/// macOS: IOKit's power sources. Linux: the batteries and chargers below /sys/class/power_supply
/// that are the machine's own, and their change events.
class VANTILE_API KVDBatteryInfo final : public std::enable_shared_from_this<KVDBatteryInfo> {
 public:
  using Text = std::optional<std::string>;
  using Number = std::optional<Value>;
  using Real = std::optional<double>;

  /// A new one, which follows the changes on the calling thread's run loop as long as it lives and
  /// has taken no reading yet. Where the system lets nobody follow them, updates are the host's.
  static std::shared_ptr<KVDBatteryInfo> init();

  ~KVDBatteryInfo();
  KVDBatteryInfo(const KVDBatteryInfo&) = delete;
  KVDBatteryInfo& operator=(const KVDBatteryInfo&) = delete;

  /// Takes a reading of the power sources, tells the delegate of them and sets the properties,
  /// those whose names begin with "battery" excepted.
  void updateStatus();
  /// The same, and those from the battery's entry in the registry.
  void updateCurrentStatus();
  /// Counts a minute on battery.
  void unpluggedTimerTick();

  double convertCelsiusToFahrenheit(double celsius) const;
  /// The electrical readings of the first battery; null where there is none.
  /// "Current" in mAh, "Amperage" in mA, "Voltage" in mV, "Cycle Count"; on macOS more, and as the
  /// system gives them. Linux: mWh of a battery whose driver tells no voltage.
  std::shared_ptr<const Dictionary> getAdvancedBatteryInfo() const;
  /// The battery's entry in the registry; null where there is none. "MaxCapacity" and
  /// "CurrentCapacity" in mAh, "CycleCount", "Amperage" in mA, "Voltage" in mV, "Temperature" in
  /// hundredths of a degree Celsius; on macOS more, and as the registry has them, which of newer
  /// machines may be percent. Linux: mWh as above.
  std::shared_ptr<const Dictionary> getMoreAdvancedBatteryInfo() const;
  /// Whether there are electrical readings of a battery.
  bool isHasBattery() const;

  /// Who is told; null for nobody. Any thread.
  std::shared_ptr<BatteryDelegate> delegate() const { return _delegate.get(); }
  void setDelegate(std::shared_ptr<BatteryDelegate> delegate) {
    _delegate.set(std::move(delegate));
  }

  /// For the host's own use, as are `batteryName`, `batteryCurrentCapacityChange`, `powerSource`,
  /// `hardwareSN`, `isCharged`, `isCharging` and `current`.
  const std::shared_ptr<const Image>& batteryImage() const { return _batteryImage; }
  void setBatteryImage(std::shared_ptr<const Image> image) { _batteryImage = std::move(image); }
  const Text& batteryName() const { return _batteryName; }
  void setBatteryName(Text name) { _batteryName = std::move(name); }

  /// mAh that the battery holds when it is full, as the entry has it.
  const Number& batteryMaxCapacity() const { return _batteryMaxCapacity; }
  void setBatteryMaxCapacity(Number charge) { _batteryMaxCapacity = std::move(charge); }
  /// The same of what it holds now.
  const Number& batteryCurrentCapacity() const { return _batteryCurrentCapacity; }
  void setBatteryCurrentCapacity(Number charge) { _batteryCurrentCapacity = std::move(charge); }
  /// mA, below 0 while the battery runs out.
  const Number& batteryAmperage() const { return _batteryAmperage; }
  void setBatteryAmperage(Number current) { _batteryAmperage = std::move(current); }
  /// mV.
  const Number& batteryVoltage() const { return _batteryVoltage; }
  void setBatteryVoltage(Number voltage) { _batteryVoltage = std::move(voltage); }
  const Number& batteryCycleCount() const { return _batteryCycleCount; }
  void setBatteryCycleCount(Number count) { _batteryCycleCount = std::move(count); }
  /// Watts, below 0 while the battery runs out; nil only until the first `updateCurrentStatus`,
  /// then 0 where there is no reading.
  const Real& batteryWatt() const { return _batteryWatt; }
  void setBatteryWatt(Real watts) { _batteryWatt = watts; }
  /// Degrees Celsius; nil and 0 like `batteryWatt`.
  const Real& batteryTemperature() const { return _batteryTemperature; }
  void setBatteryTemperature(Real celsius) { _batteryTemperature = celsius; }
  /// See `health`.
  const Text& batteryHealth() const { return _batteryHealth; }
  void setBatteryHealth(Text health) { _batteryHealth = std::move(health); }
  const Text& batteryCurrentCapacityChange() const { return _batteryCurrentCapacityChange; }
  void setBatteryCurrentCapacityChange(Text change) {
    _batteryCurrentCapacityChange = std::move(change);
  }

  /// The charge in whole percent, not rounded up.
  std::int64_t currentPercent() const { return _currentPercent; }
  void setCurrentPercent(std::int64_t percent) { _currentPercent = percent; }
  /// The one that the delegate was last told of, or was not to be told of.
  std::int64_t previousPercent() const { return _previousPercent; }
  void setPreviousPercent(std::int64_t percent) { _previousPercent = percent; }
  const Text& powerSource() const { return _powerSource; }
  void setPowerSource(Text source) { _powerSource = std::move(source); }
  /// Of the battery; 32 where there is no reading.
  float fahrenheit() const { return _fahrenheit; }
  void setFahrenheit(float degrees) { _fahrenheit = degrees; }
  float celsius() const { return _celsius; }
  void setCelsius(float degrees) { _celsius = degrees; }
  const Text& hardwareSN() const { return _hardwareSN; }
  void setHardwareSN(Text number) { _hardwareSN = std::move(number); }
  /// "Good", "Fair" or "Poor". Linux: what it holds when full is at least 80 percent of what it was
  /// made for, or 50, or less.
  const Text& health() const { return _health; }
  void setHealth(Text health) { _health = std::move(health); }
  bool isCharged() const { return _isCharged; }
  void setIsCharged(bool charged) { _isCharged = charged; }
  bool isCharging() const { return _isCharging; }
  void setIsCharging(bool charging) { _isCharging = charging; }
  /// mAh that the battery holds now.
  std::int32_t capacity() const { return _capacity; }
  void setCapacity(std::int32_t charge) { _capacity = charge; }
  std::int32_t current() const { return _current; }
  void setCurrent(std::int32_t current) { _current = current; }
  std::int32_t cycleCount() const { return _cycleCount; }
  void setCycleCount(std::int32_t count) { _cycleCount = count; }
  /// Watts, below 0 while the battery runs out.
  float watt() const { return _watt; }
  void setWatt(float watts) { _watt = watts; }
  /// Hours and minutes on battery since the update that first saw so, "1:02", as of the latest
  /// update; on external power those of the last time on battery. It runs twice as fast once the
  /// system told of a state that is neither. In the format that the host translates "%1$ld:%2$02ld"
  /// to, as long as that has both.
  const Text& timeSinceUnpluggedTranslated() const { return _timeSinceUnpluggedTranslated; }
  void setTimeSinceUnpluggedTranslated(Text time) {
    _timeSinceUnpluggedTranslated = std::move(time);
  }

  /// What the class keeps between updates: the latest "Power Source State", the seconds on battery,
  /// and the timer that counts them.
  const Text& prevPowerSource() const { return _prevPowerSource; }
  void setPrevPowerSource(Text state) { _prevPowerSource = std::move(state); }
  std::int64_t unpluggedTimerCount() const { return _unpluggedTimerCount; }
  void setUnpluggedTimerCount(std::int64_t seconds) { _unpluggedTimerCount = seconds; }
  const std::shared_ptr<Timer>& unpluggedTimer() const { return _unpluggedTimer; }
  void setUnpluggedTimer(std::shared_ptr<Timer> timer) { _unpluggedTimer = std::move(timer); }

 private:
  struct Estimate;

  explicit KVDBatteryInfo(PowerPorts ports);
  void follow();
  void readSources();
  void updateSource(const Dictionary& source, const Estimate& estimate);
  void followState(const Dictionary& source);
  void startUnpluggedTimer();
  void stopUnpluggedTimer();
  void tellOfDischarging(const Estimate& estimate);
  void tellOfCharged(const Dictionary& source);
  void tellOfCharging(const Dictionary& source);
  void tellOfPercent(bool isWanted);
  void readRecord();
  void readTemperature();
  void readEntry();
  void translateTimeSinceUnplugged();

  const std::unique_ptr<const PowerPorts> ports_;
  DelegateSlot<BatteryDelegate> _delegate;
  std::shared_ptr<const Image> _batteryImage;
  Text _batteryName;
  Number _batteryMaxCapacity, _batteryCurrentCapacity, _batteryAmperage, _batteryVoltage;
  Number _batteryCycleCount;
  Real _batteryWatt, _batteryTemperature;
  Text _batteryHealth, _batteryCurrentCapacityChange;
  std::int64_t _currentPercent = 0, _previousPercent = 0;
  Text _powerSource;
  float _fahrenheit = 0, _celsius = 0;
  Text _hardwareSN, _health;
  bool _isCharged = false, _isCharging = false;
  std::int32_t _capacity = 0, _current = 0, _cycleCount = 0;
  float _watt = 0;
  Text _timeSinceUnpluggedTranslated;
  Text _prevPowerSource;
  std::int64_t _unpluggedTimerCount = 0;
  std::shared_ptr<Timer> _unpluggedTimer;
  /// Every timer that runs. One that is no longer `_unpluggedTimer` counts on: only that one is
  /// ever stopped.
  std::vector<std::shared_ptr<Timer>> runningTimers_;
  std::shared_ptr<PowerSourceSubscription> following_;
};

}  // namespace vantile

extern "C" {

/// What the system calls when the power sources change: updates the `KVDBatteryInfo` that `context`
/// is. Null, or one that is gone, does nothing.
VANTILE_API void PowerSourceChanged(void* context) noexcept;

}  // extern "C"
