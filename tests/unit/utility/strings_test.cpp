#include "vantile/utility/strings.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

const std::string fortyDigits(40, '9');

TEST(IsNilOrEmpty, IsTrueForNilAndForTextOfLengthZero) {
  EXPECT_TRUE(isNilOrEmpty(std::nullopt));
  EXPECT_TRUE(isNilOrEmpty(std::string()));
}

TEST(IsNilOrEmpty, IsFalseForAnyCharacter) {
  EXPECT_FALSE(isNilOrEmpty("a"));
  EXPECT_FALSE(isNilOrEmpty(" "));
  EXPECT_FALSE(isNilOrEmpty(std::string(1, '\0')));
}

TEST(StartWithString, IsTrueForAPrefix) {
  EXPECT_TRUE(startWithString("~/Downloads", "~/"));
  EXPECT_TRUE(startWithString("~/", "~/"));
}

TEST(StartWithString, IsFalseForAnythingElse) {
  EXPECT_FALSE(startWithString("~", "~/"));
  EXPECT_FALSE(startWithString("/~/", "~/"));
  EXPECT_FALSE(startWithString("", "~/"));
  EXPECT_FALSE(startWithString("abc", "AB"));
}

TEST(StartWithString, EverythingBeginsWithAnEmptyPrefix) {
  EXPECT_TRUE(startWithString("a", ""));
  EXPECT_TRUE(startWithString("", ""));
}

TEST(StartWithString, ComparesBytes) {
  EXPECT_TRUE(startWithString("\xFF\xC3z", "\xFF\xC3"));
  EXPECT_FALSE(startWithString("\xC3\xA9", "e"));
}

TEST(IsLessThanOrEqual, TheSameVersionIs) {
  EXPECT_TRUE(isLessThanOrEqual("10.8", "10.8"));
}

TEST(IsLessThanOrEqual, AnEarlierVersionIsAndALaterOneIsNot) {
  EXPECT_TRUE(isLessThanOrEqual("10.7.5", "10.8"));
  EXPECT_TRUE(isLessThanOrEqual("9.9", "10.8"));
  EXPECT_FALSE(isLessThanOrEqual("10.8.1", "10.8"));
  EXPECT_FALSE(isLessThanOrEqual("11.0", "10.8"));
}

TEST(IsLessThanOrEqual, ComponentsCompareAsNumbers) {
  EXPECT_FALSE(isLessThanOrEqual("10.10", "10.8"));
  EXPECT_TRUE(isLessThanOrEqual("10.8", "10.10"));
  EXPECT_TRUE(isLessThanOrEqual("10.4", "10.10"));
}

TEST(IsLessThanOrEqual, MissingComponentsCountAsZero) {
  EXPECT_TRUE(isLessThanOrEqual("10.8.0", "10.8"));
  EXPECT_TRUE(isLessThanOrEqual("10.8", "10.8.0"));
  EXPECT_TRUE(isLessThanOrEqual("10.8.0.0", "10.8"));
  EXPECT_FALSE(isLessThanOrEqual("10.8.0.1", "10.8"));
}

TEST(IsLessThanOrEqual, LeadingZerosDoNotCount) {
  EXPECT_TRUE(isLessThanOrEqual("10.08", "10.8"));
  EXPECT_TRUE(isLessThanOrEqual("10.8", "10.08"));
  EXPECT_FALSE(isLessThanOrEqual("10.010", "10.8"));
}

TEST(IsLessThanOrEqual, WhatIsNoNumberCountsAsZero) {
  EXPECT_TRUE(isLessThanOrEqual("", "10.8"));
  EXPECT_TRUE(isLessThanOrEqual("abc", "10.8"));
  EXPECT_TRUE(isLessThanOrEqual("abc", ""));
  EXPECT_TRUE(isLessThanOrEqual("", ""));
  EXPECT_FALSE(isLessThanOrEqual("10.8", ""));
  EXPECT_FALSE(isLessThanOrEqual("10.8", "abc"));
  EXPECT_TRUE(isLessThanOrEqual("10.-9", "10.0"));
}

TEST(IsLessThanOrEqual, AComponentEndsAtTheFirstByteThatIsNoDigit) {
  EXPECT_TRUE(isLessThanOrEqual("10.8b3", "10.8"));
  EXPECT_FALSE(isLessThanOrEqual("10.9b1", "10.8"));
}

TEST(IsLessThanOrEqual, DotsWithNothingBetweenThemCountAsZero) {
  EXPECT_TRUE(isLessThanOrEqual("10..9", "10.0.9"));
  EXPECT_TRUE(isLessThanOrEqual("...", ""));
  EXPECT_FALSE(isLessThanOrEqual("10..10", "10..9"));
}

TEST(IsLessThanOrEqual, NumbersMayBeOfAnyLength) {
  EXPECT_TRUE(isLessThanOrEqual(fortyDigits, fortyDigits));
  EXPECT_FALSE(isLessThanOrEqual(fortyDigits, "10.8"));
  EXPECT_TRUE(isLessThanOrEqual("10.8", fortyDigits));
  EXPECT_TRUE(isLessThanOrEqual(fortyDigits, "1" + std::string(40, '0')));
  EXPECT_TRUE(isLessThanOrEqual(std::string(40, '0') + "7", "8"));
}

TEST(TwoDecimals, AreShownWithAPointWhateverTheNumber) {
  EXPECT_EQ(twoDecimals(0), "0.00");
  EXPECT_EQ(twoDecimals(1234.5), "1234.50");
  EXPECT_EQ(twoDecimals(-0.126), "-0.13");
  EXPECT_EQ(twoDecimals(1e22), "10000000000000000000000.00");
}

}  // namespace
}  // namespace vantile
