#include "vantile/platform/pressure_memory.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>

#include "seam.h"

namespace vantile {
namespace {

using PressureMemorySeam = Seam;

TEST_F(PressureMemorySeam, GivesZeroedBytes) {
  auto* const block = static_cast<unsigned char*>(systemPressureMemory()->zeroed(4096));
  ASSERT_TRUE(block);
  EXPECT_TRUE(std::all_of(block, block + 4096, [](unsigned char byte) { return byte == 0; }));
  systemPressureMemory()->release(block);
}

TEST_F(PressureMemorySeam, GivesChunksThatBeginWithAPage) {
  void* const chunk = systemPressureMemory()->chunk(100'000);
  ASSERT_TRUE(chunk);
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(chunk) % page, 0u);
  systemPressureMemory()->release(chunk);
}

TEST_F(PressureMemorySeam, TakesNothingBackWithoutAWord) {
  systemPressureMemory()->release(nullptr);
}

}  // namespace
}  // namespace vantile
