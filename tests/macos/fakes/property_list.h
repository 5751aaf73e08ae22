#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace fakes {

/// What a property list holds, for CoreFoundation to make objects of.
struct PropertyList {
  struct Date {
    double seconds;  // since the beginning of 2001
  };
  struct Data {};
  using Text = std::u16string;  // as CoreFoundation keeps it: not every one has a UTF-8 form
  using Array = std::vector<PropertyList>;
  using Dictionary = std::vector<std::pair<Text, PropertyList>>;

  std::variant<Text, std::int64_t, std::uint64_t, double, bool, Date, Data, Array, Dictionary> held;
};

}  // namespace fakes
