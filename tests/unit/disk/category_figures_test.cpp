#include "vantile/disk/category_figures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vantile {
namespace {

constexpr std::uint64_t used = 100'000;

/// 1 at place 0, 2 at place 1, 4 at place 2, and so on: a sum tells what it is of.
Array sizes(std::size_t count) {
  Array list;
  for (std::size_t i = 0; i < count; ++i) list.emplace_back(std::uint64_t{1} << i);
  return list;
}

Dictionary withCategories(std::optional<CategorySizes> categories, std::uint64_t bytes = used) {
  Dictionary volume;
  addCategories(volume, categories, bytes);
  return volume;
}

Dictionary ofList(Array list, std::uint64_t bytes = used) {
  return withCategories(CategorySizes{std::move(list)}, bytes);
}

/// A list in which movies alone take up space.
Dictionary ofMovies(Value movies, std::uint64_t bytes = used) {
  Array list(6, Value(std::uint64_t{0}));
  list.push_back(std::move(movies));
  return ofList(std::move(list), bytes);
}

TEST(VolumeCategories, WithoutAnItemThereAreNone) {
  const auto volume = withCategories(std::nullopt);
  EXPECT_EQ(volume.boolean("has_accumulated_sizes"), false);
  EXPECT_EQ(volume.size(), 1u);
}

TEST(VolumeCategories, AnItemWithoutAListSetsNothing) {
  EXPECT_TRUE(withCategories(CategorySizes{}).empty());
}

struct Length {
  std::size_t count;
  std::size_t kinds;
  std::uint64_t sum;
};

class VolumeCategoryLists : public ::testing::TestWithParam<Length> {};

TEST_P(VolumeCategoryLists, HaveTheKindsThatTheirLengthReaches) {
  const auto [count, kinds, sum] = GetParam();
  const auto volume = ofList(sizes(count));
  EXPECT_EQ(volume.contains("disk_movies"), kinds >= 1);
  EXPECT_EQ(volume.contains("disk_apps"), kinds >= 2);
  EXPECT_EQ(volume.contains("disk_audio"), kinds >= 3);
  EXPECT_EQ(volume.contains("disk_photos"), kinds >= 4);
  EXPECT_EQ(volume.uint64("disk_other"), used - sum);
  EXPECT_EQ(volume.boolean("has_accumulated_sizes"), true);
  EXPECT_EQ(volume.size(), kinds + 2);
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryLength, VolumeCategoryLists,
    ::testing::Values(Length{0, 0, 0}, Length{1, 0, 0}, Length{2, 0, 0}, Length{3, 0, 0},
                      Length{4, 0, 0}, Length{5, 0, 0}, Length{6, 0, 0}, Length{7, 1, 64},
                      Length{8, 2, 64 + 128}, Length{9, 2, 64 + 128}, Length{10, 3, 64 + 128 + 512},
                      Length{11, 3, 64 + 128 + 512}, Length{12, 3, 64 + 128 + 512},
                      Length{13, 4, 64 + 128 + 512 + 4096}, Length{14, 4, 64 + 128 + 512 + 4096}),
    [](const auto& length) { return std::to_string(length.param.count); });

TEST(VolumeCategories, StandAtTheirPlaces) {
  const auto volume = ofList(sizes(13));
  EXPECT_EQ(volume.uint64("disk_movies"), 64u);
  EXPECT_EQ(volume.uint64("disk_apps"), 128u);
  EXPECT_EQ(volume.uint64("disk_audio"), 512u);
  EXPECT_EQ(volume.uint64("disk_photos"), 4096u);
}

TEST(VolumeCategories, ThatComeToTheUsedBytesLeaveNoRest) {
  const auto volume = ofList(sizes(8), 64 + 128);
  EXPECT_EQ(volume.boolean("has_accumulated_sizes"), false);
  EXPECT_FALSE(volume.contains("disk_other"));
  EXPECT_TRUE(volume.contains("disk_apps"));
}

TEST(VolumeCategories, ThatComeToMoreThanTheUsedBytesLeaveNoRest) {
  const auto volume = ofList(sizes(8), 64 + 128 - 1);
  EXPECT_EQ(volume.boolean("has_accumulated_sizes"), false);
  EXPECT_FALSE(volume.contains("disk_other"));
}

TEST(VolumeCategories, ThatComeToOneByteLessLeaveOne) {
  const auto volume = ofList(sizes(8), 64 + 128 + 1);
  EXPECT_EQ(volume.boolean("has_accumulated_sizes"), true);
  EXPECT_EQ(*volume.find("disk_other")->as<std::uint64_t>(), 1u);
}

TEST(VolumeCategories, AShortListOfAnEmptyVolumeLeavesNoRest) {
  const auto volume = ofList(sizes(3), 0);
  EXPECT_EQ(volume.boolean("has_accumulated_sizes"), false);
  EXPECT_EQ(volume.size(), 1u);
}

TEST(VolumeCategories, TheComparisonIsUnsigned) {
  constexpr auto huge = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(ofMovies(std::uint64_t{1}, huge).uint64("disk_other"), huge - 1);
  EXPECT_EQ(ofMovies(huge, 5).boolean("has_accumulated_sizes"), false);
}

TEST(VolumeCategories, ASumWithoutBoundWraps) {
  Array list(8, Value(std::uint64_t{0}));
  list[6] = std::numeric_limits<std::uint64_t>::max();
  list[7] = std::uint64_t{11};
  EXPECT_EQ(ofList(list).uint64("disk_other"), used - 10);
}

TEST(VolumeCategories, EntriesAreKeptAsTheyAre) {
  EXPECT_EQ(*ofMovies(std::int64_t{7}).find("disk_movies")->as<std::int64_t>(), 7);
  EXPECT_EQ(*ofMovies(1.5).find("disk_movies")->as<double>(), 1.5);
  EXPECT_EQ(*ofMovies("much").find("disk_movies")->as<std::string>(), "much");
}

TEST(VolumeCategories, EntriesOfOtherKindsCountAsUnsignedNumbers) {
  EXPECT_EQ(ofMovies(std::int64_t{7}).uint64("disk_other"), used - 7);
  EXPECT_EQ(ofMovies(std::int32_t{7}).uint64("disk_other"), used - 7);
  EXPECT_EQ(ofMovies(std::uint32_t{7}).uint64("disk_other"), used - 7);
  EXPECT_EQ(ofMovies(7.9).uint64("disk_other"), used - 7);
  EXPECT_EQ(ofMovies(true).uint64("disk_other"), used - 1);
  EXPECT_EQ(ofMovies("7").uint64("disk_other"), used);
  EXPECT_EQ(ofMovies(std::int64_t{-1}).boolean("has_accumulated_sizes"), false);
}

TEST(VolumeCategories, FractionsOutOfRangeSaturate) {
  EXPECT_EQ(ofMovies(-3.5).uint64("disk_other"), used);
  EXPECT_EQ(ofMovies(std::nan("")).uint64("disk_other"), used);
  EXPECT_EQ(ofMovies(1e30).boolean("has_accumulated_sizes"), false);
  EXPECT_EQ(ofMovies(HUGE_VAL, std::numeric_limits<std::uint64_t>::max())
                .boolean("has_accumulated_sizes"),
            false);
}

}  // namespace
}  // namespace vantile
