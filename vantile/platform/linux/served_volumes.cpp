#include "vantile/platform/linux/served_volumes.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <set>
#include <utility>

#include "vantile/foundation/guard.h"

namespace vantile {
namespace {

auto identityOf(const Mount& mount) {
  return std::tuple(mount.id, mount.device, mount.mountPoint);
}

}  // namespace

struct ServedVolumes::Answer {
  bool done = false;
  std::optional<VolumeFigures> figures;
};

/// What the threads share with whoever asks, and may outlive them. The lock is over the answers,
/// too.
struct ServedVolumes::Exchange {
  std::mutex mutex;
  std::condition_variable answered;
  int threads = 0;
};

ServedVolumes::ServedVolumes(Means means)
    : means_(std::move(means)), exchange_(std::make_shared<Exchange>()) {}

std::vector<std::optional<VolumeFigures>> ServedVolumes::figures(
    const std::vector<const Mount*>& volumes) {
  forgetOthers(volumes);
  if (volumes.empty()) return {};
  const auto takeIn = [](Volume& volume) {
    if (!volume.pending || !volume.pending->done) return;
    if (volume.pending->figures) volume.last = volume.pending->figures;
    volume.pending.reset();
  };
  std::vector<std::shared_ptr<Answer>> awaited;
  std::unique_lock lock(exchange_->mutex);
  for (const auto* mount : volumes) {
    auto& volume = volumes_[identityOf(*mount)];
    takeIn(volume);
    if (volume.pending || exchange_->threads >= means_.mostThreads) continue;
    lock.unlock();
    volume.pending = begin(mount->mountPoint);
    lock.lock();
    if (volume.pending) awaited.push_back(volume.pending);
  }
  exchange_->answered.wait_for(lock, means_.patience, [&awaited] {
    return std::ranges::all_of(awaited, [](const auto& answer) { return answer->done; });
  });
  std::vector<std::optional<VolumeFigures>> figures;
  for (const auto* mount : volumes) {
    auto& volume = volumes_[identityOf(*mount)];
    takeIn(volume);
    figures.push_back(volume.last);
  }
  return figures;
}

void ServedVolumes::forgetOthers(const std::vector<const Mount*>& volumes) {
  if (volumes_.empty()) return;
  std::set<Identity> present;
  for (const auto* mount : volumes) present.insert(identityOf(*mount));
  std::erase_if(volumes_, [&](const auto& volume) { return !present.contains(volume.first); });
}

/// Null where no thread can be had.
std::shared_ptr<ServedVolumes::Answer> ServedVolumes::begin(const std::string& mountPoint) {
  auto answer = std::make_shared<Answer>();
  {
    const std::lock_guard lock(exchange_->mutex);
    ++exchange_->threads;
  }
  const auto end = [exchange = exchange_, answer](std::optional<VolumeFigures> figures) {
    const std::lock_guard lock(exchange->mutex);
    answer->figures = figures;
    answer->done = true;
    --exchange->threads;
    exchange->answered.notify_all();
  };
  const bool started =
      means_.threads->detach("vantile-volume", [ask = means_.ask, end, mountPoint] {
        std::optional<VolumeFigures> figures;
        guarded("a volume's figures", [&] { figures = ask(mountPoint); });
        end(figures);
      });
  if (started) return answer;
  end(std::nullopt);
  return nullptr;
}

}  // namespace vantile
