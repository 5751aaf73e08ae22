#include "vantile/platform/parsers/pid_stat.h"

#include <algorithm>
#include <string>

#include "vantile/platform/parsers/process_lines.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

/// The fields behind the name by the places that proc(5) gives them; 1 is the pid.
std::string_view field(std::string_view text, std::size_t number) {
  const auto fields = split(text.substr(text.rfind(')') + 1), ' ');
  return number - 2 < fields.size() ? fields[number - 2] : std::string_view();
}

void checkFields(std::string_view text, const PidStat& stat) {
  require(stat.pid > 0, "a process has a number");
  require(text.substr(text.find('(') + 1).starts_with(stat.name), "a name stands in its brackets");
  require(text.rfind(')') ==
              static_cast<std::size_t>(stat.name.data() - text.data()) + stat.name.size(),
          "a name ends at the last bracket");
  require(field(text, 3) == std::string(1, stat.state), "the state is the third field");
  require(numberIn(field(text, 14)) == stat.userTicks, "field 14");
  require(numberIn(field(text, 15)) == stat.systemTicks, "field 15");
  require(numberIn(field(text, 22)) == stat.startTicks, "field 22");
  require(numberIn(field(text, 23)) == stat.virtualBytes, "field 23");
  require(numberIn(field(text, 24)) == stat.residentPages, "field 24");
  require(numberIn(field(text, 28)) == stat.stackStart, "field 28");
}

/// The line of a process has six columns of the kinds that its readers expect.
void checkLine(const PidStat& stat, const ProcessUnits& units) {
  std::string line;
  appendProcessLine(
      line, stat, processorShareOfLife({stat.startTicks, stat.userTicks, 1u << 30}, units), units);
  require(line.ends_with('\n') && line.find('\n') == line.size() - 1, "a line is one line");
  const auto columns = fieldsOf(std::string_view(line).substr(0, line.size() - 1));
  require(columns.size() == 6, "a line has six columns");
  for (const std::size_t share : {1u, 2u}) {
    const auto pieces = split(columns[share], '.');
    require(pieces.size() == 2 && numberIn(pieces[0]) && pieces[1].size() == 1,
            "a share has one decimal");
  }
  require(numberIn(columns[3]) && numberIn(columns[4]), "sizes are numbers");
  require(columns[5].find_first_not_of("NRSDTtWXxKPIZABCEFGHJLMOQUVYabcdefghijklmnopqrsuvwyz") ==
              std::string_view::npos,
          "a state is letters");
}

}  // namespace

void consume(std::string_view input) {
  if (const auto stat = parsePidStat(input)) {
    checkFields(input, *stat);
    checkLine(*stat, {100, 4096, stat->virtualBytes});
  }
  // Whatever a program calls itself, it can't pass for another one.
  const std::string own = "41 (" + std::string(input) +
                          ") S 7 41 39 0 0 0 1 2 3 4 500 60 7 8 20 5 3 0 1000 8192 910 1 2 3 4 \n";
  const auto stat = parsePidStat(own);
  require(stat && stat->pid == 41 && stat->name == input && stat->userTicks == 500 &&
              stat->startTicks == 1000 && stat->stackStart == 4,
          "a name is a name");
  for (const auto pid : parsePidList(input)) require(pid > 0, "a pid is a positive number");
}

}  // namespace vantile::fuzz
