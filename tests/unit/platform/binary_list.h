#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantile::testing {

inline std::string repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

/// The number in `size` bytes, the highest first.
inline std::string bigEndian(std::uint64_t number, std::size_t size) {
  std::string bytes;
  for (; size > 0; --size) bytes.push_back(static_cast<char>(number >> (size - 1) * 8));
  return bytes;
}

/// The property list of these objects, the first of which is the whole; references in them are 2
/// bytes long.
inline std::string binaryList(const std::vector<std::string>& objects) {
  std::string list = "bplist00", table;
  for (const auto& object : objects) {
    table += bigEndian(list.size(), 4);
    list += object;
  }
  const auto tableAt = list.size();
  return list + table + std::string(6, '\0') + bigEndian(4, 1) + bigEndian(2, 1) +
         bigEndian(objects.size(), 8) + bigEndian(0, 8) + bigEndian(tableAt, 8);
}

}  // namespace vantile::testing
