#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/foundation/run_loop.h"
#include "vantile/platform/linux/bus_connection.h"
#include "vantile/platform/linux/managed_connections.h"
#include "vantile/platform/linux/retry_pace.h"

namespace vantile {

class NetworkManagerFollower;

/// What a client and its follower have in common. The follower belongs to the loop's thread, the
/// client may end on any.
struct ToldConnections {
  explicit ToldConnections(std::function<void()> call) : changed(std::move(call)) {}

  const std::function<void()> changed;
  std::atomic<bool> wanted = true;                   ///< whether the client is still there
  std::vector<ManagedConnection> connections;        ///< loop thread
  const NetworkManagerFollower* follower = nullptr;  ///< loop thread; null once it is gone
};

/// Keeps NetworkManager's objects up to date: it listens for changes, gathers those of a moment,
/// then asks anew for what they were about, and tells when all answers are there. What fails for a
/// reason that may pass (no bus, a bus or NetworkManager that does not answer) is tried again at
/// RetryPace's pace. Nothing else wakes the loop. Loop thread only.
class NetworkManagerFollower {
 public:
  NetworkManagerFollower(std::string address, std::shared_ptr<ToldConnections> told)
      : address_(std::move(address)), told_(std::move(told)) {
    told_->follower = this;
  }
  ~NetworkManagerFollower() { told_->follower = nullptr; }
  NetworkManagerFollower(const NetworkManagerFollower&) = delete;
  NetworkManagerFollower& operator=(const NetworkManagerFollower&) = delete;

  /// Begins; false when there can never be a bus at that address.
  bool connect();

 private:
  enum class About { connections, activeConnections, active, device, settings };
  /// What is asked: about all, or about the object of that path.
  using Question = std::pair<About, std::string>;

  void openBus();
  void listenToManager(const std::string& rule,
                       void (NetworkManagerFollower::*arrived)(sd_bus_message*));
  void askForOwner();
  void lost();
  void setOwner(std::string_view uniqueName);

  void onOwnerChanged(sd_bus_message* message);
  void onSettingsSignal(sd_bus_message* message);
  void onConnectionUpdated(sd_bus_message* message);
  void onManagerProperties(sd_bus_message* message);
  void onActiveProperties(sd_bus_message* message);
  void onDeviceProperties(sd_bus_message* message);

  /// Something is to be asked once this burst is over.
  void stir(About about, const std::string& path = {});
  void gather();
  void endBurst();

  void askAll();
  void ask();
  void send(const Question& question);
  void answered(const Question& question, sd_bus_message* message);
  void roundEnded();
  void tell();

  // Each tells whether the answer was one.
  bool take(const Question& question, sd_bus_message* message);
  bool takeConnections(sd_bus_message* message);
  bool takeActiveConnections(sd_bus_message* message);
  bool takeActive(const std::string& path, sd_bus_message* message);
  bool takeDevice(const std::string& path, sd_bus_message* message);
  bool takeSettings(const std::string& path, sd_bus_message* message);
  void askForSettings(const std::string& path);

  const std::string address_;
  const std::shared_ptr<ToldConnections> told_;
  std::unique_ptr<BusConnection> bus_;
  std::optional<TimerSchedule::Moment> connectedAt_;
  RetryPace connecting_, asking_;
  Timer patience_, reconnect_, askAgain_, burst_, telling_;

  std::string owner_;        ///< NetworkManager's unique name; empty while it is not on the bus
  std::uint64_t epoch_ = 0;  ///< of the owner: answers to questions of an older one are void
  NetworkManagerObjects objects_;
  std::set<Question> stirred_, toAsk_;
  std::size_t waiting_ = 0;  ///< questions without an answer yet
  bool incomplete_ = false;  ///< something of this round has to be asked again
};

}  // namespace vantile
