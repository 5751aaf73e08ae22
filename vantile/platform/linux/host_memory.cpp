#include "vantile/platform/linux/host_memory.h"

#include <unistd.h>

#include <memory>
#include <utility>

#include "vantile/platform/linux/folder_entries.h"

namespace vantile {
namespace {

// Everything wanted but zswap's counters stands in the first 2.1 KB of vmstat, and the kernel
// formats the file line by line: the rest would cost as much again. How much it takes exactly is
// learned; numbers may have grown that much longer at the next reading.
constexpr std::size_t firstPartOfVmstat = 2304;
constexpr std::size_t growthOfVmstat = 64;
constexpr std::size_t allOfMeminfo = 4096;
constexpr std::size_t allOfZramFile = 512;

// A zram device that is no swap, and zswap switched on, change nothing in meminfo, so they are
// looked for now and then, and so is the first use of a device; a change of the swap space is seen
// at once.
constexpr unsigned readingsBetweenSearches = 16;

}  // namespace

LinuxHostMemory::LinuxHostMemory(const LinuxRoots& roots)
    : blockDevices_(roots.sys + "/block"),
      pageSize_(static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE))),
      meminfo_(roots.proc + "/meminfo"),
      vmstat_(roots.proc + "/vmstat"),
      zswapSwitch_(roots.sys + "/module/zswap/parameters/enabled"),
      vmstatPart_(firstPartOfVmstat) {}

std::uint32_t LinuxHostMemory::host() {
  const std::lock_guard lock(mutex_);
  return meminfo() ? 1 : 0;
}

std::optional<Meminfo> LinuxHostMemory::meminfo() {
  // The kernel puts the file together as a whole, so one read that does not fill the buffer is all
  // of it; asking for its end would make it do so again.
  const auto text = meminfo_.beginning(allOfMeminfo);
  if (!text) return std::nullopt;
  return parseMeminfo(*text);
}

std::optional<Vmstat> LinuxHostMemory::vmstat(const Meminfo& info) {
  zswapInUse_ = zswapInUse_ || info.zswapped.value_or(0) > 0;
  if (!zswapInUse_) {
    const auto text = vmstat_.beginning(vmstatPart_);
    const auto counters = text ? parseVmstat(*text) : Vmstat{};
    if (counters.pgpgin && counters.pgpgout && counters.pgfault && counters.pglazyfreed) {
      vmstatPart_ = counters.bytes + growthOfVmstat;
      return counters;
    }
  }
  const auto text = vmstat_.text();
  if (!text) return std::nullopt;
  const auto counters = parseWholeVmstat(*text);
  vmstatPart_ = counters.bytes + growthOfVmstat;
  return counters;
}

bool LinuxHostMemory::searchIsDue(const Meminfo& info) {
  const bool due = readings_++ % readingsBetweenSearches == 0 || info.swapTotal != swapTotal_;
  swapTotal_ = info.swapTotal;
  return due;
}

void LinuxHostMemory::findCompressors(const Meminfo& info) {
  findZramDevices();
  const auto enabled = info.zswap ? zswapSwitch_.beginning(1) : std::nullopt;
  zswapInUse_ = zswapInUse_ || (enabled && *enabled == "Y");
}

void LinuxHostMemory::readZram(bool unusedToo) {
  zram_.beginReading();
  for (auto device = zramDevices_.begin(); device != zramDevices_.end();) {
    const bool wanted = unusedToo || device->second.used;
    if (!wanted || addZram(device->first, device->second) || isThere(device->first)) {
      ++device;
    } else {
      zram_.forget(device->first);
      device = zramDevices_.erase(device);
    }
  }
}

bool LinuxHostMemory::isThere(const std::string& device) const {
  return ::access((blockDevices_ + "/" + device).c_str(), F_OK) == 0;
}

/// False when its files could not be read: it may be gone.
bool LinuxHostMemory::addZram(const std::string& name, ZramDevice& device) {
  const auto mmStat = device.memory.beginning(allOfZramFile);
  const auto memory = mmStat ? parseZramMemory(*mmStat) : std::nullopt;
  const auto stat = device.traffic.beginning(allOfZramFile);
  const auto traffic = stat ? parseBlockTraffic(*stat) : std::nullopt;
  if (!memory || !traffic) return false;
  zram_.add(name, *memory, *traffic);
  device.used = device.used || memory->occupiedBytes > 0 || traffic->readSectors > 0 ||
                traffic->writtenSectors > 0;
  return true;
}

void LinuxHostMemory::findZramDevices() {
  forEachEntry(blockDevices_, [this](const dirent& entry) {
    const std::string name = entry.d_name;
    if (!name.starts_with("zram") || zramDevices_.contains(name)) return;
    const auto folder = blockDevices_ + "/" + name;
    zramDevices_.emplace(name,
                         ZramDevice{KeptFile(folder + "/mm_stat"), KeptFile(folder + "/stat")});
  });
}

std::optional<VirtualMemoryReading> LinuxHostMemory::read() {
  const std::lock_guard lock(mutex_);
  const auto info = meminfo();
  if (!info) return std::nullopt;
  const bool searching = searchIsDue(*info);
  if (searching) findCompressors(*info);
  const auto counters = vmstat(*info);
  if (!counters) return std::nullopt;
  readZram(searching);
  return memory_.reading(*info, *counters, zram_.totals(), pageSize_);
}

std::optional<VirtualMemoryReading> LinuxHostMemory::statistics64(std::uint32_t) {
  return lookedUp_ ? read() : std::nullopt;
}

std::optional<VirtualMemoryReading32> LinuxHostMemory::statistics32(std::uint32_t) {
  const auto reading = read();
  return reading ? std::optional(narrowed(*reading)) : std::nullopt;
}

std::optional<PageCounts> LinuxHostMemory::pageCounts() {
  const auto reading = read();
  if (!reading) return std::nullopt;
  const auto narrow = narrowed(*reading);
  return PageCounts{narrow.free, narrow.active, narrow.inactive, narrow.wired};
}

std::uint64_t LinuxHostMemory::physicalMemory() {
  const std::lock_guard lock(mutex_);
  const auto info = meminfo();
  return info ? info->memTotal.value_or(0) * 1024 : 0;
}

std::shared_ptr<HostMemory> systemHostMemory() {
  static auto& memory = *new std::shared_ptr<HostMemory>(std::make_shared<LinuxHostMemory>());
  return memory;
}

}  // namespace vantile
