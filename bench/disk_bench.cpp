#include <benchmark/benchmark.h>
#include <sys/statvfs.h>

#include <memory>
#include <string>
#include <vector>

#include "vantile/disk/disk.h"

// One sample of the volumes while no mount changes, beside the calls that it can't do without. What
// it may take beyond those is a time a volume, so that their number is told, too.

namespace {

std::vector<std::string> volumesNow() {
  std::vector<std::string> paths;
  const auto disk = vantile::KVDDisk::init();
  auto delegate = std::make_shared<vantile::DiskDelegate>();
  delegate->diskDetails = [&paths](const vantile::Array& volumes) {
    for (const auto& volume : volumes)
      paths.push_back(
          *(*volume.as<std::shared_ptr<vantile::Dictionary>>())->text(vantile::keys::disk_path));
  };
  disk->setDelegate(std::move(delegate));
  disk->updateInfo();
  disk->setDelegate(nullptr);
  return paths;
}

void diskTick(benchmark::State& state) {
  const auto disk = vantile::KVDDisk::singleton();
  disk->setFreshInterval(0);
  std::size_t seen = 0;
  auto delegate = std::make_shared<vantile::DiskDelegate>();
  delegate->diskDetails = [&seen](const vantile::Array& volumes) { seen += volumes.size(); };
  disk->setDelegate(std::move(delegate));
  disk->updateInfo();
  for (auto _ : state) disk->updateInfo();
  benchmark::DoNotOptimize(seen);
  disk->setDelegate(nullptr);
  if (seen == 0) state.SkipWithError("no volume is mounted here");
}

void bareCalls(benchmark::State& state) {
  const auto paths = volumesNow();
  for (auto _ : state)
    for (const auto& path : paths) {
      struct statvfs figures;
      benchmark::DoNotOptimize(::statvfs(path.c_str(), &figures));
    }
  state.counters["volumes"] = static_cast<double>(paths.size());
}

BENCHMARK(diskTick)->Name("disk tick");
BENCHMARK(bareCalls)->Name("bare statvfs");

}  // namespace

BENCHMARK_MAIN();
