#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "vantile/platform/threads.h"
#include "vantile/platform/volumes.h"

namespace vantile {

/// How full a volume is.
struct VolumeFigures {
  std::uint64_t blockSize = 0, totalBlocks = 0, availableBlocks = 0;
};

/// Asks for the figures of volumes that a process or another machine serves, and which may never
/// answer. Each is asked on a thread of its own, once at a time, and all of them together are
/// waited for no longer than the patience. Any thread, several at a time.
class ServedVolumes {
 public:
  using Clock = std::chrono::steady_clock;
  using Lock = std::unique_lock<std::mutex>;

  struct Means {
    std::function<std::optional<VolumeFigures>(const std::string& mountPoint)> ask;
    std::shared_ptr<Threads> threads = systemThreads();
    std::chrono::milliseconds patience{200};
    int mostThreads = 16;  ///< at once; those of volumes that never answered count, too
    std::function<Clock::time_point()> now = Clock::now;
    /// Until somebody answered or that moment, or for less.
    std::function<void(std::condition_variable& answered, Lock& lock, Clock::time_point until)>
        wait = [](auto& answered, auto& lock, auto until) { answered.wait_until(lock, until); };
  };

  explicit ServedVolumes(Means means);

  /// The figures of each, in their order: of this moment where it answered in time, else the last
  /// ones, and nothing where it has not answered yet. One whose latest answer took longer than the
  /// patience, or is still awaited since an earlier call, is not waited for. Volumes that are not
  /// among these are forgotten.
  std::vector<std::optional<VolumeFigures>> figures(const std::vector<VolumeKey>& volumes);

 private:
  struct Call;
  struct Exchange;
  struct Volume;
  using Asked = std::vector<std::shared_ptr<Volume>>;

  Asked known(const std::vector<VolumeKey>& volumes);
  void begin(Volume& volume, Clock::time_point due, Lock& lock);
  void beginThose(Asked& left, Clock::time_point due, Lock& lock);

  const Means means_;
  const std::shared_ptr<Exchange> exchange_;
  std::map<VolumeKey, std::shared_ptr<Volume>> volumes_;  // under the exchange's lock
};

}  // namespace vantile
