// A network monitor that several threads use and let go of, while the kernel tells its own thread
// of changes. The kernel and NetworkManager are played by the test.

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <sys/eventfd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "vantile/foundation/run_loop.h"
#include "vantile/network/net_manage.h"
#include "vantile/network/network.h"
#include "vantile/platform/linux/configuration_store.h"
#include "vantile/platform/posix/descriptor.h"

#include "fakes/fake_netlink.h"
#include "fakes/fake_network_ports.h"
#include "fakes/gate.h"
#include "fakes/recorded_log.h"
#include "fakes/temporary_folder.h"

namespace vantile::testing {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t running = 0x10001;

/// Tells of changes until it ends.
struct FakeManager final : NetworkManagerClient {
  FakeManager(const std::vector<ManagedConnection>& connections, std::function<void()>& changed)
      : all(connections), tells(changed) {}
  ~FakeManager() override { tells = nullptr; }
  const std::vector<ManagedConnection>& connections() const override { return all; }
  const std::vector<ManagedConnection>& all;
  std::function<void()>& tells;
};

/// A thread with a run loop of its own, on which the network's changes come.
class NetworkOnAThread : public ::testing::Test {
 protected:
  NetworkOnAThread() {
    kernel.descriptor = counter.get();
    links(running);
    kernel.answers[RTM_GETADDR] = FakeNetlink::list(RTM_NEWADDR, {});
    kernel.answers[RTM_GETROUTE] = FakeNetlink::list(RTM_NEWROUTE, {});
    sources.open = kernel.opener();
    sources.resolver = {folder.path("resolv.conf"), folder.path("stub")};
    sources.follow = [this](std::function<void()> changed) {
      managerChanged = std::move(changed);
      return std::make_unique<FakeManager>(connections, managerChanged);
    };
    NetworkPorts::installed().store = std::make_shared<LinuxConfigurationStore>(sources);
    (*ports.interfaces)["eth0"].received = 1000;
  }
  ~NetworkOnAThread() override { endThread(); }

  /// Begins the thread, which calls `first` and then serves its loop.
  void begin(std::function<void()> first) {
    std::promise<std::shared_ptr<RunLoop>> begun;
    auto loop = begun.get_future();
    thread_ = std::thread([this, first = std::move(first), begun = std::move(begun)]() mutable {
      first();
      auto& own = RunLoop::current();
      const auto reading = own.every(1ms, [this] { tellOfSomething(); });
      begun.set_value(own.shared_from_this());
      own.run();
    });
    loop_ = loop.get();
  }
  void endThread() {
    if (!thread_.joinable()) return;
    loop_->stop();
    loop_.reset();
    thread_.join();
  }
  /// What the thread's loop makes of it.
  int openThere() {
    const auto open = std::make_shared<std::promise<int>>();
    loop_->post([this, open] { open->set_value(kernel.openNow); });
    return open->get_future().get();
  }

  void links(std::uint32_t flags) {
    kernel.answers[RTM_GETLINK] = FakeNetlink::list(
        RTM_NEWLINK, {linkPayload(1, "lo", running | 8, 772), linkPayload(2, "eth0", flags)});
  }

  Descriptor counter{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  FakeNetlink kernel;  // of the thread, like the two below, while it runs
  std::vector<ManagedConnection> connections;
  std::function<void()> managerChanged;
  TemporaryFolder folder;
  FakeNetworkPorts ports;
  ConfigurationSources sources;
  std::atomic<bool> changes = false;  // whether the kernel and NetworkManager tell of some

 private:
  void tellOfSomething() {
    eventfd_t ignored = 0;  // the fake kernel has no socket that would empty itself
    ::eventfd_read(counter.get(), &ignored);
    if (!changes) return;
    const bool even = ++told_ % 2 == 0;
    connections = {{"uuid", even ? "Office" : "Home", "eth0", "802-3-ethernet", even}};
    if (managerChanged) managerChanged();
    kernel.tell(message(RTM_NEWLINK, linkPayload(2, "eth0", even ? running : 0)));
    ::eventfd_write(counter.get(), 1);
  }

  int told_ = 0;
  std::shared_ptr<RunLoop> loop_;
  std::thread thread_;
};

TEST_F(NetworkOnAThread, OneThatIsLetGoOfElsewhereAmidAChangeOutlivesTheChange) {
  std::shared_ptr<NetManage> manage;
  Gate gate;
  std::atomic<bool> held = false;
  begin([&] { manage = NetManage::init(); });
  ASSERT_TRUE(manage);
  const auto arm = [&] {
    kernel.onRequest = [&](std::uint16_t) {
      if (!held.exchange(true)) gate.pass();
    };
    changes = true;
  };
  arm();
  gate.awaitEntry();  // the session is about to list something
  manage.reset();
  EXPECT_GT(kernel.openNow, 0);
  gate.open();
  EXPECT_EQ(openThere(), 0);
}

TEST_F(NetworkOnAThread, OneWhoseThreadIsGoneEndsWhereItIsLetGoOf) {
  std::shared_ptr<Network> monitor;
  begin([&] { monitor = Network::init(); });
  endThread();
  EXPECT_GT(kernel.openNow, 0);
  monitor.reset();
  EXPECT_EQ(kernel.openNow, 0);
}

TEST_F(NetworkOnAThread, OneThatIsLetGoOfWhileItsThreadEndsEndsOnce) {
  for (int i = 0; i < 20; ++i) {
    std::shared_ptr<Network> monitor;
    begin([&] { monitor = Network::init(); });
    std::thread other([&] { monitor.reset(); });
    endThread();
    other.join();
    EXPECT_EQ(kernel.openNow, 0);
  }
}

TEST_F(NetworkOnAThread, SamplesOnOtherThreadsAndChangesOnItsOwnDoNotMeet) {
  std::shared_ptr<Network> monitor;
  std::atomic<int> calls = 0;
  begin([&] {
    monitor = Network::init();
    const auto delegate = std::make_shared<NetworkDelegate>();
    delegate->networkStatus = [&calls](const Array& services) {
      for (const Value& each : services)
        calls += (*each.as<std::shared_ptr<Dictionary>>())->contains("user_defind_name");
    };
    monitor->setDelegate(delegate);
    changes = true;
  });
  std::vector<std::thread> others;
  for (int i = 0; i < 2; ++i)
    others.emplace_back([held = monitor] {
      for (int sample = 0; sample < 300; ++sample) {
        held->updateInfo();
        std::this_thread::sleep_for(100us);
      }
    });
  monitor.reset();
  for (auto& each : others) each.join();
  EXPECT_GE(calls, 600);
  changes = false;
  EXPECT_EQ(openThere(), 0) << "it ended on its own thread";
}

TEST_F(NetworkOnAThread, AStoreThatCantBeOpenedSaysNothing) {
  const RecordedLog log;
  kernel.descriptor = -1;  // which the loop refuses
  std::thread([&] { EXPECT_FALSE(NetManage::init()); }).join();
  kernel.opens = false;
  std::thread([&] { EXPECT_FALSE(NetManage::init()); }).join();
  EXPECT_TRUE(log.lines.empty());
  EXPECT_EQ(kernel.openNow, 0);
}

}  // namespace
}  // namespace vantile::testing
