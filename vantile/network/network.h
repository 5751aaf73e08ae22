#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "vantile/foundation/api.h"
#include "vantile/foundation/monitor.h"
#include "vantile/foundation/value.h"
#include "vantile/network/network_keys.h"

namespace vantile {

class NetManage;
class NetPPP;
class ThroughputHistory;
struct NetworkPorts;

/// Told of samples of the network. The operation may be left empty.
struct NetworkDelegate {
  /// The network services, the primary one first, dictionaries of network_keys.h: once for every
  /// service, each time with all of them. They are the callee's to read during the call; later
  /// samples change them. Called on the thread that samples; a sample on another thread waits
  /// meanwhile.
  std::function<void(const Array& services)> networkStatus;
};

/// Samples the network once a refresh interval: the services, with what their interfaces moved.
///
/// macOS and Linux: as `NetManage`. On macOS a sample, and `init`, may wait for the PPP daemon, for
/// 2 seconds in all.
class VANTILE_API Network final : public Monitor<NetworkDelegate> {
 public:
  /// The instance that the process shares, made at the first call. It samples every second on the
  /// run loop of the thread that made it. Never destroyed. Any thread.
  static std::shared_ptr<Network> singleton();

  /// A new monitor that samples every second on the calling thread's run loop. Where the system
  /// refuses the configuration it tells of nothing.
  static std::shared_ptr<Network> init();

  ~Network() override;
  Network(const Network&) = delete;
  Network& operator=(const Network&) = delete;

  /// Takes one sample; without services nobody is told. Any thread, one sample at a time; one from
  /// inside a delegate call is taken. The system's changes are taken in on the run loop of the
  /// thread that made the monitor, wherever its interval was set; while that loop is not served the
  /// services stay as they were.
  void updateInfo(const Timer* firing = nullptr) override;

  /// How many samples the history keeps, 1 at first: that many and one more by turns, and a single
  /// one for 1 and less. Any thread.
  std::int32_t stayNetHistoryCount() const { return _stayNetHistoryCount; }
  void setStayNetHistoryCount(std::int32_t count) { _stayNetHistoryCount = count; }

 private:
  explicit Network(NetworkPorts ports);
  void sample();
  std::shared_ptr<Array> takeSample();
  double sinceLastSample() const;
  bool decorate(Dictionary& entry, std::size_t& place);

  const std::unique_ptr<const NetworkPorts> ports_;
  std::recursive_mutex sampleLock_;  // over a sample and its delegates' calls, which read it
  std::shared_ptr<NetManage> netManage;
  std::shared_ptr<NetPPP> netPPP;
  std::atomic<std::int32_t> _stayNetHistoryCount = 0;
  std::shared_ptr<Dictionary> preferredInterfaceInfo;  // belongs to the interface; nobody reads it
  std::optional<std::chrono::steady_clock::time_point> lastSampleDate;
  std::unique_ptr<ThroughputHistory> history_;
};

}  // namespace vantile
