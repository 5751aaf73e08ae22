#include "soaked.h"

#include <sys/mount.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <utility>

#include "vantile/disk/disk.h"
#include "vantile/disk/disk_ports.h"
#include "vantile/memory/memory.h"
#include "vantile/network/net_manage.h"
#include "vantile/network/network.h"
#include "vantile/platform/linux/volumes.h"
#include "vantile/power/battery_info.h"
#include "vantile/sensors/cpu.h"

#include "fakes/temporary_folder.h"
#include "laptop.h"
#include "live/command.h"
#include "live/private_links.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

/// Does that as work posted to the run loop, which is served as a polling host serves it.
void posted(std::function<void()> work) {
  auto& loop = RunLoop::current();
  loop.post(std::move(work));
  loop.dispatch();
}

/// Serves the thread's loop until `holds`, for so long at most. Whether it came to hold.
bool served(const std::function<bool()>& holds, std::chrono::milliseconds within) {
  auto& loop = RunLoop::current();
  const auto until = std::chrono::steady_clock::now() + within;
  while (!holds()) {
    if (std::chrono::steady_clock::now() >= until) return false;
    const auto wake = loop.after(1ms, [&loop] { loop.stop(); });
    loop.run();
  }
  return true;
}

/// Samples of a monitor, and now and then another interval, which replaces its timer.
template <class Monitor, class Delegate>
class SoakedMonitor : public Soaked {
 public:
  SoakedMonitor(std::shared_ptr<Monitor> monitor, std::shared_ptr<Delegate> delegate)
      : monitor_(std::move(monitor)), delegate_(std::move(delegate)) {
    monitor_->setDelegate(delegate_);
  }
  ~SoakedMonitor() override {
    monitor_->setDelegate(nullptr);
    monitor_->setFreshInterval(0);
  }
  SoakedMonitor(const SoakedMonitor&) = delete;
  SoakedMonitor& operator=(const SoakedMonitor&) = delete;

  void turn(long number) override {
    posted([this, number] {
      if (number % 100 == 2) monitor_->setFreshInterval(number % 200 == 2 ? 3600 : 1800);
      sample(number);
    });
  }

 protected:
  virtual void sample(long) { monitor_->updateInfo(); }

  const std::shared_ptr<Monitor> monitor_;
  const std::shared_ptr<Delegate> delegate_;
};

class Memory final : public SoakedMonitor<KVDMemory, MemoryDelegate> {
 public:
  explicit Memory(std::shared_ptr<KVDMemory> monitor)
      : SoakedMonitor(std::move(monitor), std::make_shared<MemoryDelegate>()) {
    delegate_->updateMemoryStatusWithVMStatusWithSwapDict =
        [this](const Dictionary&, const Dictionary&, const Dictionary*) { ++told_; };
  }

  /// Every kind there is.
  void sample(long number) override {
    switch (number % 4) {
      case 0:
        return monitor_->memoryStats32();
      case 1:
        return monitor_->freshMemoryInfo();
      default:
        monitor_->updateInfo();
    }
  }
};

class Processor final : public SoakedMonitor<CPUStatus, CPUDelegate> {
 public:
  Processor() : SoakedMonitor(CPUStatus::init(), std::make_shared<CPUDelegate>()) {
    delegate_->cpuUsedWithSystemWithUserWithIdle = [this](float, float, float) { ++told_; };
    delegate_->processorWithTaskCountWithThreadCount = [](std::int32_t, std::int32_t) {};
    delegate_->loadAverageWith1mWith5mWith15m = [](float, float, float) {};
  }
};

class Connections final : public SoakedMonitor<Network, NetworkDelegate> {
 public:
  Connections() : SoakedMonitor(Network::init(), std::make_shared<NetworkDelegate>()) {
    delegate_->networkStatus = [this](const Array&) { ++told_; };
  }
};

/// Links and addresses that come, go and change, each time followed by a sample.
class Changes final : public Soaked {
 public:
  ~Changes() override {
    if (ip_) ::pclose(ip_);
  }

  void turn(long number) override {
    constexpr std::array<const char*, 8> orders = {"link set b1 down",
                                                   "link set b1 up",
                                                   "address add 10.3.0.1/24 dev a1",
                                                   "address del 10.3.0.1/24 dev a1",
                                                   "link add va type veth peer name vb",
                                                   "link del va",
                                                   "route add default dev a1 metric 9",
                                                   "route del default dev a1 metric 9"};
    const auto list = manage_->queryInterfaceLists();
    std::fprintf(ip_, "%s\n", orders[static_cast<std::size_t>(number) % orders.size()]);
    std::fflush(ip_);
    if (served([&] { return manage_->queryInterfaceLists() != list; }, 2s)) ++told_;
    monitor_->updateInfo();
  }

  bool isReady() const { return manage_ && monitor_ && ip_; }

 private:
  const std::shared_ptr<NetManage> manage_ = NetManage::init();
  const std::shared_ptr<Network> monitor_ = Network::init();
  FILE* const ip_ = ::popen("ip -batch -", "w");
};

/// A volume in a file, in a mount namespace of its own. The monitor sees it alone.
class Volume {
 public:
  std::string mount() {
    using testing::quoted;
    using testing::run;
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr))
      return "no mount namespace";
    folder_.file("image");
    folder_.folder("proc/self");
    const auto at = folder_.folder("volume"), image = quoted(folder_.path("image"));
    const auto done = run("truncate -s 16M " + image + " && mkfs.ext4 -q -F " + image +
                          " && mount -o loop " + image + " " + quoted(at));
    if (done.status != 0) return done.text;
    isMounted_ = true;
    std::ofstream(at + "/film.mkv") << std::string(100000, 'x');
    std::ifstream all("/proc/self/mountinfo");
    std::ofstream alone(folder_.path("proc/self/mountinfo"));
    for (std::string line; std::getline(all, line);)
      if (line.find(" " + at + " ") != line.npos) alone << line << "\n";
    return {};
  }
  ~Volume() {
    if (isMounted_) ::umount2(folder_.path("volume").c_str(), MNT_DETACH);
  }
  Volume() = default;
  Volume(const Volume&) = delete;
  Volume& operator=(const Volume&) = delete;

  std::shared_ptr<Volumes> volumes() const {
    return std::make_shared<LinuxVolumes>(LinuxRoots{.proc = folder_.path("proc")},
                                          LinuxVolumes::Means{});
  }

 private:
  const testing::TemporaryFolder folder_;
  bool isMounted_ = false;
};

class Disk final : public SoakedMonitor<KVDDisk, DiskDelegate> {
 public:
  explicit Disk(std::unique_ptr<Volume> volume)
      : SoakedMonitor(KVDDisk::init(), std::make_shared<DiskDelegate>()),
        volume_(std::move(volume)) {
    delegate_->diskDetails = [this](const Array& volumes) {
      if (volumes.size() != 1) return;
      ++told_;
      const auto& row = **volumes[0].as<std::shared_ptr<Dictionary>>();
      isCounted_ = row.contains(keys::disk_movies);
    };
  }

  /// Samples until the volume was gone through.
  bool isCounted() {
    const auto counted = [this] {
      monitor_->updateInfo();
      return isCounted_;
    };
    return served(counted, 60s);
  }

 private:
  const std::unique_ptr<Volume> volume_;
  bool isCounted_ = false;
};

class Battery final : public Soaked {
 public:
  Battery() {
    auto delegate = std::make_shared<BatteryDelegate>();
    delegate->batteryWithRemaining = [this](const std::string&) { ++told_; };
    info_->setDelegate(std::move(delegate));
  }
  ~Battery() override { info_->setDelegate(nullptr); }
  Battery(const Battery&) = delete;
  Battery& operator=(const Battery&) = delete;

  void turn(long number) override {
    posted([this, number] {
      if (number % 500 == 7) info_->unpluggedTimerTick();
      number % 4 == 0 ? info_->updateStatus() : info_->updateCurrentStatus();
    });
  }

 private:
  const Laptop laptop_;
  const std::shared_ptr<KVDBatteryInfo> info_ = KVDBatteryInfo::init();
};

bool hasLinks(std::string& refusal) {
  constexpr int pairs = 5;
  if (testing::moveToPrivateLinks(pairs)) return true;
  refusal = "no private links";
  return false;
}

}  // namespace

std::unique_ptr<Soaked> soakedMemory(std::string& refusal) {
  auto monitor = KVDMemory::singleton();
  if (monitor) return std::make_unique<Memory>(std::move(monitor));
  refusal = "no memory statistics";
  return nullptr;
}

std::unique_ptr<Soaked> soakedProcessor(std::string&) {
  return std::make_unique<Processor>();
}

std::unique_ptr<Soaked> soakedNetwork(std::string& refusal) {
  return hasLinks(refusal) ? std::make_unique<Connections>() : nullptr;
}

std::unique_ptr<Soaked> soakedChanges(std::string& refusal) {
  if (!hasLinks(refusal)) return nullptr;
  auto changes = std::make_unique<Changes>();
  if (changes->isReady()) return changes;
  refusal = "no configuration";
  return nullptr;
}

std::unique_ptr<Soaked> soakedDisk(std::string& refusal) {
  auto volume = std::make_unique<Volume>();
  refusal = volume->mount();
  if (!refusal.empty()) return nullptr;
  DiskPorts::installed().volumes = volume->volumes();
  auto disk = std::make_unique<Disk>(std::move(volume));
  if (disk->isCounted()) return disk;
  refusal = "the volume was not gone through";
  return nullptr;
}

std::unique_ptr<Soaked> soakedBattery(std::string&) {
  return std::make_unique<Battery>();
}

}  // namespace vantile
