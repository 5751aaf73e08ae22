#include "dashboard/network_panes.h"

#include <vantile/network/network_keys.h>

#include <algorithm>
#include <string_view>

#include "dashboard/drawing.h"
#include "text.h"

namespace vantile::host {
namespace {

constexpr Style plain{};
constexpr Style faint{Colour::Grey};
constexpr Colour receivedColour = Colour::Teal, sentColour = Colour::Orange;

constexpr int rateWidth = 12;  // "↓ 999 MiB/s"
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

/// "■ Name  address  ↓ rate ↑ rate"; a narrow region goes without rates.
void drawService(Region row, const ServiceRow& service, bool withDevice) {
  row.put(0, 0, service.isActive ? U'■' : U'·', {service.isActive ? Colour::Green : Colour::Grey});
  int end = row.width();
  const auto drawRate = [&](const std::optional<double>& moved, const char* arrow, Colour ink) {
    if (!moved) return;
    row.textEndingAt(end, 0, arrow + rate(*moved), {ink});
    end -= rateWidth + 1;
  };
  if (row.width() >= 60) {
    drawRate(service.sent, "↑ ", sentColour);
    drawRate(service.received, "↓ ", receivedColour);
  }
  const int room = std::max(end - 2, 0);
  const int nameWidth = std::min(room / 2, 24);
  const auto style = service.isActive ? plain : faint;
  int x = 2 + row.text(2, 0, clipped(service.name, nameWidth), style);
  if (withDevice) row.text(x, 0, clipped(" " + service.device, 2 + nameWidth - x), faint);
  row.text(2 + nameWidth + 1, 0,
           clipped(service.address.empty() ? "no address" : service.address,
                   std::max(room - nameWidth - 2, 0)),
           service.address.empty() ? faint : plain);
}

std::string detailsOf(const ServiceRow& service) {
  std::string line = service.device;
  const auto add = [&line](const std::string& text) { line += (line.empty() ? "" : "   ") + text; };
  if (service.bitsPerSecond && *service.bitsPerSecond > 0) add(linkSpeed(*service.bitsPerSecond));
  if (!service.router.empty()) add("router " + service.router);
  if (!service.dns.empty()) add("DNS " + service.dns);
  return line;
}

/// One direction: a graph with its top at the left.
void drawDirection(Region region, const History& history, const char* what, Colour colour) {
  constexpr int axis = 12;
  constexpr double least = 1024;
  const auto graph = region.part({axis, 0, region.width() - axis, region.height()});
  const auto span = graphSpan(graph.width());
  const double top = roundTop(history.greatest(span), least);
  region.textEndingAt(axis - 1, 0, rate(top), faint);
  if (region.height() > 1) region.textEndingAt(axis - 1, region.height() - 1, what, {colour});
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
  int y = 0;
  for (int at = 0; at < shown; ++at) {
    const auto& service = services[static_cast<std::size_t>(at)];
    drawService(region.row(y++), service, at >= details);
    if (at < details)
      region.row(y++).text(2, 0, clipped(detailsOf(service), region.width() - 2), faint);
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
