#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <string>

#include "vantile/power/battery_info.h"

#include "laptop.h"

// An update of the battery beside bare reads of the same attributes.

namespace {

using namespace vantile;

void batteryUpdate(benchmark::State& state) {
  const Laptop laptop;
  const auto info = KVDBatteryInfo::init();
  auto delegate = std::make_shared<BatteryDelegate>();
  std::size_t told = 0;
  delegate->batteryWithRemaining = [&told](const std::string& time) { told += time.size(); };
  info->setDelegate(std::move(delegate));
  for (auto _ : state) info->updateCurrentStatus();
  benchmark::DoNotOptimize(told);
  if (told == 0) state.SkipWithError("no battery was found");
  info->setDelegate(nullptr);
}

void bareReads(benchmark::State& state) {
  const Laptop laptop;
  const auto files = laptop.files();
  std::array<char, 4096> buffer;
  for (auto _ : state) {
    for (const auto& path : files) {
      const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
      if (file < 0) continue;
      benchmark::DoNotOptimize(::read(file, buffer.data(), buffer.size()));
      ::close(file);
    }
  }
}

BENCHMARK(batteryUpdate)->Name("battery update");
BENCHMARK(bareReads)->Name("bare reads of supplies");

}  // namespace

BENCHMARK_MAIN();
