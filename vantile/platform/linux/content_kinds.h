#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "vantile/platform/parsers/name_kinds.h"

namespace vantile {

/// The kind of the file of that name, as the shared MIME database has it. Any thread.
std::optional<UsageKind> kindByDatabase(const std::string& name);

/// The kinds of files by their names. Each extension is looked up once. Not synchronised.
class ContentKinds {
 public:
  using Look = std::function<std::optional<UsageKind>(const std::string& name)>;

  explicit ContentKinds(Look look = kindByDatabase) : look_(std::move(look)) {}

  std::optional<UsageKind> of(std::string_view name);
  /// Looks all up again: the database may have changed.
  void forget() { known_.clear(); }

 private:
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  const Look look_;
  std::unordered_map<std::string, std::optional<UsageKind>, Hash, std::equal_to<>> known_;
};

}  // namespace vantile
