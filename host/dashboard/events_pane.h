#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// One thing that happened.
struct Event {
  std::time_t at;
  std::string what;       ///< in plain words
  Colour colour;          ///< of the words
  std::string name = {};  ///< of the item, where there is one
  std::string folder = {};
  bool isTrashSize = false;
};

/// What the watchers told so far.
class Events {
 public:
  /// Takes in one report that came at `now`.
  void take(const Report& report, std::time_t now);

  /// The newest first. Of the Trash's sizes only the latest is among them, and not the first of
  /// all, which is no change.
  const std::deque<Event>& latest() const { return latest_; }
  std::optional<std::uint64_t> trashBytes() const { return trashBytes_; }

 private:
  void add(Event event);
  void takeTrashSize(std::uint64_t bytes, std::time_t now);

  std::deque<Event> latest_;
  std::optional<std::uint64_t> trashBytes_;
};

/// The latest events.
class EventsPane final : public Pane {
 public:
  explicit EventsPane(std::shared_ptr<const Events> events) : events_(std::move(events)) {}
  std::string title() const override { return "Events"; }
  std::string note() const override;
  PaneRows rows() const override { return {1, 4, true}; }
  void draw(Region region, std::int32_t interval) const override;

 private:
  std::shared_ptr<const Events> events_;
};

}  // namespace vantile::host
