#include "vantile/platform/parsers/packed_contents.h"

#include <algorithm>
#include <utility>

namespace vantile {
namespace {

constexpr std::uint64_t mostBlocks = std::uint64_t{1} << 54;  // 2^63 bytes
constexpr unsigned kindBits = 2;

}  // namespace

void appendPacked(std::string& text, std::uint64_t number) {
  constexpr std::uint64_t more = 128;
  for (; number >= more; number /= more) text.push_back(static_cast<char>(number % more | more));
  text.push_back(static_cast<char>(number));
}

std::optional<std::uint64_t> takePacked(std::string_view& text) {
  std::uint64_t number = 0;
  for (unsigned shift = 0; shift < 64 && !text.empty(); shift += 7) {
    const auto byte = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    const std::uint64_t digits = byte & 127u;
    if (shift == 63 && digits > 1) return std::nullopt;
    number |= digits << shift;
    if (byte < 128) return number;
  }
  return std::nullopt;
}

void appendPacked(std::string& text, const PackedContents& contents) {
  const auto& [sums, namesSize] = contents;
  if (contents == PackedContents()) return;
  for (const auto blocks : sums.blocks) appendPacked(text, blocks);
  appendPacked(text, sums.linked.size());
  for (const auto& file : sums.linked) {
    appendPacked(text, file.inode);
    appendPacked(text, std::min(file.blocks, mostBlocks) << kindBits |
                           static_cast<std::uint64_t>(file.kind));
  }
  appendPacked(text, namesSize);
}

std::optional<PackedContents> takeContents(std::string_view& text) {
  PackedContents contents;
  if (text.empty()) return contents;
  for (auto& blocks : contents.sums.blocks) {
    const auto number = takePacked(text);
    if (!number) return std::nullopt;
    blocks = *number;
  }
  const auto count = takePacked(text);
  if (!count) return std::nullopt;
  for (std::uint64_t left = *count; left > 0; --left) {
    const auto inode = takePacked(text);
    const auto rest = inode ? takePacked(text) : std::nullopt;
    if (!rest) return std::nullopt;
    contents.sums.linked.push_back(
        {*inode, *rest >> kindBits, static_cast<UsageKind>(*rest & ((1u << kindBits) - 1))});
  }
  const auto namesSize = takePacked(text);
  if (!namesSize) return std::nullopt;
  contents.namesSize = *namesSize;
  return contents;
}

bool isEntryName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == name.npos &&
         name.find('\0') == name.npos;
}

bool areEntryNames(std::string_view names) {
  if (!names.empty() && names.back() != '\0') return false;
  bool areAll = true;
  forEachName(names, [&areAll](std::string_view name) { areAll &= isEntryName(name); });
  return areAll;
}

}  // namespace vantile
