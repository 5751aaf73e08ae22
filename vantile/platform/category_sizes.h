#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// What a volume's metadata keeps of the space that kinds of files use.
struct CategorySizes {
  /// Bytes by kind, movies at 6, applications at 7, audio at 9, photos at 12; nothing when there is
  /// no such list.
  std::optional<Array> sizes;
};

/// The store of how much space kinds of files use on a volume. Loop thread of its user.
class VolumeCategories {
 public:
  virtual ~VolumeCategories() = default;

  /// What is kept of the volume mounted at `mountPoint`, or nothing when it has no such item.
  /// macOS: MDItemCreateWithURL, and MDItemCopyAttribute of "kMDStoreAccumulatedSizes".
  /// Linux: an accounting of the library's own, nothing until it has been through the volume once.
  /// It knows volumes by mount point and file system: one that takes another's place unseen has the
  /// other's sizes until the next pass over it.
  virtual std::optional<CategorySizes> of(std::string_view mountPoint) = 0;

  /// The mount points whose sizes are wanted from now on, in the order in which to count them; none
  /// ends all work at once. macOS: nothing to do.
  virtual void want(const std::vector<std::string>& mountPoints) = 0;
};

/// The machine's volumes, for one owner; what it has under way ends with it.
VANTILE_API std::unique_ptr<VolumeCategories> makeVolumeCategories();

}  // namespace vantile
