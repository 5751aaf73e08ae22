#include "vantile/platform/parsers/loadavg.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

TEST(Loadavg, TellsHowManyThreadsThereAre) {
  EXPECT_EQ(threadsInLoadavg("0.00 0.49 1.67 2/88 6316\n"), 88u);
  EXPECT_EQ(threadsInLoadavg("112.07 0.49 1.67 2000/70000 6316\n"), 70000u);
}

TEST(Loadavg, WithoutTheFieldTellsNothing) {
  for (const char* text : {"", "\n", "0.00 0.49 1.67", "0.00 0.49 1.67 ", "0.00 0.49 1.67 288 6316",
                           "0.00 0.49 1.67 2 6316/7", "0.00 0.49 1.67 2/x", "0.00 0.49 1.67 2/",
                           "\xFF \xFF \xFF \xFF/\xFF", "0 0 0 1/99999999999999999999"})
    EXPECT_FALSE(threadsInLoadavg(text)) << text;
}

}  // namespace
}  // namespace vantile
