#include "vantile/foundation/timer_schedule.h"

#include <algorithm>
#include <utility>

namespace vantile {

TimerSchedule::Moment TimerSchedule::later(Moment moment, Duration by) {
  return by < Moment::max() - moment ? moment + by : Moment::max();
}

TimerSchedule::Id TimerSchedule::add(Moment due, Duration period, Fire fire) {
  entries_.push_back({++lastId_, due, period, std::move(fire)});
  return lastId_;
}

TimerSchedule::Fire TimerSchedule::remove(Id id) {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [id](const Entry& entry) { return entry.id == id; });
  if (found == entries_.end()) return nullptr;
  Fire fire = std::move(found->fire);
  entries_.erase(found);
  return fire;
}

bool TimerSchedule::contains(Id id) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [id](const Entry& entry) { return entry.id == id; });
}

const TimerSchedule::Entry* TimerSchedule::earliest() const {
  const auto found = std::min_element(entries_.begin(), entries_.end(),
                                      [](const Entry& a, const Entry& b) { return a.due < b.due; });
  return found == entries_.end() ? nullptr : &*found;
}

std::optional<TimerSchedule::Moment> TimerSchedule::next() const {
  const Entry* const first = earliest();
  return first ? std::optional(first->due) : std::nullopt;
}

std::optional<TimerSchedule::Moment> TimerSchedule::horizon(Moment now) const {
  const Entry* const first = earliest();
  if (!first || first->due > now) return std::nullopt;
  Moment latest = now;
  for (const Entry& entry : entries_) {
    const Duration shared = std::min(first->tolerance(), entry.tolerance());
    if (entry.due - first->due <= shared) latest = std::max(latest, entry.due);
  }
  return latest;
}

TimerSchedule::Fire TimerSchedule::takeDue(Moment horizon, Moment now) {
  Entry* const first = const_cast<Entry*>(earliest());
  if (!first || first->due > horizon) return nullptr;
  if (first->period == Duration::zero()) return remove(first->id);
  const auto late = std::max(Duration::zero(), Duration(now - first->due));
  first->due = later(first->due + late / first->period * first->period, first->period);
  return first->fire;
}

}  // namespace vantile
