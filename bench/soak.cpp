#include <malloc.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <new>
#include <string>
#include <string_view>

#include "vantile/foundation/run_loop.h"

#include "fakes/temporary_folder.h"
#include "quiet_output.h"
#include "soaked.h"

// Takes samples again and again and looks whether anything is left over: blocks from operator new,
// bytes of the heap, descriptors.
//
//   soak [memory|cpu|network|changes|disk|battery|all [TURNS]]
//
// All of them unless one is named, 100,000 samples each, and 1,000 changes of the network's
// configuration with a sample after each. Ends with 1 and says what grew, with 77 where one can't
// be had here.

namespace {

std::atomic<long> liveBlocks = 0;

void* allocated(std::size_t bytes) noexcept {
  void* const block = std::malloc(bytes > 0 ? bytes : 1);
  if (block) ++liveBlocks;
  return block;
}

void* allocatedOrThrown(std::size_t bytes) {
  void* const block = allocated(bytes);
  if (!block) throw std::bad_alloc();
  return block;
}

void released(void* block) noexcept {
  if (block) --liveBlocks;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t bytes) {
  return allocatedOrThrown(bytes);
}
void* operator new[](std::size_t bytes) {
  return allocatedOrThrown(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocated(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
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

vantile::Held held() {
  const auto listing = std::filesystem::directory_iterator("/proc/self/fd");
  const auto descriptors = std::distance(begin(listing), end(listing));
  const auto heap = ::mallinfo2();  // all 0 under a sanitizer
  return {liveBlocks, static_cast<long>(heap.uordblks + heap.hblkhd), descriptors};
}

void run(vantile::Soaked& soaked, long turns) {
  for (long number = 0; number < turns; ++number) soaked.turn(number);
}

void serve(std::chrono::seconds time) {
  auto& loop = vantile::RunLoop::current();
  const auto over = loop.after(time, [&loop] { loop.stop(); });
  loop.run();
}

bool grew(const char* what, long before, long after, long leeway) {
  if (after <= before + leeway) return false;
  std::printf("%s grew from %ld to %ld\n", what, before, after);
  return true;
}

/// Begins the program anew without the allocator's caches of threads, in which freed blocks count
/// as held. Only comes back where that can't be.
void restartWithoutCaches(char** argv) {
  constexpr const char *name = "GLIBC_TUNABLES", *without = "glibc.malloc.tcache_count=0";
  const char* const tunables = std::getenv(name);
  if (tunables && std::string_view(tunables) == without) return;
  ::setenv(name, without, 1);
  ::execv("/proc/self/exe", argv);
}

/// Whether anything is left over of so many turns, or they were not what they are to be.
bool failed(const vantile::SoakedKind& kind, vantile::Soaked& soaked, long turns) {
  vantile::Held before, after;
  long told = 0;
  {
    const vantile::QuietOutput quiet;
    run(soaked, kind.warming);
    serve(std::chrono::seconds(kind.seconds));
    before = held();
    told = -soaked.told();
    run(soaked, turns);
    serve(std::chrono::seconds(kind.seconds));
    after = held();
    told += soaked.told();
  }
  const auto& leeway = kind.leeway;
  bool failed = grew("blocks from operator new", before.blocks, after.blocks, leeway.blocks);
  failed |= grew("bytes on the heap", before.heapBytes, after.heapBytes, leeway.heapBytes);
  failed |= grew("open descriptors", before.descriptors, after.descriptors, leeway.descriptors);
  if (told < turns / 2) {
    std::printf("only %ld of %ld turns were told of\n", told, turns);
    failed = true;
  }
  std::printf("%.*s, %ld turns: %ld blocks, %ld bytes, %ld descriptors held\n",
              static_cast<int>(kind.name.size()), kind.name.data(), turns, after.blocks,
              after.heapBytes, after.descriptors);
  return failed;
}

}  // namespace

int main(int argc, char** argv) {
  restartWithoutCaches(argv);
  constexpr int notHere = 77;
  const std::string_view wanted = argc > 1 ? argv[1] : "all";
  // What is counted of volumes is not kept for the user.
  const vantile::testing::TemporaryFolder caches;
  ::setenv("XDG_CACHE_HOME", caches.path().c_str(), 1);
  int result = 2;
  for (const auto& kind : vantile::soakedKinds) {
    if (wanted != "all" && wanted != kind.name) continue;
    if (result == 2) result = 0;
    std::string refusal;
    const auto soaked = kind.make(refusal);
    if (soaked) {
      if (failed(kind, *soaked, argc > 2 ? std::atol(argv[2]) : kind.turns)) result = 1;
    } else {
      std::printf("%.*s: %s\n", static_cast<int>(kind.name.size()), kind.name.data(),
                  refusal.c_str());
      if (result == 0) result = notHere;
    }
    std::fflush(stdout);
  }
  if (result == 2) std::puts("soak: no such monitor");
  return result;
}
