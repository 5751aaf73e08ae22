#include "vantile/platform/linux/network_manager_follower.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <system_error>

#include "vantile/foundation/guard.h"
#include "vantile/platform/linux/network_manager_messages.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* managerName = "org.freedesktop.NetworkManager";
constexpr const char* managerPath = "/org/freedesktop/NetworkManager";
constexpr const char* settingsInterface = "org.freedesktop.NetworkManager.Settings";
constexpr const char* settingsPath = "/org/freedesktop/NetworkManager/Settings";
constexpr const char* connectionInterface = "org.freedesktop.NetworkManager.Settings.Connection";
constexpr const char* activeInterface = "org.freedesktop.NetworkManager.Connection.Active";
constexpr const char* deviceInterface = "org.freedesktop.NetworkManager.Device";

/// Signals of such a stretch are one burst.
constexpr auto burst = 50ms;
/// For all of connecting: the socket, the authentication, the bus's first answers.
constexpr auto connectsWithin = 10s;
/// A bus that held for so long is a sound one, to be looked for soon when it is gone.
constexpr auto lasting = 60s;
/// Questions on their way at a time: a bus lets a client have some hundred.
constexpr std::size_t mostWaiting = 32;
/// What is beyond these is left out.
constexpr std::size_t mostConnections = 4096, mostActive = 256;

/// A further condition of a match rule.
std::string piece(const char* key, const char* value) {
  return std::string(",").append(key).append("='").append(value).append("'");
}

/// PropertiesChanged of one interface. The bus tells them apart: the access points of a wireless
/// device change every few seconds, and nobody here is to be woken for them.
std::string propertiesRule(const char* interface) {
  return piece("interface", propertiesInterface) + piece("member", "PropertiesChanged") +
         piece("arg0", interface);
}

bool timedOut(sd_bus_message* answer) {
  return sd_bus_message_is_method_error(answer, nullptr) != 0 &&
         sd_bus_message_get_errno(answer) == ETIMEDOUT;
}

std::string_view senderOf(sd_bus_message* message) {
  const char* const sender = sd_bus_message_get_sender(message);
  return sender ? sender : "";
}

std::string pathOf(sd_bus_message* message) {
  const char* const path = sd_bus_message_get_path(message);
  return path ? path : "";
}

}  // namespace

bool NetworkManagerFollower::connect() {
  bus_.reset();
  patience_ = RunLoop::current().after(connectsWithin, [this] {
    bus_.reset();
    lost();
  });
  try {
    openBus();
  } catch (const std::system_error& error) {
    bus_.reset();
    lost();
    return error.code().value() != EINVAL;
  }
  return true;
}

void NetworkManagerFollower::openBus() {
  using Self = NetworkManagerFollower;
  bus_ = std::make_unique<BusConnection>(address_, [this] { lost(); });
  bus_->listen("type='signal'" + piece("sender", busName) + piece("path", busPath) +
                   piece("interface", busName) + piece("member", "NameOwnerChanged") +
                   piece("arg0", managerName),
               [this](sd_bus_message* message) { onOwnerChanged(message); });
  listenToManager(piece("path", settingsPath) + piece("interface", settingsInterface),
                  &Self::onSettingsSignal);
  listenToManager(piece("interface", connectionInterface) + piece("member", "Updated"),
                  &Self::onConnectionUpdated);
  listenToManager(propertiesRule(managerName), &Self::onManagerProperties);
  listenToManager(propertiesRule(activeInterface), &Self::onActiveProperties);
  listenToManager(propertiesRule(deviceInterface), &Self::onDeviceProperties);
  askForOwner();
}

void NetworkManagerFollower::listenToManager(
    const std::string& rule, void (NetworkManagerFollower::*arrived)(sd_bus_message*)) {
  bus_->listen("type='signal'" + piece("sender", managerName) + rule,
               [this, arrived](sd_bus_message* message) {
                 if (!owner_.empty() && senderOf(message) == owner_) (this->*arrived)(message);
               });
}

void NetworkManagerFollower::askForOwner() {
  bus_->call(
      {busName, busPath, busName, "GetNameOwner", managerName, {}}, [this](sd_bus_message* answer) {
        if (timedOut(answer)) return;  // patience ends at the same time
        const bool isError = sd_bus_message_is_method_error(answer, nullptr) != 0;
        if (isError &&
            !sd_bus_message_is_method_error(answer, "org.freedesktop.DBus.Error.NameHasNoOwner"))
          return;
        const char* owner = "";
        if (!isError && sd_bus_message_read_basic(answer, 's', &owner) <= 0) return;
        patience_.invalidate();
        connectedAt_ = RunLoop::current().now();
        setOwner(owner);
      });
}

void NetworkManagerFollower::lost() {
  if (reconnect_.isValid()) return;
  patience_.invalidate();
  if (connectedAt_ && RunLoop::current().now() - *connectedAt_ >= lasting) connecting_.restart();
  connectedAt_.reset();
  setOwner({});
  reconnect_ = RunLoop::current().after(connecting_.next(), [this] { connect(); });
}

void NetworkManagerFollower::setOwner(std::string_view uniqueName) {
  if (owner_ == uniqueName) return;
  owner_ = uniqueName;
  ++epoch_;
  objects_ = {};
  stirred_.clear();
  toAsk_.clear();
  waiting_ = 0;
  incomplete_ = false;
  burst_.invalidate();
  askAgain_.invalidate();
  asking_.restart();
  if (owner_.empty())
    tell();
  else
    askAll();
}

void NetworkManagerFollower::onOwnerChanged(sd_bus_message* message) {
  const char *name = nullptr, *old = nullptr, *now = nullptr;
  if (senderOf(message) != busName) return;
  if (sd_bus_message_read(message, "sss", &name, &old, &now) > 0 &&
      std::string_view(name) == managerName)
    setOwner(now);
}

void NetworkManagerFollower::onSettingsSignal(sd_bus_message* message) {
  const bool added = sd_bus_message_is_signal(message, nullptr, "NewConnection") > 0;
  if (!added && sd_bus_message_is_signal(message, nullptr, "ConnectionRemoved") <= 0) return;
  const auto path = readPath(message);
  if (!path) return;
  if (added) return stir(About::settings, *path);
  objects_.connections.erase(*path);
  gather();
}

void NetworkManagerFollower::onConnectionUpdated(sd_bus_message* message) {
  stir(About::settings, pathOf(message));
}

void NetworkManagerFollower::onManagerProperties(sd_bus_message* message) {
  if (tellsOf(message, {"ActiveConnections"})) stir(About::activeConnections);
}

void NetworkManagerFollower::onActiveProperties(sd_bus_message* message) {
  const auto path = pathOf(message);
  if (objects_.active.count(path) > 0) stir(About::active, path);
}

void NetworkManagerFollower::onDeviceProperties(sd_bus_message* message) {
  const auto path = pathOf(message);
  if (objects_.deviceNames.count(path) > 0 && tellsOf(message, {"Interface", "IpInterface"}))
    stir(About::device, path);
}

void NetworkManagerFollower::stir(About about, const std::string& path) {
  if (about == About::settings && objects_.connections.count(path) == 0) {
    if (objects_.connections.size() >= mostConnections) return;
    objects_.connections[path];  // an Updated may be the first that is heard of one
  }
  stirred_.emplace(about, path);
  gather();
}

void NetworkManagerFollower::gather() {
  if (!burst_.isValid()) burst_ = RunLoop::current().after(burst, [this] { endBurst(); });
}

void NetworkManagerFollower::endBurst() {
  // One round at a time, so that each ends, however fast changes come.
  if (waiting_ > 0) return gather();
  toAsk_.merge(stirred_);
  stirred_.clear();
  ask();
}

void NetworkManagerFollower::askAll() {
  toAsk_.emplace(About::connections, "");
  toAsk_.emplace(About::activeConnections, "");
  ask();
}

void NetworkManagerFollower::ask() {
  while (waiting_ < mostWaiting && !toAsk_.empty()) {
    const auto question = std::move(toAsk_.extract(toAsk_.begin()).value());
    try {
      send(question);
      ++waiting_;
    } catch (const std::system_error&) {
      incomplete_ = true;
    }
  }
  if (waiting_ == 0) roundEnded();
}

void NetworkManagerFollower::send(const Question& question) {
  const auto& path = question.second;
  BusConnection::Call call;
  switch (question.first) {
    case About::connections:
      call = {owner_, settingsPath, settingsInterface, "ListConnections", {}, {}};
      break;
    case About::activeConnections:
      call = {owner_, managerPath, propertiesInterface, "Get", managerName, "ActiveConnections"};
      break;
    case About::active:
      call = {owner_, path, propertiesInterface, "GetAll", activeInterface, {}};
      break;
    case About::device:
      call = {owner_, path, propertiesInterface, "GetAll", deviceInterface, {}};
      break;
    case About::settings:
      call = {owner_, path, connectionInterface, "GetSettings", {}, {}};
      break;
  }
  bus_->call(call, [this, question, epoch = epoch_](sd_bus_message* message) {
    if (epoch == epoch_) answered(question, message);
  });
}

void NetworkManagerFollower::answered(const Question& question, sd_bus_message* message) {
  --waiting_;
  // The answer may be lost, but not the count of what is waited for.
  bool taken = false;
  guarded("an answer of NetworkManager", [&] { taken = take(question, message); });
  if (!taken) incomplete_ = true;
  ask();
}

void NetworkManagerFollower::roundEnded() {
  std::set<std::string_view> used;
  for (const auto& [path, active] : objects_.active) used.insert(active.device);
  std::erase_if(objects_.deviceNames, [&](const auto& each) { return !used.contains(each.first); });
  if (!incomplete_)
    asking_.restart();
  else if (!askAgain_.isValid())
    askAgain_ = RunLoop::current().after(asking_.next(), [this] { askAll(); });
  incomplete_ = false;
  tell();
}

void NetworkManagerFollower::tell() {
  if (telling_.isValid()) return;
  // Apart from the bus's own calls: the client may end inside `changed`, and the bus with it.
  telling_ = RunLoop::current().after(0s, [this] {
    auto connections = managedConnections(objects_);
    const auto told = told_;
    if (connections == told->connections) return;
    told->connections = std::move(connections);
    if (told->wanted && told->changed) guarded("a follower of NetworkManager", told->changed);
  });
}

bool NetworkManagerFollower::take(const Question& question, sd_bus_message* message) {
  switch (question.first) {
    case About::connections:
      return takeConnections(message);
    case About::activeConnections:
      return takeActiveConnections(message);
    case About::active:
      return takeActive(question.second, message);
    case About::device:
      return takeDevice(question.second, message);
    case About::settings:
      return takeSettings(question.second, message);
  }
  return true;
}

bool NetworkManagerFollower::takeConnections(sd_bus_message* message) {
  const auto paths = readPaths(message);
  if (!paths) return false;
  std::map<std::string, ConnectionSettings> connections;
  for (const auto& path : *paths) {
    if (connections.size() >= mostConnections) break;
    const auto known = objects_.connections.find(path);
    connections.emplace(path, known == objects_.connections.end() ? ConnectionSettings()
                                                                  : std::move(known->second));
    toAsk_.emplace(About::settings, path);
  }
  objects_.connections = std::move(connections);
  return true;
}

bool NetworkManagerFollower::takeActiveConnections(sd_bus_message* message) {
  auto paths = readPathsProperty(message);
  if (!paths) return false;
  if (paths->size() > mostActive) paths->resize(mostActive);
  const std::set<std::string_view> kept(paths->begin(), paths->end());
  for (const auto& [path, active] : objects_.active)
    if (!kept.contains(path)) askForSettings(active.connection);
  std::erase_if(objects_.active, [&](const auto& each) { return !kept.contains(each.first); });
  for (const auto& path : *paths) {
    objects_.active[path];
    toAsk_.emplace(About::active, path);
  }
  objects_.activePaths = std::move(*paths);
  return true;
}

bool NetworkManagerFollower::takeActive(const std::string& path, sd_bus_message* message) {
  const auto known = objects_.active.find(path);
  if (known == objects_.active.end()) return true;
  auto active = readActive(message);
  if (!active && timedOut(message)) return false;
  if (!active) active.emplace();
  if (active->state != known->second.state) askForSettings(active->connection);
  if (!active->device.empty()) toAsk_.emplace(About::device, active->device);
  known->second = std::move(*active);
  return true;
}

bool NetworkManagerFollower::takeDevice(const std::string& path, sd_bus_message* message) {
  auto name = readDeviceName(message);
  if (!name && timedOut(message)) return false;
  objects_.deviceNames[path] = std::move(name).value_or("");
  return true;
}

bool NetworkManagerFollower::takeSettings(const std::string& path, sd_bus_message* message) {
  const auto known = objects_.connections.find(path);
  if (known == objects_.connections.end()) return true;
  auto settings = readSettings(message);
  if (!settings && timedOut(message)) return false;
  // Another error: it is gone, or not for this user to see.
  known->second = std::move(settings).value_or(ConnectionSettings());
  return true;
}

// NetworkManager notes when a connection was used without telling of it.
void NetworkManagerFollower::askForSettings(const std::string& path) {
  if (objects_.connections.count(path) > 0) toAsk_.emplace(About::settings, path);
}

}  // namespace vantile
