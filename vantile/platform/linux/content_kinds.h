#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "vantile/platform/parsers/name_kinds.h"

namespace vantile {

/// The kinds of files by their names, as the shared MIME database has them. It is asked once for
/// each extension. Not synchronised.
class ContentKinds {
 public:
  std::optional<UsageKind> of(std::string_view name);
  /// Asks again for all: the database may have changed.
  void forget() { known_.clear(); }

 private:
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  std::unordered_map<std::string, std::optional<UsageKind>, Hash, std::equal_to<>> known_;
};

}  // namespace vantile
