#include "vantile/utility/strings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iomanip>
#include <iterator>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

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

std::size_t countDigits(std::string_view text) {
  return std::min(text.find_first_not_of("0123456789"), text.size());
}

/// A number at the beginning of a text.
struct Number {
  bool isNegative = false;
  std::string_view whole, fraction, exponent;  ///< digits; the exponent's with its sign

  explicit Number(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    whole = text.substr(0, countDigits(text));
    text.remove_prefix(whole.size());
    if (text.starts_with('.')) {
      fraction = text.substr(1, countDigits(text.substr(1)));
      text.remove_prefix(1 + fraction.size());
    }
    if (text.empty() || (text[0] != 'e' && text[0] != 'E')) return;
    text.remove_prefix(1);
    const std::size_t sign = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
    const auto digits = countDigits(text.substr(sign));
    if (digits > 0) exponent = text.substr(0, sign + digits);
  }
};

/// Where both the digits and the power of ten are exact as doubles, so is one operation on them.
std::optional<double> exactly(const Number& number) {
  constexpr double powers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
  constexpr std::size_t exactDigits = 15;
  if (!number.exponent.empty() || number.fraction.size() >= std::size(powers) ||
      number.whole.size() + number.fraction.size() > exactDigits)
    return std::nullopt;
  std::int64_t digits = 0;
  for (const auto part : {number.whole, number.fraction})
    for (const char digit : part) digits = digits * 10 + (digit - '0');
  return static_cast<double>(digits) / powers[number.fraction.size()];
}

/// By the standard library, slowly: its quicker ways go by the locale or are too new.
double approximately(const Number& number) {
  std::string text = "0";
  text.append(number.whole).append(".").append(number.fraction);
  if (!number.exponent.empty()) text.append("e").append(number.exponent);
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  double value = 0;
  // A failure is a number that is too large, or, by some libraries' lights, too small.
  const bool fits = static_cast<bool>(stream >> value);
  return fits || value < 1 ? value : std::numeric_limits<double>::infinity();
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

std::int32_t intValue(std::string_view text) {
  using Limits = std::numeric_limits<std::int32_t>;
  const Number number(text);
  const auto* const end = number.whole.data() + number.whole.size();
  std::uint32_t size = 0;
  const auto parsed = std::from_chars(number.whole.data(), end, size);
  constexpr auto largest = static_cast<std::uint32_t>(Limits::max());
  if (parsed.ec == std::errc::result_out_of_range || size > largest)
    return number.isNegative ? Limits::min() : Limits::max();
  return number.isNegative ? -static_cast<std::int32_t>(size) : static_cast<std::int32_t>(size);
}

double doubleValue(std::string_view text) {
  const Number number(text);
  if (number.whole.empty() && number.fraction.empty()) return 0;
  const auto exact = exactly(number);
  return std::copysign(exact ? *exact : approximately(number), number.isNegative ? -1.0 : 1.0);
}

std::string twoDecimals(double number) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::fixed << std::setprecision(2) << number;
  return text.str();
}

}  // namespace vantile
