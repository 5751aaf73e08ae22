#include "vantile/platform/linux/network_manager.h"

#include <stdlib.h>

#include <algorithm>
#include <string_view>
#include <thread>
#include <utility>

#include "vantile/foundation/run_loop.h"
#include "vantile/platform/linux/network_manager_follower.h"

namespace vantile {
namespace {

/// The thread's followers. They go with their thread, wherever their clients are: sd-event and
/// sd-bus keep something of the thread's own.
thread_local std::vector<std::unique_ptr<NetworkManagerFollower>> followers;

void endFollower(const ToldConnections& told) {
  const auto found = std::find_if(followers.begin(), followers.end(),
                                  [&](const auto& each) { return each.get() == told.follower; });
  if (found == followers.end()) return;
  const auto ended = std::move(*found);
  followers.erase(found);
}

class FollowingClient final : public NetworkManagerClient {
 public:
  explicit FollowingClient(std::shared_ptr<ToldConnections> told)
      : told_(std::move(told)), loop_(RunLoop::current().weak_from_this()) {}

  ~FollowingClient() override {
    told_->wanted = false;
    if (thread_ == std::this_thread::get_id()) {
      if (told_->follower) endFollower(*told_);
    } else if (const auto loop = loop_.lock()) {
      loop->post([told = told_] {
        if (told->follower) endFollower(*told);
      });
    }
  }

  const std::vector<ManagedConnection>& connections() const override { return told_->connections; }

 private:
  const std::shared_ptr<ToldConnections> told_;
  const std::weak_ptr<RunLoop> loop_;
  const std::thread::id thread_ = std::this_thread::get_id();
};

std::string systemBusAddress() {
  const char* const address = ::secure_getenv("DBUS_SYSTEM_BUS_ADDRESS");
  return address && *address ? address : "unix:path=/run/dbus/system_bus_socket";
}

}  // namespace

// A bus that is not there yet may come, so it is looked for again; an address that can never be
// one, or that says that there is none, is no bus to ask.
std::unique_ptr<NetworkManagerClient> followNetworkManager(const std::string& address,
                                                           std::function<void()> changed) {
  const auto where = address.empty() ? systemBusAddress() : address;
  if (std::string_view(where).substr(0, 9) == "disabled:") return nullptr;
  const auto told = std::make_shared<ToldConnections>(std::move(changed));
  auto client = std::make_unique<FollowingClient>(told);
  auto follower = std::make_unique<NetworkManagerFollower>(where, told);
  if (!follower->connect()) return nullptr;
  followers.push_back(std::move(follower));
  return client;
}

}  // namespace vantile
