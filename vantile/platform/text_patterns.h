#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// A compiled regular expression. Any thread.
class TextPattern {
 public:
  /// The parts of one match: the whole, then each capture group; nothing for one that took no part.
  using Groups = std::vector<std::optional<std::string_view>>;

  virtual ~TextPattern() = default;

  /// Calls `visit` for each match in `text`, in order, without options. The groups are views into
  /// `text`, the list of them is valid during the call. Text that is not UTF-8 has no matches, and
  /// one at which the system gives up ends them.
  virtual void matches(std::string_view text,
                       const std::function<void(const Groups& groups)>& visit) const = 0;
};

/// Regular expressions as the platform has them. Any thread.
class TextPatterns {
 public:
  virtual ~TextPatterns() = default;

  /// `pattern` compiled without options, or null where it is none.
  /// macOS: NSRegularExpression. Linux: GRegex.
  virtual std::shared_ptr<const TextPattern> compile(std::string_view pattern) = 0;
};

/// The platform's, shared by the process.
VANTILE_API std::shared_ptr<TextPatterns> systemTextPatterns();

}  // namespace vantile
