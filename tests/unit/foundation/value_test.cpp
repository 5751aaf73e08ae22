#include "vantile/foundation/value.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantile {
namespace {

TEST(Value, KeepsWidthAndSignOfANumber) {
  EXPECT_TRUE(Value(std::uint64_t{1}).as<std::uint64_t>());
  EXPECT_TRUE(Value(std::int64_t{1}).as<std::int64_t>());
  EXPECT_TRUE(Value(std::uint32_t{1}).as<std::uint32_t>());
  EXPECT_TRUE(Value(std::int32_t{1}).as<std::int32_t>());
  EXPECT_TRUE(Value(1.0).as<double>());
  EXPECT_TRUE(Value(true).as<bool>());
}

TEST(Value, ABooleanIsNoNumber) {
  EXPECT_EQ(Value(true).uint64(), std::nullopt);
  EXPECT_EQ(Value(true).number(), std::nullopt);
  EXPECT_NE(Value(true), Value(1));
}

TEST(Value, ANumberIsGivenOnlyWhereItFits) {
  EXPECT_EQ(Value(-1).uint64(), std::nullopt);
  EXPECT_EQ(Value(-1).int64(), -1);
  EXPECT_EQ(Value(7u).int64(), 7);
  EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).int64(), std::nullopt);
  EXPECT_EQ(Value(1.5).uint64(), std::nullopt);
  EXPECT_EQ(Value(1.5).number(), 1.5);
  EXPECT_EQ(Value("7").number(), std::nullopt);
}

TEST(Value, TextIsBytes) {
  const std::string name("a\xff\0b", 4);
  EXPECT_EQ(*Value(name).as<std::string>(), name);
}

TEST(Value, NestedOnesAreSharedAndComparedByContent) {
  const auto nested = std::make_shared<Dictionary>();
  const Value holder(nested);
  nested->set("later", 1);
  EXPECT_TRUE((*holder.as<std::shared_ptr<Dictionary>>())->contains("later"));
  EXPECT_EQ(holder, Value(std::make_shared<Dictionary>(*nested)));
  EXPECT_NE(holder, Value(std::make_shared<Dictionary>()));
}

TEST(Value, DatesAndImagesCompareByContent) {
  const auto at = [](int second) {
    return Value(std::make_shared<const Date>(
        Date{std::chrono::sys_time<std::chrono::nanoseconds>(std::chrono::seconds(second))}));
  };
  EXPECT_EQ(at(1), at(1));
  EXPECT_NE(at(1), at(2));
  const Value disk(std::make_shared<const Image>(Image{"drive-harddisk", "disk.png", nullptr}));
  EXPECT_NE(disk, Value(std::make_shared<const Image>()));
}

TEST(Dictionary, KeepsTheOrderOfFirstSetting) {
  Dictionary dictionary;
  dictionary.set("b", 1);
  dictionary.set("a", 2);
  dictionary.set("b", 3);
  std::string order;
  for (const auto& entry : dictionary) order += entry.key();
  EXPECT_EQ(order, "ba");
  EXPECT_EQ(dictionary.int64("b"), 3);
}

TEST(Dictionary, ValuesMayBeReplacedOnAWalk) {
  Dictionary dictionary;
  dictionary.set("a", 1);
  dictionary.set("b", 2);
  for (auto& each : dictionary)
    if (each.key() == "b") each.value = "two";
  EXPECT_EQ(*dictionary.find("a"), Value(1));
  EXPECT_EQ(*dictionary.text("b"), "two");
}

TEST(Dictionary, AnAbsentValueLeavesItsKeyOut) {
  Dictionary dictionary;
  dictionary.set("absent", std::optional<std::uint64_t>());
  dictionary.set("present", std::optional<std::uint64_t>(0));
  EXPECT_FALSE(dictionary.contains("absent"));
  EXPECT_EQ(dictionary.uint64("present"), 0u);
}

TEST(Dictionary, KeysMadeAtRunTimeMeetLiteralOnes) {
  Dictionary dictionary;
  dictionary.set(std::string("disk_") + "name", "Data");
  EXPECT_EQ(*dictionary.text("disk_name"), "Data");
  dictionary.set("disk_name", "Other");
  EXPECT_EQ(dictionary.size(), 1u);
}

TEST(Dictionary, ALookUpOfAnotherKindFindsNothing) {
  Dictionary dictionary;
  dictionary.set("text", "1");
  dictionary.set("flag", true);
  EXPECT_EQ(dictionary.uint64("text"), std::nullopt);
  EXPECT_EQ(dictionary.text("flag"), nullptr);
  EXPECT_EQ(dictionary.boolean("text"), std::nullopt);
  EXPECT_EQ(dictionary.boolean("flag"), true);
  EXPECT_EQ(dictionary.number("missing"), std::nullopt);
}

TEST(Dictionary, ARemovedEntryIsGone) {
  Dictionary dictionary;
  dictionary.set("a", 1);
  dictionary.remove("a");
  dictionary.remove("never there");
  EXPECT_TRUE(dictionary.empty());
}

TEST(Dictionary, EqualWhateverTheOrder) {
  Dictionary one, other;
  one.set("a", 1);
  one.set("b", 2);
  other.set("b", 2);
  EXPECT_FALSE(one == other);
  other.set("a", 1);
  EXPECT_TRUE(one == other);
}

}  // namespace
}  // namespace vantile
