#include "vantile/platform/swap_areas.h"

#include <cstring>

#include "seam.h"

namespace vantile {
namespace {

using SwapAreasSeam = Seam;

/// The kernel's record: total, available and used bytes, page size, whether encrypted.
std::string record(std::uint64_t used, std::int32_t encrypted) {
  const std::uint64_t total = std::uint64_t{1} << 40;
  std::string bytes(32, '\0');
  std::memcpy(bytes.data(), &total, sizeof total);
  std::memcpy(bytes.data() + 16, &used, sizeof used);
  std::memcpy(bytes.data() + 28, &encrypted, sizeof encrypted);
  return bytes;
}

TEST_F(SwapAreasSeam, AreNotListedByTheKernel) {
  EXPECT_FALSE(systemSwapAreas()->areas());
}

TEST_F(SwapAreasSeam, TellWhatIsUsed) {
  fakes::machine.swapUsage = record(5'000'000'000, 1);
  const auto usage = systemSwapAreas()->usage();
  ASSERT_TRUE(usage);
  EXPECT_EQ(usage->usedBytes, 5'000'000'000u);
  EXPECT_TRUE(usage->encrypted);
}

TEST_F(SwapAreasSeam, TellThatNothingIsEncrypted) {
  fakes::machine.swapUsage = record(1, 0);
  EXPECT_FALSE(systemSwapAreas()->usage()->encrypted);
}

TEST_F(SwapAreasSeam, TellNothingWhereTheKernelRefuses) {
  EXPECT_FALSE(systemSwapAreas()->usage());
}

}  // namespace
}  // namespace vantile
