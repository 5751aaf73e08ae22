#include "vantile/platform/parsers/proc_stat.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

// Far beyond what the kernel is built for; a hostile text does not make for a table of gigabytes.
constexpr std::uint32_t mostProcessors = 65536;

// Reading idle and waiting time rounds each, and moves time between them: what is that little less
// than before catches up. What is less by more began anew.
constexpr std::uint64_t catchesUp = 1000;  // ticks

enum Column { user, nice, system, idle, iowait, irq, softirq, steal, columns };

/// The columns of a line behind its name; an old kernel has four. False where there are fewer.
bool readColumns(std::string_view text, std::array<std::uint64_t, columns>& ticks) {
  std::size_t read = 0;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); read < columns; ++read) {
    while (at != end && *at == ' ') ++at;
    const auto number = std::from_chars(at, end, ticks[read]);
    if (number.ec != std::errc()) break;
    at = number.ptr;
  }
  return read > idle;
}

std::optional<ProcessorLine> parseLine(std::string_view line) {
  std::uint32_t number = 0;
  const auto name = std::from_chars(line.data(), line.data() + line.size(), number);
  if (name.ec != std::errc() || number >= mostProcessors) return std::nullopt;
  line.remove_prefix(static_cast<std::size_t>(name.ptr - line.data()));
  std::array<std::uint64_t, columns> ticks = {};
  if (!line.starts_with(' ') || !readColumns(line, ticks)) return std::nullopt;
  return ProcessorLine{.number = number,
                       .user = ticks[user],
                       .system = ticks[system] + ticks[irq] + ticks[softirq] + ticks[steal],
                       .idle = ticks[idle] + ticks[iowait],
                       .nice = ticks[nice]};
}

/// What `now` is beyond `last`, which becomes `now` unless that will catch up.
std::uint64_t growth(std::uint64_t& last, std::uint64_t now) {
  if (now < last && last - now <= catchesUp) return 0;
  const auto grown = now >= last ? now - last : 0;
  last = now;
  return grown;
}

}  // namespace

ProcStat parseProcStat(std::string_view text) {
  constexpr std::string_view name = "cpu";
  ProcStat stat;
  while (text.size() >= name.size()) {
    if (!text.starts_with(name)) {
      stat.complete = true;  // were it only the beginning of a long line
      break;
    }
    if (text.find('\n') == std::string_view::npos) break;
    auto line = takeLine(text);
    line.remove_prefix(name.size());
    if (const auto processor = parseLine(line)) stat.processors.push_back(*processor);
  }
  return stat;
}

const std::vector<ProcessorTicks>& ProcessorCounters::advance(const ProcStat& reading) {
  if (readings_++ == 0) {
    std::size_t size = 0;
    for (const auto& line : reading.processors) size = std::max<std::size_t>(size, line.number + 1);
    seen_.resize(size);
    ticks_.resize(size);
  }
  for (const auto& line : reading.processors) {
    if (line.number >= ticks_.size()) continue;
    Seen& seen = seen_[line.number];
    ProcessorTicks& ticks = ticks_[line.number];
    if (seen.reading + 1 < readings_ || seen.reading == 0) seen.line = line;
    seen.reading = readings_;
    ticks.user += growth(seen.line.user, line.user);
    ticks.system += growth(seen.line.system, line.system);
    ticks.idle += growth(seen.line.idle, line.idle);
    ticks.nice += growth(seen.line.nice, line.nice);
  }
  return ticks_;
}

}  // namespace vantile
