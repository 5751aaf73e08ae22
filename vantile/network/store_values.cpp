#include "vantile/network/store_values.h"

#include <cmath>
#include <limits>

namespace vantile {

std::optional<bool> isEthernetName(InterfaceFacts& facts, std::string_view name) {
  return name.starts_with("en") ? true : facts.isEthernetDevice(name);
}

std::string storeKey(std::string_view pattern, std::string_view name) {
  constexpr std::string_view place = "%@";
  const auto at = pattern.find(place);
  std::string key;
  key.reserve(pattern.size() + name.size());
  return key.append(pattern.substr(0, at)).append(name).append(pattern.substr(at + place.size()));
}

const Value* valueIn(const Dictionary* dictionary, std::string_view key) {
  return dictionary ? dictionary->find(key) : nullptr;
}

std::optional<std::string> textIn(const Dictionary* dictionary, std::string_view key) {
  const auto* const text = dictionary ? dictionary->text(key) : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

bool isNumber(const Dictionary* dictionary, std::string_view key, std::uint32_t number) {
  const auto found = dictionary ? dictionary->number(key) : std::nullopt;
  return found && std::trunc(*found) == number;
}

std::optional<std::uint64_t> wholeIn(const Dictionary* dictionary, std::string_view key) {
  const auto* const value = valueIn(dictionary, key);
  if (!value) return std::nullopt;
  if (const auto whole = value->uint64()) return whole;
  constexpr auto most = std::numeric_limits<std::uint64_t>::max();
  const auto number = value->number();
  if (!number) return std::nullopt;
  if (!(*number > 0)) return 0;  // NaN, too
  return *number < static_cast<double>(most) ? static_cast<std::uint64_t>(*number) : most;
}

std::optional<bool> truthOf(const Value* value) {
  if (!value) return std::nullopt;
  if (const auto* const truth = value->as<bool>()) return *truth;
  const auto number = value->number();
  return number ? std::optional(*number != 0) : std::nullopt;
}

}  // namespace vantile
