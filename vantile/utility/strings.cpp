#include "vantile/utility/strings.h"

#include <algorithm>

namespace vantile {
namespace {

/// Takes the first component off a dotted version: its leading digits, without leading zeros.
std::string_view takeComponent(std::string_view& version) {
  const auto dot = version.find('.');
  auto component = version.substr(0, dot);
  version.remove_prefix(dot == std::string_view::npos ? version.size() : dot + 1);
  component = component.substr(0, component.find_first_not_of("0123456789"));
  component.remove_prefix(std::min(component.find_first_not_of('0'), component.size()));
  return component;
}

}  // namespace

bool isNilOrEmpty(const std::optional<std::string>& text) {
  return !text || text->empty();
}

bool startWithString(std::string_view text, std::string_view prefix) {
  return text.starts_with(prefix);
}

bool isLessThanOrEqual(std::string_view version, std::string_view other) {
  while (!version.empty() || !other.empty()) {
    const auto mine = takeComponent(version);
    const auto theirs = takeComponent(other);
    // Without leading zeros the longer number is the larger one.
    if (mine.size() != theirs.size()) return mine.size() < theirs.size();
    if (mine != theirs) return mine < theirs;
  }
  return true;
}

}  // namespace vantile
