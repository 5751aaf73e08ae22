#include "vantile/power/time_text.h"

#include <cstdlib>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {

void consume(std::string_view input) {
  constexpr std::int64_t hours = 1234567, minutes = 7654321;
  const auto text = timeText(input, hours, minutes);
  if (!text) return;
  require(text->find("1234567") != text->npos && text->find("7654321") != text->npos,
          "both fields are filled in");
  require(text->size() <= input.size() + 20, "nothing is added but the numbers and their padding");
  std::size_t percents = 0;
  for (const char byte : input) percents += byte == '%' ? 1 : 0;
  require(percents >= 2, "a field begins with a percent sign");
  require(timeText(input, 0, 0).has_value(), "whether a format will do is up to itself");
}

}  // namespace vantile::fuzz
