#include "clean.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace vantile::host {
namespace {

constexpr std::uint64_t mebibyte = 1024 * 1024;

memory_info withFree(std::uint64_t free, std::uint64_t inactive) {
  memory_info info{};
  info.free = free * mebibyte;
  info.active = 100 * mebibyte;
  info.inactive = inactive * mebibyte;
  return info;
}

TEST(HostClean, TellsWhatWasFreed) {
  EXPECT_EQ(describeCleaning(withFree(900, 800), withFree(1400, 300), 11.04, false),
            "finished after 11.0 s: 500 MiB freed\n"
            "free memory:         900 MiB before, 1.37 GiB after (+500 MiB)\n"
            "active and inactive: 900 MiB before, 400 MiB after (-500 MiB)\n");
}

TEST(HostClean, AdmitsThatNothingWasFreed) {
  const auto text = describeCleaning(withFree(1000, 800), withFree(990, 800), 11, false);
  EXPECT_TRUE(text.starts_with("finished after 11.0 s: nothing was freed\n")) << text;
  EXPECT_NE(text.find("(-10.0 MiB)"), std::string::npos) << text;
}

TEST(HostClean, AGainAsSmallAsTheKernelsOwnMovesIsNone) {
  const auto text = describeCleaning(withFree(1000, 800), withFree(1001, 800), 11, false);
  EXPECT_NE(text.find("nothing was freed"), std::string::npos) << text;
}

TEST(HostClean, TellsOfAnEarlyStop) {
  EXPECT_TRUE(
      describeCleaning(withFree(1, 1), withFree(1, 1), 2.5, true).starts_with("stopped after 2.5"));
}

}  // namespace
}  // namespace vantile::host
