#include "vantile/memory/memory_dictionaries.h"

#include <gtest/gtest.h>

#include <string>

#include "vantile/memory/memory_keys.h"

namespace vantile {
namespace {

std::string keysOf(const Dictionary& dictionary) {
  std::string names;
  for (const auto& entry : dictionary) names.append(entry.key()).append(" ");
  return names;
}

VirtualMemoryReading someReading() {
  VirtualMemoryReading reading;
  reading.free = 1;
  reading.active = 20;
  reading.inactive = 300;
  reading.wired = 4000;
  reading.compressorPages = 50000;
  reading.uncompressedPages = 600000;
  reading.hits = 1;
  reading.lookups = 2;
  reading.pageIns = 3;
  reading.pageOuts = 4;
  reading.faults = 5;
  reading.copyOnWriteFaults = 6;
  reading.purges = 7;
  reading.purgeable = 8;
  reading.speculative = 9;
  reading.decompressions = 10;
  reading.compressions = 11;
  return reading;
}

TEST(MemoryDictionary, CountsAreBytesOfAllFiveKindsOfPage) {
  const auto memory = memoryDictionary(someReading(), 10);
  EXPECT_EQ(memory.uint64("memory_total"), 543210u);
  EXPECT_EQ(memory.uint64("memory_free"), 3010u);
  EXPECT_EQ(memory.uint64("memory_used"), 540200u);
  EXPECT_EQ(memory.uint64("memory_active"), 200u);
  EXPECT_EQ(memory.uint64("memory_inactive"), 3000u);
  EXPECT_EQ(memory.uint64("memory_wired"), 40000u);
  EXPECT_EQ(memory.uint64("memory_freepage"), 10u);
  EXPECT_EQ(memory.uint64("memory_compressed"), 500000u);
  EXPECT_EQ(memory.uint64("memory_uncompressed"), 6000000u);
}

TEST(MemoryDictionary, HasItsNineKeysInOrder) {
  EXPECT_EQ(keysOf(memoryDictionary(VirtualMemoryReading{}, 1)),
            "memory_total memory_free memory_used memory_active memory_inactive memory_wired "
            "memory_freepage memory_compressed memory_uncompressed ");
}

TEST(MemoryDictionary, EveryValueIsUnsignedAnd64BitsWide) {
  for (const auto& entry : memoryDictionary(someReading(), 4096))
    EXPECT_TRUE(entry.value.as<std::uint64_t>()) << entry.key();
  for (const auto& entry : vmDictionary(someReading(), {1, 2}))
    EXPECT_TRUE(entry.value.as<std::uint64_t>()) << entry.key();
}

TEST(MemoryDictionary, ManyPagesDoNotOverflow) {
  VirtualMemoryReading reading;
  reading.active = 1ull << 40;
  EXPECT_EQ(memoryDictionary(reading, 65536).uint64("memory_active"), 1ull << 56);
}

TEST(VmDictionary, CountsStandAsTheSystemGivesThem) {
  const auto vm = vmDictionary(someReading(), {12, 13});
  EXPECT_EQ(vm.uint64("vm_hits"), 1u);
  EXPECT_EQ(vm.uint64("vm_lookups"), 2u);
  EXPECT_EQ(vm.uint64("vm_pageins"), 3u);
  EXPECT_EQ(vm.uint64("vm_pageouts"), 4u);
  EXPECT_EQ(vm.uint64("vm_faults"), 5u);
  EXPECT_EQ(vm.uint64("vm_cowfaults"), 6u);
  EXPECT_EQ(vm.uint64("vm_purges"), 7u);
  EXPECT_EQ(vm.uint64("vm_purgeablecount"), 8u);
  EXPECT_EQ(vm.uint64("vm_speculativecount"), 9u);
  EXPECT_EQ(vm.uint64("vm_decompressions"), 10u);
  EXPECT_EQ(vm.uint64("vm_compressions"), 11u);
  EXPECT_EQ(vm.uint64("vm_deltapageins"), 12u);
  EXPECT_EQ(vm.uint64("vm_deltapageouts"), 13u);
}

TEST(VmDictionary, HasItsThirteenKeysInOrder) {
  EXPECT_EQ(keysOf(vmDictionary(someReading(), {1, 2})),
            "vm_hits vm_lookups vm_pageins vm_pageouts vm_faults vm_cowfaults vm_purges "
            "vm_purgeablecount vm_speculativecount vm_decompressions vm_compressions "
            "vm_deltapageins vm_deltapageouts ");
}

TEST(VmDictionary, ACounterThatTheSystemDoesNotKeepIsLeftOut) {
  auto reading = someReading();
  reading.hits = reading.copyOnWriteFaults = std::nullopt;
  const auto vm = vmDictionary(reading, {std::nullopt, 1});
  EXPECT_FALSE(vm.contains("vm_hits"));
  EXPECT_FALSE(vm.contains("vm_cowfaults"));
  EXPECT_FALSE(vm.contains("vm_deltapageins"));
  EXPECT_TRUE(vm.contains("vm_lookups"));
}

VirtualMemoryReading32 someReading32() {
  VirtualMemoryReading32 reading;
  reading.free = 1;
  reading.active = 20;
  reading.inactive = 300;
  reading.wired = 4000;
  reading.hits = 1;
  reading.lookups = 2;
  reading.pageIns = 3;
  reading.pageOuts = 4;
  reading.faults = 5;
  reading.copyOnWriteFaults = 6;
  return reading;
}

TEST(MemoryDictionary32, KnowsNoCompressor) {
  const auto memory = memoryDictionary(someReading32(), 10);
  EXPECT_EQ(memory.uint64("memory_total"), 43210u);
  EXPECT_EQ(memory.uint64("memory_free"), 3010u);
  EXPECT_EQ(memory.uint64("memory_used"), 40200u);
  EXPECT_EQ(memory.uint64("memory_freepage"), 10u);
  EXPECT_EQ(memory.uint64("memory_compressed"), 0u);
  EXPECT_EQ(memory.uint64("memory_uncompressed"), 0u);
  EXPECT_EQ(memory.size(), 9u);
}

TEST(MemoryDictionary32, CountsAreWidenedBeforeTheyAreMultiplied) {
  VirtualMemoryReading32 reading;
  reading.free = reading.active = 0xffffffffu;
  const auto memory = memoryDictionary(reading, 4096);
  EXPECT_EQ(memory.uint64("memory_total"), 2 * 0xffffffffull * 4096);
}

TEST(MemoryDictionary32, ThePageSizeIsReadAs32Bits) {
  VirtualMemoryReading32 reading;
  reading.free = 1;
  EXPECT_EQ(memoryDictionary(reading, (1ull << 32) + 4096).uint64("memory_freepage"), 4096u);
}

TEST(VmDictionary32, HasItsEightKeysAndNoneOfTheCompressors) {
  EXPECT_EQ(keysOf(vmDictionary(someReading32(), {7, 8})),
            "vm_hits vm_lookups vm_pageins vm_pageouts vm_faults vm_cowfaults vm_deltapageins "
            "vm_deltapageouts ");
}

TEST(VmDictionary32, EveryCountIsWidened) {
  const auto vm = vmDictionary(someReading32(), {7, 8});
  std::uint64_t expected = 0;
  for (const auto& entry : vm) EXPECT_EQ(*entry.value.as<std::uint64_t>(), ++expected);
}

}  // namespace
}  // namespace vantile
