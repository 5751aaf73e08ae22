#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <list>
#include <memory>
#include <string>

namespace vantile {

/// One connection to a message bus on the calling thread's loop. It never waits for the bus:
/// connecting, authentication and every answer are events of the loop. Loop thread only.
class BusConnection {
 public:
  using Arrived = std::function<void(sd_bus_message*)>;

  /// A method to be called.
  struct Call {
    std::string destination, path, interface, member;
    std::string first, second;  ///< its arguments, texts; empty ones are not sent
  };

  /// Begins to connect. `lost` is called when the bus has refused or ended the connection, and must
  /// not let go of it there. Throws std::system_error when the connection can't even begin.
  BusConnection(const std::string& address, std::function<void()> lost);
  ~BusConnection();
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  /// Calls `arrived` with each message that matches; a refused rule ends the connection. What was
  /// sent by somebody else than the rule's sender may come too.
  void listen(const std::string& rule, Arrived arrived);

  /// Calls `answered` with the answer, which is an error when the connection ended or none came in
  /// time. May be called before the connection stands. Nothing is started to answer. Throws
  /// std::system_error when the call can't be sent.
  void call(const Call& call, Arrived answered);

 private:
  struct Waiting;
  static int onMessage(sd_bus_message*, void* waiting, sd_bus_error*);
  static int onAnswer(sd_bus_message*, void* waiting, sd_bus_error*);

  std::list<Waiting> listening_, calls_;
  sd_bus* bus_ = nullptr;
};

}  // namespace vantile
