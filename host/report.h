#pragma once

#include <vantile/foundation/value.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace vantile::host {

/// One call of a monitor's delegate, as it happened. An argument without a value was nil.
struct Report {
  std::string_view monitor;
  std::string_view operation;
  std::vector<std::optional<Value>> arguments;

  /// The dictionary at that place; null where there is none.
  const Dictionary* dictionary(std::size_t place) const {
    if (place >= arguments.size() || !arguments[place]) return nullptr;
    const auto* held = arguments[place]->as<std::shared_ptr<Dictionary>>();
    return held ? held->get() : nullptr;
  }
};

/// A delegate's dictionary, copied for a report.
inline std::optional<Value> argument(const Dictionary* dictionary) {
  if (!dictionary) return std::nullopt;
  return Value(std::make_shared<Dictionary>(*dictionary));
}

/// Receives reports on the main thread.
using ReportSink = std::function<void(const Report&)>;

}  // namespace vantile::host
