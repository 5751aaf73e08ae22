// The list of services of `NetManage`.

#include <algorithm>
#include <utility>

#include "vantile/network/net_manage.h"
#include "vantile/network/net_ppp.h"
#include "vantile/network/ppp_messages.h"
#include "vantile/network/ppp_time.h"
#include "vantile/network/store_keys.h"
#include "vantile/network/store_values.h"

namespace vantile {
namespace {

/// Sets `key` to what the dictionary holds under `name`, where it holds something.
void copyValue(Dictionary& entry, Key key, const Dictionary* from, std::string_view name) {
  if (const Value* const value = valueIn(from, name)) entry.set(key, *value);
}

}  // namespace

/// As the configuration has it.
std::shared_ptr<Array> NetManage::serviceOrder() {
  const auto setup = sysconfigValueForKey(store::globalSetup);
  const Value* const order = valueIn(setup.get(), "ServiceOrder");
  const auto* const held = order ? order->as<std::shared_ptr<Array>>() : nullptr;
  return held ? *held : nullptr;
}

std::shared_ptr<Array> NetManage::queryInterfaceLists() {
  const std::lock_guard turn(turn_);
  const SharedPppTime together;
  if (interfaceDetails) {
    askPppAgain();
    askUnanswered();
    return interfaceDetails;
  }
  const auto held = serviceOrder();
  if (!held) return nullptr;
  Array order = *held;
  if (const auto primary = queryMainServiceID()) {
    const auto found = std::find(order.begin(), order.end(), Value(*primary));
    if (found != order.end()) std::rotate(order.begin(), found, found + 1);
  }
  auto entries = std::make_shared<Array>();
  entries->reserve(order.size());
  for (const Value& each : order) {
    const auto* const serviceID = each.as<std::string>();
    if (auto entry = serviceID ? serviceEntry(*serviceID) : nullptr)
      entries->emplace_back(std::move(entry));
  }
  interfaceDetails = std::move(entries);
  return interfaceDetails;
}

/// For the entries with a key "pppstatus" and their "service". `serviceEntry` makes none; a host
/// that adds both to an entry has it kept up to date.
void NetManage::askPppAgain() {
  if (!ppp->hasDaemon()) return;
  for (const Value& each : *interfaceDetails) {
    const auto* const held = each.as<std::shared_ptr<Dictionary>>();
    if (!held || !*held || !(*held)->contains("pppstatus")) continue;
    const auto serviceID = textIn(held->get(), "service");
    if (auto status = serviceID ? ppp->queryStatusWithServiceID(*serviceID) : nullptr)
      (*held)->set(Key("pppstatus"), std::move(status));
  }
}

/// What the daemon left open when the entry was made, being away for instance, it may tell by now,
/// and so may the platform.
void NetManage::askUnanswered() {
  std::erase_if(unanswered_, [this](const auto& entry) {
    const auto serviceID = textIn(entry.get(), keys::service_id);
    return !serviceID || addPppStatus(*entry, *serviceID);
  });
  std::erase_if(speedless_, [this](const auto& entry) {
    const auto serviceID = textIn(entry.get(), keys::service_id);
    const auto device = textIn(entry.get(), keys::device_name);
    return !serviceID || !device || addSpeed(*entry, *serviceID, *device);
  });
}

/// Null for a service without an interface.
std::shared_ptr<Dictionary> NetManage::serviceEntry(const std::string& serviceID) {
  auto made = std::make_shared<Dictionary>();
  Dictionary& entry = *made;
  entry.reserve(24);
  entry.set(keys::service_id, serviceID);
  entry.set(keys::is_primary, queryMainServiceID() == serviceID);
  const auto setup = sysconfigValueForKey(storeKey(store::serviceSetup, serviceID));
  copyValue(entry, keys::user_defind_name, setup.get(), "UserDefinedName");
  const auto interface = sysconfigValueForKey(storeKey(store::serviceInterface, serviceID));
  if (!interface) return nullptr;
  addName(entry, *interface);
  copyValue(entry, keys::device_name, interface.get(), "DeviceName");
  copyValue(entry, keys::connection_type, interface.get(),
            interface->contains("SubType") ? "SubType" : "Type");
  addPpp(made, serviceID);
  addAddresses(entry, serviceID);
  if (const auto device = textIn(&entry, keys::device_name)) {
    addInterfaceState(entry, *device);
    if (!addSpeed(entry, serviceID, *device)) speedless_.push_back(made);
  }
  return made;
}

/// The first test is for the entry's own spelling, which no store has, so that as a rule the name
/// is the hardware.
void NetManage::addName(Dictionary& entry, const Dictionary& interface) {
  if (entry.contains(keys::user_defind_name)) return;
  if (interface.contains(keys::user_defind_name)) {
    copyValue(entry, keys::user_defind_name, &interface, "UserDefinedName");
  } else if (interface.contains("Hardware")) {
    copyValue(entry, keys::user_defind_name, &interface, "Hardware");
  } else {
    entry.set(keys::user_defind_name, "Unknown Interface");
  }
}

void NetManage::addPpp(const std::shared_ptr<Dictionary>& entry, const std::string& serviceID) {
  const auto state = sysconfigValueForKey(storeKey(store::pppState, serviceID));
  copyValue(*entry, keys::device_ppp_name, state.get(), "InterfaceName");
  if (!sysconfigValueForKey(storeKey(store::pppSetup, serviceID)) || !ppp->hasDaemon()) return;
  if (!addPppStatus(*entry, serviceID)) unanswered_.push_back(entry);
}

/// Whether the daemon gave an answer. It may not know the service.
bool NetManage::addPppStatus(Dictionary& entry, const std::string& serviceID) {
  auto told = ppp->status(PppCommand::linkByServiceID, serviceID);
  if (told && *told) entry.set(keys::ppp_status_info, std::move(*told));
  return told.has_value();
}

void NetManage::addAddresses(Dictionary& entry, const std::string& serviceID) {
  const auto ipv4 = sysconfigValueForKey(storeKey(store::ipv4State, serviceID));
  copyValue(entry, keys::ipv4_addresses, ipv4.get(), "Addresses");
  copyValue(entry, keys::ipv4_router, ipv4.get(), "Router");
  copyValue(entry, keys::ipv4_subnetmasks, ipv4.get(), "SubnetMasks");
  const auto dns = sysconfigValueForKey(storeKey(store::dnsState, serviceID));
  copyValue(entry, keys::ipv4_dns, dns.get(), "ServerAddresses");
}

void NetManage::addInterfaceState(Dictionary& entry, const std::string& device) {
  const auto ipv6 = sysconfigValueForKey(storeKey(store::ipv6State, device));
  copyValue(entry, keys::ipv6_addresses, ipv6.get(), "Addresses");
  const auto appleTalk = sysconfigValueForKey(storeKey(store::appleTalkState, device));
  if (appleTalk && appleTalk->contains("NetworkID") && appleTalk->contains("NodeID") &&
      appleTalk->contains("DefaultZone")) {
    copyValue(entry, keys::appletalk_net_id, appleTalk.get(), "NetworkID");
    copyValue(entry, keys::appletalk_node_id, appleTalk.get(), "NodeID");
    copyValue(entry, keys::appletalk_zone, appleTalk.get(), "DefaultZone");
  }
  const auto link = sysconfigValueForKey(storeKey(store::linkState, device));
  copyValue(entry, keys::linkactive_status, link.get(), "Active");
}

/// No entry has a "devicename", so that as a rule only Ethernet interfaces have a speed. Whether
/// the platform told if it is one.
bool NetManage::addSpeed(Dictionary& entry, const std::string& serviceID,
                         const std::string& device) {
  const auto ethernet = toldEthernet(device);
  if (ethernet == true) entry.set(keys::link_speed, speedForInterfaceName(device));
  if (ethernet == true || textIn(&entry, "devicename") != "modem") return ethernet.has_value();
  const auto modem = sysconfigValueForKey(storeKey(store::modemState, serviceID));
  const auto state = sysconfigValueForKey(storeKey(store::pppState, serviceID));
  if (valueIn(modem.get(), "ConnectSpeed") && isNumber(state.get(), "Status", pppRunning))
    copyValue(entry, keys::link_speed, state.get(), "ConnectSpeed");
  return ethernet.has_value();
}

}  // namespace vantile
