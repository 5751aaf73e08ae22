#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"
#include "vantile/platform/volumes.h"

namespace vantile {

/// What a volume's metadata keeps of the space that kinds of files use.
struct CategorySizes {
  /// Bytes by kind, movies at 6, applications at 7, audio at 9, photos at 12; nothing when there is
  /// no such list.
  std::optional<Array> sizes;
};

/// The store of how much space kinds of files use on a volume. Any thread, one at a time.
class VolumeCategories {
 public:
  virtual ~VolumeCategories() = default;

  /// What is kept of the volume, or nothing when it has no such item.
  /// macOS: MDItemCreateWithURL of its mount point, and MDItemCopyAttribute of
  /// "kMDStoreAccumulatedSizes". Linux: an accounting of the library's own, nothing until it has
  /// been through the volume once; what was mounted at the same place before is another volume.
  /// Nothing, either, while the process has four threads at this already, which volumes that do not
  /// answer may hold up beyond their owners' end; the next call tries again.
  virtual std::optional<CategorySizes> of(const VolumeKey& volume) = 0;

  /// The volumes whose sizes are wanted from now on, in the order in which to count them; none ends
  /// all work at once. macOS: nothing to do.
  virtual void want(const std::vector<VolumeKey>& volumes) = 0;
};

/// The machine's volumes, for one owner; what it has under way ends with it.
VANTILE_API std::unique_ptr<VolumeCategories> makeVolumeCategories();

}  // namespace vantile
