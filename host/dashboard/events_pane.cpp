#include "dashboard/events_pane.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "text.h"

namespace vantile::host {
namespace {

constexpr Style plain{};
constexpr Style faint{Colour::Grey};

constexpr std::size_t kept = 200;

constexpr int whatAt = 10;  // behind the time
constexpr int nameAt = 36;  // behind the longest words
constexpr int leastName = 16;
constexpr int leastFolder = 4;

struct Words {
  std::string_view operation, words;
  Colour colour;
};

constexpr std::array<Words, 4> ofItems{{
    {"downloadFileCompleted", "downloaded", Colour::Green},
    {"appAdded", "application added", Colour::Blue},
    {"movedToTrash", "moved to the Trash", Colour::Orange},
    {"trashAddedApp", "application in the Trash", Colour::Orange},
}};

/// Sets the name and the folder of the item at a path.
void setItem(Event& event, std::string_view path) {
  const auto end = path.find_last_not_of('/');
  if (end == std::string_view::npos) {
    event.name = path;
    return;
  }
  path = path.substr(0, end + 1);
  const auto slash = path.rfind('/');
  event.name = path.substr(slash + 1);  // from the start where there is none
  if (slash != std::string_view::npos)
    event.folder = path.substr(0, std::max<std::size_t>(slash, 1));
}

void drawEvent(Region row, const Event& event) {
  row.text(0, 0, formatClock(event.at), faint);
  int x = whatAt;
  const auto write = [&](std::string_view text, Style style) {
    x += row.text(x, 0, clipped(text, row.width() - x), style);
  };
  write(event.what, {event.colour});
  if (event.isTrashSize) return;
  x = row.width() >= nameAt + leastName ? nameAt : x + 2;
  if (!event.name.empty()) {
    write(event.name, plain);
    x += 2;
  }
  if (row.width() - x >= leastFolder) write(event.folder, faint);
}

void drawNothingYet(Region region) {
  constexpr std::string_view watched = "watching downloads, applications and the Trash";
  const auto line = [&](int y, std::string_view text) {
    region.text(0, y, clipped(text, region.width()), faint);
  };
  if (region.height() < 2) return line(0, "nothing yet, " + std::string(watched));
  line(0, "nothing yet");
  line(1, watched);
}

}  // namespace

void Events::take(const Report& report, std::time_t now) {
  if (report.operation == "trashUsedSizeChanged") {
    if (const auto bytes = report.number(0)) takeTrashSize(*bytes, now);
    return;
  }
  const auto* const words = std::ranges::find(ofItems, report.operation, &Words::operation);
  if (words == ofItems.end()) return;
  Event event{.at = now, .what = std::string(words->words), .colour = words->colour};
  if (const auto* path = report.text(0)) {
    setItem(event, *path);
  } else {
    event.folder = "its file was not found";
  }
  add(std::move(event));
}

void Events::takeTrashSize(std::uint64_t bytes, std::time_t now) {
  const bool isFirst = !trashBytes_;
  trashBytes_ = bytes;
  if (isFirst) return;
  std::erase_if(latest_, [](const Event& event) { return event.isTrashSize; });
  add({.at = now,
       .what = "Trash holds " + formatBytes(bytes),
       .colour = Colour::Default,
       .isTrashSize = true});
}

void Events::add(Event event) {
  latest_.push_front(std::move(event));
  if (latest_.size() > kept) latest_.pop_back();
}

std::string EventsPane::note() const {
  const auto bytes = events_->trashBytes();
  return bytes ? formatBytes(*bytes) + " in the Trash" : "";
}

void EventsPane::draw(Region region, std::int32_t) const {
  const auto& latest = events_->latest();
  if (latest.empty()) return drawNothingYet(region);
  // The note tells the Trash's size anyway: a single row is better used for another event.
  const bool withSize = region.height() > 1 || latest.size() == 1;
  int y = 0;
  for (const auto& event : latest) {
    if (y == region.height()) return;
    if (withSize || !event.isTrashSize) drawEvent(region.row(y++), event);
  }
}

}  // namespace vantile::host
