#include "vantile/platform/linux/timed_read.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include "vantile/platform/posix/files.h"

namespace vantile {

/// A reading on a thread of its own, which may outlive whoever asked for it.
struct TimedRead::Pending {
  std::mutex mutex;
  std::condition_variable finished;
  bool done = false;
  std::optional<std::string> text;
};

TimedRead::TimedRead()
    : TimedRead(Means{.read = [](const std::string& path) { return contentsOf(path, 64); }}) {}

TimedText TimedRead::read(const std::string& path) {
  return path == quick_ ? readHere(path) : readApart(path);
}

TimedText TimedRead::readHere(const std::string& path) {
  const auto begin = means_.now();
  auto text = means_.read(path);
  if (means_.now() - begin <= means_.patience) return {.text = std::move(text)};
  quick_.clear();
  return {.late = true};
}

TimedText TimedRead::readApart(const std::string& path) {
  if (pending_) {
    const std::lock_guard lock(pending_->mutex);
    if (!pending_->done) return {.late = true};
  }
  pending_ = std::make_shared<Pending>();
  const bool started =
      means_.threads->detach("vantile-sensor", [pending = pending_, path, read = means_.read] {
        auto text = read(path);
        const std::lock_guard lock(pending->mutex);
        pending->text = std::move(text);
        pending->done = true;
        pending->finished.notify_all();
      });
  if (!started) {
    pending_.reset();
    return {.late = true};
  }
  std::unique_lock lock(pending_->mutex);
  if (!pending_->finished.wait_for(lock, means_.patience, [this] { return pending_->done; }))
    return {.late = true};
  quick_ = path;
  return {.text = std::move(pending_->text)};
}

}  // namespace vantile
