#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "vantile/foundation/api.h"
#include "vantile/foundation/monitor.h"
#include "vantile/foundation/sample_lock.h"
#include "vantile/foundation/value.h"
#include "vantile/memory/memory_keys.h"

struct memory_info;  // cleaner.h

namespace vantile {

struct MemoryPorts;

/// Told of memory samples and finished cleaning runs. Each operation may be left empty.
struct MemoryDelegate {
  /// After every successful sample: the memory and paging dictionaries of memory_keys.h, and the
  /// swap dictionary at the first sample that has such a delegate, null from then on: swap space is
  /// described once, not followed. The
  /// dictionaries are the callee's to read during the call; copy what is to be kept. Called on the
  /// thread that samples, one call at a time; a sample asked for from inside the call is skipped.
  std::function<void(const Dictionary& memory, const Dictionary& vm, const Dictionary* swap)>
      updateMemoryStatusWithVMStatusWithSwapDict;
  /// Once a finished cleaning run, on the run's background thread. Only the delegate of the shared
  /// monitor is told, whichever monitor started the run.
  std::function<void()> clearMemoryCompleted;
};

/// Samples the machine's memory, paging and swap once a refresh interval, and starts the memory
/// cleaner.
///
/// macOS: Mach host statistics. Linux: /proc/meminfo, /proc/vmstat, /proc/swaps and zram; the
/// figures are the machine's, in a container too.
class VANTILE_API KVDMemory final : public Monitor<MemoryDelegate> {
 public:
  /// The instance that the process shares, made at the first call; null when the system gives no
  /// memory statistics, and then tried again at the next call. It samples every second on the run
  /// loop of the thread that made it. Never destroyed. Any thread.
  static std::shared_ptr<KVDMemory> singleton();

  /// A new monitor that samples every second on the calling thread's run loop, or null when the
  /// system gives no memory statistics. Null, too, before the first `singleton`, which looks them
  /// up for the process.
  static std::shared_ptr<KVDMemory> init();

  ~KVDMemory() override;
  KVDMemory(const KVDMemory&) = delete;
  KVDMemory& operator=(const KVDMemory&) = delete;

  /// Takes one sample through the path that suits the system. A reading that the system refuses
  /// skips the sample silently.
  void updateInfo(const Timer* firing = nullptr) override;
  /// One sample of the 64-bit statistics. Any thread.
  void memoryStats64();
  /// One sample of the older 32-bit statistics: compressed and uncompressed memory are 0, the
  /// compressor's and purgeable counts are left out. Any thread.
  void memoryStats32();

  /// The swap dictionary at the first call in the monitor's life, null from then on. On macOS the
  /// first call waits for /bin/ps, a quarter of a second or more.
  std::shared_ptr<Dictionary> swapStats();
  /// Finds the folder of the swap files and what their names begin with.
  /// macOS: from the command line of dynamic_pager. Linux: from the first swap file in use.
  /// Neither: /private/var/vm/ and "swapfile".
  void initializeSwapPath();

  /// Refreshes the monitor's own record of `get_memory_info`.
  void freshMemoryInfo();
  /// Starts the memory cleaner on a background thread and returns at once. At most one run at a
  /// time: a second one waits for the first. `*stop` is the caller's, 1 ends the run early; it must
  /// live until `clearMemoryCompleted`. Null never stops.
  void clearMemory(std::int32_t* stop);

  /// Bytes of RAM, 0 when the system does not tell. macOS: hw.memsize. Linux: MemTotal.
  std::uint64_t physicalMemory() const { return _physicalMemory; }
  void setPhysicalMemory(std::uint64_t bytes) { _physicalMemory = bytes; }

 private:
  explicit KVDMemory(MemoryPorts ports);
  bool begin();
  template <class Read>
  void sample(Read read);

  const std::unique_ptr<const MemoryPorts> ports_;
  std::atomic<std::uint64_t> _physicalMemory = 0;
  std::unique_ptr<memory_info> memoryinfo;
  SampleLock MemoryUsageLock;  // over the fields below, one sample and its delegate call
  std::uint32_t selfHost = 0;
  bool isTigerOrLater = false;
  bool isMavericksOrLater = false;
  std::optional<std::string> swapPath;
  std::optional<std::string> swapPrefix;
  std::uint32_t peakSwapFiles = 0;
  std::uint64_t lastPageIn = 0;
  std::uint64_t lastPageOut = 0;
  std::atomic<std::uint64_t> samples_ = 0;  // that were finished
  std::recursive_mutex swapLock_;           // over the swap fields, for direct calls
  std::mutex memoryInfoLock_;
  std::mutex cleaningLock_;  // one cleaning run at a time
};

}  // namespace vantile
