#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/linux/usage_cache.h"
#include "vantile/platform/linux/usage_pass.h"

namespace vantile {

/// How much of the machine the accounting takes once it has been through its volumes.
struct UsagePace {
  /// Files and folders that are asked in one go, a few milliseconds' work.
  std::size_t batch = 4096;
  /// Rest after each, in times of the processor time that it took: 0.02 % of a processor.
  int restFactor = 5000;
  std::chrono::nanoseconds leastRest = std::chrono::seconds(10);
  /// From the beginning of one pass over a volume to the next one's, at least.
  std::chrono::nanoseconds period = std::chrono::minutes(10);
  /// From one record of a first pass to the next.
  std::chrono::nanoseconds checkpoint = std::chrono::minutes(1);
  /// So many bytes of new names of files are kept on the disk rather than in memory, or a quarter
  /// of those that there were when that was last tried, where that is more.
  std::size_t mostHeld = 1u << 18;
  /// Files and folders of a first pass in one go, at most.
  std::size_t firstBatch = 65536;
  /// How long something is held open on a volume in one go, about, for as long as it can't be
  /// unmounted; and the rest in a first pass, in which it can. "/" takes none: it stays.
  std::chrono::nanoseconds hold = std::chrono::milliseconds(100);
  std::chrono::nanoseconds release = std::chrono::milliseconds(300);
};

/// Counts volumes, one at a time: those first that were never gone through, then again and again
/// those that were begun least recently. A first pass that missed something is gone through once
/// more, a period later, before there are figures. One that can't be counted, since memory is
/// short, say, is left aside for a while, with one log line. Has no thread and does not wait;
/// whoever has it calls `turn`. Not synchronised.
class UsageAccounting {
 public:
  using Clock = std::chrono::steady_clock;

  struct Means {
    std::string cacheFolder;
    std::vector<std::string> installed;  ///< folders that applications are installed in
    UsagePace pace = {};
    std::function<Clock::time_point()> now = Clock::now;
    std::function<std::chrono::nanoseconds()> processorTime = threadProcessorTime;
    std::function<std::int64_t()> presentSecond = vantile::presentSecond;
    /// What is mounted there, or nothing.
    std::function<std::optional<UsageVolume>(const std::string& mountPoint)> volumeAt;
    /// Where further parts of what is mounted there are, which count with it.
    std::function<std::vector<std::string>(const std::string& mountPoint)> othersOf = nullptr;
    ContentKinds::Look kindOf = kindByDatabase;
  };

  explicit UsageAccounting(Means means);
  ~UsageAccounting();

  using IsStopped = std::function<bool()>;

  /// Counts these from now on. What is known of the others is kept, and forgotten here.
  void want(const std::vector<std::string>& mountPoints, const IsStopped& isStopped);

  /// Something was mounted or unmounted: the next turn looks which volumes are still the same, for
  /// those that were not there, and for further parts.
  void lookAgain();

  /// Takes up what was kept, or does a piece of work. The time until the next turn; nothing where
  /// there is nothing to do. `isStopped` is asked at every file.
  std::optional<std::chrono::nanoseconds> turn(const IsStopped& isStopped);

  /// Keeps what is known by now of volumes whose records are of a mebibyte at most, which takes
  /// some milliseconds. Larger ones were kept a while ago.
  void keepSmall();

  /// Bytes by kind of each volume that was gone through with all its parts, by its mount point. A
  /// part that can't be reached or opened is left out; a file that has names in several counts in
  /// each.
  std::map<std::string, UsageSums, std::less<>> figures() const;

  /// Folders that were listed so far.
  std::size_t listed() const { return listed_; }

  /// Processor time of the calling thread.
  static std::chrono::nanoseconds threadProcessorTime();

 private:
  struct Volume;

  void arrange(const IsStopped& isStopped);
  Volume* toTakeUp();
  Volume* nextVolume();
  bool isTheSame(Volume& volume, const IsStopped& isStopped);
  void takeUp(Volume& volume, const IsStopped& isStopped);
  void setAside(Volume& volume, std::string_view error);
  void keep(Volume& volume, const IsStopped& isStopped);
  void keepOrSetAside(Volume& volume, const IsStopped& isStopped);
  std::optional<std::chrono::nanoseconds> work(Volume& volume, const IsStopped& isStopped);
  bool holdsMany(const Volume& volume) const;
  std::chrono::nanoseconds go(Volume& volume, const IsStopped& isStopped);
  void begin(Volume& volume);

  const Means means_;
  const InstalledFolders installed_;
  UsageCache cache_;
  ContentKinds kinds_;
  std::vector<std::string> wanted_;
  bool isToArrange_ = false;                      // the parts of those anew
  std::vector<std::unique_ptr<Volume>> volumes_;  // the wanted ones, each with its parts behind it
  std::size_t listed_ = 0;
  bool hasFailed_ = false;
};

}  // namespace vantile
