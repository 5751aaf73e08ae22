#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <glibtop.h>
#include <glibtop/cpu.h>
#include <statgrab.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <memory>

#include "vantile/sensors/cpu.h"

#include "quiet_output.h"

// One sample of the processors: the library's beside the kernel reads that it can't do without, and
// its usage part beside two libraries that give about the same figures.

namespace {

/// The shared monitor without its timer, its delegate implementing what it is given.
std::shared_ptr<vantile::CPUStatus> monitor(std::shared_ptr<vantile::CPUDelegate> delegate) {
  const auto cpu = vantile::CPUStatus::singleton();
  if (!cpu) return nullptr;
  cpu->setFreshInterval(0);
  cpu->setDelegate(std::move(delegate));
  cpu->updateInfo();
  return cpu;
}

void cpuTick(benchmark::State& state) {
  const vantile::QuietOutput silence;
  double seen = 0;
  auto delegate = std::make_shared<vantile::CPUDelegate>();
  delegate->cpuUsedWithCoreWithSystemWithUserWithIdle = [&seen](std::uint32_t, float system,
                                                                float user, float idle) {
    seen += system + user + idle;
  };
  delegate->cpuUsedWithSystemWithUserWithIdle = [&seen](float system, float user, float idle) {
    seen += system + user + idle;
  };
  delegate->processorWithTaskCountWithThreadCount =
      [&seen](std::int32_t tasks, std::int32_t threads) { seen += tasks + threads; };
  delegate->loadAverageWith1mWith5mWith15m = [&seen](float one, float five, float fifteen) {
    seen += one + five + fifteen;
  };
  delegate->cpuWithTemperature = [&seen](double celsius) { seen += celsius; };
  const auto cpu = monitor(std::move(delegate));
  if (!cpu) return state.SkipWithError("no processor counters here");
  for (auto _ : state) cpu->updateInfo();
  benchmark::DoNotOptimize(seen);
  cpu->setDelegate(nullptr);
}

void bareReads(benchmark::State& state) {
  const int stat = ::open("/proc/stat", O_RDONLY | O_CLOEXEC);
  const int loadavg = ::open("/proc/loadavg", O_RDONLY | O_CLOEXEC);
  std::array<char, 4096> buffer;
  std::array<double, 3> averages;
  for (auto _ : state) {
    struct stat status;
    benchmark::DoNotOptimize(::pread(stat, buffer.data(), buffer.size(), 0));
    benchmark::DoNotOptimize(::pread(loadavg, buffer.data(), 128, 0));
    benchmark::DoNotOptimize(::stat("/proc", &status));
    benchmark::DoNotOptimize(::getloadavg(averages.data(), 3));
  }
  ::close(stat);
  ::close(loadavg);
}

void usage(benchmark::State& state) {
  // What a sample does beyond its usage part is taken along.
  const vantile::QuietOutput silence;
  double seen = 0;
  auto delegate = std::make_shared<vantile::CPUDelegate>();
  delegate->cpuUsedWithSystemWithUserWithIdle = [&seen](float system, float user, float idle) {
    seen += system + user + idle;
  };
  const auto cpu = monitor(std::move(delegate));
  if (!cpu) return state.SkipWithError("no processor counters here");
  for (auto _ : state) cpu->updateInfo();
  benchmark::DoNotOptimize(seen);
  cpu->setDelegate(nullptr);
}

void libgtop(benchmark::State& state) {
  glibtop_init();
  for (auto _ : state) {
    glibtop_cpu cpu;
    glibtop_get_cpu(&cpu);
    benchmark::DoNotOptimize(cpu.user + cpu.idle);
  }
}

void libstatgrab(benchmark::State& state) {
  if (sg_init(1) != SG_ERROR_NONE) return state.SkipWithError("libstatgrab does not start");
  for (auto _ : state) {
    std::size_t entries = 0;
    benchmark::DoNotOptimize(sg_get_cpu_stats(&entries));
  }
  sg_shutdown();
}

BENCHMARK(cpuTick)->Name("cpu tick");
BENCHMARK(bareReads)->Name("bare cpu reads");
BENCHMARK(usage)->Name("cpu usage");
BENCHMARK(libgtop)->Name("libgtop cpu");
BENCHMARK(libstatgrab)->Name("libstatgrab cpu");

}  // namespace

BENCHMARK_MAIN();
