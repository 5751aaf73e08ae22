#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "vantile/platform/posix/descriptor.h"

#include "fakes/temporary_folder.h"
#include "live/application_helper.h"
#include "live/command.h"

namespace vantile::testing {

/// A socket that is listened on at a path, as a bus's is, with nobody who answers.
class ListeningSocket {
 public:
  explicit ListeningSocket(const std::string& path)
      : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket_.get(), 8) != 0)
      throw std::runtime_error("can't listen at " + path);
  }

  /// The next connection that somebody made; none when there is no further one.
  Descriptor accepted() const {
    return Descriptor(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  }

 private:
  const Descriptor socket_;
};

/// A message bus of a test's own with, where wanted, a NetworkManager on it that does what it is
/// told. Both end with the test, also when it is killed.
class PrivateBus {
 public:
  static bool isPossible() {
    return run("dbus-daemon --version").status == 0 && run("gdbus help").status == 0 &&
           run("/usr/bin/python3 -c 'import dbusmock'").status == 0;
  }

  std::string address() const { return "unix:path=" + socket(); }
  std::string socket() const { return folder_.path("bus"); }

  void start() {
    folder_.remove("bus");
    const auto configuration = folder_.file(
        "bus.conf", "<busconfig><type>session</type><listen>" + address() +
                        "</listen><auth>EXTERNAL</auth><policy context='default'>"
                        "<allow send_destination='*' eavesdrop='true'/><allow eavesdrop='true'/>"
                        "<allow own='*'/></policy></busconfig>");
    daemon_ =
        started({"sh", "-c",
                 "exec dbus-daemon --nofork --nopidfile --config-file=" + quoted(configuration) +
                     " 2>" + quoted(folder_.path("bus.log"))});
    await("the bus", [this] {
      return call("org.freedesktop.DBus", "/", "org.freedesktop.DBus.GetId").status == 0;
    });
  }
  void end() { daemon_.reset(); }

  void startManager() {
    manager_ = started({"env", "DBUS_SYSTEM_BUS_ADDRESS=" + address(), "/usr/bin/python3", "-m",
                        "dbusmock", "--template", "networkmanager", "--logfile",
                        folder_.path("manager.log")});
    await("NetworkManager", [this] { return settings("ListConnections").status == 0; });
  }
  void endManager() { manager_.reset(); }
  pid_t manager() const { return manager_->pid(); }

  /// Calls methods of the manager; gives what it answered.
  Output call(const std::string& destination, const std::string& path, const std::string& method,
              const std::string& arguments = {}) const {
    return run("timeout 20 gdbus call --address " + address() + " --dest " + destination +
               " --object-path " + path + " --method " + method + " " + arguments);
  }
  Output onManager(const std::string& path, const std::string& method,
                   const std::string& arguments = {}) const {
    return call("org.freedesktop.NetworkManager", path, method, arguments);
  }
  Output settings(const std::string& method, const std::string& arguments = {}) const {
    return onManager("/org/freedesktop/NetworkManager/Settings",
                     "org.freedesktop.NetworkManager.Settings." + method, arguments);
  }

  /// Has NetworkManager keep a connection, whose section "connection" is `section` in GVariant's
  /// text format. Gives its object path.
  std::string add(const std::string& section) const {
    return pathIn(settings("AddConnection", quoted("{'connection': {" + section + "}}")));
  }
  void update(const std::string& path, const std::string& section) const {
    succeeded(onManager(path, "org.freedesktop.NetworkManager.Settings.Connection.Update",
                        quoted("{'connection': {" + section + "}}")));
  }
  void remove(const std::string& path) const {
    succeeded(onManager(path, "org.freedesktop.NetworkManager.Settings.Connection.Delete"));
  }
  std::string addDevice(const std::string& interface) const {
    return pathIn(mock("/org/freedesktop", "AddEthernetDevice",
                       "device" + interface + " " + interface + " 30"));
  }
  std::string activate(const std::string& connection, const std::string& device) const {
    return pathIn(manage("ActivateConnection", connection + " " + device + " /"));
  }
  void deactivate(const std::string& active) const {
    succeeded(manage("DeactivateConnection", active));
  }
  void set(const std::string& path, const std::string& interface,
           const std::string& properties) const {
    succeeded(mock(path, "UpdateProperties",
                   "org.freedesktop.NetworkManager." + interface + " " + quoted(properties)));
  }
  /// Has NetworkManager keep that many connections, and no other.
  void keepMany(int count) const {
    const auto number = std::to_string(count);
    define("Fill", "''", "for i in range(" + number + R"():
  self.AddObject("/c/%d" % i, "org.freedesktop.NetworkManager.Settings.Connection", {},
    [("GetSettings", "", "a{sa{sv}}", "ret = {'connection': {'uuid': 'u%d'}}" % i)]))");
    define("ListConnections", "ao", R"(ret = ["/c/%d" % i for i in range()" + number + ")]");
    succeeded(settings("Fill"));
  }
  /// Has NetworkManager's settings answer a method without arguments by what that Python does.
  void define(const std::string& method, const std::string& answerType,
              const std::string& code) const {
    succeeded(mock("/org/freedesktop/NetworkManager/Settings", "AddMethod",
                   "org.freedesktop.NetworkManager.Settings " + method + " '' " + answerType + " " +
                       quoted(code)));
  }

 private:
  Output mock(const std::string& path, const std::string& method,
              const std::string& arguments) const {
    return onManager(path, "org.freedesktop.DBus.Mock." + method, arguments);
  }

  using Program = std::unique_ptr<StartedApplication>;

  static Program started(std::vector<std::string> words) {
    words.insert(words.begin(), {"--pdeathsig", "KILL"});
    return std::make_unique<StartedApplication>("/usr/bin/setpriv", words);
  }

  template <class Condition>
  static void await(const char* what, Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end)
        throw std::runtime_error(std::string(what) + " did not come");
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }

  Output manage(const std::string& method, const std::string& arguments) const {
    return onManager("/org/freedesktop/NetworkManager", "org.freedesktop.NetworkManager." + method,
                     arguments);
  }
  static const Output& succeeded(const Output& output) {
    if (output.status != 0) throw std::runtime_error(output.text);
    return output;
  }
  static std::string pathIn(const Output& output) {
    const auto& text = succeeded(output).text;
    const auto begin = text.find('/');
    return text.substr(begin, text.find('\'', begin) - begin);
  }

  TemporaryFolder folder_;
  Program daemon_, manager_;
};

}  // namespace vantile::testing
