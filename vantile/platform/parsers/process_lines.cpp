#include "vantile/platform/parsers/process_lines.h"

#include <algorithm>
#include <limits>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

constexpr double nanosecondsPerSecond = 1e9;
constexpr std::uint64_t leastTicks = 10;

/// Saturating; what is no number is 0.
Tenths rounded(double value) {
  constexpr double most = 1e15;
  return value > 0 ? static_cast<Tenths>(std::min(value, most) + 0.5) : 0;
}

Tenths shareOf(std::uint64_t ticks, double nanoseconds, const ProcessUnits& units) {
  if (!(nanoseconds > 0) || units.ticksPerSecond == 0) return 0;
  const double seconds = static_cast<double>(ticks) / static_cast<double>(units.ticksPerSecond);
  return rounded(seconds * nanosecondsPerSecond * 1000 / nanoseconds);
}

void appendPadded(std::string& line, std::string_view text, std::size_t width) {
  line.append(width - std::min(width, text.size()), ' ').append(text);
}

void appendNumber(std::string& line, std::uint64_t number, std::size_t width) {
  char digits[std::numeric_limits<std::uint64_t>::digits10 + 1];
  const auto written = std::to_chars(std::begin(digits), std::end(digits), number);
  appendPadded(line, {digits, static_cast<std::size_t>(written.ptr - digits)}, width);
}

/// With one decimal behind a point, in whatever locale.
void appendShare(std::string& line, Tenths share, std::size_t width) {
  appendNumber(line, share / 10, width - 2);
  line.push_back('.');
  line.push_back(static_cast<char>('0' + share % 10));
}

std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  constexpr auto most = std::numeric_limits<std::uint64_t>::max();
  return a != 0 && b > most / a ? most : a * b;
}

}  // namespace

std::vector<std::int32_t> parsePidList(std::string_view list) {
  std::vector<std::int32_t> pids;
  while (!list.empty()) {
    const auto piece = list.substr(0, list.find(','));
    list.remove_prefix(std::min(piece.size() + 1, list.size()));
    const auto pid = wholeNumber<std::int32_t>(piece).value_or(0);
    if (pid > 0) pids.push_back(pid);
  }
  return pids;
}

std::optional<Tenths> processorShare(const ProcessTimes& before, const ProcessTimes& now,
                                     const ProcessUnits& units) {
  const auto span = static_cast<double>(now.nanoseconds) - static_cast<double>(before.nanoseconds);
  const double least = static_cast<double>(leastTicks) * nanosecondsPerSecond /
                       static_cast<double>(std::max<std::uint64_t>(units.ticksPerSecond, 1));
  if (span < least) return std::nullopt;
  // The kernel's sum has been seen to fall by a tick.
  return shareOf(now.usedTicks - std::min(before.usedTicks, now.usedTicks), span, units);
}

Tenths processorShareOfLife(const ProcessTimes& now, const ProcessUnits& units) {
  if (units.ticksPerSecond == 0) return 0;
  const double start = static_cast<double>(now.startTicks) * nanosecondsPerSecond /
                       static_cast<double>(units.ticksPerSecond);
  return shareOf(now.usedTicks, static_cast<double>(now.nanoseconds) - start, units);
}

Tenths memoryShare(std::uint64_t residentPages, const ProcessUnits& units) {
  if (units.memoryBytes == 0) return 0;
  return rounded(static_cast<double>(residentPages) * static_cast<double>(units.pageBytes) * 1000 /
                 static_cast<double>(units.memoryBytes));
}

void appendProcessLine(std::string& lines, const PidStat& stat, Tenths processor,
                       const ProcessUnits& units) {
  appendNumber(lines, static_cast<std::uint64_t>(std::max(stat.pid, 0)), 7);
  lines.push_back(' ');
  appendShare(lines, processor, 5);
  lines.push_back(' ');
  appendShare(lines, memoryShare(stat.residentPages, units), 4);
  lines.push_back(' ');
  appendNumber(lines, product(stat.residentPages, units.pageBytes) / 1024, 8);
  lines.push_back(' ');
  appendNumber(lines, stat.virtualBytes / 1024, 10);
  lines.append(" ").push_back(stat.state);
  if (stat.nice > 0) lines.push_back('N');
  if (stat.session == stat.pid) lines.push_back('s');
  if (stat.threads > 1) lines.push_back('l');
  lines.push_back('\n');
}

}  // namespace vantile
