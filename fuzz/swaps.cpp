#include "vantile/platform/parsers/swaps.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

constexpr std::string_view deleted = " (deleted)";

void checkLines(std::string_view table) {
  const auto lines = parseSwaps(table);
  require(lines.size() <= split(table, '\n').size(), "a line gives an area at most");
  for (const auto& line : lines) {
    require(line.area.path.starts_with('/'), "a path is absolute");
    require(line.area.bytes % 1024 == 0 && line.usedBytes % 1024 == 0, "sizes are whole KiB");
  }
}

/// A table such as the kernel writes, its areas called after the lines of `names`.
void checkTable(std::string_view names) {
  std::string table = "Filename\t\t\t\tType\t\tSize\t\tUsed\t\tPriority\n";
  std::vector<SwapLine> written;
  for (const auto name : split(names, '\n')) {
    const auto kibibytes = static_cast<std::uint64_t>(name.size()) * 4;
    const bool isFile = name.size() % 2 == 0;
    std::string path = "/" + std::string(name);
    table += asKernelWrites(path) + (isFile ? "\tfile\t\t" : "\tpartition\t") +
             std::to_string(kibibytes) + "\t\t" + std::to_string(kibibytes / 2) + "\t\t-2\n";
    if (path.ends_with(deleted)) path.resize(path.size() - deleted.size());
    written.push_back({{path, isFile, kibibytes * 1024}, kibibytes / 2 * 1024});
  }
  const auto read = parseSwaps(table);
  require(read.size() == written.size(), "every area of a table is read");
  for (std::size_t at = 0; at < read.size(); ++at) {
    require(read[at].area.path == written[at].area.path, "a name comes back as it was");
    require(read[at].area.isFile == written[at].area.isFile &&
                read[at].area.bytes == written[at].area.bytes &&
                read[at].usedBytes == written[at].usedBytes,
            "type and sizes come back as they were");
  }
}

}  // namespace

void consume(std::string_view input) {
  checkLines(input);
  checkTable(input);
}

}  // namespace vantile::fuzz
