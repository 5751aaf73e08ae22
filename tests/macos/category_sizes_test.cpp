#include "vantile/platform/category_sizes.h"

#include "seam.h"

namespace vantile {
namespace {

using List = fakes::PropertyList::Array;

class CategorySizesSeam : public Seam {
 protected:
  static std::optional<CategorySizes> sizesOf(std::string_view mountPoint) {
    return makeVolumeCategories()->of(std::string(mountPoint));
  }
};

TEST_F(CategorySizesSeam, AVolumeWithoutAnItemHasNone) {
  EXPECT_FALSE(sizesOf("/").has_value());
  EXPECT_FALSE(sizesOf("").has_value());
}

TEST_F(CategorySizesSeam, AnItemMayHaveNoList) {
  fakes::machine.metadata["/"] = std::nullopt;
  ASSERT_TRUE(sizesOf("/").has_value());
  EXPECT_FALSE(sizesOf("/")->sizes.has_value());
}

TEST_F(CategorySizesSeam, WhatIsNoArrayIsNoList) {
  fakes::machine.metadata["/"] = fakes::PropertyList{std::int64_t{5}};
  ASSERT_TRUE(sizesOf("/").has_value());
  EXPECT_FALSE(sizesOf("/")->sizes.has_value());
}

TEST_F(CategorySizesSeam, EntriesComeAsTheyAreKept) {
  fakes::machine.metadata["/Volumes/Übung"] = fakes::PropertyList{
      List{{std::int64_t{5}}, {std::uint64_t{1} << 63}, {1.5}, {std::u16string(u"much")}, {true}}};
  const auto found = sizesOf("/Volumes/Übung");
  ASSERT_TRUE(found && found->sizes);
  EXPECT_EQ(*found->sizes, (Array{std::int64_t{5}, std::uint64_t{1} << 63, 1.5, "much", true}));
}

TEST_F(CategorySizesSeam, WhatIsNoValueKeepsItsPlace) {
  fakes::machine.metadata["/"] = fakes::PropertyList{
      List{{std::int64_t{5}}, {fakes::PropertyList::Data{}}, {std::int64_t{6}}}};
  EXPECT_EQ(*sizesOf("/")->sizes, (Array{std::int64_t{5}, std::uint64_t{0}, std::int64_t{6}}));
}

TEST_F(CategorySizesSeam, WithoutARoomForObjectsThereIsNoList) {
  fakes::machine.metadata["/"] = fakes::PropertyList{List{}};
  fakes::machine.refuses = {"CFStringCreateWithBytes"};
  ASSERT_TRUE(sizesOf("/").has_value());
  EXPECT_FALSE(sizesOf("/")->sizes.has_value());
  fakes::machine.refusesObjects = true;
  EXPECT_FALSE(sizesOf("/").has_value());
}

TEST_F(CategorySizesSeam, ThereIsNothingToCount) {
  makeVolumeCategories()->want({"/"});
}

}  // namespace
}  // namespace vantile
