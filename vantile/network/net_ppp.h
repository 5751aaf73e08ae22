#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

class NetManage;
class PppConnection;
enum class PppCommand : std::uint16_t;
enum class PppTransfer;
struct NetworkPorts;

/// Controls the machine's PPP links through the daemon that keeps them.
///
/// An operation waits for 2 seconds at most, for those of other threads and for the daemon,
/// connecting included, and gives nothing then; so do all those of one sample of `Network` or one
/// call of `NetManage` together. For the 30 seconds after a daemon let the time pass it counts as
/// away for the whole process, and nothing waits for it. A connection that it closed is made anew
/// by the next operation. A controller whose first connection can't be made is null, and tried
/// again by whoever asks next.
///
/// macOS: pppconfd. Linux: there is no such daemon, and so no links; PPP links are interfaces like
/// any other.
class VANTILE_API NetPPP final {
 public:
  /// The controller that the process shares, made at the first call; null when there is a daemon
  /// and it can't be reached, and then tried again at the next call. Never destroyed. Any thread.
  static std::shared_ptr<NetPPP> singleton();

  /// A new controller, connected where there is a daemon; null when that can't be reached. Any
  /// thread.
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
  friend class NetManage;
  class Turn;
  using Moment = std::chrono::steady_clock::time_point;

  /// What came back of a request.
  struct Answer {
    bool given = false;  ///< a whole reply, whatever it said
    std::optional<std::string> payload;
  };
  /// The state of a link, null where the daemon knows no such link; nothing where it gave no
  /// answer.
  using Told = std::optional<std::shared_ptr<Dictionary>>;

  explicit NetPPP(NetworkPorts ports);
  Answer exchange(std::string_view request, Moment until);
  Answer reply(Moment until);
  bool isConnected(Moment until);
  bool isDone(PppTransfer outcome);
  void dropStream(bool away);
  std::chrono::nanoseconds left(Moment until) const;
  Answer ask(PppCommand command, std::uint32_t link, std::string_view payload, Moment until);
  Told status(PppCommand by, std::string_view name);
  void command(PppCommand command, std::string_view serviceID);

  const std::unique_ptr<const NetworkPorts> ports_;
  std::mutex turnLock_;  // over the two below; an operation's requests and replies are one turn
  std::condition_variable turnEnded_;
  bool isTaken_ = false;
  std::unique_ptr<PppConnection> pppconfdHandle;  // whose turn it is
};

}  // namespace vantile
