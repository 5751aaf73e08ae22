#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "vantile/memory/memory_ports.h"
#include "vantile/memory/shared_memory_monitor.h"

#include "fakes/fake_utility_ports.h"
#include "fakes/folder_tree.h"

namespace vantile::testing {

/// A host whose counters a test sets.
class FakeHostMemory final : public HostMemory {
 public:
  std::uint32_t host() override { return name; }
  void lookUpStatistics64() override {
    ++lookUps;
    found = keepsStatistics64;
  }
  bool hasStatistics64() const override { return found; }
  std::optional<VirtualMemoryReading> statistics64(std::uint32_t asked) override {
    ++reads64;
    if (onRead) onRead();
    return refuses || asked != name ? std::nullopt : std::optional(reading);
  }
  std::optional<VirtualMemoryReading32> statistics32(std::uint32_t asked) override {
    ++reads32;
    return refuses || asked != name ? std::nullopt : std::optional(reading32);
  }
  std::optional<PageCounts> pageCounts() override {
    ++pageCountReads;
    return refuses ? std::nullopt : std::optional(pages);
  }
  std::uint64_t pageSize() const override { return page; }
  std::uint64_t physicalMemory() override { return physical; }

  std::uint32_t name = 7;
  bool keepsStatistics64 = true, found = false, refuses = false;
  std::uint64_t page = 4096, physical = 8ull << 30;
  VirtualMemoryReading reading;
  VirtualMemoryReading32 reading32;
  PageCounts pages;
  std::function<void()> onRead;  ///< called in the midst of a 64-bit reading
  std::atomic<int> lookUps = 0, reads64 = 0, reads32 = 0, pageCountReads = 0;
};

/// Swap space as a test says.
class FakeSwapAreas final : public SwapAreas {
 public:
  std::optional<std::vector<SwapArea>> areas() override {
    ++areaReads;
    return list;
  }
  std::optional<SwapUsage> usage() override {
    ++usageReads;
    return used;
  }

  std::optional<std::vector<SwapArea>> list;  ///< nothing: a kernel that keeps no list
  std::optional<SwapUsage> used;
  int areaReads = 0, usageReads = 0;
};

/// Programs that print what a test says, piece by piece: one for each look at whether they still
/// run.
class FakeChildTasks final : public ChildTasks {
 public:
  std::unique_ptr<ChildTask> launch(const std::string& path,
                                    const std::vector<std::string>& arguments) override;
  void pause(std::chrono::microseconds duration) override {
    log.push_back("pause " + std::to_string(duration.count()));
  }

  bool refuses = false;
  std::vector<std::optional<std::string>> output;  ///< nothing: reading fails
  std::vector<std::string> log;
};

class FakeChildTask final : public ChildTask {
 public:
  explicit FakeChildTask(FakeChildTasks& tasks) : tasks_(tasks) {}
  bool isRunning() override { return next_ < tasks_.output.size(); }
  std::optional<std::string> availableData() override {
    tasks_.log.push_back("read");
    return tasks_.output[next_++];
  }

 private:
  FakeChildTasks& tasks_;
  std::size_t next_ = 0;
};

inline std::unique_ptr<ChildTask> FakeChildTasks::launch(
    const std::string& path, const std::vector<std::string>& arguments) {
  std::string line = "launch " + path;
  for (const auto& argument : arguments) line += " " + argument;
  log.push_back(line);
  return refuses ? nullptr : std::make_unique<FakeChildTask>(*this);
}

/// Memory that runs out when a test says so. Blocks are real, so that a sanitizer sees what is
/// written past them.
class FakePressureMemory final : public PressureMemory {
 public:
  ~FakePressureMemory() override {
    for (void* const block : live)
      if (!isChunk(block)) std::free(block);
  }
  void* zeroed(std::size_t bytes) noexcept override {
    if (onRequest) onRequest();
    sizes.push_back(bytes);
    if (++requests == failingRequest) return nullptr;
    return kept(std::calloc(1, bytes ? bytes : 1));
  }
  /// Chunks are large and overlap in one block: they are written to, not read.
  void* chunk(std::size_t bytes) noexcept override {
    chunks.push_back(bytes);
    if (chunks.size() > mostChunks) return nullptr;
    if (chunkMemory.empty()) chunkMemory.resize(bytes + overlaps);
    char* const given = chunkMemory.data() + chunks.size() % overlaps;
    live.insert(given);
    return given;
  }
  void release(void* block) noexcept override {
    if (!block) return;
    if (live.erase(block) == 0) std::abort();  // not ours, or released twice
    if (!isChunk(block)) std::free(block);
  }

  std::vector<std::size_t> sizes;   ///< asked of `zeroed`
  std::vector<std::size_t> chunks;  ///< asked of `chunk`
  std::size_t mostChunks = static_cast<std::size_t>(-1);
  std::size_t requests = 0, failingRequest = 0;  ///< the first request is 1
  std::function<void()> onRequest;
  std::set<void*> live;
  std::vector<char> chunkMemory;

 private:
  static constexpr std::size_t overlaps = 1024;

  bool isChunk(const void* block) const {
    const std::less<const void*> before;
    return !chunkMemory.empty() && !before(block, chunkMemory.data()) &&
           before(block, chunkMemory.data() + chunkMemory.size());
  }
  void* kept(void* block) {
    live.insert(block);
    return block;
  }
};

/// An alarm that goes off when a test says so.
class FakeIntervalAlarm final : public IntervalAlarm {
 public:
  void handle(void (*given)(int)) override {
    handler = given;
    log.push_back("handle");
    if (onHandle) onHandle();
  }
  int set(const IntervalTimerSetting& setting, IntervalTimerSetting&) override {
    log.push_back("set " + std::to_string(setting.intervalSeconds) + "." +
                  std::to_string(setting.intervalMicroseconds) + " " +
                  std::to_string(setting.valueSeconds) + "." +
                  std::to_string(setting.valueMicroseconds));
    return result;
  }
  unsigned pause(unsigned seconds) override {
    log.push_back("pause " + std::to_string(seconds));
    return left;
  }
  void leave() override { log.push_back("leave"); }

  void (*handler)(int) = nullptr;
  std::function<void()> onHandle;  ///< called once there is a handler
  int result = 0;
  unsigned left = 0;  ///< of a pause
  std::vector<std::string> log;
};

/// While it lives, the memory subsystem stands on fakes and begins without a shared instance.
class FakeMemoryPorts {
 public:
  FakeMemoryPorts() : before_(MemoryPorts::installed()) {
    MemoryPorts::installed() = {host, swap, tasks, folders, files, pressure, alarm};
    sharedMemoryMonitor().forget();
  }
  ~FakeMemoryPorts() {
    sharedMemoryMonitor().forget();
    MemoryPorts::installed() = before_;
  }
  FakeMemoryPorts(const FakeMemoryPorts&) = delete;
  FakeMemoryPorts& operator=(const FakeMemoryPorts&) = delete;

  const std::shared_ptr<FakeHostMemory> host = std::make_shared<FakeHostMemory>();
  const std::shared_ptr<FakeSwapAreas> swap = std::make_shared<FakeSwapAreas>();
  const std::shared_ptr<FakeChildTasks> tasks = std::make_shared<FakeChildTasks>();
  const std::shared_ptr<FolderTree> folders = std::make_shared<FolderTree>("/vm");
  const std::shared_ptr<FakeFileSystem> files = std::make_shared<FakeFileSystem>();
  const std::shared_ptr<FakePressureMemory> pressure = std::make_shared<FakePressureMemory>();
  const std::shared_ptr<FakeIntervalAlarm> alarm = std::make_shared<FakeIntervalAlarm>();

 private:
  const MemoryPorts before_;
};

}  // namespace vantile::testing
