#include "vantile/platform/parsers/firmware_text.h"
#include "vantile/platform/parsers/gecos.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {

void consume(std::string_view input) {
  const auto firmware = firmwareText(input);
  if (firmware) {
    require(!firmware->empty() && input.find(*firmware) != std::string_view::npos, "a piece of it");
    require(firmware->find('\0') == std::string::npos, "that ends at a zero byte");
    require(firmwareText(*firmware) == firmware, "nothing more to take away");
    require(firmwareText(" " + *firmware + " \n") == firmware, "whatever stands around it");
  }

  const auto lines = split(input, '\n');
  const std::string gecos(lines.front()), login(lines.back());
  const auto name = fullNameIn(gecos, login);
  const auto field = split(gecos, ',').front();
  if (field.find('&') == std::string_view::npos) {
    require(!name || *name == field, "the first field");
    require(name || fieldsOf(field).empty(), "unless it is blank");
  }
  require(!name || login.find('&') != std::string::npos || name->find('&') == std::string::npos,
          "no abbreviation is left");
}

}  // namespace vantile::fuzz
