#include "vantile/platform/time_remaining.h"

#include "seam.h"

namespace vantile {
namespace {

using TimeRemainingSeam = Seam;

TEST_F(TimeRemainingSeam, IsTheSystemsEstimate) {
  for (const double seconds : {3720.5, TimeRemaining::unknown, TimeRemaining::unlimited}) {
    fakes::machine.timeRemaining = seconds;
    EXPECT_EQ(systemTimeRemaining()->estimate(), seconds);
  }
}

}  // namespace
}  // namespace vantile
