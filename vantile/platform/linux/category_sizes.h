#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vantile/platform/category_sizes.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/linux/standard_folders.h"
#include "vantile/platform/linux/usage_accounting.h"
#include "vantile/platform/linux/usage_volumes.h"
#include "vantile/platform/threads.h"

namespace vantile {

/// How the machine's volumes are counted that may hang, or the others: their records in the user's
/// caches, what is installed below `top`, or by the user.
UsageAccounting::Means systemAccounting(bool mayHang, XdgFolders folders = {},
                                        const LinuxRoots& roots = {}, const std::string& top = {});

/// The accounting on threads of its own, which the kernel gives the processor and the disk when
/// nobody else wants them: one for the volumes that always answer, one for those that may not, as
/// long as there are such, so that one that hangs holds up none but its like. Nothing here waits
/// for those threads, nor takes a lock that they take; one that is held up ends on its own when its
/// volume answers.
class LinuxVolumeCategories final : public VolumeCategories {
 public:
  struct Means {
    /// Asked on each of the threads: for the volumes that may hang, or the others.
    std::function<UsageAccounting::Means(bool mayHang)> accounting;
    std::function<bool(const std::string& mountPoint)> mayHang = nullptr;
    std::shared_ptr<Threads> threads = systemThreads();
    /// From a failure to the next try.
    std::chrono::nanoseconds retry = std::chrono::minutes(1);
  };

  LinuxVolumeCategories();
  explicit LinuxVolumeCategories(Means means);
  ~LinuxVolumeCategories() override;

  std::optional<CategorySizes> of(const VolumeKey& volume) override;
  void want(const std::vector<VolumeKey>& volumes) override;

 private:
  struct Shared;
  /// What one of the threads counts.
  struct Part {
    bool mayHang = false;
    std::vector<VolumeKey> wanted = {};
    std::map<VolumeKey, UsageSums> figures = {};
    std::shared_ptr<Shared> shared = nullptr;  // with the thread; null while there is none
  };

  void want(Part& part, const std::vector<VolumeKey>& volumes);
  void start(Part& part);

  const Means means_;
  std::array<Part, 2> parts_ = {Part{.mayHang = false}, Part{.mayHang = true}};
};

}  // namespace vantile
