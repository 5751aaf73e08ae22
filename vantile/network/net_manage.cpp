#include "vantile/network/net_manage.h"

#include <array>
#include <charconv>
#include <utility>

#include "vantile/foundation/ending_on_loop.h"
#include "vantile/network/net_ppp.h"
#include "vantile/network/network_ports.h"
#include "vantile/network/ppp_messages.h"
#include "vantile/network/ppp_time.h"
#include "vantile/network/store_keys.h"
#include "vantile/network/store_values.h"
#include "vantile/network/traffic_samples.h"

namespace vantile {
namespace {

constexpr std::uint64_t unknownSpeed = 10'000'000;
constexpr std::uint64_t idleModemSpeed = 56'000;

/// What an object calls itself: the session's name.
std::string descriptionOf(const NetManage* object) {
  std::array<char, 16> digits = {};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                 reinterpret_cast<std::uintptr_t>(object), 16)
                       .ptr;
  return std::string("<NetManage: 0x").append(digits.data(), end).append(">");
}

}  // namespace

std::shared_ptr<NetManage> NetManage::init() {
  const std::shared_ptr<NetManage> manage(new NetManage(NetworkPorts::installed()));
  return manage->begin(manage) ? manage : nullptr;
}

NetManage::NetManage(NetworkPorts ports)
    : ports_(std::make_unique<const NetworkPorts>(std::move(ports))),
      counters_(ports_->makeCounters()),
      readings_(std::make_unique<InterfaceReadings>()),
      samples_(std::make_unique<TrafficSamples>()) {}

NetManage::~NetManage() = default;

bool NetManage::begin(const std::weak_ptr<NetManage>& self) {
  const SharedPppTime together;
  ppp = NetPPP::singleton();
  if (!ppp) return false;
  const ConfigurationKeys keys = {
      .keys = {store::globalState, store::globalSetup, store::interfaces},
      .patterns = {store::allInterfaces}};
  scSession = endingOnLoop(ports_->store->open(descriptionOf(this), keys, [self] {
    if (const auto manage = self.lock()) manage->clearHistory();
  }));
  if (!scSession) return false;
  queryInterfaceLists();
  queryMainInterfaceName();
  queryMainServiceID();
  netStatsWithInterval(1);
  return true;
}

void NetManage::clearHistory() {
  const std::lock_guard turn(turn_);
  interfaceDetails.reset();
  unanswered_.clear();
  speedless_.clear();
  primaryName.reset();
  primaryService.reset();
  serviceToName.clear();
  nameToService.clear();
  nobodys_.reset();
  serviceSpeed.clear();
  underlyingInterface.clear();
  interfaceUp.clear();
  ethernet_.clear();
}

/// Kept, since the system may have to be asked; nothing while that can't be done.
std::optional<bool> NetManage::toldEthernet(TextArgument name) {
  const std::lock_guard turn(turn_);
  if (!name) return false;
  const auto known = ethernet_.find(*name);
  if (known != ethernet_.end()) return known->second;
  const auto told = isEthernetName(*ports_->facts, *name);
  if (told) ethernet_.emplace(*name, *told);
  return told;
}

bool NetManage::isEthernet(TextArgument name) {
  return toldEthernet(name).value_or(false);
}

std::shared_ptr<const Dictionary> NetManage::sysconfigValueForKey(std::string_view key) {
  const std::lock_guard turn(turn_);
  return scSession->value(key);
}

NetManage::Text NetManage::mainValue(Text& cached, std::string_view key) {
  const std::lock_guard turn(turn_);
  if (!cached) cached = textIn(sysconfigValueForKey(store::globalState).get(), key);
  return cached;
}

NetManage::Text NetManage::queryMainInterfaceName() {
  return mainValue(primaryName, "PrimaryInterface");
}

NetManage::Text NetManage::queryMainServiceID() {
  return mainValue(primaryService, "PrimaryService");
}

std::shared_ptr<Dictionary> NetManage::interfaceConfigWithName(TextArgument name) {
  const std::lock_guard turn(turn_);
  if (name && name != "primary") {
    if (const auto serviceID = queryServiceWithInterfaceName(name)) {
      const auto stat = queryUnderlyingInterfaceNameWithServiceID(serviceID);
      return stat ? configuration(*serviceID, *stat, *name) : nullptr;
    }
  }
  const auto serviceID = queryMainServiceID();
  if (!serviceID) return nullptr;
  auto stat = queryUnderlyingInterfaceNameWithServiceID(serviceID);
  if (!stat) stat = queryMainInterfaceName();
  return stat ? configuration(*serviceID, *stat, "primary") : nullptr;
}

std::shared_ptr<Dictionary> NetManage::configuration(const std::string& serviceID,
                                                     const std::string& stat,
                                                     std::string_view name) {
  auto record = std::make_shared<Dictionary>();
  record->reserve(5);
  record->set(keys::service, serviceID);
  record->set(keys::statname, stat);
  record->set(keys::speed, querySpeedWithServiceID(serviceID));
  record->set(keys::name, name);
  record->set(keys::interfaceup, isUpWithinterfaceName(stat));
  return record;
}

NetManage::Text NetManage::queryInterfaceNameWithServiceID(TextArgument serviceID) {
  const std::lock_guard turn(turn_);
  if (!serviceID) return std::nullopt;
  if (const auto hit = serviceToName.find(*serviceID); hit != serviceToName.end())
    return hit->second;
  const auto setup = sysconfigValueForKey(storeKey(store::serviceInterface, *serviceID));
  const auto link = sysconfigValueForKey(storeKey(store::pppState, *serviceID));
  auto name = textIn(link.get(), "InterfaceName");
  if (!name) name = textIn(setup.get(), "DeviceName");
  if (name) serviceToName.emplace(*serviceID, *name);
  return name;
}

/// Does not move the primary service to the front.
NetManage::Text NetManage::queryServiceWithInterfaceName(TextArgument name) {
  const std::lock_guard turn(turn_);
  if (!name) return std::nullopt;
  if (const auto hit = nameToService.find(*name); hit != nameToService.end()) return hit->second;
  if (nobodys_ == *name) return std::nullopt;
  const auto order = serviceOrder();
  if (!order) return std::nullopt;
  for (const Value& each : *order) {
    const auto* const serviceID = each.as<std::string>();
    if (serviceID && hasInterface(*serviceID, *name))
      return nameToService.emplace(*name, *serviceID).first->second;
  }
  if (scSession->tellsEveryChange()) nobodys_ = *name;
  return std::nullopt;
}

bool NetManage::hasInterface(const std::string& serviceID, std::string_view name) {
  const auto setup = sysconfigValueForKey(storeKey(store::serviceInterface, serviceID));
  if (textIn(setup.get(), "DeviceName") == name) return true;
  const auto link = sysconfigValueForKey(storeKey(store::pppState, serviceID));
  return textIn(link.get(), "InterfaceName") == name;
}

NetManage::Text NetManage::queryUnderlyingInterfaceNameWithServiceID(TextArgument serviceID) {
  const std::lock_guard turn(turn_);
  if (!serviceID) return std::nullopt;
  if (const auto hit = underlyingInterface.find(*serviceID); hit != underlyingInterface.end())
    return hit->second;
  const auto setup = sysconfigValueForKey(storeKey(store::serviceInterface, *serviceID));
  const auto link = sysconfigValueForKey(storeKey(store::pppState, *serviceID));
  const auto device = textIn(setup.get(), "DeviceName");
  const auto linkName = textIn(link.get(), "InterfaceName");
  const auto ethernet = linkName ? toldEthernet(device) : false;
  const auto& name = linkName && !ethernet.value_or(false) ? linkName : device;
  if (name && ethernet) underlyingInterface.emplace(*serviceID, *name);
  return name;
}

std::uint64_t NetManage::querySpeedWithServiceID(TextArgument serviceID) {
  const std::lock_guard turn(turn_);
  if (!serviceID) return unknownSpeed;
  if (const auto hit = serviceSpeed.find(*serviceID); hit != serviceSpeed.end()) return hit->second;
  const auto keep = [this, &serviceID](std::uint64_t speed) {
    return serviceSpeed.emplace(*serviceID, speed).first->second;
  };
  const auto modem = sysconfigValueForKey(storeKey(store::modemState, *serviceID));
  const auto link = sysconfigValueForKey(storeKey(store::pppState, *serviceID));
  if (modem) {
    const auto speed = wholeIn(modem.get(), "ConnectSpeed");
    return speed && isNumber(link.get(), "Status", pppRunning) ? keep(*speed) : idleModemSpeed;
  }
  const auto name = queryInterfaceNameWithServiceID(serviceID);
  return isEthernet(name) ? keep(speedForInterfaceName(name)) : unknownSpeed;
}

bool NetManage::isUpWithinterfaceName(TextArgument name) {
  const std::lock_guard turn(turn_);
  if (!name) return false;
  if (const auto hit = interfaceUp.find(*name); hit != interfaceUp.end()) return hit->second;
  const bool ethernet = isEthernet(name);
  if (!ethernet && !name->starts_with("ppp")) return true;
  const auto state = ethernet ? linkState(*name) : pppState(*name);
  if (state) interfaceUp.emplace(*name, *state);
  return state.value_or(ethernet);
}

std::optional<bool> NetManage::linkState(std::string_view name) {
  const auto link = sysconfigValueForKey(storeKey(store::linkState, name));
  return truthOf(valueIn(link.get(), "Active"));
}

/// Nothing when the daemon gives no answer. Without a daemon a PPP interface tells of itself;
/// nothing when the system refuses that.
std::optional<bool> NetManage::pppState(std::string_view name) {
  if (ppp->hasDaemon()) {
    const auto told = ppp->status(PppCommand::linkByInterfaceName, name);
    return told ? std::optional(isNumber(told->get(), "status", pppRunning)) : std::nullopt;
  }
  if (!counters_->read(*readings_)) return std::nullopt;
  for (std::size_t i = 0; i < readings_->count; ++i)
    if (readings_->readings[i].name == name) return readings_->readings[i].up;
  return false;
}

std::shared_ptr<const Dictionary> NetManage::netStatsWithInterval(double seconds) {
  const std::lock_guard turn(turn_);
  const SharedPppTime together;
  if (!counters_->read(*readings_)) return nullptr;
  samples_->begin(seconds);
  for (std::size_t i = 0; i < readings_->count; ++i) addInterface(readings_->readings[i]);
  lastData = samples_->finish();
  return lastData;
}

/// An interface that is down restarts its totals at every sample; one of the PPP daemon's is left
/// out while it is not connected.
void NetManage::addInterface(const InterfaceReading& reading) {
  if (reading.loopback) return;
  if (!ppp->hasDaemon() || !reading.name.starts_with("ppp"))
    return samples_->add({.name = reading.name,
                          .counters = {.width = readings_->width,
                                       .index = reading.index,
                                       .received = reading.received,
                                       .sent = reading.sent},
                          .goesOn = reading.up});
  const auto status = ppp->queryStatusWithInterfaceName(reading.name);
  if (!isNumber(status.get(), "status", pppRunning)) return;
  samples_->add({.name = reading.name,
                 .counters = {.width = CounterWidth::bits32,
                              .index = reading.index,
                              .received = status->uint64(keys::inBytes).value_or(0),
                              .sent = status->uint64(keys::outBytes).value_or(0)},
                 .goesOn = true});
}

std::uint64_t NetManage::speedForInterfaceName(TextArgument name) {
  const auto speed = name ? ports_->facts->linkSpeed(*name) : std::nullopt;
  return speed.value_or(unknownSpeed);
}

}  // namespace vantile
