#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <string>

#include "vantile/platform/host_memory.h"
#include "vantile/platform/linux/kept_file.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/linux_memory.h"

namespace vantile {

/// Memory from /proc/meminfo, /proc/vmstat and the zram devices.
class LinuxHostMemory final : public HostMemory {
 public:
  explicit LinuxHostMemory(const LinuxRoots& roots = {});

  std::uint32_t host() override;
  void lookUpStatistics64() override { lookedUp_ = true; }
  bool hasStatistics64() const override { return lookedUp_; }
  std::optional<VirtualMemoryReading> statistics64(std::uint32_t host) override;
  std::optional<VirtualMemoryReading32> statistics32(std::uint32_t host) override;
  std::optional<PageCounts> pageCounts() override;
  std::uint64_t pageSize() const override { return pageSize_; }
  std::uint64_t physicalMemory() override;

 private:
  struct ZramDevice {
    KeptFile memory, traffic;
    bool used = false;  // since it was made, as far as it was looked at
  };

  std::optional<VirtualMemoryReading> read();
  std::optional<Meminfo> meminfo();
  std::optional<Vmstat> vmstat(const Meminfo& info);
  bool searchIsDue(const Meminfo& info);
  void findCompressors(const Meminfo& info);
  void readZram(bool unusedToo);
  bool addZram(const std::string& name, ZramDevice& device);
  bool isThere(const std::string& device) const;
  void findZramDevices();

  const std::string blockDevices_;
  const std::uint64_t pageSize_;
  std::atomic<bool> lookedUp_ = false;

  std::mutex mutex_;  // over all below
  KeptFile meminfo_, vmstat_, zswapSwitch_;
  std::size_t vmstatPart_;  // bytes to read where zswap is not in use
  bool zswapInUse_ = false;
  std::map<std::string, ZramDevice> zramDevices_;
  std::optional<std::uint64_t> swapTotal_;  // when the devices were last looked for
  unsigned readings_ = 0;
  ZramSum zram_;
  LinuxMemory memory_;
};

}  // namespace vantile
