#include <malloc.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <new>

#include "vantile/memory/memory.h"

// Samples memory again and again and looks whether anything is left over: blocks from operator
// new, bytes of the heap, descriptors.
//
//   soak [TICKS]     100,000 unless given. Ends with 1 and says what grew.

namespace {

std::atomic<long> liveBlocks = 0;

void* allocated(std::size_t bytes) {
  void* const block = std::malloc(bytes > 0 ? bytes : 1);
  if (!block) throw std::bad_alloc();
  ++liveBlocks;
  return block;
}

void released(void* block) noexcept {
  if (block) --liveBlocks;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t bytes) {
  return allocated(bytes);
}
void* operator new[](std::size_t bytes) {
  return allocated(bytes);
}
void operator delete(void* block) noexcept {
  released(block);
}
void operator delete[](void* block) noexcept {
  released(block);
}
void operator delete(void* block, std::size_t) noexcept {
  released(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  released(block);
}

namespace {

struct Held {
  long blocks, heapBytes, descriptors;
};

Held held() {
  const auto listing = std::filesystem::directory_iterator("/proc/self/fd");
  const auto descriptors = std::distance(begin(listing), end(listing));
  const auto heap = ::mallinfo2();  // all 0 under a sanitizer
  return {liveBlocks, static_cast<long>(heap.uordblks + heap.hblkhd), descriptors};
}

/// Every kind of sample, and now and then another interval, which replaces the timer.
void tick(vantile::KVDMemory& memory, long number) {
  switch (number % 4) {
    case 0:
      return memory.memoryStats32();
    case 1:
      return memory.freshMemoryInfo();
    default:
      memory.updateInfo();
  }
  if (number % 100 == 2) memory.setFreshInterval(number % 200 == 2 ? 3600 : 1800);
}

/// Samples from work posted to the run loop, which is served as a polling host serves it.
void run(vantile::KVDMemory& memory, long ticks) {
  auto& loop = vantile::RunLoop::current();
  for (long number = 0; number < ticks; ++number) {
    loop.post([&memory, number] { tick(memory, number); });
    loop.dispatch();
  }
}

bool grew(const char* what, long before, long after) {
  if (after <= before) return false;
  std::printf("%s grew from %ld to %ld\n", what, before, after);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const long ticks = argc > 1 ? std::atol(argv[1]) : 100000;
  const auto memory = vantile::KVDMemory::singleton();
  if (!memory) {
    std::puts("no memory statistics here");
    return 1;
  }
  long reports = 0;
  auto delegate = std::make_shared<vantile::MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict =
      [&reports](const vantile::Dictionary&, const vantile::Dictionary&,
                 const vantile::Dictionary*) { ++reports; };
  memory->setDelegate(delegate);

  run(*memory, 1000);  // until everything that is kept has been made
  const Held before = held();
  reports = 0;
  run(*memory, ticks);
  const Held after = held();
  memory->setDelegate(nullptr);

  bool failed = grew("blocks from operator new", before.blocks, after.blocks);
  failed |= grew("bytes on the heap", before.heapBytes, after.heapBytes);
  failed |= grew("open descriptors", before.descriptors, after.descriptors);
  if (reports < ticks / 2) {
    std::printf("only %ld of %ld ticks were reported\n", reports, ticks);
    failed = true;
  }
  std::printf("%ld ticks: %ld blocks, %ld bytes, %ld descriptors held\n", ticks, after.blocks,
              after.heapBytes, after.descriptors);
  return failed ? 1 : 0;
}
