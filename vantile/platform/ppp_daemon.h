#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>

#include "vantile/foundation/api.h"

namespace vantile {

/// How an attempt to move bytes ended.
enum class PppTransfer {
  done,
  closed,  ///< refused, or the other side is gone
  late,    ///< the time was up first; part of the bytes may have been moved
};

/// A connection to the PPP daemon: a stream of bytes either way. Closed when it goes. Not
/// synchronised. No signal is raised, whatever the other side does.
class PppConnection {
 public:
  virtual ~PppConnection() = default;

  /// Sends all of `bytes`, waiting no longer than `within`.
  virtual PppTransfer send(std::string_view bytes, std::chrono::nanoseconds within) = 0;
  /// Fills `into` with the next `size` bytes, waiting no longer than `within`.
  virtual PppTransfer receive(char* into, std::size_t size, std::chrono::nanoseconds within) = 0;
};

/// What came of connecting; a connection where the outcome is `done`.
struct PppConnecting {
  PppTransfer outcome = PppTransfer::closed;
  std::unique_ptr<PppConnection> connection;
};

/// The daemon that keeps the machine's PPP links, as far as reaching it goes. Any thread.
class PppDaemon {
 public:
  virtual ~PppDaemon() = default;

  /// Connects, waiting no longer than `within`.
  /// macOS: a local stream socket to "/var/run/pppconfd".
  virtual PppConnecting reach(std::chrono::nanoseconds within) = 0;
};

/// The machine's daemon, shared by the process; null on a platform that has none.
/// Linux: null. PPP links are interfaces like any other there.
VANTILE_API std::shared_ptr<PppDaemon> systemPppDaemon();

}  // namespace vantile
