#include "vantile/platform/parsers/cpuinfo.h"

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// `text`, a decimal number such as "2596.132", in units of 1 / `unit`, a power of ten; digits
/// beyond those are left off. Nothing where it is none or too large.
std::optional<std::uint64_t> decimal(std::string_view text, std::uint64_t unit) {
  const auto point = std::min(text.find('.'), text.size());
  const auto whole = text.substr(0, point);
  const auto fraction = text.substr(std::min(point + 1, text.size()));
  if (whole.empty() || !std::all_of(whole.begin(), whole.end(), isDigit) ||
      !std::all_of(fraction.begin(), fraction.end(), isDigit))
    return std::nullopt;
  const auto number = leadingNumber(whole);
  if (!number || *number >= std::numeric_limits<std::uint64_t>::max() / unit) return std::nullopt;
  auto result = *number * unit;
  for (const char digit : fraction) {
    unit /= 10;
    result += static_cast<std::uint64_t>(digit - '0') * unit;
  }
  return result;
}

/// Hertz of a model name such as "Intel(R) Xeon(R) CPU E5-2665 0 @ 2.40GHz".
std::optional<std::uint64_t> rateInName(std::string_view name) {
  const auto sign = name.rfind('@');
  if (sign == std::string_view::npos) return std::nullopt;
  const auto rate = trimmed(name.substr(sign + 1));
  const auto number = rate.substr(0, std::max<std::size_t>(rate.size(), 3) - 3);
  if (rate.ends_with("GHz")) return decimal(trimmed(number), 1'000'000'000);
  if (rate.ends_with("MHz")) return decimal(trimmed(number), 1'000'000);
  return std::nullopt;
}

/// The keys of one processor's block that count here.
struct Block {
  bool isProcessor = false;
  std::optional<std::string_view> modelName;
  std::optional<std::uint64_t> physicalId, coreId, megahertz;  // the last one in hertz
};

Block takeBlock(std::string_view& text) {
  Block block;
  while (!text.empty()) {
    const auto line = takeLine(text);
    if (trimmed(line).empty()) break;
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) continue;
    const auto key = trimmed(line.substr(0, colon));
    const auto value = trimmed(line.substr(colon + 1));
    if (key == "processor") block.isProcessor = true;
    if (key == "model name" && !value.empty()) block.modelName = value;
    if (key == "physical id") block.physicalId = leadingNumber(value);
    if (key == "core id") block.coreId = leadingNumber(value);
    if (key == "cpu MHz") block.megahertz = decimal(value, 1'000'000);
  }
  return block;
}

}  // namespace

Cpuinfo parseCpuinfo(std::string_view text) {
  Cpuinfo info;
  std::optional<std::uint64_t> inName, measured;
  std::set<std::pair<std::uint64_t, std::uint64_t>> cores;
  bool everyCore = true;
  while (!text.empty()) {
    const auto block = takeBlock(text);
    if (!block.isProcessor) continue;  // of the machine, or no block at all
    if (!info.modelName && block.modelName) info.modelName = std::string(*block.modelName);
    if (!inName && block.modelName) inName = rateInName(*block.modelName);
    if (!measured) measured = block.megahertz;
    everyCore = everyCore && block.physicalId && block.coreId;
    if (everyCore) cores.emplace(*block.physicalId, *block.coreId);
  }
  if (everyCore && !cores.empty()) info.physicalCores = static_cast<std::uint32_t>(cores.size());
  info.nominalRate = inName ? inName : measured;
  if (info.nominalRate == 0) info.nominalRate = std::nullopt;
  return info;
}

}  // namespace vantile
