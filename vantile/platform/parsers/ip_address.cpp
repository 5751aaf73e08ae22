#include "vantile/platform/parsers/ip_address.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vantile {
namespace {

constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t groupCount = 8;

struct Run {
  std::size_t begin = 0, size = 0;
};

std::string dotted(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    if (!text.empty()) text.push_back('.');
    text += std::to_string(static_cast<unsigned char>(byte));
  }
  return text;
}

void appendGroup(std::string& text, unsigned group) {
  bool leading = true;
  for (const int shift : {12, 8, 4, 0}) {
    const auto digit = (group >> shift) & 0xfu;
    leading = leading && digit == 0 && shift > 0;
    if (!leading) text.push_back(digits[digit]);
  }
}

/// The first of the longest runs of zeros, which is left out of the text; a single one is not.
Run longestZeros(const std::array<unsigned, groupCount>& groups) {
  Run longest;
  for (std::size_t at = 0; at < groupCount;) {
    const auto begin = at;
    while (at < groupCount && groups[at] == 0) ++at;
    if (at - begin > longest.size) longest = {begin, at - begin};
    if (at == begin) ++at;
  }
  return longest.size > 1 ? longest : Run();
}

std::string grouped(std::string_view bytes) {
  std::array<unsigned, groupCount> groups{};
  for (std::size_t at = 0; at < bytes.size(); ++at)
    groups[at / 2] = groups[at / 2] << 8 | static_cast<unsigned char>(bytes[at]);
  const auto zeros = longestZeros(groups);
  // An address of the older kind inside one of the newer is shown as what it is.
  const bool holdsIPv4 =
      zeros.begin == 0 && (zeros.size == 6 || (zeros.size == 5 && groups[5] == 0xffff));
  const std::size_t end = holdsIPv4 ? 6 : groupCount;
  std::string text;
  for (std::size_t at = 0; at < end; ++at) {
    if (zeros.size > 0 && at >= zeros.begin && at < zeros.begin + zeros.size) {
      if (at == zeros.begin) text.push_back(':');
      continue;
    }
    if (at > 0) text.push_back(':');
    appendGroup(text, groups[at]);
  }
  if (holdsIPv4) return text + ":" + dotted(bytes.substr(12));
  if (zeros.size > 0 && zeros.begin + zeros.size == groupCount) text.push_back(':');
  return text;
}

}  // namespace

std::string ipAddressText(std::string_view bytes) {
  if (bytes.size() == 4) return dotted(bytes);
  return bytes.size() == 16 ? grouped(bytes) : std::string();
}

std::string ipv4MaskText(std::uint8_t prefixLength) {
  std::string bytes;
  for (int left = std::min<int>(prefixLength, 32), byte = 0; byte < 4; ++byte, left -= 8)
    bytes.push_back(static_cast<char>(0xff00u >> std::clamp(left, 0, 8)));
  return dotted(bytes);
}

std::string hexadecimal(std::string_view bytes) {
  std::string text;
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    text.push_back(digits[byte >> 4]);
    text.push_back(digits[byte & 0xf]);
  }
  return text;
}

}  // namespace vantile
