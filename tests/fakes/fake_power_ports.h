#pragma once

#include <functional>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "vantile/power/power_ports.h"

namespace vantile::testing {

/// Power sources that a test describes, and whose changes it tells of.
class FakePowerSources final : public PowerSources {
 public:
  std::vector<std::shared_ptr<const Dictionary>> descriptions() override {
    ++reads;
    if (isOutOfMemory) throw std::bad_alloc();
    return sources;
  }
  std::unique_ptr<PowerSourceSubscription> subscribe(void (*changed)(void*),
                                                     void* context) override {
    if (throws) throw std::runtime_error("no subscription");
    if (refuses) return nullptr;
    subscribers.emplace_back(changed, context);
    return std::make_unique<Subscription>(*this, context);
  }
  void tellChange() {
    for (const auto& [changed, context] : std::vector(subscribers)) changed(context);
  }

  bool refuses = false, throws = false, isOutOfMemory = false;
  int reads = 0;
  std::vector<std::shared_ptr<const Dictionary>> sources;
  std::vector<std::pair<void (*)(void*), void*>> subscribers;

 private:
  struct Subscription final : PowerSourceSubscription {
    Subscription(FakePowerSources& owner, void* owned) : sources(owner), context(owned) {}
    ~Subscription() override {
      std::erase_if(sources.subscribers,
                    [this](const auto& each) { return each.second == context; });
    }
    FakePowerSources& sources;
    void* const context;
  };
};

class FakeTimeRemaining final : public TimeRemaining {
 public:
  double estimate() override {
    ++reads;
    return seconds;
  }
  double seconds = unlimited;
  int reads = 0;
};

class FakeBatteryRecords final : public BatteryRecords {
 public:
  std::optional<std::vector<std::shared_ptr<const Dictionary>>> records() override {
    if (isOutOfMemory) throw std::bad_alloc();
    return list;
  }
  bool isOutOfMemory = false;
  std::optional<std::vector<std::shared_ptr<const Dictionary>>> list;
};

class FakeBatteryEntry final : public BatteryEntry {
 public:
  std::shared_ptr<const Dictionary> properties() override {
    ++reads;
    if (isOutOfMemory) throw std::bad_alloc();
    return entry;
  }
  bool isOutOfMemory = false;
  std::shared_ptr<const Dictionary> entry;
  int reads = 0;
};

/// Resources of a host with translations alone.
class FakeTranslations final : public HostResources {
 public:
  std::optional<std::string> path(std::string_view, std::string_view) override { return {}; }
  std::string localizedString(std::string_view key) override {
    if (isOutOfMemory) throw std::bad_alloc();
    const auto found = texts.find(std::string(key));
    return found == texts.end() ? std::string(key) : found->second;
  }
  void setFolder(std::optional<std::string>) override {}

  bool isOutOfMemory = false;
  std::map<std::string, std::string> texts;
};

/// While it lives, the power subsystem stands on fakes.
class FakePowerPorts {
 public:
  FakePowerPorts()
      : before_(std::exchange(PowerPorts::installed(),
                              PowerPorts{sources, remaining, records, entry, translations})) {}
  ~FakePowerPorts() { PowerPorts::installed() = before_; }
  FakePowerPorts(const FakePowerPorts&) = delete;
  FakePowerPorts& operator=(const FakePowerPorts&) = delete;

  const std::shared_ptr<FakePowerSources> sources = std::make_shared<FakePowerSources>();
  const std::shared_ptr<FakeTimeRemaining> remaining = std::make_shared<FakeTimeRemaining>();
  const std::shared_ptr<FakeBatteryRecords> records = std::make_shared<FakeBatteryRecords>();
  const std::shared_ptr<FakeBatteryEntry> entry = std::make_shared<FakeBatteryEntry>();
  const std::shared_ptr<FakeTranslations> translations = std::make_shared<FakeTranslations>();

 private:
  const PowerPorts before_;
};

}  // namespace vantile::testing
