#include "vantile/platform/parsers/packed_contents.h"

#include <algorithm>
#include <utility>

namespace vantile {
namespace {

constexpr std::uint64_t mostBlocks = std::uint64_t{1} << 54;  // 2^63 bytes
constexpr unsigned kindBits = 2;

/// The numbers of a text, its names left.
std::optional<FolderSums> numbersIn(std::string_view& text) {
  FolderSums sums;
  for (auto& blocks : sums.blocks) {
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
    sums.linked.push_back(
        {*inode, *rest >> kindBits, static_cast<UsageKind>(*rest & ((1u << kindBits) - 1))});
  }
  return sums;
}

bool areNames(std::string_view text) {
  if (!text.empty() && text.back() != '\0') return false;
  bool areAll = true;
  forEachName(text, [&areAll](std::string_view name) { areAll &= isEntryName(name); });
  return areAll;
}

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

void appendPacked(std::string& text, const FolderSums& sums) {
  for (const auto blocks : sums.blocks) appendPacked(text, blocks);
  appendPacked(text, sums.linked.size());
  for (const auto& file : sums.linked) {
    appendPacked(text, file.inode);
    appendPacked(text, std::min(file.blocks, mostBlocks) << kindBits |
                           static_cast<std::uint64_t>(file.kind));
  }
}

std::optional<FolderContents> contentsIn(std::string_view text) {
  if (text.empty()) return FolderContents();
  auto sums = numbersIn(text);
  if (!sums || !areNames(text)) return std::nullopt;
  return FolderContents{std::move(*sums), std::string(text)};
}

bool isPackedContents(std::string_view text) {
  return text.empty() || (numbersIn(text) && areNames(text));
}

FolderSums sumsIn(std::string_view text) {
  return text.empty() ? FolderSums() : numbersIn(text).value_or(FolderSums());
}

std::string_view filesIn(std::string_view text) {
  return text.empty() || !numbersIn(text) ? std::string_view() : text;
}

bool isEntryName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == name.npos &&
         name.find('\0') == name.npos;
}

}  // namespace vantile
