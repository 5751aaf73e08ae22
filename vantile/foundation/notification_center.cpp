#include "vantile/foundation/notification_center.h"

#include <utility>

#include "vantile/foundation/guard.h"

namespace vantile {

NotificationCenter& NotificationCenter::workspace() {
  static auto& center = *new NotificationCenter;
  return center;
}

NotificationCenter::Registration NotificationCenter::observe(std::string name, Observer observer) {
  auto held = std::make_shared<const Observer>(std::move(observer));
  const std::lock_guard lock(mutex_);
  std::erase_if(entries_, [](const Entry& entry) { return entry.observer.expired(); });
  entries_.push_back({std::move(name), held});
  return Registration(std::move(held));
}

void NotificationCenter::post(const Notification& notification) {
  std::vector<std::weak_ptr<const Observer>> observers;
  {
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : entries_)
      if (entry.name == notification.name) observers.push_back(entry.observer);
  }
  for (const auto& each : observers) {
    // An observer that went during an earlier call is not called any more.
    if (const auto observer = each.lock())
      guarded("an observer", [&] { (*observer)(notification); });
  }
}

}  // namespace vantile
