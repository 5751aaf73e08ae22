#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/monitor.h"
#include "vantile/platform/text_patterns.h"
#include "vantile/process/process_info.h"

namespace vantile {

struct ProcessPorts;
struct ProcessListing;

/// Told of samples of the running applications. The operation may be left empty.
struct ProcessStatsDelegate {
  /// The running applications, in no order, or null when there are none or the desktop does not
  /// tell. The list is the callee's to read during the call, its records to keep. Called on the
  /// thread that samples.
  std::function<void(const std::vector<std::shared_ptr<ProcessInfo>>* processes)>
      updateProcessStaus;
};

/// Samples the user's running applications once a refresh interval: the processor, memory and
/// state of each one's process.
///
/// macOS: NSWorkspace and /bin/ps, for which a sample waits. Linux: /proc, without a child process.
class VANTILE_API ProcessStats final : public Monitor<ProcessStatsDelegate> {
 public:
  /// A new monitor, which its host owns. It samples every 2 seconds on the calling thread's run
  /// loop.
  static std::shared_ptr<ProcessStats> init();

  ~ProcessStats() override;
  ProcessStats(const ProcessStats&) = delete;
  ProcessStats& operator=(const ProcessStats&) = delete;

  /// Takes one sample. Nothing is told where the process list can't be run, with a line in the log,
  /// nor where that ends with status 0, without one: the tool ends with another one, since it does
  /// not know one of the columns that it is asked for, and that is what is read. Any thread,
  /// several at once, too; one from inside a delegate call is taken.
  void updateInfo(const Timer* firing = nullptr) override;

  /// By what a line of the process list is read: its groups are the pid, the shares of processor
  /// and memory, the two sizes and the state. With null no line is read. Any thread.
  std::shared_ptr<const TextPattern> psRegex() const;
  void setPsRegex(std::shared_ptr<const TextPattern> pattern);

 private:
  using Records = std::vector<std::shared_ptr<ProcessInfo>>;

  explicit ProcessStats(ProcessPorts ports);
  void sample();
  std::optional<std::string> listApplications();
  void fill(const ProcessListing& listing);
  void fillRecord(const TextPattern::Groups& groups);
  Records records() const;

  const std::unique_ptr<const ProcessPorts> ports_;
  mutable std::mutex patternLock_;
  std::shared_ptr<const TextPattern> _psRegex;
  std::mutex sampleLock_;  // over the records, not over the delegate's call: it may sample again
  std::unordered_map<std::int32_t, std::shared_ptr<ProcessInfo>> processDicts;
};

}  // namespace vantile
