#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "vantile/network/network_ports.h"
#include "vantile/network/ppp_time.h"
#include "vantile/network/shared_network.h"

namespace vantile::testing {

/// A store of keys and dictionaries that a test writes, and every reading of it counted.
class FakeConfigurationStore final : public ConfigurationStore {
 public:
  std::unique_ptr<ConfigurationSession> open(std::string_view name, const ConfigurationKeys& wanted,
                                             std::function<void()> changed) override {
    sessionName = name;
    keys = wanted.keys;
    patterns = wanted.patterns;
    if (refuses) return nullptr;
    notify = std::move(changed);
    return std::make_unique<Session>(*this);
  }

  /// The dictionary under `key`, made where there is none.
  Dictionary& operator[](const std::string& key) {
    auto& held = values[key];
    if (!held) held = std::make_shared<Dictionary>();
    return *held;
  }

  bool refuses = false, tellsEveryChange = false;
  std::map<std::string, std::shared_ptr<Dictionary>, std::less<>> values;
  std::function<void()> notify;  ///< tells the session of a change
  std::string sessionName;
  std::vector<std::string> keys, patterns;
  std::vector<std::string> reads;  ///< the keys, in order
  int sessions = 0;                ///< that are open
  std::thread::id endedOn;         ///< where the last one ended

 private:
  class Session final : public ConfigurationSession {
   public:
    explicit Session(FakeConfigurationStore& store) : store_(store) { ++store.sessions; }
    ~Session() override {
      --store_.sessions;
      store_.endedOn = std::this_thread::get_id();
    }
    std::shared_ptr<const Dictionary> value(std::string_view key) override {
      store_.reads.emplace_back(key);
      const auto found = store_.values.find(key);
      return found == store_.values.end() ? nullptr : found->second;
    }
    bool tellsEveryChange() const override { return store_.tellsEveryChange; }

   private:
    FakeConfigurationStore& store_;
  };
};

/// Interfaces whose counters a test sets.
class FakeInterfaces final : public InterfaceCounters, public InterfaceFacts {
 public:
  bool read(InterfaceReadings& into) override {
    ++counterReads;
    if (onRead) onRead();
    if (refuses) return false;
    into.readings = readings;
    into.count = readings.size();
    into.readings.resize(readings.size() + 2);  // storage of a fuller sample
    into.width = width;
    return true;
  }
  std::optional<bool> isEthernetDevice(std::string_view name) override {
    ++ethernetReads;
    if (refusesFacts) return std::nullopt;
    return std::find(ethernet.begin(), ethernet.end(), name) != ethernet.end();
  }
  std::optional<std::uint64_t> linkSpeed(std::string_view name) override {
    ++speedReads;
    const auto found = speeds.find(name);
    return found == speeds.end() ? std::nullopt : std::optional(found->second);
  }

  /// The reading of the name, made where there is none.
  InterfaceReading& operator[](std::string_view name) {
    const auto found = std::find_if(readings.begin(), readings.end(),
                                    [name](const auto& each) { return each.name == name; });
    if (found != readings.end()) return *found;
    const auto index = static_cast<std::uint32_t>(readings.size() + 1);
    readings.push_back({.name = std::string(name), .index = index, .up = true});
    return readings.back();
  }
  void remove(std::string_view name) {
    std::erase_if(readings, [name](const auto& each) { return each.name == name; });
  }

  std::vector<InterfaceReading> readings;
  CounterWidth width = CounterWidth::bits32;
  bool refuses = false, refusesFacts = false;
  std::function<void()> onRead;       ///< the counters are read
  std::vector<std::string> ethernet;  ///< names that count as Ethernet
  std::map<std::string, std::uint64_t, std::less<>> speeds;
  int counterReads = 0, speedReads = 0, ethernetReads = 0;
};

/// What the faked daemon does on a connection.
struct PppScript {
  PppTransfer connecting = PppTransfer::done;
  PppTransfer sending = PppTransfer::done;
  std::string replies = {};                    ///< bytes that are there to be received
  PppTransfer afterwards = PppTransfer::late;  ///< of receiving more than these
};

/// A daemon that follows a script, one a connection; time moves by what a late call waited for.
class FakePppDaemon final : public PppDaemon {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  PppConnecting reach(std::chrono::nanoseconds within) override {
    ++connects;
    waits.push_back(within);
    if (scripts.empty()) return {};
    auto script = std::move(scripts.front());
    scripts.pop_front();
    if (script.connecting == PppTransfer::late) now += within;
    const auto outcome = script.connecting;
    if (outcome != PppTransfer::done) return {.outcome = outcome, .connection = nullptr};
    now += connectingTakes;
    return {outcome, std::make_unique<Connection>(*this, std::move(script))};
  }

  std::deque<PppScript> scripts;  ///< of the next connections; without one they are refused
  std::chrono::nanoseconds connectingTakes{0}, sendingTakes{0};
  std::vector<std::string> requests;
  std::vector<std::chrono::nanoseconds> waits;  ///< that each call was given
  int connects = 0, connections = 0;            ///< attempts, and those that are open
  Moment now{std::chrono::hours(1)};

 private:
  class Connection final : public PppConnection {
   public:
    Connection(FakePppDaemon& daemon, PppScript script)
        : daemon_(daemon), script_(std::move(script)) {
      ++daemon.connections;
    }
    ~Connection() override { --daemon_.connections; }

    PppTransfer send(std::string_view bytes, std::chrono::nanoseconds within) override {
      daemon_.waits.push_back(within);
      daemon_.requests.emplace_back(bytes);
      daemon_.now += script_.sending == PppTransfer::late ? within : daemon_.sendingTakes;
      return script_.sending;
    }
    PppTransfer receive(char* into, std::size_t size, std::chrono::nanoseconds within) override {
      daemon_.waits.push_back(within);
      const auto there = std::min(size, script_.replies.size());
      std::copy_n(script_.replies.begin(), there, into);
      script_.replies.erase(0, there);
      if (there == size) return PppTransfer::done;
      if (script_.afterwards == PppTransfer::late) daemon_.now += within;
      return script_.afterwards;
    }

   private:
    FakePppDaemon& daemon_;
    PppScript script_;
  };
};

/// While it lives, the network subsystem stands on fakes and begins without shared instances. At
/// first the platform has no PPP daemon.
class FakeNetworkPorts {
 public:
  FakeNetworkPorts() : before_(NetworkPorts::installed()) {
    forget();
    install(nullptr);
  }
  ~FakeNetworkPorts() {
    forget();
    NetworkPorts::installed() = before_;
  }
  FakeNetworkPorts(const FakeNetworkPorts&) = delete;
  FakeNetworkPorts& operator=(const FakeNetworkPorts&) = delete;

  /// From here on the platform has a daemon.
  void addDaemon() { install(ppp); }

  const std::shared_ptr<FakeConfigurationStore> store = std::make_shared<FakeConfigurationStore>();
  const std::shared_ptr<FakeInterfaces> interfaces = std::make_shared<FakeInterfaces>();
  const std::shared_ptr<FakePppDaemon> ppp = std::make_shared<FakePppDaemon>();

 private:
  /// Hands the shared fake to an owner.
  class Borrowed final : public InterfaceCounters {
   public:
    explicit Borrowed(std::shared_ptr<FakeInterfaces> from) : from_(std::move(from)) {}
    bool read(InterfaceReadings& into) override { return from_->read(into); }

   private:
    const std::shared_ptr<FakeInterfaces> from_;
  };

  static void forget() {
    sharedNetworkMonitor().forget();
    sharedPppController().forget();
    pppAbsence().forget();
  }
  void install(std::shared_ptr<PppDaemon> daemon) {
    NetworkPorts::installed() = {
        .store = store,
        .makeCounters = [from = interfaces] { return std::make_unique<Borrowed>(from); },
        .facts = interfaces,
        .ppp = std::move(daemon),
        .now = [clock = ppp] { return clock->now; }};
  }

  const NetworkPorts before_;
};

}  // namespace vantile::testing
