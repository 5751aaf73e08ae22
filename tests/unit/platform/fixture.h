#pragma once

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace vantile::testing {

/// The bytes of a file in tests/fixtures.
inline std::string fixture(const std::string& name) {
  std::ifstream file(std::string(VANTILE_FIXTURES "/") + name, std::ios::binary);
  if (!file) throw std::runtime_error("no fixture " + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vantile::testing
