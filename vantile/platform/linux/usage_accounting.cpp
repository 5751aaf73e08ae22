#include "vantile/platform/linux/usage_accounting.h"

#include <sys/vfs.h>
#include <time.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace vantile {
namespace {

constexpr std::uint64_t blockSize = 512;

/// What is mounted there now, or nothing.
std::optional<UsageVolume> volumeAt(const std::string& mountPoint) {
  struct statfs system = {};
  const auto status = statusOf(AT_FDCWD, mountPoint.c_str(), AT_SYMLINK_NOFOLLOW, STATX_INO);
  if (!status || ::statfs(mountPoint.c_str(), &system) != 0) return std::nullopt;
  UsageVolume volume{.root = status->stx_ino, .mountPoint = mountPoint};
  static_assert(sizeof volume.fileSystem == sizeof system.f_fsid);
  std::memcpy(&volume.fileSystem, &system.f_fsid, sizeof volume.fileSystem);
  return volume;
}

}  // namespace

struct UsageAccounting::Volume {
  explicit Volume(std::string mounted) : mountPoint(std::move(mounted)) {}

  const std::string mountPoint;
  std::optional<UsageVolume> identity;  // of what was taken up
  UsageRecord record;
  std::unique_ptr<UsagePass> pass;  // under way
  bool isChanged = false;           // since it was kept
  Clock::time_point due = Clock::time_point::min(), kept;
};

UsageAccounting::UsageAccounting(Means means)
    : means_(std::move(means)), installed_(means_.installed), cache_(means_.cacheFolder) {}

UsageAccounting::~UsageAccounting() = default;

std::chrono::nanoseconds UsageAccounting::threadProcessorTime() {
  timespec time = {};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

void UsageAccounting::want(const std::vector<std::string>& mountPoints) {
  std::vector<std::unique_ptr<Volume>> wanted;
  for (const auto& mountPoint : mountPoints) {
    const auto has = [&mountPoint](const auto& each) {
      return each && each->mountPoint == mountPoint;
    };
    if (std::any_of(wanted.begin(), wanted.end(), has)) continue;
    const auto known = std::find_if(volumes_.begin(), volumes_.end(), has);
    wanted.push_back(known == volumes_.end() ? std::make_unique<Volume>(mountPoint)
                                             : std::move(*known));
  }
  std::swap(volumes_, wanted);
  for (const auto& unwanted : wanted)
    if (unwanted) keep(*unwanted);
}

std::optional<std::chrono::nanoseconds> UsageAccounting::turn(
    const std::function<bool()>& isStopped) {
  constexpr auto atOnce = std::chrono::nanoseconds(0);
  for (const auto& volume : volumes_) {
    if (volume->identity || volume->due > means_.now()) continue;
    takeUp(*volume);
    return atOnce;
  }
  Volume* const volume = nextVolume();
  if (!volume) return std::nullopt;
  const auto now = means_.now();
  if (!volume->pass && volume->due > now) return volume->due - now;
  if (!volume->pass && !isTheSame(*volume)) return atOnce;
  return go(*volume, isStopped);
}

/// First passes go before further ones, in the order of the list; of these the one under way, else
/// the one that is due first.
UsageAccounting::Volume* UsageAccounting::nextVolume() {
  const auto rank = [this](const Volume& volume) {
    const bool isBegun = volume.pass != nullptr;
    if (!volume.record.complete && (isBegun || volume.due <= means_.now()))
      return std::pair(0, Clock::time_point::min());
    return std::pair(isBegun ? 1 : 2, volume.due);
  };
  Volume* next = nullptr;
  for (const auto& volume : volumes_)
    if (!next || rank(*volume) < rank(*next)) next = volume.get();
  return next;
}

/// Whether still that volume is mounted there. Another one is taken up instead.
bool UsageAccounting::isTheSame(Volume& volume) {
  if (volumeAt(volume.mountPoint) == volume.identity) return true;
  keep(volume);
  volume.identity.reset();
  return false;
}

void UsageAccounting::takeUp(Volume& volume) {
  volume.identity = volumeAt(volume.mountPoint);
  volume.record = UsageRecord();
  volume.isChanged = false;
  volume.kept = means_.now();
  if (!volume.identity) {
    volume.due = means_.now() + means_.pace.period;
    return;
  }
  volume.due = Clock::time_point::min();
  if (auto record = cache_.take(*volume.identity)) volume.record = std::move(*record);
}

std::optional<std::chrono::nanoseconds> UsageAccounting::go(
    Volume& volume, const std::function<bool()>& isStopped) {
  const auto& pace = means_.pace;
  const bool isFirst = !volume.record.complete;
  if (!volume.pass) {
    kinds_.forget();
    volume.due = means_.now() + pace.period;
    volume.pass = std::make_unique<UsagePass>(
        volume.record.index, volume.mountPoint,
        UsagePass::Means{&installed_, &kinds_, means_.presentSecond, !isFirst});
  }
  const auto begin = means_.processorTime();
  const auto before = volume.pass->listed();
  const auto sums = volume.record.index.blocks();
  const auto came = volume.pass->run(isFirst ? pace.firstBatch : pace.batch, isStopped);
  const auto listed = volume.pass->listed() - before;
  listed_ += listed;
  volume.isChanged |= listed > 0 || sums != volume.record.index.blocks();
  if (came == UsagePass::Came::toTheEnd || came == UsagePass::Came::nowhere) volume.pass.reset();
  if (came == UsagePass::Came::toTheEnd) {
    volume.isChanged |= isFirst;
    volume.record.complete = true;
    keep(volume);
  } else if (isFirst && means_.now() - volume.kept >= pace.checkpoint) {
    keep(volume);
  }
  if (isFirst || came == UsagePass::Came::stopped) return std::chrono::nanoseconds(0);
  const auto rest = (means_.processorTime() - begin) * pace.restFactor;
  return std::max<std::chrono::nanoseconds>(rest, pace.leastRest);
}

void UsageAccounting::keep() {
  for (const auto& volume : volumes_) keep(*volume);
}

void UsageAccounting::keep(Volume& volume) {
  if (!volume.isChanged || !volume.identity) return;
  cache_.keep(*volume.identity, volume.record.complete, volume.record.index);
  volume.isChanged = false;
  volume.kept = means_.now();
}

std::map<std::string, UsageSums, std::less<>> UsageAccounting::figures() const {
  std::map<std::string, UsageSums, std::less<>> figures;
  for (const auto& volume : volumes_) {
    if (!volume->record.complete) continue;
    auto bytes = volume->record.index.blocks();
    for (auto& each : bytes) each *= blockSize;
    figures.emplace(volume->mountPoint, bytes);
  }
  return figures;
}

}  // namespace vantile
