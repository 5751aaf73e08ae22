#include "vantile/platform/linux/served_volumes.h"

#include <algorithm>
#include <utility>

#include "vantile/foundation/guard.h"

namespace vantile {

/// A question to a volume.
struct ServedVolumes::Call {
  const Clock::time_point due;  // until when it is waited for
  const Clock::time_point begun;
  std::optional<Clock::time_point> ended;
  std::optional<VolumeFigures> figures;
};

struct ServedVolumes::Volume {
  explicit Volume(std::string place) : mountPoint(std::move(place)) {}

  void takeIn(std::chrono::nanoseconds patience) {
    if (!call || !call->ended) return;
    if (call->figures) last = call->figures;
    isSlow = *call->ended - call->begun > patience;
    call.reset();
  }

  const std::string mountPoint;
  std::shared_ptr<Call> call;  // under way
  std::optional<VolumeFigures> last;
  Clock::time_point asked = Clock::time_point::min();
  bool isSlow = false;
};

/// What the threads share with whoever asks, and may outlive them. The lock is over all calls and
/// volumes, and not held while a volume is asked.
struct ServedVolumes::Exchange {
  std::mutex mutex;
  std::condition_variable answered;
  int threads = 0;
};

ServedVolumes::ServedVolumes(Means means)
    : means_(std::move(means)), exchange_(std::make_shared<Exchange>()) {}

std::vector<std::optional<VolumeFigures>> ServedVolumes::figures(
    const std::vector<VolumeKey>& volumes) {
  Lock lock(exchange_->mutex);
  const auto asked = known(volumes);
  if (asked.empty()) return {};
  auto left = asked;
  for (const auto& volume : asked) volume->takeIn(means_.patience);
  std::erase_if(left, [](const auto& volume) { return volume->call != nullptr; });
  // Where there are more than threads, each gets its turn.
  std::ranges::stable_sort(left, {}, [](const auto& volume) { return volume->asked; });
  const auto due = means_.now() + means_.patience;
  while (true) {
    beginThose(left, due, lock);
    const auto now = means_.now();
    auto until = now;
    for (const auto& volume : asked)
      if (volume->call && !volume->call->ended) until = std::max(until, volume->call->due);
    if (until == now) break;
    means_.wait(exchange_->answered, lock, until);
  }
  std::vector<std::optional<VolumeFigures>> figures;
  figures.reserve(asked.size());
  for (const auto& volume : asked) {
    volume->takeIn(means_.patience);
    figures.push_back(volume->last);
  }
  return figures;
}

/// What is known of each; the others are forgotten.
ServedVolumes::Asked ServedVolumes::known(const std::vector<VolumeKey>& volumes) {
  Asked known;
  std::map<VolumeKey, std::shared_ptr<Volume>> present;
  for (const auto& key : volumes) {
    const auto found = volumes_.find(key);
    auto volume =
        found == volumes_.end() ? std::make_shared<Volume>(key.mountPoint) : found->second;
    known.push_back(present.try_emplace(key, std::move(volume)).first->second);
  }
  volumes_.swap(present);
  return known;
}

/// Asks as many of those that are left as there are threads for.
void ServedVolumes::beginThose(Asked& left, Clock::time_point due, Lock& lock) {
  while (!left.empty() && exchange_->threads < means_.mostThreads) {
    const auto volume = std::move(left.front());
    left.erase(left.begin());
    if (!volume->call) begin(*volume, due, lock);
  }
}

/// Where no thread can be had there is no call.
void ServedVolumes::begin(Volume& volume, Clock::time_point due, Lock& lock) {
  const auto now = means_.now();
  const auto call = std::make_shared<Call>(Call{volume.isSlow ? now : due, now, {}, {}});
  std::function<void()> body = [exchange = exchange_, call, ask = means_.ask, clock = means_.now,
                                mountPoint = volume.mountPoint] {
    std::optional<VolumeFigures> figures;
    guarded("a volume's figures", [&] { figures = ask(mountPoint); });
    const std::lock_guard answering(exchange->mutex);
    call->figures = figures;
    call->ended = clock();
    --exchange->threads;
    exchange->answered.notify_all();
  };
  volume.asked = now;
  volume.call = call;
  ++exchange_->threads;
  lock.unlock();
  const bool isStarted = means_.threads->detach("vantile-volume", std::move(body));
  lock.lock();
  if (isStarted) return;
  --exchange_->threads;
  if (volume.call == call) volume.call.reset();
}

}  // namespace vantile
