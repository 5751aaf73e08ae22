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
  EXPECT_EQ(burst.change(start + 14ms), start + 24ms);
  EXPECT_EQ(burst.change(start + 24ms), start + 34ms);
}

TEST(Burst, WhatComesLateBeginsABurstOfItsOwn) {
  Burst burst;
  burst.change(start);
  burst.change(start + 9ms);
  burst.tell();
  EXPECT_EQ(burst.change(start + 20ms), start + 22ms);
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
  EXPECT_EQ(burst.change(start + 201ms), start + 211ms);
}

}  // namespace
}  // namespace vantile
