#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "vantile/platform/parsers/mountinfo.h"
#include "vantile/platform/threads.h"

namespace vantile {

/// How full a volume is.
struct VolumeFigures {
  std::uint64_t blockSize = 0, totalBlocks = 0, availableBlocks = 0;
};

/// Asks for the figures of volumes that a process or another machine serves, and which may never
/// answer. Each is asked on a thread of its own, once at a time, and all of them together are
/// waited for no longer than the patience. Not synchronised.
class ServedVolumes {
 public:
  struct Means {
    std::function<std::optional<VolumeFigures>(const std::string& mountPoint)> ask;
    std::shared_ptr<Threads> threads = systemThreads();
    std::chrono::milliseconds patience{200};
    int mostThreads = 16;  ///< at once; those of volumes that never answered count, too
  };

  explicit ServedVolumes(Means means);

  /// The figures of each, in their order: of this moment where it answered in time, else the last
  /// ones, and nothing where it has not answered yet. One that did not answer the time before is
  /// not waited for. Volumes that are not among these are forgotten.
  std::vector<std::optional<VolumeFigures>> figures(const std::vector<const Mount*>& volumes);

 private:
  struct Answer;
  struct Exchange;
  struct Volume {
    std::shared_ptr<Answer> pending;
    std::optional<VolumeFigures> last;
  };
  /// A mount point may be used again by another mount, and a mount's number, too.
  using Identity = std::tuple<std::uint64_t, DeviceNumber, std::string>;

  void forgetOthers(const std::vector<const Mount*>& volumes);
  std::shared_ptr<Answer> begin(const std::string& mountPoint);

  const Means means_;
  const std::shared_ptr<Exchange> exchange_;
  std::map<Identity, Volume> volumes_;
};

}  // namespace vantile
