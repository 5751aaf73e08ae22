#include "dashboard/network_panes.h"

#include <vantile/network/network_keys.h>

#include <algorithm>
#include <span>
#include <string_view>

#include "dashboard/drawing.h"
#include "text.h"

namespace vantile::host {
namespace {

constexpr Style plain{};
constexpr Style faint{Colour::Grey};
constexpr Colour receivedColour = Colour::Teal, sentColour = Colour::Orange;

constexpr int rateWidth = 12;  // "↓ 99.9 MiB/s"
constexpr int gap = 2;
constexpr int nameAt = 2;                           // behind the mark
constexpr int leastName = 14, mostName = 32;        // of the names' column, if a name is that long
constexpr std::uint64_t unknownSpeed = 10'000'000;  // the library's where the system tells none
constexpr int mostServices = 6, leastRows = 4;

std::string textIn(const Dictionary& service, Key key) {
  const auto* const text = service.text(key);
  return text ? *text : std::string();
}

/// The first text of an array, and how many follow.
std::string firstOf(const Dictionary& service, Key key) {
  const auto* const value = service.find(key);
  const auto* const held = value ? value->as<std::shared_ptr<Array>>() : nullptr;
  if (!held || !*held || (*held)->empty()) return {};
  const auto* const first = (*held)->front().as<std::string>();
  const auto others = (*held)->size() - 1;
  return (first ? *first : std::string()) + (others ? " +" + std::to_string(others) : "");
}

const Dictionary* dictionaryIn(const Dictionary& service, Key key) {
  const auto* const value = service.find(key);
  const auto* const held = value ? value->as<std::shared_ptr<Dictionary>>() : nullptr;
  return held ? held->get() : nullptr;
}

/// Nothing where the interface was not in the sample before.
std::optional<double> perSecond(const Dictionary& moved, Key key, double seconds) {
  const auto bytes = moved.uint64(key);
  if (!bytes || seconds <= 0) return std::nullopt;
  return static_cast<double>(*bytes) / seconds;
}

ServiceRow rowOf(const Dictionary& service) {
  ServiceRow row;
  row.name = textIn(service, keys::user_defind_name);
  row.device = textIn(service, keys::device_ppp_name);
  if (row.device.empty()) row.device = textIn(service, keys::device_name);
  row.address = firstOf(service, keys::ipv4_addresses);
  if (row.address.empty()) row.address = firstOf(service, keys::ipv6_addresses);
  row.router = textIn(service, keys::ipv4_router);
  row.dns = firstOf(service, keys::ipv4_dns);
  row.isPrimary = service.boolean(keys::is_primary).value_or(false);
  row.isActive = service.boolean(keys::is_active_interface).value_or(false);
  if (row.isActive) row.bitsPerSecond = service.uint64(keys::link_speed);
  if (row.bitsPerSecond == unknownSpeed || row.bitsPerSecond == 0) row.bitsPerSecond.reset();
  if (const auto* const moved = dictionaryIn(service, keys::throughput_details)) {
    const auto seconds = service.number(keys::sampling_interval).value_or(0);
    row.received = perSecond(*moved, keys::downlink_speed, seconds);
    row.sent = perSecond(*moved, keys::uplink_speed, seconds);
    row.peak = moved->number(keys::peak_speek).value_or(0);
  }
  return row;
}

std::string rate(double bytesPerSecond) {
  return formatBytes(static_cast<std::uint64_t>(std::clamp(bytesPerSecond, 0.0, 1e18))) + "/s";
}

/// "1 Gbit/s", "300 Mbit/s".
std::string linkSpeed(std::uint64_t bitsPerSecond) {
  const auto megabits = bitsPerSecond / 1'000'000;
  if (megabits >= 1000 && megabits % 1000 == 0) return std::to_string(megabits / 1000) + " Gbit/s";
  return std::to_string(megabits) + " Mbit/s";
}

std::string addressOf(const ServiceRow& service) {
  return printable(service.address.empty() ? "no address" : service.address);
}

/// Cells of a name; where no line of details follows, the interface stands beside it.
int nameCells(const ServiceRow& service, bool withDevice) {
  return cellsOf(printable(service.name)) +
         (withDevice ? 1 + cellsOf(printable(service.device)) : 0);
}

/// Of all services, so that they line up.
struct ServiceColumns {
  int name = 0;
  int address = 0;  ///< room for it
  bool withRates = false;
};

/// The first `details` services have a line of details. Rates have to leave room for names and
/// addresses.
ServiceColumns columnsOf(std::span<const ServiceRow> services, int details, int width) {
  int name = 0, address = 0;
  bool withRates = false;
  for (const auto& service : services) {
    name = std::max(name, nameCells(service, details-- <= 0));
    address = std::max(address, cellsOf(addressOf(service)));
    withRates |= service.received || service.sent;
  }
  constexpr int rates = 2 * (rateWidth + 1);
  int room = width - nameAt - gap;
  const int least = std::min(name, leastName);
  withRates &= least + address + rates <= room;
  if (withRates) room -= rates;
  name = std::max(std::min({name, mostName, room - address}), least);
  return {name, room - name, withRates};
}

/// "■ Name  address  ↓ rate ↑ rate"; an address that has no room is left out.
void drawService(Region row, const ServiceRow& service, bool withDevice,
                 const ServiceColumns& columns) {
  row.put(0, 0, service.isActive ? U'■' : U'·', {service.isActive ? Colour::Green : Colour::Grey});
  int x = nameAt;
  x += row.text(x, 0, clipped(service.name, columns.name), service.isActive ? plain : faint);
  if (withDevice) row.text(x, 0, clipped(" " + service.device, nameAt + columns.name - x), faint);
  if (const auto address = addressOf(service); cellsOf(address) <= columns.address)
    row.text(nameAt + columns.name + gap, 0, address, service.address.empty() ? faint : plain);
  if (!columns.withRates) return;
  const auto drawRate = [&](int end, const std::optional<double>& moved, const char* arrow,
                            Colour ink) {
    if (moved) row.textEndingAt(end, 0, arrow + rate(*moved), {ink});
  };
  drawRate(row.width() - rateWidth - 1, service.received, "↓ ", receivedColour);
  drawRate(row.width(), service.sent, "↑ ", sentColour);
}

/// The interface and what else is known, each only where all of it has room.
std::string detailsOf(const ServiceRow& service, int width) {
  std::string line = clipped(service.device, width);
  const auto add = [&line, width](const std::string& text) {
    const auto more = (line.empty() ? "" : "   ") + printable(text);
    if (cellsOf(line) + cellsOf(more) <= width) line += more;
  };
  if (service.bitsPerSecond) add(linkSpeed(*service.bitsPerSecond));
  if (!service.router.empty()) add("router " + service.router);
  if (!service.dns.empty()) add("DNS " + service.dns);
  return line;
}

/// A top that reads as a round number of the unit it is written in, at least 1 KiB.
double topOf(double bytesPerSecond) {
  constexpr double step = 1024;
  double unit = step;
  while (bytesPerSecond > unit * step) unit *= step;
  const double top = roundTop(bytesPerSecond / unit, 1);
  return (top < 1000 ? top : step) * unit;
}

/// One direction: a graph with its name and its top at the left. On a single row they stand beside
/// each other, or the name alone where that leaves too little of the graph.
void drawDirection(Region region, const History& history, const char* what, Colour colour) {
  constexpr int nameWidth = 9, topWidth = 12;  // "received ", "99.9 KiB/s "
  const bool single = region.height() == 1;
  const bool withTop = !single || region.width() >= 2 * (nameWidth + topWidth);
  const int axis = single ? nameWidth + (withTop ? topWidth : 0) : topWidth;
  const auto graph = region.part({axis, 0, region.width() - axis, region.height()});
  const auto span = graphSpan(graph.width());
  const double top = topOf(history.greatest(span));
  if (withTop) region.textEndingAt(axis - 1, 0, rate(top), faint);
  if (single)
    region.text(0, 0, what, {colour});
  else
    region.textEndingAt(axis - 1, region.height() - 1, what, {colour});
  drawGuide(graph, 0);
  drawHistory(graph, history, {top, colour, colour, colour});
}

}  // namespace

const ServiceRow* NetworkFigures::shown() const {
  const auto found = std::ranges::find_if(rows_, &ServiceRow::isPrimary);
  if (found != rows_.end()) return &*found;
  const auto active = std::ranges::find_if(rows_, &ServiceRow::isActive);
  return active == rows_.end() ? nullptr : &*active;
}

void NetworkFigures::take(const Report& report) {
  const auto* const services = report.operation == "networkStatus" ? report.array(0) : nullptr;
  if (!services) return;
  known_ = true;
  rows_.clear();
  for (const auto& service : *services) {
    const auto* const held = service.as<std::shared_ptr<Dictionary>>();
    if (held && *held) rows_.push_back(rowOf(**held));
  }
  const auto* const service = shown();
  received.push(service ? service->received.value_or(0) : 0);
  sent.push(service ? service->sent.value_or(0) : 0);
}

std::string ServicesPane::note() const {
  if (figures_->rows().empty()) return {};
  const auto active = std::ranges::count_if(figures_->rows(), &ServiceRow::isActive);
  return std::to_string(active) + " of " + std::to_string(figures_->rows().size()) + " active";
}

PaneRows ServicesPane::rows() const {
  const auto count = std::min<std::size_t>(figures_->rows().size(), mostServices);
  const int wanted = std::max(static_cast<int>(count) * 2, 1);
  return {std::min(wanted, leastRows), wanted, false};
}

void ServicesPane::draw(Region region, std::int32_t) const {
  if (!figures_->known()) return drawWaiting(region);
  const auto& services = figures_->rows();
  if (services.empty()) {
    region.text(0, 0, clipped("no network service", region.width()), faint);
    return;
  }
  const int count = static_cast<int>(services.size());
  // Where there is no room for all, the first one's: that is the primary service.
  const int details = region.height() >= 2 * count ? count : region.height() > 1 ? 1 : 0;
  const int room = region.height() - details;
  const int shown = room >= count ? count : std::max(room - 1, 1);
  const auto columns = columnsOf(std::span(services).first(static_cast<std::size_t>(shown)),
                                 details, region.width());
  int y = 0;
  for (int at = 0; at < shown; ++at) {
    const auto& service = services[static_cast<std::size_t>(at)];
    drawService(region.row(y++), service, at >= details, columns);
    if (at < details)
      region.row(y++).text(nameAt, 0, detailsOf(service, region.width() - nameAt), faint);
  }
  if (shown < count) drawMore(region.row(y), count - shown);
}

std::string ThroughputPane::note() const {
  const auto* const service = figures_->shown();
  if (!service) return {};
  auto text = service->device;
  if (service->received && service->sent)
    text += " ↓ " + rate(*service->received) + " ↑ " + rate(*service->sent);
  if (service->peak > 0) text += ", peak " + rate(service->peak);
  return text;
}

void ThroughputPane::draw(Region region, std::int32_t) const {
  if (!figures_->known()) return drawWaiting(region);
  const int upper = (region.height() + 1) / 2;
  drawDirection(region.part({0, 0, region.width(), upper}), figures_->received, "received",
                receivedColour);
  drawDirection(region.part({0, upper, region.width(), region.height() - upper}), figures_->sent,
                "sent", sentColour);
}

}  // namespace vantile::host
