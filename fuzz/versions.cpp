#include "vantile/utility/strings.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

/// The components as a list of decimal numbers, without the zeros at either end.
std::vector<std::string> componentsOf(std::string_view version) {
  std::vector<std::string> components;
  for (auto piece : split(version, '.')) {
    std::string digits;
    for (; !piece.empty() && piece[0] >= '0' && piece[0] <= '9'; piece.remove_prefix(1))
      if (!digits.empty() || piece[0] != '0') digits.push_back(piece[0]);
    components.push_back(digits);
  }
  while (!components.empty() && components.back().empty()) components.pop_back();
  return components;
}

bool sameVersion(std::string_view a, std::string_view b) {
  return isLessThanOrEqual(a, b) && isLessThanOrEqual(b, a);
}

}  // namespace

void consume(std::string_view input) {
  auto versions = split(input, '\n');
  versions.resize(3);
  const auto a = versions[0], b = versions[1], c = versions[2];
  require(isLessThanOrEqual(a, a), "reflexive");
  require(isLessThanOrEqual(a, b) || isLessThanOrEqual(b, a), "total");
  require(!(isLessThanOrEqual(a, b) && isLessThanOrEqual(b, c)) || isLessThanOrEqual(a, c),
          "transitive");
  require(sameVersion(a, b) == (componentsOf(a) == componentsOf(b)),
          "the same where the numbers are");
  require(sameVersion(a, std::string(a) + ".0"), "a missing component is 0");
  require(isLessThanOrEqual(a, std::string(a) + ".1"), "a further component makes it later");
}

}  // namespace vantile::fuzz
