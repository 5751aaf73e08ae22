#include "vantile/platform/linux/burst.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vantile {
namespace {

using namespace std::chrono_literals;

constexpr Burst::Moment start{1h};

TEST(Burst, WhatStandsAloneIsToldSoon) {
  Burst burst;
  EXPECT_EQ(burst.change(start), start + 2ms);
}

TEST(Burst, TheLongerItHasLastedTheLongerTheQuietThatEndsIt) {
  Burst burst;
  burst.change(start);
  EXPECT_EQ(burst.change(start + 1ms), start + 3ms);
  EXPECT_EQ(burst.change(start + 5ms), start + 10ms);
  EXPECT_EQ(burst.change(start + 19ms), start + 38ms);
  EXPECT_EQ(burst.change(start + 38ms), start + 58ms);
}

TEST(Burst, WhatComesLateBeginsABurstOfItsOwn) {
  Burst burst;
  burst.change(start);
  burst.change(start + 9ms);
  burst.tell();
  EXPECT_EQ(burst.change(start + 30ms), start + 32ms);
}

TEST(Burst, ToTellOfItEarlyDoesNotEndIt) {
  Burst burst;
  burst.change(start);
  burst.tell();
  EXPECT_EQ(burst.change(start + 8ms), start + 16ms);
}

TEST(Burst, AChangeWaitsNoLongerThanItMayHoweverLongTheBurstGoesOn) {
  Burst burst;
  Burst::Moment due;
  for (auto now = start; now <= start + 195ms; now += 5ms) due = burst.change(now);
  EXPECT_EQ(due, start + 200ms);
  EXPECT_FALSE(burst.isOverdue(start + 199ms));
  EXPECT_TRUE(burst.isOverdue(start + 200ms));
  burst.tell();
  EXPECT_FALSE(burst.isOverdue(start + 300ms));
  EXPECT_EQ(burst.change(start + 201ms), start + 221ms);
}

}  // namespace
}  // namespace vantile
