#include "vantile/platform/category_sizes.h"

#include <CoreServices/CoreServices.h>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/objective_c.h"
#include "vantile/platform/macos/values.h"

namespace vantile {
namespace {

/// The array's entries at their places; what is no value there is 0.
Array entriesOf(CFArrayRef items) {
  Array entries;
  const auto count = CFArrayGetCount(items);
  entries.reserve(static_cast<std::size_t>(count));
  for (CFIndex i = 0; i < count; ++i)
    entries.push_back(valueOf(CFArrayGetValueAtIndex(items, i)).value_or(Value(std::uint64_t{0})));
  return entries;
}

class MacosVolumeCategories final : public VolumeCategories {
 public:
  std::optional<CategorySizes> of(const VolumeKey& volume) override {
    return unlessRaised([&path = volume.mountPoint]() -> std::optional<CategorySizes> {
      const Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
          nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()),
          true));
      const Owned<MDItemRef> item(url ? ::MDItemCreateWithURL(nullptr, url.get()) : nullptr);
      if (!item) return std::nullopt;
      const auto name = stringOf("kMDStoreAccumulatedSizes");
      const Owned<CFTypeRef> value(name ? ::MDItemCopyAttribute(item.get(), name.get()) : nullptr);
      const auto items = as<CFArrayRef>(CFArrayGetTypeID(), value.get());
      CategorySizes categories;
      if (items) categories.sizes = entriesOf(items);
      return categories;
    });
  }

  void want(const std::vector<VolumeKey>&) override {}
};

}  // namespace

std::unique_ptr<VolumeCategories> makeVolumeCategories() {
  return std::make_unique<MacosVolumeCategories>();
}

}  // namespace vantile
