#include "vantile/disk/category_figures.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "vantile/disk/disk_keys.h"

namespace vantile {
namespace {

struct Category {
  Key key;
  std::size_t place;
};

// A list that ends before one of them has none of those behind it either.
constexpr std::array<Category, 4> categories = {
    {{keys::disk_movies, 6}, {keys::disk_apps, 7}, {keys::disk_audio, 9}, {keys::disk_photos, 12}}};

std::uint64_t saturated(double number) {
  if (!(number > 0)) return 0;  // NaN, too
  if (number >= 0x1p64) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(number);
}

/// The entry as unsigned bytes: a negative one wraps, what is no number is 0.
std::uint64_t bytesIn(const Value& entry) {
  if (const auto bytes = entry.uint64()) return *bytes;
  if (const auto bytes = entry.int64()) return static_cast<std::uint64_t>(*bytes);
  if (const auto* truth = entry.as<bool>()) return *truth ? 1 : 0;
  return saturated(entry.number().value_or(0));
}

/// Sets the kinds that the list holds; gives their sum, which may wrap.
std::uint64_t addKinds(Dictionary& volume, const Array& sizes) {
  std::uint64_t sum = 0;
  for (const auto& [key, place] : categories) {
    if (sizes.size() <= place) break;
    volume.set(key, sizes[place]);
    sum += bytesIn(sizes[place]);
  }
  return sum;
}

}  // namespace

void addCategories(Dictionary& volume, const std::optional<CategorySizes>& known,
                   std::uint64_t used) {
  if (!known) return volume.set(keys::has_accumulated_sizes, false);
  if (!known->sizes) return;
  const auto sum = addKinds(volume, *known->sizes);
  if (used > sum) volume.set(keys::disk_other, used - sum);
  volume.set(keys::has_accumulated_sizes, used > sum);
}

}  // namespace vantile
