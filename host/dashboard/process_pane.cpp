#include "dashboard/process_pane.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "dashboard/drawing.h"
#include "text.h"

namespace vantile::host {
namespace {

constexpr Style plain{};
constexpr Style faint{Colour::Grey};

/// What the table can be ordered by; the greatest first but for names and numbers.
struct Order {
  std::string_view what;
  bool (*before)(const ApplicationRow& a, const ApplicationRow& b);
};

constexpr std::array<Order, 5> orders{{
    {"processor", [](const auto& a, const auto& b) { return a.cpu > b.cpu; }},
    {"memory", [](const auto& a, const auto& b) { return a.resident > b.resident; }},
    {"size", [](const auto& a, const auto& b) { return a.addresses > b.addresses; }},
    {"name", [](const auto& a, const auto& b) { return a.name < b.name; }},
    {"pid", [](const auto& a, const auto& b) { return a.pid < b.pid; }},
}};

/// A column at the right of the names. `order` is its place in the orders; a column that can't be
/// ordered by has none of theirs.
struct Column {
  std::string_view head;
  int width;
  std::size_t order;
  std::string (*text)(const ApplicationRow& row);
};

constexpr std::array<Column, 6> columns{{
    {"processor", 10, 0, [](const auto& row) { return formatFixed(row.cpu, 1) + " %"; }},
    {"memory", 11, 1, [](const auto& row) { return formatBytes(row.resident); }},
    {"share", 8, orders.size(), [](const auto& row) { return formatFixed(row.memory, 1) + " %"; }},
    {"size", 11, 2, [](const auto& row) { return formatBytes(row.addresses); }},
    {"pid", 9, 4, [](const auto& row) { return std::to_string(row.pid); }},
    {"state", 7, orders.size(), [](const auto& row) { return printable(row.state); }},
}};

constexpr std::size_t nameOrder = 3;
constexpr int leastName = 14;

/// Columns that fit beside the names.
std::size_t shownColumns(int width) {
  std::size_t shown = 0;
  for (int left = width - leastName; shown < columns.size(); ++shown) {
    left -= columns[shown].width;
    if (left < 0) break;
  }
  return shown;
}

std::int64_t whole(const Dictionary& record, Key key) {
  const auto* const value = record.find(key);
  return value ? value->int64().value_or(0) : 0;
}

double real(const Dictionary& record, Key key) {
  const auto* const value = record.find(key);
  return value ? value->number().value_or(0) : 0;
}

std::string text(const Dictionary& record, Key key) {
  const auto* const found = record.text(key);
  return found ? *found : std::string();
}

std::uint64_t bytes(std::int64_t kibibytes) {
  return static_cast<std::uint64_t>(std::max<std::int64_t>(kibibytes, 0)) * 1024;
}

}  // namespace

void ApplicationFigures::take(const Report& report) {
  if (report.operation != "updateProcessStaus") return;
  known_ = true;
  rows_.clear();
  const auto* const records = report.array(0);
  if (!records) return;
  for (const auto& record : *records) {
    const auto* const held = record.as<std::shared_ptr<Dictionary>>();
    if (!held || !*held) continue;
    const auto& told = **held;
    rows_.push_back({.pid = whole(told, "pid"),
                     .name = text(told, "appName"),
                     .cpu = real(told, "cpu"),
                     .memory = real(told, "memory"),
                     .resident = bytes(whole(told, "phyMemoryPages")),
                     .addresses = bytes(whole(told, "virtMemoryPages")),
                     .state = text(told, "stats")});
  }
}

std::string ApplicationsPane::note() const {
  if (figures_->rows().empty()) return {};
  auto text = std::to_string(figures_->rows().size()) + " by " + std::string(orders[column_].what);
  return reversed_ ? text + ", reversed" : text;
}

void ApplicationsPane::sort(Sorting change) {
  if (change == Sorting::Reverse) {
    reversed_ = !reversed_;
  } else {
    column_ = (column_ + 1) % orders.size();
    reversed_ = false;
  }
}

std::vector<const ApplicationRow*> ApplicationsPane::ordered() const {
  std::vector<const ApplicationRow*> rows;
  for (const auto& row : figures_->rows()) rows.push_back(&row);
  const auto before = orders[column_].before;
  std::ranges::sort(rows, [this, before](const ApplicationRow* a, const ApplicationRow* b) {
    if (reversed_) std::swap(a, b);
    return before(*a, *b) || (!before(*b, *a) && a->pid < b->pid);
  });
  return rows;
}

void ApplicationsPane::draw(Region region, std::int32_t) const {
  if (!figures_->known()) return drawWaiting(region);
  if (figures_->rows().empty()) {
    region.text(0, 0, clipped("no application of the desktop is running", region.width()), faint);
    return;
  }
  const auto shown = shownColumns(region.width());
  int nameWidth = region.width();
  for (std::size_t i = 0; i < shown; ++i) nameWidth -= columns[i].width;
  const auto draw = [&](Region row, std::string_view name, Style nameStyle, auto cell) {
    row.text(0, 0, clipped(name, nameWidth - 1), nameStyle);
    int end = nameWidth;
    for (std::size_t i = 0; i < shown; ++i) {
      end += columns[i].width;
      cell(row, end, columns[i]);
    }
  };
  const auto headStyle = [this](std::size_t order) {
    return order == column_ ? Style{Colour::Default, Colour::Default, true} : faint;
  };
  int y = 0;
  draw(region.row(y++), "name", headStyle(nameOrder),
       [&](Region row, int end, const Column& column) {
         row.textEndingAt(end, 0, column.head, headStyle(column.order));
       });
  for (const auto* const application : ordered()) {
    if (y == region.height()) return;
    draw(region.row(y++), application->name, plain, [&](Region row, int end, const Column& column) {
      row.textEndingAt(end, 0, column.text(*application), plain);
    });
  }
}

}  // namespace vantile::host
