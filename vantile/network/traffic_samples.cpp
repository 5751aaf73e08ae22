#include "vantile/network/traffic_samples.h"

#include <algorithm>
#include <utility>

namespace vantile {
namespace {

// The newest sample, the one before and a few of a history.
constexpr std::size_t mostKept = 8;

/// Whether `held` has as many holders as said, all of them here. Another thread that let go of it
/// has then finished with it: the copy's end waits for what came before that thread's.
template <class Held>
bool isHeldHereAlone(const std::shared_ptr<Held>& held, long holders) {
  if (held.use_count() != holders) return false;
  { const auto copy = held; }
  return true;
}

}  // namespace

/// What says the same as the entry before is that entry.
TrafficSamples::Line::Line(const Interface& now, const Line* before, double interval)
    : name(now.name),
      traffic(before && now.goesOn ? nextTraffic(before->traffic, now.counters, interval)
                                   : firstTraffic(now.counters)),
      entry(before && before->traffic == traffic ? before->entry : nullptr) {}

void TrafficSamples::begin(double interval) {
  interval_ = interval;
  now_.clear();
  inStep_ = true;
}

/// As a rule the interfaces come in the order of the sample before.
const TrafficSamples::Line* TrafficSamples::lineBefore(std::string_view name) {
  const auto position = now_.size();
  if (inStep_ && position < before_.size() && before_[position].name == name)
    return &before_[position];
  inStep_ = false;
  const auto found = std::find_if(before_.begin(), before_.end(),
                                  [name](const Line& line) { return line.name == name; });
  return found == before_.end() ? nullptr : &*found;
}

void TrafficSamples::add(const Interface& interface) {
  const Line* const before = lineBefore(interface.name);
  if (!inStep_) {
    const auto earlier = std::find_if(now_.begin(), now_.end(), [&interface](const Line& line) {
      return line.name == interface.name;
    });
    if (earlier != now_.end()) {
      *earlier = Line(interface, before, interval_);
      return;
    }
  }
  now_.emplace_back(interface, before, interval_);
}

std::shared_ptr<const Dictionary> TrafficSamples::finish() {
  if (!inStep_ || now_.size() != before_.size()) ++layout_;
  Made& made = storage();
  for (std::size_t position = 0; position < now_.size(); ++position) place(made, position);
  before_.swap(now_);
  now_.clear();  // its entries are the kept samples'
  return made.sample;
}

/// A kept sample of the present layout that nobody holds, or a new one.
TrafficSamples::Made& TrafficSamples::storage() {
  for (Made& each : made_)
    if (each.layout == layout_ && isHeldHereAlone(each.sample, 1)) return each;
  Made fresh;
  fresh.sample = std::make_shared<Dictionary>();
  fresh.sample->reserve(now_.size());
  fresh.entries.reserve(now_.size());
  fresh.layout = layout_;
  std::erase_if(made_, [this](const Made& each) { return each.layout != layout_; });
  if (made_.size() < mostKept) return made_.emplace_back(std::move(fresh));
  oldest_ = (oldest_ + 1) % mostKept;
  return made_[oldest_] = std::move(fresh);
}

void TrafficSamples::place(Made& made, std::size_t position) {
  Line& line = now_[position];
  const bool isNew = position == made.entries.size();
  if (isNew) made.entries.emplace_back();
  auto& entry = made.entries[position];
  if (line.entry && line.entry == entry) return;
  // Held by the sample and here, and of the same keys.
  const bool reusable = !isNew && !line.entry && isHeldHereAlone(entry, 2) &&
                        entry->size() == (line.traffic.first ? 5u : 7u);
  if (reusable) {
    line.entry = entry;
    return writeEntry(*entry, line.traffic);
  }
  if (!line.entry) {
    line.entry = std::make_shared<Dictionary>();
    writeEntry(*line.entry, line.traffic);
  }
  entry = line.entry;
  made.sample->set(std::string(line.name), Value(entry));
}

}  // namespace vantile
