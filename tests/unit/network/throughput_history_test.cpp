#include "vantile/network/throughput_history.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

using Sizes = std::vector<std::size_t>;

class History : public ::testing::Test {
 protected:
  void add(std::int32_t stay) {
    history.add(std::make_shared<const Dictionary>(), 1, stay);
    EXPECT_EQ(history.size(), history.intervals());
  }
  Sizes sizesWith(std::int32_t stay, int samples) {
    Sizes sizes;
    for (int i = 0; i < samples; ++i) {
      add(stay);
      sizes.push_back(history.size());
    }
    return sizes;
  }

  ThroughputHistory history;
};

TEST_F(History, OfOneHoldsTheNewestSample) {
  EXPECT_EQ(sizesWith(1, 3), (Sizes{1, 1, 1}));
}

TEST_F(History, OfThreeGoesToAndFroBetweenThreeAndFour) {
  EXPECT_EQ(sizesWith(3, 9), (Sizes{1, 2, 3, 4, 3, 4, 3, 4, 3}));
}

TEST_F(History, OfTwoGoesToAndFroBetweenTwoAndThree) {
  EXPECT_EQ(sizesWith(2, 6), (Sizes{1, 2, 3, 2, 3, 2}));
}

TEST_F(History, OfNoneOrLessHoldsTheNewestSample) {
  EXPECT_EQ(sizesWith(0, 3), (Sizes{1, 1, 1}));
  EXPECT_EQ(sizesWith(-7, 3), (Sizes{1, 1, 1}));
}

TEST_F(History, ThatIsCutShorterLosesTheOldest) {
  std::vector<std::weak_ptr<const Dictionary>> samples;
  for (int i = 0; i < 8; ++i) {
    auto sample = std::make_shared<const Dictionary>();
    samples.push_back(sample);
    history.add(std::move(sample), 1, 9);
  }
  history.add(nullptr, 5, 3);
  EXPECT_EQ(history.size(), 3u);
  for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(samples[i].expired(), i < 6) << i;
  EXPECT_EQ(history.newest(), nullptr);
  EXPECT_EQ(history.newestInterval(), 5.0);
}

TEST_F(History, KeepsAPlaceForASampleThatWasRefused) {
  add(5);
  history.add(nullptr, 2, 5);
  EXPECT_EQ(history.size(), 2u);
  EXPECT_EQ(history.intervals(), 2u);
  add(5);
  EXPECT_NE(history.newest(), nullptr);
}

}  // namespace
}  // namespace vantile
