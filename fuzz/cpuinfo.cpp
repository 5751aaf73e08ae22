#include "vantile/platform/parsers/cpuinfo.h"

#include <algorithm>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

/// Whatever the text, what is told stands in it.
void checkText(std::string_view input) {
  const auto info = parseCpuinfo(input);
  if (info.modelName) {
    require(!info.modelName->empty(), "a name has characters");
    require(input.find(*info.modelName) != std::string_view::npos, "a name is a piece of the text");
  }
  const auto lines = static_cast<std::size_t>(std::count(input.begin(), input.end(), '\n')) + 1;
  if (info.physicalCores)
    require(*info.physicalCores > 0 && *info.physicalCores <= lines, "cores stand on lines");
  require(info.nominalRate != 0, "no rate is not a rate of 0");
}

/// Processors as the kernel lists them, as many threads of as many cores as the input has bytes.
void checkList(std::string_view input) {
  std::string list;
  std::vector<unsigned char> cores;
  std::uint64_t number = 0;
  for (const char byte : input.substr(0, 64)) {
    const auto core = static_cast<unsigned char>(byte);
    list += "processor\t: " + std::to_string(number) + "\nmodel name\t: P @ " +
            std::to_string(number + 1) + ".50GHz\nphysical id\t: " + std::to_string(core / 16) +
            "\ncore id\t\t: " + std::to_string(core % 16) + "\n\n";
    ++number;
    cores.push_back(core);
  }
  std::sort(cores.begin(), cores.end());
  const auto different = std::unique(cores.begin(), cores.end()) - cores.begin();
  const auto info = parseCpuinfo(list);
  require(info.physicalCores.value_or(0) == static_cast<std::uint64_t>(different),
          "each core counts once");
  require(number == 0 || info.nominalRate == 1'500'000'000u, "the first rate counts");
}

}  // namespace

void consume(std::string_view input) {
  checkText(input);
  checkList(input);
}

}  // namespace vantile::fuzz
