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

std::optional<TimerSchedule::Wakeup> TimerSchedule::wakeUp(Moment now) const {
  const Entry* const first = earliest();
  if (!first || first->due > now) return std::nullopt;
  return Wakeup{now, first->due, first->tolerance()};
}

TimerSchedule::Fire TimerSchedule::takeDue(const Wakeup& wakeup) {
  Entry* next = nullptr;
  for (Entry& entry : entries_) {
    const Duration near = std::min(wakeup.firstTolerance, entry.tolerance());
    const bool served = entry.due <= wakeup.now || entry.due - wakeup.firstDue <= near;
    if (served && (!next || entry.due < next->due)) next = &entry;
  }
  if (!next) return nullptr;
  if (next->period == Duration::zero()) return remove(next->id);
  const auto late = std::max(Duration::zero(), Duration(wakeup.now - next->due));
  next->due = later(next->due + late / next->period * next->period, next->period);
  return next->fire;
}

}  // namespace vantile
