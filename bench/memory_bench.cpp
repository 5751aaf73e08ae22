#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <glibtop.h>
#include <glibtop/mem.h>
#include <glibtop/swap.h>
#include <statgrab.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "vantile/memory/memory.h"

// One sample of memory, swap and paging: the library's beside the kernel reads that it can't do
// without, and beside two libraries that give about the same figures.

namespace {

/// The shared monitor without its timer, its delegate implementing the operation. Past its first
/// sample, which alone looks at the swap space.
std::shared_ptr<vantile::KVDMemory> monitor(std::uint64_t& seen) {
  const auto memory = vantile::KVDMemory::singleton();
  if (!memory) return nullptr;
  auto delegate = std::make_shared<vantile::MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict =
      [&seen](const vantile::Dictionary& figures, const vantile::Dictionary& vm,
              const vantile::Dictionary*) { seen += figures.size() + vm.size(); };
  memory->setFreshInterval(0);
  memory->setDelegate(std::move(delegate));
  memory->updateInfo();
  return memory;
}

void memoryTick(benchmark::State& state) {
  std::uint64_t seen = 0;
  const auto memory = monitor(seen);
  if (!memory) return state.SkipWithError("no memory statistics here");
  for (auto _ : state) memory->updateInfo();
  benchmark::DoNotOptimize(seen);
  memory->setDelegate(nullptr);
}

struct KernelFile {
  int descriptor;
  std::size_t most;
};

/// Whether the block device at `folder` ever moved anything. One that did not is no more than
/// looked at now and then.
bool used(const std::string& folder) {
  std::ifstream file(folder + "/stat");
  const std::string text(std::istreambuf_iterator<char>(file), {});
  return text.find_first_of("123456789") != std::string::npos;
}

/// How much of vmstat a tick reads: to the end of the last counter wanted, and what numbers may
/// have grown by since the reading before.
std::size_t partOfVmstat() {
  std::ifstream file("/proc/vmstat");
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const auto last = std::max(text.find("\npgfault "), text.find("\npglazyfreed "));
  const auto end = last < text.size() ? text.find('\n', last + 1) : std::string::npos;
  return end < text.size() ? end + 1 + 64 : 2304;
}

/// The files of a tick with as much of each as it reads.
std::vector<KernelFile> filesOfATick() {
  std::vector<KernelFile> files;
  const auto add = [&files](const std::string& path, std::size_t most) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) files.push_back({descriptor, most});
  };
  add("/proc/meminfo", 4096);
  add("/proc/vmstat", partOfVmstat());
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/sys/block", error)) {
    const auto folder = entry.path().string();
    if (!entry.path().filename().string().starts_with("zram") || !used(folder)) continue;
    add(folder + "/mm_stat", 512);
    add(folder + "/stat", 512);
  }
  return files;
}

void bareReads(benchmark::State& state) {
  const auto files = filesOfATick();
  std::array<char, 4096> buffer;
  for (auto _ : state)
    for (const auto& file : files)
      benchmark::DoNotOptimize(::pread(file.descriptor, buffer.data(), file.most, 0));
  for (const auto& file : files) ::close(file.descriptor);
}

void libgtop(benchmark::State& state) {
  glibtop_init();
  for (auto _ : state) {
    glibtop_mem memory;
    glibtop_swap swap;
    glibtop_get_mem(&memory);
    glibtop_get_swap(&swap);
    benchmark::DoNotOptimize(memory.used + swap.pagein);
  }
}

void libstatgrab(benchmark::State& state) {
  if (sg_init(1) != SG_ERROR_NONE) return state.SkipWithError("libstatgrab does not start");
  for (auto _ : state) {
    std::size_t entries = 0;
    benchmark::DoNotOptimize(sg_get_mem_stats(&entries));
    benchmark::DoNotOptimize(sg_get_swap_stats(&entries));
    benchmark::DoNotOptimize(sg_get_page_stats(&entries));
  }
  sg_shutdown();
}

BENCHMARK(memoryTick)->Name("memory tick");
BENCHMARK(bareReads)->Name("bare reads");
BENCHMARK(libgtop)->Name("libgtop");
BENCHMARK(libstatgrab)->Name("libstatgrab");

}  // namespace

BENCHMARK_MAIN();
