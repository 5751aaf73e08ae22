#include "vantile/platform/parsers/proc_stat.h"

#include <algorithm>
#include <initializer_list>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

/// The sum of those columns, as far as they are numbers.
std::uint64_t sumOf(const std::vector<std::string_view>& fields,
                    std::initializer_list<std::size_t> columns) {
  std::uint64_t sum = 0;
  for (const auto column : columns)
    sum += column < fields.size() ? numberIn(fields[column]).value_or(0) : 0;
  return sum;
}

bool isNumber(std::string_view field) {
  return !field.empty() && field.size() < 19 &&
         std::all_of(field.begin(), field.end(),
                     [](char each) { return each >= '0' && each <= '9'; });
}

/// A processor on a line of plain numbers is what its columns say, and on a line of its name.
void checkLines(std::string_view input) {
  const auto lines = completeLines(input);
  const auto stat = parseProcStat(input);
  require(stat.processors.size() <= lines.size(), "a line gives a processor at most");
  for (const auto& processor : stat.processors) {
    require(processor.number < 65536, "a number is no more than the largest");
    const bool isSaid = std::any_of(lines.begin(), lines.end(), [&](std::string_view line) {
      const auto fields = fieldsOf(line);
      if (fields.size() < 5 || !fields[0].starts_with("cpu")) return false;
      if (numberIn(fields[0].substr(3)) != processor.number) return false;
      if (!std::all_of(fields.begin() + 1, fields.end(), isNumber)) return true;
      return processor.user == sumOf(fields, {1}) && processor.nice == sumOf(fields, {2}) &&
             processor.system == sumOf(fields, {3, 6, 7, 8}) &&
             processor.idle == sumOf(fields, {4, 5});
    });
    require(isSaid, "a processor is what a line says");
  }
}

/// A file as the kernel writes it, of counters that the input chooses, is read back.
void checkFile(std::string_view input) {
  std::string text = "cpu  1 2 3 4 5 6 7 8 9 10\n";
  std::vector<std::vector<std::uint64_t>> written;
  for (std::size_t at = 0; at + 8 <= input.size(); at += 8) {
    std::vector<std::uint64_t> columns;
    for (std::size_t each = 0; each < 8; ++each) {
      const auto byte = static_cast<unsigned char>(input[at + each]);
      columns.push_back(static_cast<std::uint64_t>(byte) << (byte % 50));
    }
    text += "cpu" + std::to_string(written.size());
    for (const auto column : columns) text += " " + std::to_string(column);
    text += " 0 0\n";
    written.push_back(std::move(columns));
  }
  require(!parseProcStat(text).complete, "what ends with the processors may go on");
  const auto stat = parseProcStat(text + "intr 1\n");
  require(stat.complete, "what goes on is complete");
  require(stat.processors.size() == written.size(), "every processor is read");
  for (std::size_t at = 0; at < written.size(); ++at) {
    const auto& c = written[at];
    require(stat.processors[at] == ProcessorLine{.number = static_cast<std::uint32_t>(at),
                                                 .user = c[0],
                                                 .system = c[2] + c[5] + c[6] + c[7],
                                                 .idle = c[3] + c[4],
                                                 .nice = c[1]},
            "counters come back as they were");
  }
}

/// Readings one after the other, pieces of the input: always as many counters as at first, and none
/// that moves for a processor that is not there.
void checkCounters(std::string_view input) {
  ProcessorCounters counters;
  std::vector<ProcessorTicks> last;
  bool begun = false;
  for (const auto piece : split(input, '-')) {
    const auto stat = parseProcStat(piece);
    const auto ticks = counters.advance(stat);
    if (!begun) {
      std::size_t size = 0;
      for (const auto& line : stat.processors)
        size = std::max<std::size_t>(size, std::size_t{line.number} + 1);
      require(ticks.size() == size, "as many as the highest number");
      last.resize(size);
    }
    begun = true;
    require(ticks.size() == last.size(), "as many as at the start");
    for (std::size_t core = 0; core < ticks.size(); ++core) {
      const bool there = std::any_of(stat.processors.begin(), stat.processors.end(),
                                     [core](const auto& line) { return line.number == core; });
      require(there || ticks[core] == last[core], "one that is not there repeats its counters");
    }
    last = ticks;
  }
}

}  // namespace

void consume(std::string_view input) {
  checkLines(input);
  checkFile(input);
  checkCounters(input);
}

}  // namespace vantile::fuzz
