#include "vantile/platform/linux/usage_accounting.h"

#include <time.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/platform/linux/usage_volumes.h"

namespace vantile {
namespace {

constexpr std::uint64_t blockSize = 512;

constexpr auto atOnce = std::chrono::nanoseconds(0);

UsageAccounting::Means complete(UsageAccounting::Means means) {
  if (!means.volumeAt)
    means.volumeAt = [volumes = std::make_shared<UsageVolumes>()](const std::string& mountPoint) {
      return volumes->at(mountPoint);
    };
  return means;
}

}  // namespace

struct UsageAccounting::Volume {
  explicit Volume(std::string mounted) : mountPoint(std::move(mounted)) {}

  /// Whether it can't be counted for now: it is not there, or closed to us.
  bool isAway() const { return isClosed || (!identity && due > Clock::time_point::min()); }

  const std::string mountPoint;
  std::string whole;                    // the mount point of what it is a part of, or its own
  std::optional<UsageVolume> identity;  // of what was taken up
  UsageRecord record;
  std::unique_ptr<UsagePass> pass;  // under way
  bool isChanged = false;           // since it was kept
  bool isUnsure = false;            // whether it is still there
  bool isToKeep = false;            // as a pass ended, which was stopped
  bool hasMissed = false;           // something, in the first pass
  bool isClosed = false;            // as the latest pass found
  std::size_t held = 0;             // bytes of names in memory when it was kept
  Clock::time_point due = Clock::time_point::min(), kept, restsUntil;
};

UsageAccounting::UsageAccounting(Means means)
    : means_(complete(std::move(means))),
      installed_(means_.installed),
      cache_(means_.cacheFolder),
      kinds_(means_.kindOf) {}

UsageAccounting::~UsageAccounting() = default;

std::chrono::nanoseconds UsageAccounting::threadProcessorTime() {
  timespec time = {};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

void UsageAccounting::want(const std::vector<std::string>& mountPoints,
                           const IsStopped& isStopped) {
  wanted_ = mountPoints;
  arrange(isStopped);
}

void UsageAccounting::arrange(const IsStopped& isStopped) {
  isToArrange_ = false;
  std::vector<std::unique_ptr<Volume>> wanted;
  const auto add = [&](const std::string& mountPoint, const std::string& whole) {
    const auto has = [&mountPoint](const auto& each) {
      return each && each->mountPoint == mountPoint;
    };
    if (std::any_of(wanted.begin(), wanted.end(), has)) return;
    const auto known = std::find_if(volumes_.begin(), volumes_.end(), has);
    wanted.push_back(known == volumes_.end() ? std::make_unique<Volume>(mountPoint)
                                             : std::move(*known));
    wanted.back()->whole = whole;
  };
  for (const auto& mountPoint : wanted_) {
    add(mountPoint, mountPoint);
    if (!means_.othersOf) continue;
    for (const auto& other : means_.othersOf(mountPoint)) add(other, mountPoint);
  }
  std::swap(volumes_, wanted);
  for (const auto& unwanted : wanted)
    if (unwanted) keepOrSetAside(*unwanted, isStopped);
}

void UsageAccounting::lookAgain() {
  isToArrange_ = true;
  for (const auto& volume : volumes_) {
    volume->isUnsure = true;
    if (!volume->identity) volume->due = Clock::time_point::min();
  }
}

std::optional<std::chrono::nanoseconds> UsageAccounting::turn(const IsStopped& isStopped) {
  if (isToArrange_) arrange(isStopped);
  Volume* volume = toTakeUp();
  if (!volume) volume = nextVolume();
  if (!volume) return std::nullopt;
  try {
    return work(*volume, isStopped);
  } catch (const std::exception& error) {
    setAside(*volume, error.what());
  }
  return atOnce;
}

/// The one to be looked at before any is counted, or null.
UsageAccounting::Volume* UsageAccounting::toTakeUp() {
  const auto found = std::find_if(volumes_.begin(), volumes_.end(), [this](const auto& each) {
    return each->identity ? each->isUnsure : each->due <= means_.now();
  });
  return found == volumes_.end() ? nullptr : found->get();
}

std::optional<std::chrono::nanoseconds> UsageAccounting::work(Volume& volume,
                                                              const IsStopped& isStopped) {
  const auto now = means_.now();
  if (!volume.identity && volume.due <= now) {
    takeUp(volume, isStopped);
  } else if (volume.isUnsure) {
    isTheSame(volume, isStopped);
  } else if (volume.isToKeep) {
    keep(volume, isStopped);
  } else if (!volume.pass && volume.due > now) {
    return volume.due - now;
  } else if (volume.restsUntil > now) {
    return volume.restsUntil - now;
  } else if (isTheSame(volume, isStopped)) {
    const auto rest = go(volume, isStopped);
    volume.restsUntil = means_.now() + rest;
    return rest;
  }
  return atOnce;
}

/// First passes go before further ones, in the order of the list; of these the one under way, else
/// the one that is due first.
UsageAccounting::Volume* UsageAccounting::nextVolume() {
  const auto rank = [this](const Volume& volume) {
    const bool isBegun = volume.pass != nullptr;
    const bool isFirst = !volume.record.complete;
    if (volume.isToKeep || (isFirst && (isBegun || volume.due <= means_.now())))
      return std::pair(0, Clock::time_point::min());
    return std::pair(isBegun ? 1 : 2, volume.due);
  };
  Volume* next = nullptr;
  for (const auto& volume : volumes_)
    if (!next || rank(*volume) < rank(*next)) next = volume.get();
  return next;
}

/// Whether still that volume is mounted there. Another one is taken up instead.
bool UsageAccounting::isTheSame(Volume& volume, const IsStopped& isStopped) {
  volume.isUnsure = false;
  if (means_.volumeAt(volume.mountPoint) == volume.identity) return true;
  volume.pass.reset();
  keep(volume, isStopped);
  volume.identity.reset();
  volume.record = UsageRecord();
  volume.due = volume.restsUntil = Clock::time_point::min();
  return false;
}

void UsageAccounting::takeUp(Volume& volume, const IsStopped& isStopped) {
  auto identity = means_.volumeAt(volume.mountPoint);
  volume.record = UsageRecord();
  volume.isChanged = volume.isToKeep = volume.isUnsure = false;
  volume.hasMissed = volume.isClosed = false;
  volume.held = 0;
  volume.kept = means_.now();
  volume.due = means_.now() + means_.pace.period;
  std::optional<UsageRecord> record;
  if (identity && cache_.take(*identity, record, isStopped) == UsageCache::Came::stopped) {
    volume.due = Clock::time_point::min();  // as the next thing
  } else if (identity) {
    volume.identity = std::move(identity);
    volume.due = Clock::time_point::min();
    if (record) volume.record = std::move(*record);
  }
}

/// What is known of it may be half of something.
void UsageAccounting::setAside(Volume& volume, std::string_view error) {
  if (!std::exchange(hasFailed_, true)) logEscaped("usage by category", error);
  volume.pass.reset();
  volume.record = UsageRecord();
  volume.identity.reset();
  volume.isChanged = volume.isToKeep = volume.isUnsure = false;
  volume.due = means_.now() + means_.pace.period;
}

void UsageAccounting::begin(Volume& volume) {
  kinds_.forget();
  volume.due = means_.now() + means_.pace.period;
  volume.pass = std::make_unique<UsagePass>(volume.record.index, volume.mountPoint,
                                            UsagePass::Means{.installed = &installed_,
                                                             .kinds = &kinds_,
                                                             .presentSecond = means_.presentSecond,
                                                             .asksAgain = volume.record.complete,
                                                             .hold = means_.pace.hold,
                                                             .now = means_.now});
}

std::chrono::nanoseconds UsageAccounting::go(Volume& volume, const IsStopped& isStopped) {
  using Came = UsagePass::Came;
  const auto& pace = means_.pace;
  const bool isFirst = !volume.record.complete;
  if (!volume.pass) begin(volume);
  const auto begin = means_.processorTime();
  const auto before = volume.pass->listed();
  const auto changes = volume.record.index.changes();
  const auto came = volume.pass->run(isFirst ? pace.firstBatch : pace.batch, isStopped);
  const auto listed = volume.pass->listed() - before;
  listed_ += listed;
  volume.isChanged |= changes != volume.record.index.changes();
  const bool hasMissed = volume.pass->missed() > 0;
  volume.isClosed = came == Came::nowhere;
  if (came == Came::toTheEnd || came == Came::nowhere) volume.pass.reset();
  if (came == Came::toTheEnd) {
    volume.isChanged |= isFirst;
    volume.isToKeep = true;
    // What can't be read the second time either is left out: a damaged folder, say.
    if (!hasMissed || std::exchange(volume.hasMissed, true)) volume.record.complete = true;
    keep(volume, isStopped);
  } else if ((isFirst && means_.now() - volume.kept >= pace.checkpoint) || holdsMany(volume)) {
    keep(volume, isStopped);
  }
  if (came == Came::stopped) return atOnce;
  if (isFirst) return came == Came::some && volume.mountPoint != "/" ? pace.release : atOnce;
  const auto rest = (means_.processorTime() - begin) * pace.restFactor;
  return std::max<std::chrono::nanoseconds>(rest, pace.leastRest);
}

bool UsageAccounting::holdsMany(const Volume& volume) const {
  const auto& index = volume.record.index;
  return index.heldSize() >=
         volume.held +
             std::max<std::uint64_t>(means_.pace.mostHeld, (index.keptSize() + volume.held) / 4);
}

void UsageAccounting::keepSmall() {
  constexpr int mostPieces = 16;  // of 64 KiB
  for (const auto& volume : volumes_)
    keepOrSetAside(*volume, [pieces = 0]() mutable { return ++pieces > mostPieces; });
}

/// What goes wrong with one volume leaves the others as they are.
void UsageAccounting::keepOrSetAside(Volume& volume, const IsStopped& isStopped) {
  try {
    keep(volume, isStopped);
  } catch (const std::exception& error) {
    setAside(volume, error.what());
  }
}

void UsageAccounting::keep(Volume& volume, const IsStopped& isStopped) {
  if (volume.isChanged && volume.identity &&
      cache_.keep(*volume.identity, volume.record.complete, volume.record.index, isStopped) ==
          UsageCache::Came::stopped)
    return;
  volume.isChanged = volume.isToKeep = false;
  volume.kept = means_.now();
  volume.held = volume.record.index.heldSize();  // all where it could not be kept
}

std::map<std::string, UsageSums, std::less<>> UsageAccounting::figures() const {
  std::map<std::string, UsageSums, std::less<>> figures;
  for (const auto& volume : volumes_) {
    const bool isPart = volume->whole != volume->mountPoint;
    if (!volume->record.complete) {
      if (isPart && !volume->isAway()) figures.erase(volume->whole);
      continue;
    }
    if (isPart && !figures.contains(volume->whole)) continue;
    auto& bytes = figures[volume->whole];
    const auto blocks = volume->record.index.blocks();
    for (std::size_t kind = 0; kind < usageKinds; ++kind) bytes[kind] += blocks[kind] * blockSize;
  }
  return figures;
}

}  // namespace vantile
