#pragma once

#include <vantile/foundation/value.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantile::host {

/// One call of a monitor's delegate, as it happened. An argument without a value was nil. The names
/// are literals.
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
  /// The text at that place; null where there is none.
  const std::string* text(std::size_t place) const {
    if (place >= arguments.size() || !arguments[place]) return nullptr;
    return arguments[place]->as<std::string>();
  }
  /// The array at that place; null where there is none.
  const Array* array(std::size_t place) const {
    if (place >= arguments.size() || !arguments[place]) return nullptr;
    const auto* held = arguments[place]->as<std::shared_ptr<Array>>();
    return held ? held->get() : nullptr;
  }
  /// The number at that place, whatever its kind.
  std::optional<double> real(std::size_t place) const {
    if (place >= arguments.size() || !arguments[place]) return std::nullopt;
    return arguments[place]->number();
  }
  /// The whole number at that place.
  std::optional<std::uint64_t> number(std::size_t place) const {
    if (place >= arguments.size() || !arguments[place]) return std::nullopt;
    return arguments[place]->uint64();
  }
};

/// A delegate's dictionary, copied for a report.
inline std::optional<Value> argument(const Dictionary* dictionary) {
  if (!dictionary) return std::nullopt;
  return Value(std::make_shared<Dictionary>(*dictionary));
}

/// A delegate's text, which may be nil.
inline std::optional<Value> argument(const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  return Value(*text);
}

/// Receives reports on the main thread.
using ReportSink = std::function<void(const Report&)>;

}  // namespace vantile::host
