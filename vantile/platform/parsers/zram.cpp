#include "vantile/platform/parsers/zram.h"

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

std::optional<std::uint64_t> field(const std::vector<std::string_view>& fields, std::size_t index) {
  return index < fields.size() ? leadingNumber(fields[index]) : std::nullopt;
}

}  // namespace

std::optional<ZramMemory> parseZramMemory(std::string_view mmStat) {
  const auto fields = words(takeLine(mmStat));
  const auto held = field(fields, 0);
  const auto occupied = field(fields, 2);
  if (!held || !occupied) return std::nullopt;
  return ZramMemory{*held, *occupied};
}

std::optional<BlockTraffic> parseBlockTraffic(std::string_view stat) {
  const auto fields = words(takeLine(stat));
  const auto read = field(fields, 2);
  const auto written = field(fields, 6);
  if (!read || !written) return std::nullopt;
  return BlockTraffic{*read, *written};
}

}  // namespace vantile
