#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "vantile/platform/category_sizes.h"
#include "vantile/platform/linux/usage_accounting.h"
#include "vantile/platform/threads.h"

namespace vantile {

/// The accounting on a thread of its own, which the kernel gives the processor and the disk when
/// nobody else wants them. Nothing here waits for that thread, nor takes a lock that it takes: it
/// may be held up by a file system that does not answer, and ends on its own when it is not needed
/// any more.
class LinuxVolumeCategories final : public VolumeCategories {
 public:
  struct Means {
    std::function<UsageAccounting::Means()> accounting;  ///< asked on that thread
    std::shared_ptr<Threads> threads = systemThreads();
  };

  LinuxVolumeCategories();
  explicit LinuxVolumeCategories(Means means);
  ~LinuxVolumeCategories() override;

  std::optional<CategorySizes> of(const VolumeKey& volume) override;
  void want(const std::vector<VolumeKey>& volumes) override;

 private:
  struct Shared;

  void start();

  const Means means_;
  std::vector<VolumeKey> wanted_;
  std::map<VolumeKey, UsageSums> figures_;
  std::shared_ptr<Shared> shared_;  // with the thread; null while there is none
};

}  // namespace vantile
