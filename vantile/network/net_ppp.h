#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

class PppConnection;
enum class PppCommand : std::uint16_t;
enum class PppTransfer;
struct NetworkPorts;

/// Controls the machine's PPP links through the daemon that keeps them.
///
/// An operation waits for the daemon for 2 seconds at most, connecting included, once those of
/// other threads are through, and gives nothing then; for the 30 seconds after that the daemon
/// counts as away and nothing waits for it. A connection that it closed is made anew by the next
/// operation. A controller whose first connection can't be made is null, and tried again by whoever
/// asks next.
///
/// macOS: pppconfd. Linux: there is no such daemon, and so no links; PPP links are interfaces like
/// any other.
class VANTILE_API NetPPP final {
 public:
  /// The controller that the process shares, made at the first call; null when the daemon can't be
  /// reached, and then tried again at the next call. Never destroyed. Any thread.
  static std::shared_ptr<NetPPP> singleton();

  /// A new controller, connected; null when the daemon can't be reached.
  static std::shared_ptr<NetPPP> init();

  ~NetPPP();
  NetPPP(const NetPPP&) = delete;
  NetPPP& operator=(const NetPPP&) = delete;

  /// Whether the platform has such a daemon. Any thread.
  bool hasDaemon() const;

  /// The payload of the reply to a whole request, header and payload; nothing when it has none, is
  /// longer than 64 KiB or tells of a failure. Operations take turns. Any thread.
  std::optional<std::string> pppconfdExecMessage(std::string_view request);

  /// The state of a service's or an interface's link: the keys "status" and, where that is 8,
  /// connected, "inBytes", "outBytes", "timeElapsed" and "timeRemaining", unsigned 32-bit. Null
  /// when the daemon knows no such link. Any thread.
  std::shared_ptr<Dictionary> queryStatusWithServiceID(std::string_view serviceID);
  std::shared_ptr<Dictionary> queryStatusWithInterfaceName(std::string_view name);

  /// Starts or ends the connection of a service; what comes of it is not told. Any thread.
  void connectWithServiceID(std::string_view serviceID);
  void disconnectWithServiceID(std::string_view serviceID);

  /// How many links the daemon has; 0 when it does not tell. Any thread.
  std::uint32_t queryPPPconfdLinkCount();

 private:
  using Moment = std::chrono::steady_clock::time_point;

  explicit NetPPP(NetworkPorts ports);
  std::optional<std::string> exchange(std::string_view request, Moment until);
  std::optional<std::string> reply(Moment until);
  bool isConnected(Moment until);
  bool isDone(PppTransfer outcome);
  void dropStream(bool away);
  std::chrono::nanoseconds left(Moment until) const;
  std::optional<std::string> ask(PppCommand command, std::uint32_t link, std::string_view payload,
                                 Moment until);
  std::optional<std::uint32_t> link(PppCommand by, std::string_view name, Moment until);
  std::shared_ptr<Dictionary> status(PppCommand by, std::string_view name);
  void command(PppCommand command, std::string_view serviceID);
  Moment deadline() const;

  const std::unique_ptr<const NetworkPorts> ports_;
  std::mutex turn_;  // over one operation: its requests and replies share the stream
  std::unique_ptr<PppConnection> pppconfdHandle;
  std::optional<Moment> awayUntil_;
};

}  // namespace vantile
