#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <string>

#include "vantile/utility/strings.h"

namespace vantile {
namespace {

constexpr auto largest = std::numeric_limits<std::int32_t>::max();
constexpr auto smallest = std::numeric_limits<std::int32_t>::min();
constexpr auto infinity = std::numeric_limits<double>::infinity();

TEST(IntValue, IsTheNumberThatATextBeginsWith) {
  EXPECT_EQ(intValue("42"), 42);
  EXPECT_EQ(intValue("42 and more"), 42);
  EXPECT_EQ(intValue("42.9"), 42);
  EXPECT_EQ(intValue("0042"), 42);
  EXPECT_EQ(intValue("1,5"), 1);
  EXPECT_EQ(intValue("7e3"), 7);
}

TEST(IntValue, WhiteSpaceAndASignMayComeBefore) {
  EXPECT_EQ(intValue(" \t\n\v\f\r42"), 42);
  EXPECT_EQ(intValue("-42"), -42);
  EXPECT_EQ(intValue(" +42"), 42);
}

TEST(IntValue, WithoutANumberIsZero) {
  for (const auto* text : {"", " ", "-", "+", "x42", "--42", "- 42", ".5", "\xFF", "e5"})
    EXPECT_EQ(intValue(text), 0) << text;
}

TEST(IntValue, WhatDoesNotFitGivesTheNearest) {
  EXPECT_EQ(intValue("2147483647"), largest);
  EXPECT_EQ(intValue("2147483648"), largest);
  EXPECT_EQ(intValue("4294967296"), largest);
  EXPECT_EQ(intValue("99999999999999999999999999"), largest);
  EXPECT_EQ(intValue("-2147483647"), -largest);
  EXPECT_EQ(intValue("-2147483648"), smallest);
  EXPECT_EQ(intValue("-2147483649"), smallest);
  EXPECT_EQ(intValue("-99999999999999999999999999"), smallest);
}

TEST(DoubleValue, IsTheNumberThatATextBeginsWith) {
  EXPECT_EQ(doubleValue("12.5"), 12.5);
  EXPECT_EQ(doubleValue("0.1"), 0.1);
  EXPECT_EQ(doubleValue("100"), 100.0);
  EXPECT_EQ(doubleValue("3.7%"), 3.7);
  EXPECT_EQ(doubleValue("12.5.6"), 12.5);
  EXPECT_EQ(doubleValue(".5"), 0.5);
  EXPECT_EQ(doubleValue("5."), 5.0);
}

TEST(DoubleValue, WhiteSpaceAndASignMayComeBefore) {
  EXPECT_EQ(doubleValue(" \t\n\v\f\r-1.25"), -1.25);
  EXPECT_EQ(doubleValue("+1.25"), 1.25);
}

TEST(DoubleValue, EndsAtAComma) {
  EXPECT_EQ(doubleValue("1,5"), 1.0);
  EXPECT_EQ(doubleValue(",5"), 0.0);
}

TEST(DoubleValue, WithoutANumberIsZero) {
  for (const auto* text :
       {"", " ", "-", ".", "-.", "x1", "--1", "- 1", "\xFF", "e5", ".e5", "inf", "nan", "0x10"})
    EXPECT_EQ(doubleValue(text), 0.0) << text;
}

TEST(DoubleValue, ReadsAnExponentWhereThereIsOne) {
  EXPECT_EQ(doubleValue("1.5e3"), 1500.0);
  EXPECT_EQ(doubleValue("15E-1"), 1.5);
  EXPECT_EQ(doubleValue("1e+2x"), 100.0);
  EXPECT_EQ(doubleValue("2e"), 2.0);
  EXPECT_EQ(doubleValue("2e+"), 2.0);
}

TEST(DoubleValue, IsTheNearestNumberWhateverItsLength) {
  EXPECT_EQ(doubleValue("0.30000000000000004"), 0.30000000000000004);
  EXPECT_EQ(doubleValue("9007199254740993"), 9007199254740992.0);
  EXPECT_EQ(doubleValue("179769313486231570000000000000"), 1.7976931348623157e29);
  EXPECT_EQ(doubleValue("123456789.12345678"), 123456789.12345678);
  EXPECT_EQ(doubleValue("1.0000001"), 1.0000001);
  EXPECT_EQ(doubleValue("1.00000001"), 1.00000001);
  EXPECT_EQ(doubleValue(std::string(5000, '0') + "1.5"), 1.5);
}

TEST(DoubleValue, WhatDoesNotFitIsInfiniteOrNothing) {
  EXPECT_EQ(doubleValue("1e999"), infinity);
  EXPECT_EQ(doubleValue("-1e999"), -infinity);
  EXPECT_EQ(doubleValue("1" + std::string(400, '0')), infinity);
  EXPECT_EQ(doubleValue("1e99999999999999999999"), infinity);
  EXPECT_EQ(doubleValue("1e-999"), 0.0);
  EXPECT_LT(doubleValue("4e-310"), 1e-300);
}

/// A locale whose decimal separator is a comma.
struct Comma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(DoubleValue, GoesByNoLocaleOfTheHosts) {
  const auto before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  const double quick = doubleValue("1.5"), slow = doubleValue("1.5000000000000000000");
  const double comma = doubleValue("1,5");
  std::locale::global(before);
  EXPECT_EQ(quick, 1.5);
  EXPECT_EQ(slow, 1.5);
  EXPECT_EQ(comma, 1.0);
}

}  // namespace
}  // namespace vantile
